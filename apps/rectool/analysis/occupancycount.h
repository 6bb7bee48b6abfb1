// What "occupancy" takes and finds.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "cycles.h"
#include "printing/json.h"
#include "replay/recordings.h"
#include "replay/spectra.h"

namespace RecTool {

constexpr std::size_t MostOccupancyChannels = 200'000;  ///< that are counted

/// A channel that a user names: what lies within half the width of it belongs to it.
struct NamedChannel {
    double hz = 0;
    double widthHz = 0;
    std::string name;
};

/// One channel, over all sweeps that carry a level of it.
struct ChannelOccupancy {
    double hz = 0;
    Cycles cycles;
    std::map<int, Cycles> byHour;  ///< of the day; empty unless asked for
    double firstMs = 0;            ///< moments of the first and the last sample, since the start of the first recording
    double lastMs = 0;
    double longestMs = 0;  ///< between two samples
    /// From sample to sample in the middle (mean), 0 for a single one.
    [[nodiscard]] double revisitMs() const;
};

/// A band over time: the part of its channels that is on, sweep by sweep.
class BandOccupancy {
public:
    BandOccupancy(double lowHz, double highHz) : m_lowHz(lowHz), m_highHz(highHz) {}

    void add(double part);
    [[nodiscard]] double lowHz() const { return m_lowHz; }
    [[nodiscard]] double highHz() const { return m_highHz; }
    [[nodiscard]] std::uint64_t sweeps() const { return m_sweeps; }
    [[nodiscard]] double part() const { return m_sum / static_cast<double>(m_sweeps); }
    /// From the means of 32 to 64 stretches of as many sweeps, taken as independent (batch means).
    [[nodiscard]] Cycles::Interval interval(double confidence) const;

private:
    double m_lowHz;
    double m_highHz;
    std::uint64_t m_sweeps = 0;
    double m_sum = 0;
    std::vector<double> m_batches{0.0};  // sums of parts
    std::uint64_t m_batchSize = 1;
    std::uint64_t m_inBatch = 0;
};

struct OccupancyOptions : RecordingsOptions {
    std::vector<std::string> types;  ///< keywords or numbers; empty: the RF spectrum
    double thresholdDb = 0;          ///< what is on has at least this level
    bool hasThreshold = false;       ///< otherwise:
    double aboveDb = 10;             ///< so much above the noise floor
    double lowHz = 0;                ///< only channels from here on
    double highHz = 0;               ///< and up to here; 0: to the last one
    double rasterHz = 0;             ///< width of channels; 0: those of the sweeps
    std::string channels;            ///< a file that names them; empty: none
    std::vector<std::string> bands;  ///< "430M-440M"
    bool byHour = false;             ///< of the day
    std::string time = "utc";        ///< whose hours, or "local"
    double accuracy = 0;             ///< percentage points that are wanted to either side; 0: any
    double confidence = 95;          ///< percent
    bool csv = false;
    bool json = false;
};

/// The occupancy of one type.
struct TypeOccupancy {
    std::string device;
    std::string keyword;
    std::int32_t code = 0;
    std::uint64_t sweeps = 0;
    std::vector<ChannelOccupancy> channels;
    std::vector<BandOccupancy> bands;
};

/// Walks the recordings once or, with a noise floor, twice.
/// @param names of channels, may be empty
/// @return those with sweeps; nothing when there are more channels than can be counted
[[nodiscard]] std::optional<std::vector<TypeOccupancy>> countOccupancy(const OccupancyOptions& options,
                                                                       Recordings& recordings,
                                                                       const std::vector<Spectrum>& spectra,
                                                                       const std::vector<NamedChannel>& names,
                                                                       const std::vector<FrequencySpan>& bands);

/// @param names of channels, may be empty
void printOccupancy(const OccupancyOptions& options, const Recordings& recordings,
                    const std::vector<TypeOccupancy>& types, const std::vector<NamedChannel>& names);

/// The document that is printed with --json.
[[nodiscard]] Json occupancyJson(const OccupancyOptions& options, const Recordings& recordings,
                                 const std::vector<TypeOccupancy>& types, const std::vector<NamedChannel>& names);

}  // namespace RecTool
