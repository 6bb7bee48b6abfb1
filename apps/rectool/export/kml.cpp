// Exporting tracks as KML 2.2: a gx:Track a device.
#include <QXmlStreamWriter>

#include "exporttime.h"
#include "track.h"

namespace RecTool {

namespace {

constexpr const char* KmlNamespace = "http://www.opengis.net/kml/2.2";
constexpr const char* TrackNamespace = "http://www.google.com/kml/ext/2.2";

/// All times stand before all places, so that they are walked twice. @return how many points
std::uint64_t writeTrackOf(QXmlStreamWriter& xml, Recordings& recordings, std::size_t track, NewFile& file)
{
    std::uint64_t points = 0;
    ExportTime time(recordings.startMs());
    xml.writeStartElement(TrackNamespace, "Track");
    walkTrack(recordings, track, file, [&](const TrackPoint& point) {
        ++points;
        xml.writeTextElement(KmlNamespace, "when", QString::fromStdString(time.iso(point.momentMs)));
    });
    walkTrack(recordings, track, file, [&](const TrackPoint& point) {
        xml.writeTextElement(TrackNamespace, "coord",
                             plainDecimal(point.longitudeDeg) + ' ' + plainDecimal(point.latitudeDeg) + ' ' +
                                 plainDecimal(point.altitudeM.value_or(0)));
    });
    xml.writeEndElement();
    return points;
}

std::uint64_t writeKml(Recordings& recordings, NewFile& file, QXmlStreamWriter& xml)
{
    xml.writeDefaultNamespace(KmlNamespace);
    xml.writeNamespace(TrackNamespace, "gx");
    xml.writeStartElement(KmlNamespace, "kml");
    xml.writeStartElement(KmlNamespace, "Document");
    std::uint64_t points = 0;
    for (std::size_t track = 0; track < recordings.tracks().size(); ++track) {
        const std::string& name = recordings.tracks()[track].device;
        xml.writeStartElement(KmlNamespace, "Placemark");
        if (!name.empty()) {
            xml.writeTextElement(KmlNamespace, "name", QString::fromStdString(name));
        }
        points += writeTrackOf(xml, recordings, track, file);
        xml.writeEndElement();
    }
    return points;
}

}  // namespace

ExitCode exportKml(const ExportOptions& options)
{
    return exportTrack(options, 2, writeKml);
}

}  // namespace RecTool
