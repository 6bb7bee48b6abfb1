// The source "feed": changes as JSON Lines, one object a line, from a file or another program.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <QString>

#include "feedline.h"
#include "input/linereader.h"
#include "input/timeorder.h"
#include "sources/offeredsource.h"

namespace RecStation {

struct FeedOptions {
    std::string file = "-";                       ///< UTF-8; "-": the standard input
    std::optional<unsigned long long> startTime;  ///< microseconds since 1970 UTC; nothing: the current time
    bool strict = false;                          ///< the first bad line ends the run
    bool keepAt = false;  ///< plain values are recorded at their own time, not at that of the map before them
    bool live = false;    ///< maps have the time of the step, not one of their own
};

/// Which changes of a feed a recorder puts to another time than their own.
/// A recording starts at the time of its first map that has one of its own: what was recorded before moves with it.
class MovedTimes {
public:
    /// @param atUs when a recorder was switched on, microseconds since 1970 UTC
    void recordingBegins(unsigned long long atUs);
    /// A change that a recorder watches.
    /// @return what to tell of it; empty: nothing
    [[nodiscard]] std::string changed(const FeedLine& line);

private:
    std::optional<unsigned long long> m_start;  // when the recording began; nothing: before the feed
    std::uint64_t m_before = 0;                 // changes recorded since
    bool m_moved = false;                       // a map has told its start
};

/// Bad lines are reported with their number (the first twenty), counted and passed over. Needs the value tree in force.
class FeedSource final : public Source {
public:
    /// @param open called once by prepare, and by lastTime
    /// @param startTime microseconds since 1970 UTC of the feed's time 0, unless the options tell none and the first
    /// good line has an absolute time: then that is the time 0; with strict nextTime or step throws the first bad line
    /// nextTime throws at the end of an input without a change that was carried out.
    FeedSource(std::function<ByteInput()> open, unsigned long long startTime, const FeedOptions& options,
               StationHooks host);

    [[nodiscard]] QString name() const override { return QStringLiteral("feed"); }
    void prepare() override;
    [[nodiscard]] std::optional<unsigned long long> nextTime() override;
    void step() override;
    [[nodiscard]] std::optional<unsigned long long> unfinishedTime() override;
    [[nodiscard]] std::optional<unsigned long long> lastTime() override;
    [[nodiscard]] bool plainValuesComeFirst() const override { return m_options.keepAt; }
    [[nodiscard]] SourceReport report() const override { return {m_used, m_skipped, m_bad.count(), true}; }

private:
    void takeLine();
    void accept(FeedLine line);
    void noteForm(bool absolute);
    void noteEpoch(unsigned long long sinceStartUs);
    void endInput();
    void apply(const FeedLine& line);
    void keepOrder(FeedLine& line);
    void tellMovedTimes(const FeedLine& line);

    std::function<ByteInput()> m_open;
    unsigned long long m_startTime;
    FeedOptions m_options;
    StationHooks m_host;
    std::unique_ptr<LineReader> m_lines;
    std::optional<FeedLine> m_pending;  // read, not yet carried out
    unsigned long long m_lastAtUs = 0;  // since 1970 UTC
    std::optional<bool> m_absolute;     // the form of the first good line's time
    bool m_epochTold = false;           // that a number looks like one since 1970
    bool m_mixed = false;               // and that was told
    std::uint64_t m_used = 0;
    std::uint64_t m_skipped = 0;
    BadLines m_bad;
    TimeOrder m_order;                // of the maps' own times
    unsigned long long m_handed = 0;  // the latest time that changes were made at, as the recorders see it
    bool m_ownTimeHolds = false;      // a map's own time is that of the plain changes after it
    MovedTimes m_movedTimes;
};

/// The feed from the file or the standard input that the options name.
[[nodiscard]] std::unique_ptr<Source> makeFeedSource(const FeedOptions& options, StationHooks host);

}  // namespace RecStation
