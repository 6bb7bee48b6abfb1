// A real gpsd: what gpsfake plays through it, and what becomes of a recording when it is killed.
#include <csignal>

#include <sys/types.h>

#include <QStandardPaths>

#include "gpsdprogramtest.h"

namespace {

using nlohmann::json;

// Debian has gpsd where only root looks.
QProcessEnvironment withGpsd()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("PATH", environment.value("PATH") + ":/usr/sbin");
    return environment;
}

bool isInstalled(const char* program)
{
    const QString name = QString::fromLatin1(program);
    return !QStandardPaths::findExecutable(name).isEmpty() ||
           !QStandardPaths::findExecutable(name, {"/usr/sbin"}).isEmpty();
}

// A process that takes all it started with it.
class Group {
public:
    ~Group() { end(); }
    void start(const QStringList& command)
    {
        process.setProcessEnvironment(withGpsd());
        process.start("setsid", command);
        ASSERT_TRUE(process.waitForStarted(PatienceMs));
    }
    void end()
    {
        if (process.state() != QProcess::NotRunning) {
            ::kill(-static_cast<pid_t>(process.processId()), SIGKILL);
            process.waitForFinished(PatienceMs);
        }
    }

    QProcess process;
};

// What a report says of a number, as gpsd prints it; "nan" where it says that it is not known.
std::string said(const json& report, const char* key, int digits)
{
    if (report.contains(key)) {
        return QString::number(report.at(key).get<double>(), 'f', digits).toStdString();
    }
    const int mode = report.value("mode", 0);
    const bool unknown = mode == 1 || (mode == 2 && std::string(key) == "altMSL");
    return unknown ? "nan" : "";
}

// Changes of one number in what gpspipe printed; the same again is none.
std::vector<std::string> printed(const std::string& lines, const char* kind, const char* key, int digits)
{
    std::vector<std::string> out;
    std::size_t begin = 0;
    for (std::size_t end = lines.find('\n'); end != std::string::npos; end = lines.find('\n', begin)) {
        const json report = json::parse(lines.substr(begin, end - begin), nullptr, false);
        begin = end + 1;
        if (report.is_object() && report.value("class", "") == kind) {
            const std::string number = said(report, key, digits);
            if (!number.empty() && (out.empty() || out.back() != number)) {
                out.push_back(number);
            }
        }
    }
    return out;
}

// gpspipe began later and may have missed what came last: all between was recorded, and nothing else between.
void expectWithin(const std::vector<std::string>& recorded, const std::vector<std::string>& expected, std::size_t least)
{
    ASSERT_GE(expected.size(), least + 2);
    const std::vector<std::string> inner(std::next(expected.begin()), std::prev(expected.end()));
    EXPECT_NE(std::search(recorded.begin(), recorded.end(), inner.begin(), inner.end()), recorded.end())
        << testing::PrintToString(recorded) << "\n"
        << testing::PrintToString(expected);
}

class GpsdProgram : public GpsdProgramTest {
protected:
    void SetUp() override
    {
        for (const char* program : {"gpsd", "gpsfake", "gpspipe", "setsid"}) {
            if (!isInstalled(program)) {
                GTEST_SKIP() << "no real gpsd: " << program << " is not installed";
            }
        }
    }

    // Plays a log again and again through gpsd, records it, and lets gpspipe print it.
    RecordedFile play(const QString& log, const std::string& kind, int enough)
    {
        const QString port = QString::number(freePort());
        Group fake;
        fake.start({"gpsfake", "-q", "-c", "0.02", "-P", port, log});
        startProgram(port.toUShort());
        EXPECT_TRUE(awaitMessage(" come from ")) << messages();
        Group pipe;
        pipe.process.setStandardErrorFile(QProcess::nullDevice());
        pipe.start({"gpspipe", "-w", QStringLiteral("127.0.0.1:") + port});
        QByteArray lines;
        while (lines.count(QByteArray::fromStdString(kind)) < enough && pipe.process.waitForReadyRead(PatienceMs)) {
            lines += pipe.process.readAllStandardOutput();
        }
        fake.end();
        EXPECT_TRUE(awaitMessage("connection lost")) << messages();
        pipe.process.waitForFinished(PatienceMs);
        m_printed = (lines + pipe.process.readAllStandardOutput()).toStdString();
        const Result result = stopProgram();
        EXPECT_EQ(result.exitCode, 0) << result.messages;
        EXPECT_EQ(result.summary.at("sources")[0].at("lost"), 0);
        return recordingOf(result);
    }

    std::string m_printed;
};

TEST_F(GpsdProgram, PositionsAreThoseThatGpspipePrints)
{
    if (realData("gpsd/humminbird-M37.log").isEmpty()) {
        GTEST_SKIP() << "no real log: gpsd/humminbird-M37.log is missing";
    }
    const RecordedFile file = play(realData("gpsd/humminbird-M37.log"), "TPV", 40);
    expectWithin(file.changes(Code::Latitude, 9), printed(m_printed, "TPV", "lat", 9), 5);
    expectWithin(file.changes(Code::Longitude, 9), printed(m_printed, "TPV", "lon", 9), 5);
    expectWithin(file.changes(Code::Speed, 3), printed(m_printed, "TPV", "speed", 3), 5);
    expectWithin(file.changes(Code::Altitude, 4), printed(m_printed, "TPV", "altMSL", 4), 2);
}

// A real log of headings, with pitches and rolls of the test between them.
QByteArray withAttitudes(const QString& log)
{
    constexpr int lines = 40;  // the last of them, which have a fix
    QList<QByteArray> sentences = TestSupport::readBytes(log).trimmed().split('\n');
    QByteArray out;
    int count = 0;
    for (const QByteArray& sentence : sentences.mid(sentences.size() - lines)) {
        out += sentence.trimmed() + "\r\n";
        if (sentence.startsWith("$GPHDT")) {
            const QByteArray number = QByteArray::number(++count);
            const QByteArray body = "PTNTHTM,274,N,-" + number + ",N,1." + number + ",N,2.2,N,23,N";
            unsigned sum = 0;
            for (const char c : body) {
                sum ^= static_cast<unsigned char>(c);
            }
            out += '$' + body + '*' + QByteArray::number(sum + 256, 16).right(2).toUpper() + "\r\n";
        }
    }
    return out;
}

TEST_F(GpsdProgram, AttitudesAreThoseThatGpspipePrints)
{
    const QString log = realData("gpsd/hemi.log");
    if (log.isEmpty()) {
        GTEST_SKIP() << "no real log: gpsd/hemi.log is missing";
    }
    const RecordedFile file = play(write("hemi.log", withAttitudes(log)), "ATT", 40);
    expectWithin(file.changes(Code::TrueHeading, 3), printed(m_printed, "ATT", "heading", 3), 5);
    expectWithin(file.changes(Code::Pitch, 3), printed(m_printed, "ATT", "pitch", 3), 5);
    expectWithin(file.changes(Code::Roll, 3), printed(m_printed, "ATT", "roll", 3), 5);
}

TEST_F(GpsdProgram, KillingItLeavesAGapThatIsToldOnce)
{
    Peer receiver;  // sends sentences to gpsd
    const std::uint16_t port = freePort();
    const QString command = QStringLiteral("gpsd -N -n -b -S %1 tcp://127.0.0.1:%2").arg(port).arg(receiver.port());
    startProgram(port);
    ASSERT_TRUE(awaitMessage("trying again")) << messages();
    const auto serve = [&](Group& gpsd, const char* sentence, int times) {
        gpsd.start(command.split(QLatin1Char(' ')));
        ASSERT_TRUE(receiver.accept());
        ASSERT_TRUE(awaitMessage("positions come from", times, [&] { receiver.send(sentence); })) << messages();
        gpsd.end();
        ASSERT_TRUE(awaitMessage("connection lost", times)) << messages();
    };
    Group first;
    serve(first, "$GPRMC,080000,A,5230.0000,N,01330.0000,E,10.0,90.0,211126,,,A*72\r\n", 1);
    Group second;
    serve(second, "$GPRMC,080001,A,5231.0000,N,01330.0000,E,10.0,90.0,211126,,,A*72\r\n", 2);
    const Result result = stopProgram();
    auto latitudes = recordingOf(result).changes(Code::Latitude, 9);
    if (latitudes.size() > 3) {  // the end may come before the second gap
        latitudes.pop_back();
    }
    EXPECT_THAT(latitudes, testing::ElementsAre("52.500000000", "nan", "52.516666667"));
    EXPECT_EQ(result.summary.at("sources")[0].at("reconnects"), 1);
}

}  // namespace
