// The level of the noise by channel and time, learnt from the levels themselves while there are signals, too.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace RecTool {

/// A first pass over the levels learns, then the floor can be asked for.
///
/// In each window of time, up to 32 levels a channel are kept, drawn evenly from all of them. The levels of a channel
/// and its neighbours make a pool: the nearest 64 channels on each side that lie within 5 % of its frequency, or within
/// 1 MHz where that is more, as noise changes little so far. The noise is the lower part of the pool: from its lower
/// quartile Q and its tenth percentile P follows the middle of the noise, Q + 1.11 (Q - P), with Q - P at most 4.4 dB.
/// That is the median of levels that are normally distributed in decibels, as those of averaged spectra nearly are,
/// and the mean power of a spectrum that is not averaged to within 1 dB. Percentiles are taken to a tenth of a decibel.
///
/// So a channel may be on all the time, and signals may fill more than half of a pool's levels; the estimate begins to
/// rise with them by a few decibels, and takes them for noise where they fill three quarters and more. A channel
/// without neighbours that is on all the time is its own floor. All levels must be of one width of channels:
/// the noise of others has another level.
///
/// That a low quantile over time tells the noise under a signal is described by V. Stahl, A. Fischer, R. Bippus,
/// "Quantile based noise estimation for spectral subtraction and Wiener filtering", ICASSP 2000. Levels are drawn as
/// in J. S. Vitter, "Random sampling with a reservoir", 1985; the same ones in every run.
///
/// Memory: 140 bytes a channel, and 4 bytes a channel and window, 64 MB in all: beyond that windows become twice as
/// long, two by two.
class NoiseFloor {
public:
    static constexpr double UsualWindowMs = 300'000;

    static constexpr std::size_t MostFloors = 16'000'000;

    /// @param mostFloors channels times windows: beyond that windows are joined
    explicit NoiseFloor(double windowMs = UsualWindowMs, std::size_t mostFloors = MostFloors)
        : m_windowMs(windowMs), m_mostFloors(mostFloors)
    {
    }

    /// Takes a sweep. What is no finite number is not measured. A moment before those of earlier sweeps counts in the
    /// latest window.
    /// @param frequencies of all channels that have a number by now, by number (ChannelNumbers)
    /// @param numbers of the levels' channels; those that are none of the frequencies are left out
    void add(const std::vector<double>& frequencies, std::span<const std::uint32_t> numbers,
             std::span<const float> levels, double momentMs);
    /// After the last sweep, and before anything is asked for. A channel that was not measured in a window has
    /// the floor that it has in the nearest window where it was.
    void end(const std::vector<double>& frequencies);

    /// In dB, by number of the channel; NaN where there was never a level. Empty where no sweep was taken. Good until
    /// the object goes.
    [[nodiscard]] std::span<const float> at(double momentMs) const;
    /// As long as it is in the end.
    [[nodiscard]] double windowMs() const { return m_windowMs; }

private:
    static constexpr std::size_t Kept = 32;
    struct Sample {
        std::uint32_t seen = 0;
        std::array<float, Kept> levels{};
    };
    struct Window {
        double number = 0;  // of its length since the moment 0
        std::vector<float> floors;
    };
    void close(const std::vector<double>& frequencies);
    void widen();

    double m_windowMs;
    std::size_t m_mostFloors;
    std::vector<Sample> m_samples;  // of the window in progress, by number of the channel
    double m_number = 0;            // of the window in progress
    bool m_isOpen = false;
    std::uint64_t m_random = 1;
    std::vector<std::uint32_t> m_order;  // of the channels by frequency
    std::vector<Window> m_windows;       // by time
};

}  // namespace RecTool
