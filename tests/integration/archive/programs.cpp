// Writes a configuration with an archive, runs the programs, and finds what was stored.
#include "programs.h"

#include <QProcessEnvironment>

namespace ArchiveTests {

void ArchivePrograms::SetUp()
{
    TestSupport::requireApplication();
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
    TestSupport::writeBytes(config(), text.toUtf8());
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
    EXPECT_TRUE(process.waitForStarted(TestSupport::PatienceMs));
    process.write(input);
    return {TestSupport::finish(process)};
}

Result ArchivePrograms::recstation(const QStringList& arguments, const QByteArray& input) const
{
    return run(RECSTATION, QStringList{"--config", config(), "--json"} + arguments, input);
}

Result ArchivePrograms::simulate() const
{
    return recstation({"sim", "--duration", "5s"});
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
    return run(RECTOOL, arguments + QStringList{"--archive-config", config()}, {});
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
