// The spectra of a type as arrays, one for each of its channel ranges.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include <values/maps.h>

#include "reading.h"

namespace RecPython {

/// Levels that are appended row by row. Where it grows, the system moves pages instead of copying them.
class LevelRows {
public:
    /// @throws std::bad_alloc
    void append(std::span<const float> levels);
    void append(std::span<const float> levels, const std::vector<std::size_t>& channels);
    [[nodiscard]] std::size_t size() const { return m_size; }
    /// The memory is the caller's from now on, to be given to free().
    [[nodiscard]] float* release();

private:
    struct Free {
        void operator()(float* memory) const { std::free(memory); }
    };
    [[nodiscard]] std::span<float> more(std::size_t cells);

    std::unique_ptr<float, Free> m_levels;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0;
};

struct LevelSeries {
    values::ChannelRange range;
    std::vector<std::size_t> channels;  ///< that were asked for
    bool isAll = false;                 ///< they are all of the range
    std::vector<double> frequenciesHz;  ///< of the channels
    std::vector<std::int64_t> sinceStartUs;
    LevelRows levels;
    std::uint64_t seen = 0;  ///< also those between, where only some are wanted
};

/// Which spectra are wanted.
struct LevelRequest : Request {
    std::optional<double> lowHz;
    std::optional<double> highHz;
    std::uint64_t every = 1;
    bool complete = false;  ///< levels in force after each record instead of those that it brought
    bool byRange = false;   ///< otherwise more than one range is refused
};

struct FoundSpectra : FoundType {
    std::vector<std::unique_ptr<LevelSeries>> series;
};

/// Without the interpreter's lock. @throws Refusal, Interrupted, std::bad_alloc
[[nodiscard]] FoundSpectra readSpectra(const LevelRequest& request);

}  // namespace RecPython
