// A receiver that is none: a carrier at a fixed frequency in silence, in real time, and mishaps that a file asks for.
//
// driver=carrier, carrier=HZ (default 100.25e6), level=DBFS (default -20), mishap=FILE. The content of that file is
// looked at before every read: "absent" (no device is found, and the present one fails), "silent" (no samples come),
// "hanging" (reads do not return; FILE.hangs is there then),
// "overflow N" (samples are lost; once for every new N), "abrupt N" (the same, told with the samples before).
#include <algorithm>
#include <chrono>
#include <cmath>
#include <complex>
#include <cstdlib>
#include <fstream>
#include <numbers>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <SoapySDR/Device.hpp>
#include <SoapySDR/Errors.hpp>
#include <SoapySDR/Formats.hpp>
#include <SoapySDR/Registry.hpp>

namespace {

using Clock = std::chrono::steady_clock;

constexpr double FirstRateHz = 1e6;
constexpr std::size_t MostSamples = 16'384;
constexpr double TenthsOfDecade = 20;

std::string valueOf(const SoapySDR::Kwargs& args, const std::string& key, const std::string& fallback)
{
    const auto found = args.find(key);
    return found == args.end() ? fallback : found->second;
}

std::string mishapIn(const std::string& path)
{
    std::string mishap;
    std::ifstream file(path);
    std::getline(file, mishap);
    return mishap;
}

class Carrier final : public SoapySDR::Device {
public:
    explicit Carrier(const SoapySDR::Kwargs& args)
        : m_carrierHz(std::stod(valueOf(args, "carrier", "100.25e6"))),
          m_amplitude(std::pow(10.0, std::stod(valueOf(args, "level", "-20")) / TenthsOfDecade)),
          m_mishapFile(valueOf(args, "mishap", "/nonexistent"))
    {
    }

    [[nodiscard]] std::string getDriverKey() const override { return "carrier"; }
    [[nodiscard]] std::size_t getNumChannels(const int direction) const override
    {
        return direction == SOAPY_SDR_RX ? 1 : 0;
    }
    [[nodiscard]] std::vector<std::string> getStreamFormats(const int, const std::size_t) const override
    {
        return {SOAPY_SDR_CF32};
    }
    std::string getNativeStreamFormat(const int, const std::size_t, double& fullScale) const override
    {
        fullScale = 1;
        return SOAPY_SDR_CF32;
    }
    SoapySDR::Stream* setupStream(const int, const std::string& format, const std::vector<std::size_t>&,
                                  const SoapySDR::Kwargs&) override
    {
        if (format != SOAPY_SDR_CF32) {
            throw std::runtime_error("only CF32 is given");
        }
        return reinterpret_cast<SoapySDR::Stream*>(this);
    }
    void closeStream(SoapySDR::Stream*) override {}
    std::size_t getStreamMTU(SoapySDR::Stream*) const override { return MostSamples; }
    int activateStream(SoapySDR::Stream*, const int, const long long, const std::size_t) override
    {
        m_started = Clock::now();
        m_sent = 0;
        return 0;
    }
    int deactivateStream(SoapySDR::Stream*, const int, const long long) override { return 0; }
    int readStream(SoapySDR::Stream*, void* const* buffers, const std::size_t count, int& flags, long long&,
                   const long timeoutUs) override;

    [[nodiscard]] bool hasGainMode(const int, const std::size_t) const override { return true; }
    void setFrequency(const int, const std::size_t, const double hz, const SoapySDR::Kwargs&) override
    {
        constexpr double Highest = 6e9;
        m_centreHz = std::min(hz, Highest);
    }
    void setFrequency(const int direction, const std::size_t channel, const std::string&, const double hz,
                      const SoapySDR::Kwargs& args) override
    {
        setFrequency(direction, channel, hz, args);
    }
    [[nodiscard]] double getFrequency(const int, const std::size_t) const override { return m_centreHz; }
    void setSampleRate(const int, const std::size_t, const double rate) override
    {
        constexpr double Highest = 3.2e6;
        m_rateHz = std::min(rate, Highest);
    }
    [[nodiscard]] double getSampleRate(const int, const std::size_t) const override { return m_rateHz; }

private:
    void fill(std::complex<float>* samples, std::size_t count);

    double m_carrierHz;
    double m_amplitude;
    std::string m_mishapFile;
    std::string m_lastMishap;
    double m_centreHz = 0;
    double m_rateHz = FirstRateHz;
    double m_phase = 0;
    Clock::time_point m_started;
    unsigned long long m_sent = 0;
};

int Carrier::readStream(SoapySDR::Stream*, void* const* buffers, const std::size_t count, int& flags, long long&,
                        const long timeoutUs)
{
    const std::string mishap = mishapIn(m_mishapFile);
    const bool isNew = mishap != m_lastMishap;
    m_lastMishap = mishap;
    if (mishap == "absent") {
        return SOAPY_SDR_STREAM_ERROR;
    }
    while (mishapIn(m_mishapFile) == "hanging") {
        const std::ofstream hangs(m_mishapFile + ".hangs");
        std::this_thread::sleep_for(std::chrono::microseconds(timeoutUs));
    }
    if (mishap == "silent") {
        std::this_thread::sleep_for(std::chrono::microseconds(timeoutUs));
        return SOAPY_SDR_TIMEOUT;
    }
    if (isNew && mishap.starts_with("overflow")) {
        return SOAPY_SDR_OVERFLOW;
    }
    const std::size_t given = std::min(count, MostSamples);
    std::this_thread::sleep_until(m_started + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(
                                                  static_cast<double>(m_sent + given) / m_rateHz)));
    fill(static_cast<std::complex<float>*>(buffers[0]), given);
    m_sent += given;
    flags = isNew && mishap.starts_with("abrupt") ? SOAPY_SDR_END_ABRUPT : 0;
    return static_cast<int>(given);
}

void Carrier::fill(std::complex<float>* samples, std::size_t count)
{
    const double offset = m_carrierHz - m_centreHz;
    const double amplitude = std::abs(offset) < m_rateHz / 2 ? m_amplitude : 0;
    for (std::size_t i = 0; i < count; ++i) {
        samples[i] = std::complex<float>(std::polar(amplitude, m_phase));
        m_phase = std::remainder(m_phase + 2 * std::numbers::pi * offset / m_rateHz, 2 * std::numbers::pi);
    }
}

SoapySDR::KwargsList findCarriers(const SoapySDR::Kwargs& args)
{
    if (valueOf(args, "driver", "carrier") != "carrier" ||
        mishapIn(valueOf(args, "mishap", "/nonexistent")) == "absent") {
        return {};
    }
    SoapySDR::Kwargs found = args;
    found["driver"] = "carrier";
    return {found};
}

SoapySDR::Device* makeCarrier(const SoapySDR::Kwargs& args)
{
    if (mishapIn(valueOf(args, "mishap", "/nonexistent")) == "absent") {
        throw std::runtime_error("no such receiver is plugged in");
    }
    return new Carrier(args);
}

const SoapySDR::Registry registerCarrier("carrier", &findCarriers, &makeCarrier, SOAPY_SDR_ABI_VERSION);

}  // namespace
