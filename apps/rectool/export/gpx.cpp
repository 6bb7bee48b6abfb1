// Exporting tracks as GPX 1.1.
#include <QXmlStreamWriter>

#include "exporttime.h"
#include "track.h"

namespace RecTool {

namespace {

void writePoint(QXmlStreamWriter& xml, ExportTime& time, const TrackPoint& point)
{
    xml.writeStartElement("trkpt");
    xml.writeAttribute("lat", plainDecimal(point.latitudeDeg));
    xml.writeAttribute("lon", plainDecimal(point.longitudeDeg));
    if (point.altitudeM) {
        xml.writeTextElement("ele", plainDecimal(*point.altitudeM));
    }
    xml.writeTextElement("time", QString::fromStdString(time.iso(point.momentMs)));
    xml.writeEndElement();
}

std::uint64_t writeGpx(Recordings& recordings, NewFile& file, QXmlStreamWriter& xml)
{
    xml.writeStartElement("gpx");
    xml.writeDefaultNamespace("http://www.topografix.com/GPX/1/1");
    xml.writeAttribute("version", "1.1");
    xml.writeAttribute("creator", "rectool");
    ExportTime time(recordings.startMs());
    std::uint64_t points = 0;
    for (std::size_t track = 0; track < recordings.tracks().size(); ++track) {
        const std::string& name = recordings.tracks()[track].device;
        xml.writeStartElement("trk");
        if (!name.empty()) {
            xml.writeTextElement("name", QString::fromStdString(name));
        }
        xml.writeStartElement("trkseg");
        walkTrack(recordings, track, file, [&](const TrackPoint& point) {
            ++points;
            writePoint(xml, time, point);
        });
        xml.writeEndElement();
        xml.writeEndElement();
    }
    return points;
}

}  // namespace

ExitCode exportGpx(const ExportOptions& options)
{
    return exportTrack(options, 1, writeGpx);
}

}  // namespace RecTool
