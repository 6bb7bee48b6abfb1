// Windows, the FFT, the averaging of power channel by channel, and how many FFTs make a spectrum.
#include "iqspectra/spectrum.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <new>
#include <numbers>
#include <string_view>

#include <fftw3.h>

#include <terminaltext/quantity.h>

namespace RecStation {

namespace {

constexpr std::array FlatTopTerms = {0.21557895, 0.41663158, 0.277263158, 0.083578947, 0.006947368};
constexpr std::array HannTerms = {0.5, 0.5};
constexpr std::array BlackmanHarrisTerms = {0.35875, 0.48829, 0.14128, 0.01168};

struct CosineSum {
    Window window;
    std::string_view name;
    std::span<const double> terms;  // alternating in sign
};

constexpr std::array Windows = {CosineSum{Window::FlatTop, "flattop", FlatTopTerms},
                                CosineSum{Window::Hann, "hann", HannTerms},
                                CosineSum{Window::BlackmanHarris, "blackman-harris", BlackmanHarrisTerms}};

struct FftwFree {
    void operator()(fftw_complex* buffer) const { fftw_free(buffer); }
};

using FftwBuffer = std::unique_ptr<fftw_complex[], FftwFree>;

FftwBuffer allocate(std::size_t size)
{
    FftwBuffer buffer(fftw_alloc_complex(size));
    if (!buffer) {
        throw std::bad_alloc();
    }
    return buffer;
}

}  // namespace

std::optional<Window> windowByName(const std::string& name)
{
    const auto* const found =
        std::find_if(Windows.begin(), Windows.end(), [&name](const CosineSum& sum) { return sum.name == name; });
    return found == Windows.end() ? std::nullopt : std::optional(found->window);
}

std::vector<double> windowWeights(Window window, std::size_t size)
{
    const std::span<const double> terms = Windows.at(static_cast<std::size_t>(window)).terms;
    std::vector<double> weights(size);
    const double count = static_cast<double>(size);
    for (std::size_t n = 0; n < size; ++n) {
        const double phase = 2 * std::numbers::pi * static_cast<double>(n) / count;
        double sign = 1;
        for (std::size_t k = 0; k < terms.size(); ++k) {
            weights[n] += sign * terms[k] * std::cos(static_cast<double>(k) * phase);
            sign = -sign;
        }
        // The cosines add up to nothing over the window, so its sum is the constant term's.
        weights[n] /= terms.front() * count;
    }
    return weights;
}

double powerToDb(double power)
{
    static constexpr double Silence = 1e-20;
    return 10 * std::log10(std::max(power, Silence));
}

struct SpectrumAverager::Transform {
    explicit Transform(std::size_t size)
        : input(allocate(size)),
          output(allocate(size)),
          // Estimated, not measured: the same plan, and so the same bits, in every run.
          plan(fftw_plan_dft_1d(static_cast<int>(size), input.get(), output.get(), FFTW_FORWARD, FFTW_ESTIMATE))
    {
        if (plan == nullptr) {
            throw std::bad_alloc();
        }
    }
    ~Transform() { fftw_destroy_plan(plan); }
    Transform(const Transform&) = delete;
    Transform& operator=(const Transform&) = delete;

    FftwBuffer input;
    FftwBuffer output;
    fftw_plan plan;
};

SpectrumAverager::SpectrumAverager(Window window, std::size_t size)
    : m_weights(windowWeights(window, size)), m_transform(std::make_unique<Transform>(size)), m_powerSums(size)
{
}

SpectrumAverager::~SpectrumAverager() = default;

void SpectrumAverager::add(std::span<const std::complex<double>> segment)
{
    for (std::size_t n = 0; n < segment.size(); ++n) {
        m_samplePowerSum += std::norm(segment[n]);
        m_transform->input[n][0] = segment[n].real() * m_weights[n];
        m_transform->input[n][1] = segment[n].imag() * m_weights[n];
    }
    fftw_execute(m_transform->plan);
    const std::size_t half = m_powerSums.size() / 2;
    for (std::size_t channel = 0; channel < m_powerSums.size(); ++channel) {
        const fftw_complex& bin = m_transform->output[(channel + half) % m_powerSums.size()];
        m_powerSums[channel] += bin[0] * bin[0] + bin[1] * bin[1];
    }
    ++m_segments;
}

std::vector<float> SpectrumAverager::levelsDb() const
{
    std::vector<float> levels(m_powerSums.size());
    std::transform(m_powerSums.begin(), m_powerSums.end(), levels.begin(),
                   [this](double sum) { return static_cast<float>(powerToDb(sum / static_cast<double>(m_segments))); });
    return levels;
}

double SpectrumAverager::meanPower() const
{
    return m_samplePowerSum / (static_cast<double>(m_segments) * static_cast<double>(m_powerSums.size()));
}

void SpectrumAverager::clear()
{
    std::fill(m_powerSums.begin(), m_powerSums.end(), 0.0);
    m_samplePowerSum = 0;
    m_segments = 0;
}

std::size_t averageOver(double seconds, double rateHz, std::size_t advance)
{
    const double ffts = std::ceil(seconds * rateHz / static_cast<double>(advance));
    return static_cast<std::size_t>(std::clamp(ffts, 1.0, static_cast<double>(LargestAverage)));
}

std::string whyAUnit(const std::string& option, double hz, double rateHz)
{
    if (hz == 0 || std::abs(hz) >= rateHz / 2) {
        return "";
    }
    const std::string number = TerminalText::shortest(hz);
    return option + " " + number + " is in Hz, and puts half of the band below 0 Hz: say " + number + "M for MHz, or " +
           number + "Hz if this is meant";
}

SpectrumPlan makeSpectrumPlan(const SpectrumOptions& options, double rateHz)
{
    // Records of a file are at least a millisecond apart: so many FFTs that a spectrum and its level find room for
    // their two records, and the delay by the records of the initial states is soon made up.
    constexpr double SecondsPerSpectrum = 0.004;
    SpectrumPlan plan;
    plan.fftSize = options.fftSize;
    plan.window = options.window;
    const double notShared = 1 - options.overlapPercent / 100;
    plan.advance = static_cast<std::size_t>(std::max(1.0, std::round(static_cast<double>(plan.fftSize) * notShared)));
    plan.average = options.average > 0 ? options.average : averageOver(SecondsPerSpectrum, rateHz, plan.advance);
    return plan;
}

}  // namespace RecStation
