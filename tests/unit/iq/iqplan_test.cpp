// What an IQ input is taken for: options, and what is refused of them.
#include "input/timetext.h"
#include "sources/iq/iqsource.h"
#include "support/files.h"
#include "support/problem.h"

namespace {

using namespace RecStation;
using testing::HasSubstr;

class Plan : public testing::Test {
protected:
    Plan()
    {
        const QString path = m_directory.filePath("samples.bin");
        TestSupport::writeBytes(path, QByteArray(64, '\x7f'));
        m_options.file = path.toStdString();
        m_options.format = "cu8";
        m_options.rateHz = 2e6;
        m_options.centreHz = 1090e6;
        m_options.startTime = RecStation::parseIsoTime("2026-11-21T08:30:00Z");
    }
    QTemporaryDir m_directory;
    IqOptions m_options;
};

TEST_F(Plan, OptionsAloneAreEnough)
{
    const IqPlan plan = makeIqPlan(m_options);
    EXPECT_EQ(plan.file.toStdString(), m_options.file);
    EXPECT_EQ(plan.format, SampleFormat::UnsignedByte);
    EXPECT_EQ(plan.rateHz, 2e6);
    EXPECT_EQ(plan.stretches.at(0).centreHz, 1090e6);
    EXPECT_EQ(plan.stretches.at(0).startTime, 1'795'249'800'000'000U);
    EXPECT_EQ(plan.fftSize, 1024U);
    EXPECT_EQ(plan.advance, 1024U);
}

TEST_F(Plan, NumbersOutOfRangeAreReported)
{
    const auto check = [this](auto change, const char* expected) {
        const IqOptions good = m_options;
        change(m_options);
        EXPECT_THAT(TestSupport::problemOf([this] { makeIqPlan(m_options); }), HasSubstr(expected));
        m_options = good;
    };
    check([](IqOptions& o) { o.rateHz = 0; }, "sample rate must be");
    check([](IqOptions& o) { o.rateHz = -1; }, "sample rate must be");
    check([](IqOptions& o) { o.rateHz = std::nan(""); }, "sample rate must be");
    check([](IqOptions& o) { o.centreHz = std::nan(""); }, "centre frequency must be");
    check([](IqOptions& o) { o.format = "cu9"; }, "cu9");
}

TEST_F(Plan, TheOverlapSetsTheAdvance)
{
    m_options.overlapPercent = 50;
    EXPECT_EQ(makeIqPlan(m_options).advance, 512U);
    m_options.fftSize = 16;
    m_options.overlapPercent = 95;
    EXPECT_EQ(makeIqPlan(m_options).advance, 1U);
}

TEST_F(Plan, ASpectrumLastsFourMillisecondsUnlessSaidOtherwise)
{
    EXPECT_EQ(makeIqPlan(m_options).average, 8U);  // 8 * 1024 samples are 4.096 ms
    m_options.overlapPercent = 50;
    EXPECT_EQ(makeIqPlan(m_options).average, 16U);
    m_options.rateHz = 48000;
    EXPECT_EQ(makeIqPlan(m_options).average, 1U);
    m_options.average = 3;
    EXPECT_EQ(makeIqPlan(m_options).average, 3U);
}

}  // namespace
