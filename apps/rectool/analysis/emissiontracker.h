// Emissions out of sweeps: which channels above their thresholds belong together, and how long each goes on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "geo/geodesic.h"
#include "replay/frequencies.h"

namespace RecTool {

/// A channel's power, of any unit: 10^(level/10), also summed up over sweeps.
struct ChannelPower {
    double hz = 0;
    double power = 0;
};

/// Channels come ascending, at least one, of a width in Hz that may be 0.
///
/// The band that holds this part of the power, with equal parts of the rest below and above it. The power of a channel
/// is taken to be spread evenly over its width.
[[nodiscard]] FrequencySpan bandOfPower(const std::vector<ChannelPower>& channels, double widthHz, double part);
/// From the lowest to the highest channel that is at most so much below the strongest one.
[[nodiscard]] FrequencySpan bandWithin(const std::vector<ChannelPower>& channels, double widthHz, double belowDb);

/// Where to find a record again.
struct RecordName {
    std::size_t part = 0;       ///< of the recordings
    std::int64_t position = 0;  ///< in the file
    std::uint64_t timeMs = 0;   ///< of the record, since the start of its file
};

/// Levels in dB, moments in milliseconds since the start of the first recording.
struct Emission {
    double startMs = 0;  ///< first and last sweep that shows it
    double stopMs = 0;
    FrequencySpan band;  ///< that it occupies
    float highest = 0;
    double highestMs = 0;
    double mean = 0;           ///< of the powers that the strongest channel of each of its sweeps has
    std::uint64_t sweeps = 0;  ///< that show it
    RecordName first;          ///< records of these sweeps
    RecordName last;
    RecordName strongest;
    std::optional<Geo::Position> place;  ///< of the station at the strongest sweep; nothing where it is not recorded

    [[nodiscard]] double centreHz() const { return (band.lowHz + band.highHz) / 2; }
};

struct EmissionRules {
    double gapMs = 1000;       ///< it may be off for so long
    double unseenMs = 60'000;  ///< nobody may measure its channels for so long
    double apartHz = 0;        ///< channels no further apart are one signal; 0: two widths of a channel
    double minDurationMs = 0;  ///< shorter ones are left out
    std::uint64_t minSweeps = 1;
    double belowDb = 0;  ///< the occupied band is where levels are at most so much below the highest; 0: by power
    double partOfPower = 0.99;  ///< that the occupied band holds
};

/// A sweep, channels ascending.
struct SweptLevels {
    std::span<const double> hz;
    std::span<const float> levels;      ///< NaN: not measured
    std::span<const float> thresholds;  ///< a channel is on when its level is above
    double momentMs = 0;
    RecordName record;
    std::optional<Geo::Position> place;  ///< of the station
};

/// All sweeps are of channels of one width.
///
/// In a sweep, channels that are on and not further apart than the rule says are a stretch. A stretch goes on with the
/// emission that it overlaps by at least half of the narrower of the two, a channel more on each side: so one that
/// drifts by no more than half its width and a channel from sweep to sweep is one emission, and one that hops further
/// is several. An emission that falls into several stretches takes all of them; of a stretch that overlaps several
/// emissions each takes the channels that are nearest to it. An emission ends when its channels are measured
/// and off for longer than the gap, or when nobody measured them for too long. A band that is suddenly more than four
/// times as wide as in the sweep before is not followed by the next one: an impulse gathers nothing.
///
/// Memory: the emissions that go on, with 16 bytes a channel of each.
class EmissionTracker {
public:
    /// @param widthHz of a channel; 0 where it is not known
    /// @param ended is told of every emission that is long enough when it has ended
    EmissionTracker(const EmissionRules& rules, double widthHz, std::function<void(const Emission&)> ended);

    void add(const SweptLevels& sweep);
    /// All that still go on end.
    void end();

private:
    struct Open {
        Emission emission;
        FrequencySpan now;     // the stretches of the last sweep
        FrequencySpan before;  // and of the one before
        bool isOff = false;    // as far as was measured since
        double power = 0;      // of the strongest channels
        std::vector<ChannelPower> spectrum;
        std::vector<std::size_t> taken;  // channels of the sweep that is being added

        [[nodiscard]] const FrequencySpan& expected() const;
    };
    struct Stretch {
        std::size_t begin = 0;  // in m_on
        std::size_t end = 0;
        FrequencySpan band;
    };
    [[nodiscard]] bool goesOn(const Stretch& stretch, const Open& open) const;
    [[nodiscard]] std::vector<Stretch> stretches(const SweptLevels& sweep);
    void endOld(double momentMs);
    void sortOpen();
    void assign(const Stretch& stretch, const SweptLevels& sweep);
    void share(const Stretch& stretch, const SweptLevels& sweep);
    void take(Open& open, const SweptLevels& sweep) const;
    [[nodiscard]] static bool isMeasured(const Open& open, const SweptLevels& sweep);
    void close(Open& open) const;

    EmissionRules m_rules;
    double m_widthHz;
    std::function<void(const Emission&)> m_ended;
    std::vector<std::unique_ptr<Open>> m_open;  // by the low edge of the band that is expected
    std::vector<double> m_highest;              // of the high edges up to each of them
    std::vector<std::unique_ptr<Open>> m_begun;
    std::vector<std::size_t> m_on;    // channels
    std::vector<Open*> m_candidates;  // of a stretch
};

}  // namespace RecTool
