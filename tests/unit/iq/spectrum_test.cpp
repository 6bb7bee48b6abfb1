// Levels of tones and noise with every window, against theory and the transform's definition.
#include "iqspectra/spectrum.h"
#include "iqtesting.h"

namespace {

using RecStation::SpectrumAverager;
using RecStation::Window;

constexpr std::size_t size = 1024;

std::vector<float> spectrumOf(const IqTesting::Samples& samples, Window window, std::size_t length = size)
{
    SpectrumAverager spectrum(window, length);
    for (std::size_t first = 0; first + length <= samples.size(); first += length) {
        spectrum.add(std::span(samples).subspan(first, length));
    }
    return spectrum.levelsDb();
}

struct Peak {
    double channel;  // from the centre
    double levelDb;
};

Peak peakOf(const std::vector<float>& levels)
{
    const auto highest = std::max_element(levels.begin(), levels.end());
    const auto channel = static_cast<double>(highest - levels.begin());
    return {channel - static_cast<double>(levels.size()) / 2, static_cast<double>(*highest)};
}

TEST(Spectrum, AFullScaleToneIsZeroDbWithEveryWindow)
{
    for (const Window window : {Window::FlatTop, Window::Hann, Window::BlackmanHarris}) {
        const Peak peak = peakOf(spectrumOf(IqTesting::tone(size, 100, size), window));
        EXPECT_NEAR(peak.levelDb, 0, 1e-4);
        // A flat-top window's neighbours are level with a tone in the middle of a channel, to a fraction of a dB.
        EXPECT_NEAR(peak.channel, 100, 1);
    }
}

TEST(Spectrum, AToneBetweenChannelsKeepsItsLevelWithTheFlatTopWindow)
{
    for (int step = 0; step < 33; ++step) {
        const double channel = -511.5 + 31.17 * step;
        const Peak peak = peakOf(spectrumOf(IqTesting::tone(size, channel, size, 0.1), Window::FlatTop));
        EXPECT_NEAR(peak.levelDb, -20, 0.02) << channel;
        EXPECT_NEAR(peak.channel, channel, 1) << channel;
    }
}

TEST(Spectrum, TheOtherWindowsLoseWhatTheyAreDocumentedToLoseBetweenChannels)
{
    const IqTesting::Samples tone = IqTesting::tone(size, 20.5, size);
    EXPECT_NEAR(peakOf(spectrumOf(tone, Window::Hann)).levelDb, -1.42, 0.01);
    EXPECT_NEAR(peakOf(spectrumOf(tone, Window::BlackmanHarris)).levelDb, -0.83, 0.01);
}

TEST(Spectrum, NoiseReadsItsPowerPerChannelTimesTheWindowsNoiseBandwidth)
{
    constexpr double power = 1e-4;
    const IqTesting::Samples noise = IqTesting::noise(200 * size, power);
    const struct {
        Window window;
        double noiseBandwidthDb;
    } cases[] = {{Window::FlatTop, 5.76}, {Window::Hann, 1.76}, {Window::BlackmanHarris, 3.02}};
    for (const auto& item : cases) {
        double sum = 0;
        for (const float level : spectrumOf(noise, item.window)) {
            sum += std::pow(10, static_cast<double>(level) / 10);
        }
        EXPECT_NEAR(10 * std::log10(sum / power), item.noiseBandwidthDb, 0.1);
    }
}

TEST(Spectrum, TheSamplesMeanPowerIsNotWindowed)
{
    SpectrumAverager spectrum(Window::FlatTop, size);
    const IqTesting::Samples loud = IqTesting::tone(size, 3, size, 0.5);
    const IqTesting::Samples silent(size);
    spectrum.add(loud);
    EXPECT_NEAR(spectrum.meanPower(), 0.25, 1e-12);
    spectrum.add(silent);
    EXPECT_NEAR(spectrum.meanPower(), 0.125, 1e-12);
}

TEST(Spectrum, AveragingIsOfPowersAndClearStartsAnew)
{
    SpectrumAverager spectrum(Window::Hann, size);
    spectrum.add(IqTesting::tone(size, -7, size));
    spectrum.add(IqTesting::Samples(size));
    EXPECT_NEAR(peakOf(spectrum.levelsDb()).levelDb, -3.01, 0.01);
    spectrum.clear();
    spectrum.add(IqTesting::tone(size, -7, size));
    EXPECT_NEAR(peakOf(spectrum.levelsDb()).levelDb, 0, 0.01);
}

TEST(Spectrum, SilenceHasALevel)
{
    for (const float level : spectrumOf(IqTesting::Samples(64), Window::FlatTop, 64)) {
        EXPECT_EQ(level, -200.0F);
    }
    EXPECT_EQ(RecStation::powerToDb(0), -200);
}

TEST(Spectrum, ASampleThatIsNoNumberShowsInTheMeanPower)
{
    SpectrumAverager spectrum(Window::Hann, 16);
    IqTesting::Samples samples(16);
    samples[3] = {0, std::numeric_limits<double>::quiet_NaN()};
    spectrum.add(samples);
    EXPECT_FALSE(std::isfinite(spectrum.meanPower()));
}

TEST(Spectrum, ItAgreesWithTheDefinitionOfTheTransform)
{
    const IqTesting::Samples samples = IqTesting::noise(750, 1e-3);
    IqTesting::expectSpectrum(spectrumOf(samples, Window::FlatTop, 250), samples, 0, 250, 3, 1e-4);
}

TEST(Spectrum, WindowsAreKnownByTheirNames)
{
    EXPECT_EQ(RecStation::windowByName("flattop"), Window::FlatTop);
    EXPECT_EQ(RecStation::windowByName("hann"), Window::Hann);
    EXPECT_EQ(RecStation::windowByName("blackman-harris"), Window::BlackmanHarris);
    EXPECT_EQ(RecStation::windowByName("kaiser"), std::nullopt);
}

}  // namespace
