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

namespace recstation {
namespace {

using testing::AllOf;
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

TEST_F(ConfigurationTest, AJournalThatThereIsNotIsRefused)
{
    EXPECT_EQ(problemOf("[a]\nJournal='off'\n"), "no problem");
    EXPECT_THAT(problemOf("[a]\nJournal='paper'\n"), AllOf(HasSubstr("\"a\""), HasSubstr("found \"paper\"")));
    EXPECT_THAT(problemOf("[a]\nJournal=1\n"), HasSubstr("test.toml:2"));
}

TEST_F(ConfigurationTest, InstancesMustNotShareAValuePath)
{
    EXPECT_THAT(problemOf("[a]\nValuePath='/X'\nStatusValuePath='/A'\n[b]\nValuePath='/X'\nStatusValuePath='/B'\n"),
                AllOf(HasSubstr("test.toml"), HasSubstr("\"a\" and \"b\""), HasSubstr("ValuePath \"/X\"")));
}

TEST_F(ConfigurationTest, InstancesMustNotShareAStatusPathNotEvenByDefault)
{
    EXPECT_THAT(problemOf("[a]\nValuePath='/A'\n[b]\nValuePath='/B'\n"),
                HasSubstr("share the StatusValuePath \"/DEVICES/RECSTATUS\""));
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

TEST_F(ConfigurationTest, EveryKeyOfAWrongTypeIsReportedWithFileLineAndKey)
{
    const std::vector<std::pair<std::string, std::string>> wrong = {
        {"ValuePath", "1"},         {"StatusValuePath", "true"},
        {"RecordingPath", "[]"},    {"RecFileNameFormat83", "1"},
        {"MaxFileLength", "'1'"},   {"FileExpandingSize", "1.5"},
        {"DiskExpandingSize", "1"}, {"RecordingNameLocalTime", "'no'"},
        {"RecordDF", "1"},          {"Values", "1"}};
    for (const auto& [key, value] : wrong) {
        const std::string text = "[a]\n\n" + key + " = " + value + "\n";
        EXPECT_THAT(problemOf(text.c_str()), AllOf(HasSubstr("test.toml:3"), HasSubstr(key))) << text;
    }
}

TEST_F(ConfigurationTest, AValuePathOfAKeywordMustBeAText)
{
    EXPECT_THAT(problemOf("[a]\n[a.Values]\nLEVEL = 5\n"), AllOf(HasSubstr("test.toml:3"), HasSubstr("LEVEL")));
}

TEST_F(ConfigurationTest, AnUnknownKeyIsAWarningOnly)
{
    const auto configuration = load("[a]\nRecordingPaht = '/tmp'\n");
    ASSERT_EQ(configuration.warnings.size(), 1);
    EXPECT_THAT(configuration.warnings.first().toStdString(), AllOf(HasSubstr("RecordingPaht"), HasSubstr("\"a\"")));
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

TEST_F(ConfigurationTest, AFileWithoutRecordersIsRefused)
{
    EXPECT_THAT(problemOf("ValuePath = '/A'\n"), HasSubstr("no recorder is configured"));
}

TEST_F(ConfigurationTest, ASyntaxErrorIsReportedWithFileAndLine)
{
    EXPECT_THAT(problemOf("[a]\nValuePath = \n"), HasSubstr("test.toml:2"));
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
}  // namespace recstation
