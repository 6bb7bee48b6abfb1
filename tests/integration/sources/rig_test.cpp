// A receiver behind the real rigctld, set by the real rigctl while it is recorded; and peers of the tests.
#include <QElapsedTimer>
#include <QStandardPaths>

#include <values/selection.h>
#include <values/value.h>

#include "recordings.h"
#include "support/loopback.h"

namespace {

using namespace testing;

using TestSupport::freePort;

class RigTest : public RecordingTest {
protected:
    void SetUp() override
    {
        if (QStandardPaths::findExecutable("rigctld").isEmpty()) {
            GTEST_SKIP() << "rigctld is not installed (libhamlib-utils)";
        }
    }

    ~RigTest() override
    {
        m_rigctld.kill();
        m_rigctld.waitForFinished();
    }

    // Returns when it answers.
    void startReceiver(const QStringList& options = {})
    {
        m_rigctld.setStandardErrorFile(QProcess::nullDevice());
        m_rigctld.start("rigctld", QStringList{"-m", "1", "-T", "127.0.0.1", "-t", QString::number(m_port)} + options);
        QElapsedTimer elapsed;
        elapsed.start();
        while (ask({"f"}).isEmpty()) {
            ASSERT_LT(elapsed.elapsed(), TestSupport::PatienceMs);
        }
    }

    // What rigctl says, its lines.
    [[nodiscard]] QStringList ask(const QStringList& command) const
    {
        QProcess rigctl;
        rigctl.start("rigctl", QStringList{"-m", "2", "-r", address()} + command);
        EXPECT_TRUE(rigctl.waitForFinished(TestSupport::PatienceMs));
        const QString output = QString::fromLatin1(rigctl.readAllStandardOutput());
        return rigctl.exitCode() == 0 ? output.split(QLatin1Char('\n'), Qt::SkipEmptyParts) : QStringList();
    }

    // Returns when the recording that is being written has the text.
    void awaitRecord(const QString& text) const
    {
        QElapsedTimer elapsed;
        elapsed.start();
        QString output;
        while (!output.contains(text)) {
            ASSERT_LT(elapsed.elapsed(), TestSupport::PatienceMs) << text.toStdString() << " is not in\n"
                                                                  << output.toStdString();
            const QStringList files = QDir(m_directory.path()).entryList({"*.tmp", "*.rec"}, QDir::Files);
            QProcess rectool;
            rectool.setWorkingDirectory(m_directory.path());
            rectool.start(RECTOOL, QStringList("cat") + files);
            rectool.waitForFinished(TestSupport::PatienceMs);
            output = QString::fromUtf8(rectool.readAllStandardOutput());
        }
    }

    // @param until what was recorded then
    void record(const QString& until, const QStringList& options = {})
    {
        start(m_recstation, QStringList{"-o", ".", "rig", address(), "--interval", "10ms"} + options);
        awaitRecord(until);
    }

    void pipeIn(const QByteArray& lines)
    {
        m_recstation.write(lines);
        while (m_recstation.bytesToWrite() > 0) {
            ASSERT_TRUE(m_recstation.waitForBytesWritten(TestSupport::PatienceMs));
        }
    }

    Result stop()
    {
        m_recstation.terminate();
        return finish(m_recstation);
    }

    [[nodiscard]] QString address() const { return QStringLiteral("127.0.0.1:%1").arg(m_port); }

    int m_port = freePort();
    QProcess m_rigctld;
    QProcess m_recstation;
};

template <typename Value = values::ValueNumeric<double>>
double numberOf(const std::string& text)
{
    Value number;
    EXPECT_TRUE(number.ApplyRecordedState(text, 0, false)) << text;
    return number.GetValue();
}

QString modeOf(const std::string& text)
{
    values::ValueSelection selection;
    EXPECT_TRUE(selection.ApplyRecordedState(text, 0, false)) << text;
    return selection.GetText();
}

std::pair<double, double> headerRange(const std::string& path)
{
    QProcess info;
    info.start(RECTOOL, {"info", "--json", QString::fromStdString(path)});
    EXPECT_TRUE(info.waitForFinished(TestSupport::PatienceMs));
    const auto header = nlohmann::json::parse(info.readAllStandardOutput().toStdString())["files"][0]["header"];
    return {header.at("startFrequencyHz"), header.at("stopFrequencyHz")};
}

TEST_F(RigTest, WhatRigctlSetsIsRecordedAsRigctlTellsIt)
{
    startReceiver();
    record("FREQUENCY");
    std::vector<double> frequencies;
    QStringList told;
    for (const auto& [hertz, mode, width] :
         {std::tuple{"7100000", "USB", "2400"}, {"145500000", "FM", "15000"}, {"98300000", "WFM", "230000"}}) {
        static_cast<void>(ask({"F", QLatin1String(hertz)}));
        static_cast<void>(ask({"M", QLatin1String(mode), QLatin1String(width)}));
        frequencies.push_back(ask({"f"}).value(0).toDouble());
        told = ask({"m"});
        awaitRecord(told.value(0));
        awaitRecord(QLatin1String(hertz));
        awaitRecord(told.value(1));
    }
    const Result result = stop();
    EXPECT_EQ(result.exitCode, 0) << result.messages;
    const RecordedFile file = readRecordedFile(result.path("receiver"));
    std::vector<double> recorded;
    for (const std::string& text : file.texts(Code::Frequency)) {
        recorded.push_back(numberOf<values::ValueNumericWithOffset<double>>(text));
    }
    ASSERT_GE(recorded.size(), 3U);
    EXPECT_EQ(std::vector<double>(recorded.end() - 3, recorded.end()), frequencies);
    EXPECT_EQ(modeOf(file.texts(Code::Modulation).front()), "UNKNOWN") << "until the receiver told it";
    EXPECT_EQ(modeOf(file.texts(Code::Modulation).back()), told.value(0));
    EXPECT_EQ(numberOf(file.texts(Code::Bandwidth).back()), told.value(1).toDouble());
    EXPECT_EQ(headerRange(result.path("receiver")), std::pair(7.1e6, 145.5e6)) << "all that it was tuned to";
}

TEST_F(RigTest, StrengthsAreDecibelsOverS9AndDbmOnlyWhenS9IsTold)
{
    startReceiver();
    for (const double s9 : {0.0, -73.0}) {
        record("LEVEL       -", s9 == 0 ? QStringList() : QStringList{"--s9", "-73dBm"});
        const Result result = stop();
        for (const std::string& text : readRecordedFile(result.path("receiver")).texts(Code::Level)) {
            const double level = numberOf(text);  // the dummy's goes up and down around -54 to 30 dB over S9
            EXPECT_TRUE(std::isnan(level) || (level - s9 > -80 && level - s9 < 60)) << level;
            EXPECT_TRUE(std::isnan(level) || level == std::floor(level));
        }
        ASSERT_TRUE(QFile::remove(QString::fromStdString(result.path("receiver"))));
    }
}

TEST_F(RigTest, AReceiverThatIsKilledLeavesAGapAndIsRecordedAgainWhenItIsBack)
{
    startReceiver();
    record("LEVEL       -");
    m_rigctld.kill();
    m_rigctld.waitForFinished();
    awaitMessage(m_recstation, "trying again");
    startReceiver();
    awaitMessage(m_recstation, "connected again");
    const Result result = stop();
    EXPECT_EQ(result.exitCode, 0) << result.messages;
    EXPECT_EQ(result.summary["sources"][0]["reconnects"], 1);
    const RecordedFile file = readRecordedFile(result.path("receiver"));
    const auto modes = file.texts(Code::Modulation);
    EXPECT_EQ(std::count_if(modes.begin(), modes.end(), [](const auto& text) { return modeOf(text) == "UNKNOWN"; }), 2)
        << "at the start, and in the gap";
    EXPECT_THAT(file.texts(Code::Frequency), SizeIs(2)) << "unknown at the start, and told once: in the gap it stays";
}

TEST_F(RigTest, ARigctldInVfoModeIsUnderstood)
{
    startReceiver({"-o"});
    record("145000000");
    const Result result = stop();
    EXPECT_EQ(result.exitCode, 0) << result.messages;
    EXPECT_EQ(result.summary["sources"][0]["lost"], 0) << result.messages;
}

// The example of Hamlib's README.multicast, shortened, with a level of its own in the first cell.
QByteArray packet(int seq, int firstLevel)
{
    return QStringLiteral(
               R"({"app": "Hamlib", "version": "4.5", "seq": %1, "crc": 0, "rig": {"id": "rig_id", "name": "IC-7300"},
"vfos": [{"name": "VFOA", "freq": 3718000, "mode": "LSB", "width": 3000}],
"spectra": [{"id": 0, "name": "Main", "type": "CENTER", "minLevel": 0, "maxLevel": 160, "minStrength": -80,
"maxStrength": 0, "centerFreq": 3718000, "span": 50000, "lowFreq": 3693000, "highFreq": 3743000, "length": 5,
"data": "%2"}]})")
        .arg(seq)
        .arg(QString::number(firstLevel, 16) + "141D1BA0")
        .toLatin1();
}

TEST_F(RigTest, SpectraInPacketsAreRecordedAndMissingOnesCounted)
{
    startReceiver();
    const int group = freePort(SOCK_DGRAM);
    record("145000000", {QStringLiteral("--multicast=127.0.0.1:%1").arg(group)});  // it listens
    const int sender = ::socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    to.sin_port = htons(static_cast<std::uint16_t>(group));
    const auto send = [&](const QByteArray& bytes) {
        ::sendto(sender, bytes.constData(), static_cast<std::size_t>(bytes.size()), 0,
                 reinterpret_cast<const sockaddr*>(&to), sizeof(to));
    };
    send("rubbish");
    send(packet(109, 0x12));
    send(packet(113, 0x50));
    ::close(sender);
    awaitRecord("3743000");
    awaitRecord("min -70");
    const Result result = stop();
    EXPECT_EQ(result.exitCode, 0) << result.messages;
    EXPECT_EQ(result.summary["sources"][0]["lost"], 4) << "three missing, one of rubbish";
    std::vector<std::vector<float>> spectra;
    for (const auto& spectrum : readRecordedFile(result.path("receiver")).spectra(Code::RfSpectrum)) {
        spectra.push_back(spectrum.cells);
    }
    // Of the scope, which nobody knew at the start.
    EXPECT_EQ(headerRange(result.path("receiver")), std::pair(3693000.0, 3743000.0));
    EXPECT_THAT(spectra, ElementsAre(ElementsAre(-71, -70, -65.5, -66.5, 0), ElementsAre(-40, -70, -65.5, -66.5, 0)));
}

// Its recording begins with this machine's time, and not in 1970.
TEST_F(RigTest, OfAPeerThatIsNotThereTheRecordingIsOfNowAndTheRunSaysThatNothingCame)
{
    start(m_recstation, {"-o", ".", "--duration", "300ms", "--source-time", "rig", address()});
    const auto now = static_cast<unsigned long long>(QDateTime::currentMSecsSinceEpoch()) * 1000;
    const Result result = finish(m_recstation);
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.summary["failure"], "nothing was measured: no source gave anything");
    EXPECT_THAT(result.messages, HasSubstr("nothing ever came from " + address().toStdString() + ": cannot connect"));
    const RecordedFile file = readRecordedFile(result.path("receiver"));
    EXPECT_LT(now - 10'000'000, file.startUs);
    EXPECT_LT(file.startUs, now + 60'000'000);
}

TEST_F(RigTest, OfTwoPeersOneThatNeverCameIsToldAndCounts)
{
    startReceiver();
    record("145000000", {"gpsd", QStringLiteral("127.0.0.1:%1").arg(freePort())});
    const Result result = stop();
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_TRUE(result.summary["sources"][0].contains("missing")) << "gpsd";
    EXPECT_FALSE(result.summary["sources"][1].contains("missing"));
}

// Each record has a millisecond of its own: too many at a time would have those that the next ones happen in.
TEST_F(RigTest, AFloodOfRecordsDoesNotMoveTheTimesOfARecording)
{
    startReceiver();
    record("145000000", {"--record", "receiver", "feed"});
    QByteArray lines;
    for (int i = 1; i <= 3000; ++i) {
        lines += QStringLiteral("{\"at\": 0, \"path\": \"/LEVEL\", \"set\": %1}\n").arg(i).toLatin1();
    }
    pipeIn(lines);
    awaitRecord("LEVEL       3000");
    const Result result = stop();
    EXPECT_LE(readRecordedFile(result.path("receiver")).records.back().timeMs,
              result.summary["recordedMs"].get<unsigned long long>() + 200);
}

// A pipe that floods beside a receiver that is asked every 10 ms.
TEST_F(RigTest, AFloodFromAPipeDoesNotKeepTheReceiverFromBeingRecorded)
{
    startReceiver();
    start(m_recstation, {"-o", ".", "--record", "receiver", "rig", address(), "--interval", "10ms", "feed"});
    const QByteArray line = R"({"at": 0, "path": "/FLOOD", "create": "number", "value": 1})";
    QByteArray lines = line + "\n";
    for (int i = 0; i < 100'000; ++i) {
        lines += i % 2 == 0 ? "{\"at\": 0, \"path\": \"/FLOOD\", \"set\": 2}\n" : "rubbish\n";
    }
    pipeIn(lines);
    awaitRecord("145000000");
    const Result result = stop();
    ASSERT_THAT(result.summary["sources"], SizeIs(2));
    const auto& rig = result.summary["sources"][1];
    EXPECT_EQ(rig["name"], "rig");
    // Three answers every 10 ms, less the time of asking; a flood that held it back would leave it a handful of all.
    EXPECT_GT(rig["used"].get<double>() * 1000 / result.summary["recordedMs"].get<double>(), 5) << result.messages;
}

}  // namespace
