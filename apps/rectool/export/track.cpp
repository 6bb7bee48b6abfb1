// Exporting tracks: records of positions joined to points, as GPX 1.1 and as KML 2.2, a gx:Track a device.
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include <QIODevice>
#include <QXmlStreamWriter>

#include "export.h"
#include "printing/text.h"
#include "replay/linesofbearing.h"

namespace RecTool {

namespace {

struct TrackPoint {
    double momentMs = 0;
    double latitudeDeg = 0;   ///< -90 to 90
    double longitudeDeg = 0;  ///< from -180 to below 180
    std::optional<double> altitudeM;
};

constexpr double OnePointMs = 100;
constexpr double HalfCircleDeg = 180;

/// A new file as Qt's writers want it: takes everything, and what went wrong the file tells at its end.
class FileDevice final : public QIODevice {
public:
    explicit FileDevice(NewFile& file) : m_file(file) { open(QIODevice::WriteOnly | QIODevice::Unbuffered); }
    [[nodiscard]] bool isSequential() const override { return true; }

protected:
    qint64 readData(char* /*bytes*/, qint64 /*size*/) override { return -1; }
    qint64 writeData(const char* bytes, qint64 size) override
    {
        m_file.write({bytes, static_cast<std::size_t>(size)});
        return size;
    }

private:
    NewFile& m_file;
};

/// Latitude, longitude and altitude are records of their own: those that come within 100 ms, each once, are one point,
/// at the time of the first of them.
class TrackFollower {
public:
    TrackFollower(const Recordings& recordings, std::size_t track,
                  const std::function<void(const TrackPoint&)>& listener)
        : m_recordings(recordings), m_track(track), m_listener(listener)
    {
        const TypeNames& names = recordings.tracks()[track].names;
        m_latitude.code = names.numberOf("LOCATIONLATITUDE");
        m_longitude.code = names.numberOf("LOCATIONLONGITUDE");
        m_altitude.code = names.numberOf("ALTITUDE");
    }

    /// Takes all records of the recordings, also those before the span.
    void take(const PlacedRecord& placed)
    {
        if (placed.type.track != m_track) {
            return;
        }
        for (Coordinate* coordinate : {&m_latitude, &m_longitude, &m_altitude}) {
            if (coordinate->code != placed.type.code) {
                continue;
            }
            if (isPending() && (coordinate->isNew || std::abs(placed.momentMs - m_firstMs) > OnePointMs)) {
                end();
            }
            m_firstMs = isPending() ? m_firstMs : placed.momentMs;
            coordinate->number = placed.number();
            coordinate->isNew = true;
        }
    }
    /// Gives the last point.
    void end()
    {
        const bool hasMoved = m_latitude.isNew || m_longitude.isNew;
        const auto place = positionOf(m_latitude.number, m_longitude.number);
        if (hasMoved && place && !m_recordings.isBefore(m_firstMs)) {
            const double longitude = place->longitudeDeg == HalfCircleDeg ? -HalfCircleDeg : place->longitudeDeg;
            TrackPoint point{m_firstMs, place->latitudeDeg, longitude, {}};
            if (m_altitude.number && std::isfinite(*m_altitude.number)) {
                point.altitudeM = m_altitude.number;
            }
            m_listener(point);
        }
        m_latitude.isNew = m_longitude.isNew = m_altitude.isNew = false;
    }

private:
    struct Coordinate {
        std::optional<std::int32_t> code;
        std::optional<double> number;
        bool isNew = false;  // since the last point
    };
    [[nodiscard]] bool isPending() const { return m_latitude.isNew || m_longitude.isNew || m_altitude.isNew; }

    const Recordings& m_recordings;
    std::size_t m_track;
    const std::function<void(const TrackPoint&)>& m_listener;
    Coordinate m_latitude;
    Coordinate m_longitude;
    Coordinate m_altitude;
    double m_firstMs = 0;  // of what is pending
};

/// Visits the points of a device in one pass.
void walkTrack(Recordings& recordings, std::size_t track, const NewFile& file,
               const std::function<void(const TrackPoint&)>& visit)
{
    TrackFollower follower(recordings, track, visit);
    recordings.walk([&](const PlacedRecord& placed) {
        if (file.good()) {
            follower.take(placed);
        }
    });
    follower.end();
}

/// What a format writes of all recordings. @return how many points
using TrackWriter = std::function<std::uint64_t(Recordings& recordings, NewFile& file, QXmlStreamWriter& xml)>;

/// @param passes over the recordings a device
ExitCode exportTrack(const ExportOptions& options, std::size_t passes, const TrackWriter& write)
{
    return exportTo(options, [&](Recordings& recordings, ExportedRecords& records, NewFile& file) {
        recordings.planPasses(passes * recordings.tracks().size());
        if (!ExportTime(recordings.startMs()).isKnown()) {
            return recordings.refuse("The recording does not tell when it began, and a track needs clock times.");
        }
        FileDevice device(file);
        QXmlStreamWriter xml(&device);
        xml.setAutoFormatting(true);
        xml.setAutoFormattingIndent(1);
        xml.writeStartDocument();
        const std::uint64_t points = write(recordings, file, xml);
        xml.writeEndDocument();
        if (points == 0 && file.good()) {
            return recordings.refuse(
                "There is no position in the span: no LOCATIONLATITUDE and LOCATIONLONGITUDE but 0, 0. Nothing was "
                "written.");
        }
        return endExport(recordings, records, file, counted(points, "point"));
    });
}

/// Degrees or metres with the fewest digits that give the number again, never with an exponent.
QString plainDecimal(double number)
{
    constexpr std::size_t Longest = 400;
    std::array<char, Longest> text{};
    const auto written = std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
    return QString::fromLatin1(text.data(), static_cast<int>(written.ptr - text.data()));
}

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

ExitCode exportGpx(const ExportOptions& options)
{
    return exportTrack(options, 1, writeGpx);
}

ExitCode exportKml(const ExportOptions& options)
{
    return exportTrack(options, 2, writeKml);
}

}  // namespace RecTool
