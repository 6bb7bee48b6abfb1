// A receiver behind a SoapySDR driver: samples, tuning, what is lost, and devices that go away.
#include "sources/soapy/soapyreceiver.h"

#include <complex>
#include <cstdlib>
#include <numbers>

#include <system/stopsignal.h>

#include "support/files.h"
#include "support/problem.h"

namespace RecStation {
namespace {

using testing::HasSubstr;
using Samples = std::vector<std::complex<float>>;

constexpr double RateHz = 1e6;
constexpr double CarrierHz = 100.25e6;

class SoapyReceiverTest : public testing::Test {
protected:
    static void SetUpTestSuite() { ::setenv("SOAPY_SDR_PLUGIN_PATH", DRIVER_FOLDER, 1); }

    SoapyReceiverTest()
    {
        m_options.rateHz = RateHz;
        wish("");
    }

    void wish(const char* mishap) const { TestSupport::writeBytes(m_folder.filePath("mishap"), mishap); }

    [[nodiscard]] std::string args() const
    {
        return "driver=carrier,mishap=" + m_folder.filePath("mishap").toStdString();
    }

    static Samples read(IqReceiver& receiver, std::size_t count)
    {
        Samples samples(count);
        const std::size_t bytes =
            receiver.read(reinterpret_cast<char*>(samples.data()), count * sizeof(std::complex<float>));
        samples.resize(bytes / sizeof(std::complex<float>));
        return samples;
    }

    // By the turn of the phase from sample to sample.
    static double frequencyOf(const Samples& samples)
    {
        double turns = 0;
        for (std::size_t i = 1; i < samples.size(); ++i) {
            turns += std::arg(samples[i] * std::conj(samples[i - 1]));
        }
        return turns / (2 * std::numbers::pi) / static_cast<double>(samples.size() - 1) * RateHz;
    }

    [[nodiscard]] std::unique_ptr<IqReceiver> tuned() const
    {
        auto receiver = makeSoapyReceiver(args());
        receiver->open(m_options);
        static_cast<void>(receiver->tune(100e6));
        return receiver;
    }
    static std::string whyNot(const std::function<void()>& work)
    {
        return TestSupport::problemOf<ConnectionError>(work);
    }

    QTemporaryDir m_folder;
    ReceiverOptions m_options;
};

TEST_F(SoapyReceiverTest, GivesTheSamplesOfTheFrequencyThatItIsTunedTo)
{
    const auto receiver = makeSoapyReceiver(args());
    receiver->open(m_options);
    for (const double centre : {100e6, 100.5e6}) {
        EXPECT_GT(receiver->tune(centre), 0U);
        const Samples samples = read(*receiver, 4'096);
        ASSERT_GT(samples.size(), 100U);
        EXPECT_NEAR(std::abs(samples.front()), 0.1, 1e-4);
        EXPECT_NEAR(frequencyOf(samples), CarrierHz - centre, 1);
    }
    EXPECT_EQ(receiver->overruns(), 0U);
}

TEST_F(SoapyReceiverTest, CountsWhatTheDriverLost)
{
    const auto receiver = tuned();
    wish("overflow 1");
    EXPECT_TRUE(read(*receiver, 100).empty());
    EXPECT_EQ(read(*receiver, 100).size(), 100U);
    EXPECT_EQ(receiver->overruns(), 1U);
    wish("abrupt 2");
    EXPECT_EQ(read(*receiver, 100).size(), 100U) << "what came before the loss";
    EXPECT_TRUE(read(*receiver, 100).empty());
    EXPECT_EQ(read(*receiver, 100).size(), 100U);
    EXPECT_EQ(receiver->overruns(), 2U);
}

TEST_F(SoapyReceiverTest, IsOpenedAgainAfterTheDeviceWasGone)
{
    const auto receiver = makeSoapyReceiver(args());
    wish("absent");
    EXPECT_EQ(whyNot([&] { receiver->open(m_options); }), "no such receiver is plugged in");
    wish("");
    receiver->open(m_options);
    static_cast<void>(receiver->tune(100e6));
    EXPECT_EQ(read(*receiver, 100).size(), 100U);
    wish("absent");
    EXPECT_THAT(whyNot([&] { read(*receiver, 100); }), HasSubstr("connection lost: STREAM_ERROR"));
    receiver->close();
    wish("");
    receiver->open(m_options);
    static_cast<void>(receiver->tune(100e6));
    EXPECT_EQ(read(*receiver, 100).size(), 100U);
}

TEST_F(SoapyReceiverTest, ARateAndAFrequencyThatTheReceiverDoesNotHaveAreTold)
{
    EXPECT_EQ(whyNot([this] { static_cast<void>(tuned()->tune(10e9)); }),
              "it tunes to 6000000000 Hz, and not to 10000000000 Hz");
    m_options.rateHz = 20e6;
    const auto receiver = makeSoapyReceiver(args());
    EXPECT_EQ(whyNot([&] { receiver->open(m_options); }),
              "it takes 3200000 samples a second, and not the 20000000 of --rate");
}

TEST_F(SoapyReceiverTest, AWishToStopEndsTheWaitForSamples)
{
    const System::StopSignal signal;
    const auto receiver = tuned();
    wish("silent");
    System::StopSignal::request();
    EXPECT_THROW(read(*receiver, 100), Stopped);
}

TEST(SoapyArgs, AreKeysWithValues)
{
    EXPECT_TRUE(isSoapyArgs("driver=rtlsdr"));
    EXPECT_TRUE(isSoapyArgs("driver=rtlsdr, serial=00000001"));
    for (const char* wrong : {"", "rtlsdr", "driver=", "=rtlsdr", "127.0.0.1:1234"}) {
        EXPECT_FALSE(isSoapyArgs(wrong)) << wrong;
    }
    EXPECT_EQ(soapyName("driver=rtlsdr,serial=1"), "rtlsdr");
    EXPECT_EQ(soapyName("driver=remote,remote=x,remote:driver=airspy"), "airspy");
    EXPECT_EQ(soapyName("serial=1"), "SDR");
}

}  // namespace
}  // namespace RecStation
