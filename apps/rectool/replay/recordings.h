// Recordings that are looked at together: on one axis of time, those that follow each other as one.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <recording2/inspection/inspection.h>
#include <values/maps.h>
#include <QString>

#include "frequencies.h"
#include "printing/output.h"
#include "printing/valuetext.h"
#include "recordedvalues.h"

namespace RecTool {

using LevelMap = values::CellMap<float, values::levelHandler>;

/// A type of a device.
struct TrackType {
    std::size_t track = 0;  ///< the device's
    std::int32_t code = 0;
    bool operator==(const TrackType&) const = default;
};

/// A record on the axis of time.
struct PlacedRecord {
    const Recording2::Inspection::Record& record;
    TrackType type;
    double momentMs;  ///< when its value was measured, since the start of the first recording
    RecordedValues& recorded;
    std::size_t part = 0;  ///< the recording that it stands in, for Recordings::fileOf

    /// The same to the microsecond also in the last millisecond of a recording, whose end is told in whole ones.
    /// @param startMs of the first recording, as Recordings has it
    [[nodiscard]] double exactMomentMs(std::uint64_t startMs) const;
    /// The number or the map of levels that it led to; nothing when it is none. Maps are to be asked for once.
    [[nodiscard]] std::optional<double> number() const;
    [[nodiscard]] const LevelMap* levels() const;
    /// The same with nothing but the levels that this record carries itself.
    [[nodiscard]] const LevelMap* carriedLevels() const;
};

/// Recordings of one device that follow each other, such as the splits of a long one: they are taken as one.
struct Track {
    std::string device;
    TypeNames names;
};

/// Which recordings, and what of them.
struct RecordingsOptions {
    std::vector<std::string> files;   ///< at least one
    std::string from;                 ///< a time of the first recording; empty: from the first record
    std::string to;                   ///< a time of the first recording, the last one taken; empty: to the end
    const char* fromName = "--from";  ///< how users give it
    const char* toName = "--to";
};

class Recordings {
public:
    /// Reads headers and tables and takes over the span. @param passes how often the records will be walked
    /// @param state anything but Fine: nothing is read
    Recordings(const RecordingsOptions& options, std::size_t passes, ExitCode state = ExitCode::Fine);
    Recordings(const Recordings&) = delete;
    Recordings& operator=(const Recordings&) = delete;

    /// Fine, or, told, what keeps the recordings from being looked at.
    [[nodiscard]] ExitCode state() const { return m_state; }
    /// The first recording by time, for messages that concern all.
    [[nodiscard]] const std::string& file() const { return m_parts.front().file; }
    [[nodiscard]] std::size_t files() const { return m_parts.size(); }
    /// Where it is known only now how often the records will be walked.
    void planPasses(std::size_t passes) { m_passes = passes; }
    /// The file that a record stands in, by PlacedRecord::part.
    [[nodiscard]] const std::string& fileOf(std::size_t part) const { return m_parts[part].file; }
    /// Whether not all passes are done.
    [[nodiscard]] bool isPassLeft() const { return m_walked < m_passes * m_parts.size(); }
    [[nodiscard]] const std::vector<Track>& tracks() const { return m_tracks; }
    /// "RX 1: LEVEL" where there are several devices.
    [[nodiscard]] std::string labelled(std::size_t track, const std::string& text) const;
    /// What was asked for, otherwise from the first record to the last one or the end of the recordings, as far as
    /// reach moved it; at least a millisecond wide.
    [[nodiscard]] const TimeSpan& span() const { return m_span; }
    /// Whether a moment lies before the span that was asked for.
    [[nodiscard]] bool isBefore(double momentMs) const { return m_fromIsGiven && momentMs < m_span.fromMs; }
    /// Widens the span to what was measured, where nobody asked for an end of it.
    void reach(double fromMs, double toMs);
    /// The least time after a moment that can be seen in a picture of the span: it goes on for as long.
    void keepVisible(double momentMs);
    /// Start of the first recording, since 1970 UTC.
    [[nodiscard]] std::uint64_t startMs() const { return m_axis.header.startMs; }
    /// Names and types of the devices.
    [[nodiscard]] QString devices() const;
    /// The bookmarks in the span, at the times of the axis.
    [[nodiscard]] std::vector<Recording2::Inspection::Bookmark> bookmarks() const;

    /// Asked now and then while records are walked: whether to stop. walk throws Stopped then.
    void stopWhen(std::function<bool()> isToStop) { m_isToStop = std::move(isToStop); }
    struct Stopped {};
    /// One pass over the records, each device's in their order, except those whose time is lost or after the span.
    void walk(const std::function<void(const PlacedRecord&)>& visit);

    /// The types that a user named, in their order, each in every track that has it. @return nothing, told, when one is
    /// in none of the recordings
    [[nodiscard]] std::optional<std::vector<TrackType>> takeTypes(const std::vector<std::string>& types) const;

    /// Tells the damage and makes the exit code of what was made, or could not be.
    [[nodiscard]] ExitCode end(ExitCode drawn);
    /// The same with a reason why nothing was made.
    [[nodiscard]] ExitCode refuse(const std::string& why);

    /// One of the files.
    struct Part {
        std::string file;
        Recording2::Inspection::Summary summary;
        std::size_t track = 0;
        double offsetMs = 0;                                     ///< of its start from the first one's
        std::vector<Recording2::Inspection::Finding> inRecords;  ///< by the last walk

        [[nodiscard]] double lengthMs() const;
    };
    /// By time.
    [[nodiscard]] const std::vector<Part>& parts() const { return m_parts; }

private:
    [[nodiscard]] ExitCode readParts(const std::vector<std::string>& files);
    void makeTracks();
    void makeAxis();
    [[nodiscard]] ExitCode takeSpan(const RecordingsOptions& options);

    std::vector<Part> m_parts;  // by time
    std::vector<Track> m_tracks;
    Recording2::Inspection::Summary m_axis;  // start and bookmarks of all, as the span is given in them
    TimeSpan m_span;
    bool m_fromIsGiven = false;
    bool m_toIsGiven = false;
    double m_lastMs = 0;  // what is measured later is not taken
    ExitCode m_state = ExitCode::Fine;
    std::function<bool()> m_isToStop;
    std::uint64_t m_seen = 0;  // records, of all passes
    Progress m_progress;
    std::size_t m_passes;
    std::size_t m_walked = 0;  // parts, in all passes
};

/// "RX 1: LEVEL", on one line; the keyword alone where the device has no name.
[[nodiscard]] std::string ofDevice(const std::string& device, const std::string& keyword);
/// That a type has no record.
[[nodiscard]] std::string noRecord(const RecordingsOptions& options, const std::string& keyword);

}  // namespace RecTool
