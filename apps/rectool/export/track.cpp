// Joining records of positions to points, and writing what there is of them.
#include "track.h"

#include <array>
#include <charconv>
#include <cmath>
#include <utility>

#include <QIODevice>
#include <QXmlStreamWriter>

#include "exporttime.h"
#include "printing/text.h"
#include "replay/linesofbearing.h"

namespace RecTool {

namespace {

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

}  // namespace

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

QString plainDecimal(double number)
{
    constexpr std::size_t Longest = 400;
    std::array<char, Longest> text{};
    const auto written = std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
    return QString::fromLatin1(text.data(), static_cast<int>(written.ptr - text.data()));
}

}  // namespace RecTool
