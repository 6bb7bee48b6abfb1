// Power spectra of complex samples, and the plan by which samples become them.
#pragma once

#include <complex>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace CLI {
class App;
}

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

// ---- how samples become spectra: what may be asked for, and what it comes to at a sample rate

constexpr std::size_t SmallestFft = 16;
constexpr std::size_t LargestFft = 1'048'576;
constexpr std::size_t LargestAverage = 1'000'000;
constexpr double LargestOverlapPercent = 95;

/// What the command line says.
struct SpectrumOptions {
    std::size_t fftSize = 1024;  ///< channels of a spectrum, even, 16 to 1,048,576
    Window window = Window::FlatTop;
    double overlapPercent = 0;  ///< overlap of consecutive FFTs, 0 to 95
    std::size_t average = 0;    ///< FFTs averaged (in power) to one spectrum; 0: as many as last 4 ms
    bool ifSpectrum = false;    ///< a fixed frequency's IF spectrum, not a panorama scan's
};

/// --fft, --window, --overlap, --average, --as: what every source of samples has.
void addSpectrumOptions(CLI::App& command, SpectrumOptions& options);

struct SpectrumPlan {
    std::size_t fftSize = 0;
    Window window = Window::FlatTop;
    std::size_t advance = 0;  ///< samples from one FFT to the next
    std::size_t average = 0;  ///< FFTs of a spectrum

    [[nodiscard]] std::size_t frameLength() const { return (average - 1) * advance + fftSize; }  ///< samples
};

/// As many FFTs as last so long, at least one.
[[nodiscard]] std::size_t averageOver(double seconds, double rateHz, std::size_t advance);

/// "--centre 1090" is more likely a forgotten M than a band that lies half below 0 Hz: what to say of a frequency
/// without a unit then; empty where it may be meant.
[[nodiscard]] std::string whyAUnit(const std::string& option, double hz, double rateHz);

/// @param rateHz samples a second, above 0
[[nodiscard]] SpectrumPlan makeSpectrumPlan(const SpectrumOptions& options, double rateHz);

}  // namespace RecStation
