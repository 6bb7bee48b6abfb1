// Writes a configuration with an archive, runs the programs, and finds what was stored.
#include "programs.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>

#include "../recstation/application.h"

namespace ArchiveTests {

namespace {

constexpr int PatienceMs = 60'000;

}  // namespace

void ArchivePrograms::SetUp()
{
    requireApplication();
    if (!Zelvo::ArchiveIsBuiltIn()) {
        GTEST_SKIP() << "this build has no archive";
    }
    for (const char* name : {"recordings", "storage"}) {
        ASSERT_TRUE(QDir(m_directory.path()).mkdir(QString::fromLatin1(name)));
    }
    configure();
}

void ArchivePrograms::configure(const QString& keys) const
{
    const QString text = QStringLiteral(R"([receiver]
ValuePath = "/Devices/Rx1"
StatusValuePath = "/Devices/Rx1Status"
RecordingPath = "%1"

[df]
ValuePath = "/Devices/Df1"
StatusValuePath = "/Devices/Df1Status"
RecordingPath = "%1"
RecordDF = true

[archive]
Directory = "%2"
Storage = "%3"
Station = "north"
%4
)")
                             .arg(path("recordings"), path("own"), path("storage"), keys);
    QFile file(config());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(text.toUtf8()), text.toUtf8().size());
}

QStringList ArchivePrograms::recordings() const
{
    return QDir(path("recordings")).entryList(QDir::Files, QDir::Name);
}

Zelvo::ArchiveConfiguration ArchivePrograms::configuration() const
{
    return Zelvo::LoadArchiveConfiguration(config());
}

Result ArchivePrograms::run(const char* program, const QStringList& arguments, const QByteArray& input) const
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove("ZELVO_CONFIG");
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(m_directory.path());
    process.start(QString::fromLocal8Bit(program), arguments);
    EXPECT_TRUE(process.waitForStarted(PatienceMs));
    process.write(input);
    process.closeWriteChannel();
    EXPECT_TRUE(process.waitForFinished(PatienceMs));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    return {process.exitCode(), process.readAllStandardOutput().toStdString(),
            process.readAllStandardError().toStdString()};
}

Result ArchivePrograms::recstation(const QStringList& arguments, const QByteArray& input) const
{
    return run(RECSTATION, QStringList{QStringLiteral("--config"), config(), QStringLiteral("--json")} + arguments,
               input);
}

Result ArchivePrograms::simulate() const
{
    return recstation({QStringLiteral("sim"), QStringLiteral("--duration"), QStringLiteral("5s")});
}

std::vector<std::string> ArchivePrograms::recorded() const
{
    std::vector<std::string> addresses;
    const Result result = simulate();
    EXPECT_EQ(result.exitCode, 0) << result.err;
    const nlohmann::json files = result.json().at("files");
    for (const auto& file : files) {
        EXPECT_EQ(file.at("state"), "archived") << result.out;
        addresses.push_back(file.at("address"));
    }
    EXPECT_EQ(addresses.size(), 2U);
    return addresses;
}

Result ArchivePrograms::rectool(const QStringList& arguments) const
{
    return run(RECTOOL, arguments + QStringList{QStringLiteral("--archive-config"), config()}, {});
}

Zelvo::FileInfo ArchivePrograms::info(const std::string& address) const
{
    const auto found = Zelvo::Archive(configuration()).file(Zelvo::ZelvoUrl(QString::fromStdString(address)));
    EXPECT_TRUE(found.has_value()) << address;
    return found.value_or(Zelvo::FileInfo());
}

QString ArchivePrograms::storedFile(const std::string& address) const
{
    return QDir(path("storage")).filePath(info(address).storedPath);
}

}  // namespace ArchiveTests
