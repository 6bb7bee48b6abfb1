// recstation's configurations: the built-in one, files, and what is wrong in one with its line.
#include "configuration.h"

#include <memory>
#include <stdexcept>
#include <string>

#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <startup/cfgcenter.h>

namespace RecStation {
namespace {

using testing::HasSubstr;

class ConfigurationTest : public testing::Test {
protected:
    ~ConfigurationTest() override { CfgCenter::Clear(); }

    static Configuration load(const char* text)
    {
        return loadConfigurationText(QString::fromUtf8(text), QStringLiteral("test.toml"));
    }

    static std::string problemOf(const char* text)
    {
        try {
            static_cast<void>(load(text));
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "no problem";
    }
};

TEST_F(ConfigurationTest, TheBuiltInOneHasAReceiverAndADirectionFinder)
{
    const QString directory = QStringLiteral("/a \"quoted\"\\back\tslash");
    const auto configuration = loadConfigurationText(defaultConfigurationText(directory), QStringLiteral("built in"));
    ASSERT_EQ(configuration.instances.size(), 2U);
    const Instance& receiver = configuration.instances[0];
    EXPECT_EQ(receiver.name, QStringLiteral("receiver"));
    EXPECT_EQ(receiver.valuePath, QStringLiteral("/Devices/Rx1"));
    EXPECT_EQ(receiver.statusValuePath, QStringLiteral("/Devices/Rx1Status"));
    EXPECT_EQ(receiver.recordingPath, directory);
    EXPECT_FALSE(receiver.directionFinding);
    EXPECT_EQ(configuration.instances[1].name, QStringLiteral("df"));
    EXPECT_TRUE(configuration.instances[1].directionFinding);
    EXPECT_TRUE(configuration.warnings.isEmpty());
}

TEST_F(ConfigurationTest, TheBuiltInOneKeepsTheJournalThatIsAskedFor)
{
    static_cast<void>(loadConfigurationText(defaultConfigurationText(QStringLiteral("/r"), QStringLiteral("power")),
                                            QStringLiteral("built in")));
    for (const QString& name : CfgCenter::InstanceNames()) {
        const std::unique_ptr<ICfg> cfg(CfgCenter::CreateCfg(name, CfgCenter::View::Instance, QString()));
        EXPECT_EQ(cfg->ReadString(QStringLiteral("Journal"), QString()), QStringLiteral("power"));
    }
}

TEST_F(ConfigurationTest, TheRecordersFallbacksCountAsPaths)
{
    const auto one = load("[a]\n");
    EXPECT_EQ(one.instances[0].valuePath, QStringLiteral("/Devices/NoName_Driver"));
    const auto emptyStatus = load("[a]\nValuePath='/A'\nStatusValuePath=''\n");
    EXPECT_EQ(emptyStatus.instances[0].valuePath, QStringLiteral("/Devices/RecStatus"));
    EXPECT_THAT(problemOf("[a]\nStatusValuePath='/A'\n[b]\nStatusValuePath='/B'\n"),
                HasSubstr("share the ValuePath \"/Devices/NoName_Driver\""));
}

TEST_F(ConfigurationTest, TheTableOfTheArchiveIsNoRecorder)
{
    const Configuration configuration = load("[Rx]\n[archive]\nStorage = \"/storage\"\nUnknown = 7\n");
    EXPECT_EQ(configuration.instances.size(), 1U);
    EXPECT_TRUE(configuration.warnings.isEmpty());
    EXPECT_EQ(configuration.archiveFile, QStringLiteral("test.toml"));
    EXPECT_TRUE(load("[Rx]\n").archiveFile.isEmpty());
    EXPECT_THAT(problemOf("[archive]\nStorage = \"/storage\"\n"), HasSubstr("no recorder is configured"));
}

TEST_F(ConfigurationTest, AFileIsRead)
{
    const QTemporaryDir directory;
    QFile file(directory.filePath(QStringLiteral("station.toml")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("[a]\nValuePath = '/A'\nRecordDF = true\n");
    file.close();
    const auto configuration = loadConfigurationFile(file.fileName());
    EXPECT_TRUE(configuration.instances.at(0).directionFinding);
    EXPECT_THROW(static_cast<void>(loadConfigurationFile(directory.filePath(QStringLiteral("none")))),
                 std::runtime_error);
}

}  // namespace
}  // namespace RecStation
