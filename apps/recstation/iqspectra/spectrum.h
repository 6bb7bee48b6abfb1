// Power spectra of complex samples.
#pragma once

#include <complex>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace RecStation {

enum class Window { FlatTop, Hann, BlackmanHarris };

std::optional<Window> windowByName(const std::string& name);  ///< flattop, hann, blackman-harris

/// The window's weights, scaled to the sum 1, so that a tone's power comes out whatever the window.
std::vector<double> windowWeights(Window window, std::size_t size);

/// 10 log10 of a power, -200 for powers below that.
double powerToDb(double power);

/// Averages the power spectra of segments of samples.
class SpectrumAverager {
public:
    /// @param size samples of a segment and channels of the spectrum, even
    SpectrumAverager(Window window, std::size_t size);
    ~SpectrumAverager();
    SpectrumAverager(const SpectrumAverager&) = delete;
    SpectrumAverager& operator=(const SpectrumAverager&) = delete;

    /// @param segment size samples
    void add(std::span<const std::complex<double>> segment);

    /// Level of every channel in dB, rising in frequency from -1/2 of the sample rate; 0 dB is a tone of amplitude 1.
    [[nodiscard]] std::vector<float> levelsDb() const;
    /// Mean power of the samples, not windowed. Not finite when a sample was not.
    [[nodiscard]] double meanPower() const;
    void clear();

private:
    struct Transform;

    std::vector<double> m_weights;
    std::unique_ptr<Transform> m_transform;
    std::vector<double> m_powerSums;
    double m_samplePowerSum = 0;
    std::size_t m_segments = 0;
};

}  // namespace RecStation
