// Opening a device through its driver, tuning it, and reading its stream.
#include "sources/soapy/soapyreceiver.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <complex>
#include <cstdlib>
#include <utility>

#include <SoapySDR/Constants.h>
#include <SoapySDR/Device.hpp>
#include <SoapySDR/Errors.hpp>
#include <SoapySDR/Formats.hpp>
#include <SoapySDR/Logger.hpp>

#include <system/stopsignal.h>
#include <terminaltext/quantity.h>

namespace RecStation {

namespace {

constexpr std::size_t Channel = 0;

// Whatever a driver throws is a reason to try again later.
template <typename Function>
auto orConnectionError(Function function)
{
    try {
        return function();
    } catch (const ConnectionError&) {
        throw;
    } catch (const std::exception& error) {
        const std::string why = error.what();
        throw ConnectionError(why.find("no match") == std::string::npos
                                  ? why
                                  : "there is no such receiver; SoapySDRUtil --find lists those that there are");
    }
}

// Drivers tell much, and every overflow with a letter of its own; overflows are counted here.
void quietenDrivers()
{
    if (std::getenv("SOAPY_SDR_LOG_LEVEL") == nullptr) {  // NOLINT(concurrency-mt-unsafe): nobody sets it
        SoapySDR::setLogLevel(SOAPY_SDR_ERROR);
    }
}

struct CloseDevice {
    void operator()(SoapySDR::Device* device) const noexcept
    {
        try {
            SoapySDR::Device::unmake(device);
        } catch (const std::exception&) {  // it is gone already
        }
    }
};

class SoapyReceiver final : public IqReceiver {
public:
    explicit SoapyReceiver(std::string args) : m_args(std::move(args)) { quietenDrivers(); }
    SoapyReceiver(const SoapyReceiver&) = delete;
    SoapyReceiver& operator=(const SoapyReceiver&) = delete;
    ~SoapyReceiver() override { closeStream(); }

    [[nodiscard]] SampleFormat format() const override { return SampleFormat::FloatLe; }
    void open(const ReceiverOptions& options) override
    {
        orConnectionError([&] {
            close();
            m_device.reset(SoapySDR::Device::make(m_args));
            setRate(options.rateHz);
            setGain(options.gainDb);
            m_stream = m_device->setupStream(SOAPY_SDR_RX, SOAPY_SDR_CF32, {Channel});
            m_flows = false;
            m_gapFollows = false;
        });
    }
    void close() noexcept override
    {
        closeStream();
        m_device.reset();
    }

    // What drivers hold in their buffers, and the time in which a receiver settles.
    std::uint64_t tune(double centreHz) override
    {
        constexpr double SettleSeconds = 0.05;
        return orConnectionError([&] {
            setFrequency(centreHz);
            startStream();
            const std::size_t buffered = m_device->getStreamMTU(m_stream);
            return static_cast<std::uint64_t>(m_rateHz * SettleSeconds) + buffered;
        });
    }

    // Drivers wait for a moment only, so that a wish to stop is noticed.
    std::size_t read(char* buffer, std::size_t size) override
    {
        constexpr long MomentUs = 100'000;  // NOLINT(google-runtime-int): the driver's interface
        if (std::exchange(m_gapFollows, false)) {
            return noteGap();
        }
        const Deadline deadline = in(Connection::Patience);
        const std::array<void*, 1> buffers = {buffer};
        while (std::chrono::steady_clock::now() < deadline) {
            if (System::StopSignal::requested()) {
                throw Stopped();
            }
            int flags = 0;
            long long time = 0;
            const int count = orConnectionError([&] {
                return m_device->readStream(m_stream, buffers.data(), size / sizeof(std::complex<float>), flags, time,
                                            MomentUs);
            });
            m_gapFollows = count > 0 && (flags & SOAPY_SDR_END_ABRUPT) != 0;
            if (count > 0) {
                return static_cast<std::size_t>(count) * sizeof(std::complex<float>);
            }
            if (count == SOAPY_SDR_OVERFLOW) {
                return noteGap();
            }
            if (count != 0 && count != SOAPY_SDR_TIMEOUT) {
                throw ConnectionError(std::string("connection lost: ") + SoapySDR::errToStr(count));
            }
        }
        throw ConnectionError("connection lost: no samples for 10 s");
    }
    [[nodiscard]] std::uint64_t overruns() const override { return m_overruns; }

private:
    // A spectrum's channels are counted from the rate, which many receivers only have roughly.
    void setRate(double rateHz)
    {
        constexpr double Tolerance = 1e-4;
        m_device->setSampleRate(SOAPY_SDR_RX, Channel, rateHz);
        const double got = m_device->getSampleRate(SOAPY_SDR_RX, Channel);
        if (!(std::abs(got - rateHz) <= Tolerance * rateHz)) {
            throw ConnectionError("it takes " + TerminalText::shortest(got) + " samples a second, and not the " +
                                  TerminalText::shortest(rateHz) + " of --rate");
        }
        m_rateHz = got;
    }

    // Many drivers take the nearest frequency that they can, however far away.
    void setFrequency(double centreHz)
    {
        constexpr double Tolerance = 1e-3;  // of the band
        m_device->setFrequency(SOAPY_SDR_RX, Channel, centreHz);
        const double got = m_device->getFrequency(SOAPY_SDR_RX, Channel);
        if (!(std::abs(got - centreHz) <= Tolerance * m_rateHz)) {
            throw ConnectionError("it tunes to " + TerminalText::shortest(got) + " Hz, and not to " +
                                  TerminalText::shortest(centreHz) + " Hz");
        }
    }
    void setGain(const std::optional<double>& gainDb)
    {
        if (m_device->hasGainMode(SOAPY_SDR_RX, Channel)) {
            m_device->setGainMode(SOAPY_SDR_RX, Channel, !gainDb);
        }
        if (gainDb) {
            m_device->setGain(SOAPY_SDR_RX, Channel, *gainDb);
        }
    }

    // Samples flow once there is a frequency, so that the first ones are of it.
    void startStream()
    {
        if (std::exchange(m_flows, true)) {
            return;
        }
        if (const int status = m_device->activateStream(m_stream); status != 0) {
            throw ConnectionError(std::string("it gives no samples: ") + SoapySDR::errToStr(status));
        }
    }
    void closeStream() noexcept
    {
        if (SoapySDR::Stream* const stream = std::exchange(m_stream, nullptr)) {
            try {
                m_device->deactivateStream(stream);
                m_device->closeStream(stream);
            } catch (const std::exception&) {  // the device is gone already
            }
        }
    }
    std::size_t noteGap()
    {
        ++m_overruns;
        return 0;
    }

    std::string m_args;
    std::unique_ptr<SoapySDR::Device, CloseDevice> m_device;
    SoapySDR::Stream* m_stream = nullptr;  // of the device
    double m_rateHz = 0;
    bool m_flows = false;
    bool m_gapFollows = false;  // behind the samples that were read last
    std::uint64_t m_overruns = 0;
};

}  // namespace

std::unique_ptr<IqReceiver> makeSoapyReceiver(const std::string& args)
{
    return std::make_unique<SoapyReceiver>(args);
}

bool isSoapyArgs(const std::string& args)
{
    const SoapySDR::Kwargs parsed = SoapySDR::KwargsFromString(args);
    return !parsed.empty() && std::all_of(parsed.begin(), parsed.end(), [](const auto& entry) {
        return !entry.first.empty() && !entry.second.empty();
    });
}

QString soapyName(const std::string& args)
{
    const SoapySDR::Kwargs parsed = SoapySDR::KwargsFromString(args);
    for (const char* key : {"label", "remote:driver", "driver"}) {
        if (const auto found = parsed.find(key); found != parsed.end()) {
            return QString::fromStdString(found->second);
        }
    }
    return QStringLiteral("SDR");
}

}  // namespace RecStation
