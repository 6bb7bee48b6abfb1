// Several programs that record into one directory at the same moment, while somebody puts links in their way.
#include <QSysInfo>

#include <recording2/inspection/inspection.h>
#include <recording2/inspection/verify/verification.h>

#include "programtest.h"

namespace RecStation {
namespace {

namespace Inspection = Recording2::Inspection;

/// A number from the environment, for longer trials by hand.
int numberOf(const char* variable, int otherwise)
{
    const int number = qEnvironmentVariableIntValue(variable);
    return number > 0 ? number : otherwise;
}

class SharedDirectoryTest : public ProgramTest {
protected:
    SharedDirectoryTest()
    {
        QDir(m_directory.path()).mkdir("shared");
        TestSupport::writeBytes(victim(), "precious");
    }
    [[nodiscard]] QString victim() const { return path("victim"); }
    [[nodiscard]] QString shared(const QString& name) const { return path(QStringLiteral("shared/") + name); }

    /// One program's part: so many recordings, all of the same second as everybody else's.
    static QByteArray feed(int recordings)
    {
        QByteArray text = R"({"at": 0, "path": "/LEVEL", "create": "number", "value": -30})"
                          "\n";
        for (int i = 0; i < recordings; ++i) {
            const QByteArray on = QByteArray::number(20 * i);
            const QByteArray off = QByteArray::number(20 * i + 15);
            text += R"({"at": )" + on + R"(, "record": "On"})" + "\n" + R"({"at": )" + off +
                    R"(, "path": "/LEVEL", "set": )" + on + "}\n" + R"({"at": )" + off + R"(, "record": "Off"})" + "\n";
        }
        return text;
    }
    /// Links that lead to what nobody may write, under names that may come next.
    void plant(int number) const
    {
        const QString stem = shared("UNKNOWN__2026-01-02__03-04-05_UTC-00-00%1")
                                 .arg(number == 1 ? QString() : QStringLiteral("_%1").arg(number));
        static const QStringList endings = {".tmp", ".tmp.journal", ".rec"};
        // What Qt makes on Windows is no link but a file, which nobody would plant there.
        if (QSysInfo::productType() == QLatin1String("windows")) {
            return;
        }
        QFile::link(victim(), stem + endings[number % endings.size()]);
    }
    /// Starts all programs, plants links while they run, and looks at what each says that it made.
    void recordAtOnce(int programs, int recordings)
    {
        std::vector<std::unique_ptr<QProcess>> running;
        for (int i = 0; i < programs; ++i) {
            running.push_back(std::make_unique<QProcess>());
            start(*running.back(), {"-o", shared(QString()), "--json", "feed", "--start", "2026-01-02T03:04:05Z"});
        }
        for (const auto& process : running) {
            process->write(feed(recordings));
            process->closeWriteChannel();
        }
        for (const auto& process : running) {
            while (process->state() != QProcess::NotRunning && !process->waitForFinished(1)) {
                plant(++m_planted);
                ASSERT_LT(m_planted, 1'000'000);
            }
            takeSummary(finish(*process), recordings);
        }
    }
    void takeSummary(const Result& result, int recordings)
    {
        const nlohmann::json summary = result.summary();
        EXPECT_EQ(summary.at("files").size(), static_cast<std::size_t>(recordings)) << result.err;
        bool named = true;
        for (const nlohmann::json& file : summary.at("files")) {
            const auto path = file.at("path").get<std::string>();
            named = named && file.at("state") == "finished";
            if (file.at("state") == "missing") {  // another program, which began later, recovered it
                continue;
            }
            EXPECT_TRUE(m_files.insert(path).second) << path << " was made twice";
        }
        EXPECT_EQ(result.exitCode, named ? 0 : 3) << result.err;
    }
    /// What was closed without its name, since a link has that, and recovered by a program that began later.
    void takeRecovered()
    {
        const QDir directory(shared(QString()));
        for (const QFileInfo& file : directory.entryInfoList({"*.rec"}, QDir::Files | QDir::NoSymLinks)) {
            m_files.insert(file.absoluteFilePath().toStdString());
        }
    }
    /// Every recording is there, is no link, and holds what was recorded.
    void expectAllSound() const
    {
        for (const std::string& file : m_files) {
            EXPECT_FALSE(QFileInfo(QString::fromStdString(file)).isSymLink()) << file;
            const Inspection::Verification verified = Inspection::verify(file);
            EXPECT_EQ(verified.readability, Inspection::Readability::Ok) << file << ": " << verified.problem;
            EXPECT_EQ(verified.records, 2U) << file;
        }
        EXPECT_EQ(TestSupport::readBytes(victim()), QByteArray("precious"));
    }

    std::set<std::string> m_files;
    int m_planted = 0;
};

TEST_F(SharedDirectoryTest, NobodyReplacesOrLosesARecording)
{
    const int rounds = numberOf("RECSTATION_ROUNDS", 2);
    const int programs = numberOf("RECSTATION_PROGRAMS", 5);
    const int recordings = numberOf("RECSTATION_RECORDINGS", 6);
    for (int round = 0; round < rounds && !HasFatalFailure(); ++round) {
        recordAtOnce(programs, recordings);
    }
    takeRecovered();
    EXPECT_EQ(m_files.size(), static_cast<std::size_t>(rounds * programs * recordings));
    expectAllSound();
    RecordProperty("links planted", m_planted);
}

}  // namespace
}  // namespace RecStation
