// The recordings that a picture is drawn from.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <recording2/inspection/inspection.h>

#include "plot.h"
#include "printing/output.h"
#include "printing/progress.h"
#include "replay/typenames.h"
#include "timespan.h"

namespace RecTool {

/// A record on the time axis of a picture.
struct PlottedRecord {
    const Recording2::Inspection::Record& record;
    std::size_t track;  ///< the device's
    double momentMs;    ///< when its value was measured, since the start of the first recording
};

/// Recordings of one device that follow each other, such as the splits of a long one: they are drawn as one.
struct Track {
    std::string device;
    TypeNames names;
};

class PlotSource {
public:
    /// Reads headers and tables and takes over the span. @param passes how often the records will be walked
    PlotSource(const PlotOptions& options, int passes);
    PlotSource(const PlotSource&) = delete;
    PlotSource& operator=(const PlotSource&) = delete;

    /// Fine, or, told, what keeps the recordings from being drawn.
    [[nodiscard]] ExitCode state() const { return m_state; }
    /// The first recording by time, for messages that concern all.
    [[nodiscard]] const std::string& file() const { return m_parts.front().file; }
    [[nodiscard]] std::size_t files() const { return m_parts.size(); }
    [[nodiscard]] const std::vector<Track>& tracks() const { return m_tracks; }
    /// "RX 1: LEVEL" where there are several devices.
    [[nodiscard]] std::string labelled(std::size_t track, const std::string& text) const;
    /// What was asked for, otherwise from the first record to the last one or the end of the recordings, as far as
    /// reach moved it; at least a millisecond wide.
    [[nodiscard]] const TimeSpan& span() const { return m_span; }
    /// Whether a moment lies in front of the span that was asked for.
    [[nodiscard]] bool isBefore(double momentMs) const { return m_fromIsGiven && momentMs < m_span.fromMs; }
    /// Widens the span to what was measured, where nobody asked for an end of it.
    void reach(double fromMs, double toMs);
    /// The least time behind a moment that can be seen in the picture: it goes on for as long.
    void keepVisible(double momentMs);
    /// Start of the first recording, since 1970 UTC.
    [[nodiscard]] std::uint64_t startMs() const { return m_axis.header.startMs; }
    /// Names and types of the devices.
    [[nodiscard]] std::string devices() const;
    /// The bookmarks in the span, at the times of the picture.
    [[nodiscard]] std::vector<Recording2::Inspection::Bookmark> bookmarks() const;

    /// One pass over the records, each device's in their order, except those whose time is lost or behind the span.
    void walk(const std::function<void(const PlottedRecord&)>& visit);

    /// The number of a type in a track; nothing where a keyword is not among its types.
    [[nodiscard]] std::optional<std::int32_t> numberOf(std::size_t track, const std::string& type) const;
    struct TypeInTrack {
        std::size_t track;
        std::int32_t code;
        bool operator==(const TypeInTrack&) const = default;
    };
    /// The types that a user named, in their order, each in every track that has it. @return nothing, told, when one is
    /// in none of the recordings
    [[nodiscard]] std::optional<std::vector<TypeInTrack>> takeTypes(const std::vector<std::string>& types) const;

    /// Tells the damage and makes the exit code of a finished picture, or of one that could not be drawn.
    [[nodiscard]] ExitCode end(ExitCode drawn);
    /// The same with a reason why there is no picture.
    [[nodiscard]] ExitCode refuse(const std::string& why);

private:
    struct Part {
        std::string file;
        Recording2::Inspection::Summary summary;
        std::size_t track = 0;
        double offsetMs = 0;  ///< of its start from the first one's
        std::vector<Recording2::Inspection::Finding> inRecords;

        [[nodiscard]] double lengthMs() const;
    };
    ExitCode readParts(const std::vector<std::string>& files);
    void makeTracks();
    void makeAxis();
    ExitCode takeSpan(const PlotOptions& options);
    void walk(Part& part, std::size_t number, const std::function<void(const PlottedRecord&)>& visit);

    std::vector<Part> m_parts;  // by time
    std::vector<Track> m_tracks;
    Recording2::Inspection::Summary m_axis;  // start and bookmarks of all, as the span is given in them
    TimeSpan m_span;
    bool m_fromIsGiven = false;
    bool m_toIsGiven = false;
    double m_lastMs = 0;  // what is measured later is not shown
    ExitCode m_state = ExitCode::Fine;
    Progress m_progress;
    int m_passes;
    int m_pass = 0;
};

}  // namespace RecTool
