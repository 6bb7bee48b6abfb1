// Tones and noise in every sample format, and spectra summed up by their definition.
#include "iqtesting.h"

#include <bit>
#include <numbers>
#include <random>

namespace IqTesting {

namespace {

constexpr double twoPi = 2 * std::numbers::pi;

Samples windowed(const Samples& samples, std::size_t first, std::size_t size, const std::vector<double>& terms)
{
    Samples out(size);
    for (std::size_t n = 0; n < size; ++n) {
        double weight = 0;
        for (std::size_t k = 0; k < terms.size(); ++k) {
            const double angle = twoPi * static_cast<double>(k * n) / static_cast<double>(size);
            weight += (k % 2 == 0 ? terms[k] : -terms[k]) * std::cos(angle);
        }
        out[n] = samples.at(first + n) * weight / (terms.front() * static_cast<double>(size));
    }
    return out;
}

// turns[i] is e^(-2 pi i / size).
void addPowers(const Samples& segment, const Samples& turns, std::vector<double>& powers)
{
    const std::size_t size = segment.size();
    for (std::size_t channel = 0; channel < size; ++channel) {
        const std::size_t bin = (channel + size / 2) % size;
        std::complex<double> sum = 0;
        for (std::size_t n = 0; n < size; ++n) {
            const std::complex<double>& turn = turns[bin * n % size];
            sum += std::complex(segment[n].real() * turn.real() - segment[n].imag() * turn.imag(),
                                segment[n].real() * turn.imag() + segment[n].imag() * turn.real());
        }
        powers[channel] += std::norm(sum);
    }
}

}  // namespace

Samples tone(std::size_t count, double channel, std::size_t fftSize, double amplitude, double phase)
{
    Samples samples(count);
    for (std::size_t n = 0; n < count; ++n) {
        const double angle = twoPi * channel * static_cast<double>(n) / static_cast<double>(fftSize) + phase;
        samples[n] = std::polar(amplitude, angle);
    }
    return samples;
}

Samples noise(std::size_t count, double power, std::uint32_t seed)
{
    std::mt19937 random(seed);
    std::normal_distribution<double> component(0, std::sqrt(power / 2));
    Samples samples(count);
    for (std::complex<double>& sample : samples) {
        const double real = component(random);
        sample = {real, component(random)};
    }
    return samples;
}

QByteArray littleEndian(std::uint64_t number, int bytes)
{
    QByteArray out;
    for (int i = 0; i < bytes; ++i) {
        out.append(static_cast<char>(number >> (8 * i) & 0xFFU));
    }
    return out;
}

QByteArray encoded(const Samples& samples, const std::function<QByteArray(double)>& number)
{
    QByteArray out;
    for (const std::complex<double>& sample : samples) {
        out += number(sample.real()) + number(sample.imag());
    }
    return out;
}

QByteArray asFloat(double number)
{
    return littleEndian(std::bit_cast<std::uint32_t>(static_cast<float>(number)), 4);
}

QByteArray asUnsignedBytes(const Samples& samples)
{
    return encoded(samples, [](double number) {
        return littleEndian(static_cast<std::uint64_t>(std::clamp(std::round(number * 127.5 + 127.5), 0.0, 255.0)), 1);
    });
}

QByteArray asSignedShorts(const Samples& samples)
{
    return encoded(samples, [](double number) {
        const double scaled = std::clamp(std::round(number * 32768), -32768.0, 32767.0);
        return littleEndian(static_cast<std::uint64_t>(static_cast<std::int64_t>(scaled)), 2);
    });
}

Samples fromUnsignedBytes(const QByteArray& bytes)
{
    Samples samples;
    for (int i = 0; i + 1 < bytes.size(); i += 2) {
        const auto real = static_cast<unsigned char>(bytes.at(i));
        const auto imaginary = static_cast<unsigned char>(bytes.at(i + 1));
        samples.emplace_back((real - 127.5) / 127.5, (imaginary - 127.5) / 127.5);
    }
    return samples;
}

std::vector<double> spectrumByDefinition(const Samples& samples, std::size_t first, std::size_t fftSize,
                                         std::size_t advance, std::size_t average, const std::vector<double>& terms)
{
    Samples turns(fftSize);
    for (std::size_t i = 0; i < fftSize; ++i) {
        turns[i] = std::polar(1.0, -twoPi * static_cast<double>(i) / static_cast<double>(fftSize));
    }
    std::vector<double> levels(fftSize);
    for (std::size_t i = 0; i < average; ++i) {
        addPowers(windowed(samples, first + i * advance, fftSize, terms), turns, levels);
    }
    for (double& level : levels) {
        level = 10 * std::log10(level / static_cast<double>(average));
    }
    return levels;
}

const std::vector<double>& flatTopTerms()
{
    static const std::vector<double> terms = {0.21557895, 0.41663158, 0.277263158, 0.083578947, 0.006947368};
    return terms;
}

void expectSpectrum(const std::vector<float>& levelsDb, const Samples& samples, std::size_t first, std::size_t fftSize,
                    std::size_t average, double toleranceDb)
{
    const auto expected = spectrumByDefinition(samples, first, fftSize, fftSize, average, flatTopTerms());
    ASSERT_EQ(levelsDb.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        ASSERT_NEAR(static_cast<double>(levelsDb[i]), expected[i], toleranceDb) << first << " channel " << i;
    }
}

double meanLevelDb(const Samples& samples, std::size_t first, std::size_t count)
{
    double sum = 0;
    for (std::size_t n = first; n < first + count; ++n) {
        sum += std::norm(samples.at(n));
    }
    return 10 * std::log10(sum / static_cast<double>(count));
}

QString testDataPath(const QString& name)
{
    const QString directory = qEnvironmentVariable("RECORDING2_TEST_DATA", TEST_DATA_DIRECTORY);
    return QDir(directory).filePath(name);
}

}  // namespace IqTesting
