// NMEA 0183 sentences as fixes with times, in the order of the times.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "input/badlines.h"
#include "input/linereader.h"
#include "input/timeorder.h"
#include "sources/nmea/nmeaclock.h"
#include "sources/nmea/nmeamessage.h"
#include "sources/nmea/nmeasource.h"

namespace RecStation {

/// Makes a line feed of each carriage return behind which neither of the two follows. One that comes last so far waits
/// for the next byte.
[[nodiscard]] ByteInput withLineFeeds(ByteInput input);

struct TimedFix {
    unsigned long long time =
        0;  ///< microseconds since 1970 UTC; not earlier than that of the fix before, but after a gap
    Fix fix;
};

/// A sentence without a time lies between the timed sentence before it and the next one of a later time, as its line
/// lies between theirs; after the last timed sentence it has its time, before the first one that one's. A sentence
/// whose time is earlier than one before has the latest time so far. Gaps that part recordings: between them no line
/// lies, and after one the time may be earlier.
///
/// What arrives live (the standard input, a pipe, a serial line) and tells no date for ten seconds has the times of its
/// arrival from then on, and what was held those of its own.
class NmeaLog {
public:
    using ArrivalClock = std::function<long long()>;  ///< microseconds since 1970 UTC

    /// Opens the input.
    /// @throws std::runtime_error when the input cannot be opened
    /// @param now when what arrives live does so; without it the system's time, and live is what is no file
    NmeaLog(const NmeaOptions& options, InputReport report, ArrivalClock now = {});

    /// Nothing at the end and when the process is to stop.
    /// @throws std::runtime_error when there is no time or no date to be found
    [[nodiscard]] std::optional<TimedFix> next();
    /// What was read and waits for the next time, with the latest time. For when the process is to stop.
    [[nodiscard]] std::optional<TimedFix> nextUnfinished();

    /// Everything that can be given so far was given.
    [[nodiscard]] bool waitsForInput() const { return m_ready.empty() && !m_ended; }

    [[nodiscard]] std::uint64_t skipped() const { return m_skipped; }
    [[nodiscard]] std::uint64_t bad() const { return m_bad.count(); }

private:
    struct Entry {
        std::size_t line;
        NmeaMessage message;
        long long arrival;
    };
    struct Waiting {
        std::size_t line;
        bool timed;
        long long time;
        Fix fix;
    };

    struct Clock {
        std::size_t line;
        long long time;
    };

    static constexpr std::size_t LongestLine = 4096;

    bool readSentence();
    void take(const std::string& line);
    void takeLine(std::string_view text);
    void takeSentence(std::string_view text, std::string_view front);
    void noteBinary();
    void requireChecksum(const NmeaSentence& sentence);
    void completeHeading(NmeaMessage& message);
    void accept(const NmeaMessage& message, std::string_view front);
    void holdUntilDate(const Entry& entry);
    void releaseHeld();
    void goByArrival();
    void giveAtArrival(const Entry& entry);
    void place(const Entry& entry);
    void noteClock(std::size_t line, long long time);
    void goByClock(const Clock& clock);
    void advance(std::size_t line, long long measured);
    void closeGroup(std::size_t line, long long time);
    [[nodiscard]] bool isGap(long long time) const;
    void spreadUntimed(std::size_t line, long long time);
    void releaseGroup();
    void requireFix() const;
    void endInput();
    std::optional<TimedFix> takeReady();

    NmeaOptions m_options;
    BadLines m_bad;
    TimeOrder m_order;
    LineReader m_lines;
    NmeaClock m_clock;
    bool m_live;
    bool m_byArrival;
    bool m_trueHeading = false;  // was told; compasses do not count then
    bool m_ofFixes = false;      // fixes tell times
    bool m_hasFix = true;        // as the last position said
    bool m_given = false;        // a fix, to whoever asks
    bool m_inBinary = false;     // the line is no text, or not only
    bool m_ended = false;
    ArrivalClock m_now;
    std::optional<double> m_variation;
    std::vector<Entry> m_held;          // until a date is known
    std::vector<Waiting> m_group;       // of one time, until a later one is known
    std::optional<long long> m_time;    // the latest
    std::optional<long long> m_logged;  // the latest time in front of a line
    std::optional<Clock> m_ofClock;     // of a clock, for what comes without a time
    std::deque<TimedFix> m_ready;
    std::uint64_t m_skipped = 0;
    std::uint64_t m_binary = 0;                      // lines
    std::set<std::string, std::less<>> m_checksums;  // addresses of sentences that had one
};

}  // namespace RecStation
