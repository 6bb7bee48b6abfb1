// recstation and rectool with an archive of a test's own.
#pragma once

#include <QProcessEnvironment>

#include <nlohmann/json.hpp>

#include <zelvo/archive.h>

#include "support/program.h"

namespace ArchiveTests {

struct Result : TestSupport::ProgramResult {
    [[nodiscard]] nlohmann::json json() const { return nlohmann::json::parse(out); }
};

/// A station with two recorders, an archive, and its storage; skips where the archive was not built.
class ArchivePrograms : public testing::Test {
protected:
    void SetUp() override
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

    /// Writes the configuration of recorders and archive. @param keys of the table [archive] besides the directories
    void configure(const QString& keys = QString()) const
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
    [[nodiscard]] QString path(const QString& name) const { return m_directory.filePath(name); }
    [[nodiscard]] QString config() const { return path("station.toml"); }
    /// In the recording directory.
    [[nodiscard]] QStringList recordings() const { return QDir(path("recordings")).entryList(QDir::Files, QDir::Name); }
    [[nodiscard]] Zelvo::ArchiveConfiguration configuration() const
    {
        return Zelvo::LoadArchiveConfiguration(config());
    }

    [[nodiscard]] Result recstation(const QStringList& arguments, const QByteArray& input = {}) const
    {
        return run(RECSTATION, QStringList{"--config", config(), "--json"} + arguments, input);
    }
    /// Simulates some seconds, which gives a recording of the receiver and one of the direction finder.
    [[nodiscard]] Result simulate() const { return recstation({"sim", "--duration", "5s"}); }
    /// The same where nothing else is tested. @return the addresses of the two
    [[nodiscard]] std::vector<std::string> recorded() const
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
    [[nodiscard]] Result rectool(const QStringList& arguments) const
    {
        return run(RECTOOL, arguments + QStringList{"--archive-config", config()}, {});
    }
    /// Of the file of an address.
    [[nodiscard]] Zelvo::FileInfo info(const std::string& address) const
    {
        const auto found = Zelvo::Archive(configuration()).file(Zelvo::ZelvoUrl(QString::fromStdString(address)));
        EXPECT_TRUE(found.has_value()) << address;
        return found.value_or(Zelvo::FileInfo());
    }
    [[nodiscard]] QString storedFile(const std::string& address) const
    {
        return QDir(path("storage")).filePath(info(address).storedPath);
    }

private:
    [[nodiscard]] Result run(const char* program, const QStringList& arguments, const QByteArray& input) const
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

    QTemporaryDir m_directory;
};

}  // namespace ArchiveTests
