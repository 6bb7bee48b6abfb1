// What a host's configuration promises: instances, keys, types, and errors with file and line.
#include <functional>
#include <memory>
#include <string>

#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <startup/cfgcenter.h>
#include <vkbase/vkexception.h>

using namespace testing;

namespace {

using CfgPtr = std::unique_ptr<ICfg>;

const QString FileName = QStringLiteral("station.toml");

QString S(const char* text)
{
    return QString::fromUtf8(text);
}

CfgPtr Open(const char* name, const char* section = "")
{
    return CfgPtr(CfgCenter::CreateCfg(S(name), CfgCenter::View::Instance, S(section)));
}

std::string MessageOf(const std::function<void()>& action)
{
    try {
        action();
    } catch (const VKException& exception) {
        return exception.what();
    }
    return "nothing was thrown";
}

class CfgCenterContract : public testing::Test {
protected:
    void TearDown() override { CfgCenter::Clear(); }

    static void Load(const char* text) { CfgCenter::LoadText(S(text), FileName); }
};

}  // namespace

TEST_F(CfgCenterContract, HasNoInstancesBeforeAFileIsLoaded)
{
    EXPECT_EQ(Open("Recorder1"), nullptr);
    EXPECT_TRUE(CfgCenter::InstanceNames().isEmpty());
}

TEST_F(CfgCenterContract, ReadsStringsIntegersAndBooleans)
{
    Load("[Recorder1]\nValuePath = \"/Devices/N\u00fcrnberg\"\nMaxFileLength = -5\nRecFileNameFormat83 = true\n");
    const CfgPtr cfg = Open("Recorder1");
    ASSERT_NE(cfg, nullptr);
    EXPECT_EQ(cfg->ReadString(S("ValuePath"), S("default")), S("/Devices/N\u00fcrnberg"));
    EXPECT_EQ(cfg->ReadInteger(S("MaxFileLength"), 1), -5);
    EXPECT_TRUE(cfg->ReadBoolean(S("RecFileNameFormat83"), false));
}

TEST_F(CfgCenterContract, GivesTheDefaultForAMissingKey)
{
    Load("[Recorder1]\nvaluepath = \"keys are case-sensitive\"\n");
    const CfgPtr cfg = Open("Recorder1");
    EXPECT_EQ(cfg->ReadString(S("ValuePath"), S("default")), S("default"));
    EXPECT_EQ(cfg->ReadInteger(S("MaxFileLength"), 10'000'000), 10'000'000);
    EXPECT_TRUE(cfg->ReadBoolean(S("RecFileNameFormat83"), true));
    EXPECT_EQ(CfgPtr(cfg->OpenSection(S("Values"), CfgCenter::View::Instance)), nullptr);
}

TEST_F(CfgCenterContract, TellsAnEmptyTextFromAMissingKey)
{
    Load("[Recorder1]\nStatusValuePath = \"\"\n");
    EXPECT_EQ(Open("Recorder1")->ReadString(S("StatusValuePath"), S("default")), QString());
}

TEST_F(CfgCenterContract, GivesNullForAnUnknownInstanceOrSection)
{
    Load("[Recorder1]\n");
    EXPECT_EQ(Open("Recorder2"), nullptr);
    EXPECT_EQ(Open("recorder1"), nullptr);
    EXPECT_EQ(Open("Recorder1", "Values"), nullptr);
}

TEST_F(CfgCenterContract, ReportsAWrongTypeWithFileLineAndKey)
{
    Load("[Recorder1]\nMaxFileLength = \"many\"\nValuePath = 5\nFlag = 1.5\nValues = []\n");
    const CfgPtr cfg = Open("Recorder1");
    EXPECT_EQ(MessageOf([&] { (void)cfg->ReadInteger(S("MaxFileLength"), 0); }),
              "station.toml:2: key \"MaxFileLength\": expected an integer, found a string");
    EXPECT_EQ(MessageOf([&] { (void)cfg->ReadString(S("ValuePath"), QString()); }),
              "station.toml:3: key \"ValuePath\": expected a string, found an integer");
    EXPECT_EQ(MessageOf([&] { (void)cfg->ReadBoolean(S("Flag"), false); }),
              "station.toml:4: key \"Flag\": expected a boolean, found a floating-point number");
    EXPECT_EQ(MessageOf([&] { delete cfg->OpenSection(S("Values"), CfgCenter::View::Instance); }),
              "station.toml:5: key \"Values\": expected a table, found an array");
}

TEST_F(CfgCenterContract, ReportsAnInstanceThatIsNoTable)
{
    Load("speed = 2024-01-01\n[Recorder1]\n");
    EXPECT_EQ(MessageOf([] { (void)Open("speed"); }), "station.toml:1: key \"speed\": expected a table, found a date");
}

TEST_F(CfgCenterContract, ReportsIntegersOutsideThirtyTwoBits)
{
    Load("[R]\nLow = -2147483648\nHigh = 2147483647\nTooHigh = 2147483648\nTooLow = -2147483649\n");
    const CfgPtr cfg = Open("R");
    EXPECT_EQ(cfg->ReadInteger(S("Low"), 0), -2147483647 - 1);
    EXPECT_EQ(cfg->ReadInteger(S("High"), 0), 2147483647);
    EXPECT_EQ(MessageOf([&] { (void)cfg->ReadInteger(S("TooHigh"), 0); }),
              "station.toml:4: key \"TooHigh\": expected an integer of 32 bits, found 2147483648");
    EXPECT_THAT(MessageOf([&] { (void)cfg->ReadInteger(S("TooLow"), 0); }), HasSubstr(":5: "));
}

TEST_F(CfgCenterContract, GivesKeysInFileOrder)
{
    Load("[R]\nzulu = 1\nAlpha = 2\nmike = 3\n[R.Values]\nRFSPECTRUM = \"/b\"\nLEVEL = \"/a\"\n");
    const auto keysOf = [](const CfgPtr& cfg) {
        QStringList keys;
        for (int number = 0; !cfg->KeyName(number).isEmpty(); ++number) {
            keys << cfg->KeyName(number);
        }
        return keys;
    };
    const CfgPtr cfg = Open("R");
    EXPECT_EQ(keysOf(cfg), (QStringList{S("zulu"), S("Alpha"), S("mike"), S("Values")}));
    EXPECT_TRUE(cfg->KeyName(-1).isEmpty());
    const CfgPtr values(cfg->OpenSection(S("Values"), CfgCenter::View::Instance));
    ASSERT_NE(values, nullptr);
    EXPECT_EQ(keysOf(values), (QStringList{S("RFSPECTRUM"), S("LEVEL")}));
    EXPECT_EQ(values->ReadString(S("LEVEL"), QString()), S("/a"));
}

TEST_F(CfgCenterContract, GivesInstancesInFileOrderWithoutTheHostsOwnKeys)
{
    Load("speed = 2\ndirectory = \"/tmp\"\n[zulu]\n[alpha.Values]\n[\"mike 1\"]\n");
    EXPECT_EQ(CfgCenter::InstanceNames(), (QStringList{S("zulu"), S("alpha"), S("mike 1")}));
}

TEST_F(CfgCenterContract, OpensASubTableDirectly)
{
    Load("[R.Values]\nLEVEL = \"/a\"\n");
    const CfgPtr values = Open("R", "Values");
    ASSERT_NE(values, nullptr);
    EXPECT_EQ(values->KeyName(0), S("LEVEL"));
}

TEST_F(CfgCenterContract, GivesTheSameAnswersInEveryView)
{
    Load("[R]\nMaxFileLength = 7\n");
    for (const CfgCenter::View view : {CfgCenter::View::Default, CfgCenter::View::Machine, CfgCenter::View::Instance}) {
        const CfgPtr cfg(CfgCenter::CreateCfg(S("R"), view, QString()));
        EXPECT_EQ(cfg->ReadInteger(S("MaxFileLength"), 0), 7);
    }
}

TEST_F(CfgCenterContract, AnOpenTableStaysValidWhenAnotherFileIsLoaded)
{
    Load("[R]\nMaxFileLength = 7\n[R.Values]\nLEVEL = \"/a\"\n");
    const CfgPtr cfg = Open("R");
    CfgPtr values(cfg->OpenSection(S("Values"), CfgCenter::View::Instance));
    Load("[R]\nMaxFileLength = 8\n");
    EXPECT_EQ(cfg->ReadInteger(S("MaxFileLength"), 0), 7);
    EXPECT_EQ(values->ReadString(S("LEVEL"), QString()), S("/a"));
    EXPECT_EQ(Open("R")->ReadInteger(S("MaxFileLength"), 0), 8);
    CfgCenter::Clear();
    EXPECT_EQ(values->KeyName(0), S("LEVEL"));
}

TEST_F(CfgCenterContract, ReportsASyntaxErrorWithFileAndLineAndKeepsTheConfigurationBefore)
{
    Load("[R]\nMaxFileLength = 7\n");
    EXPECT_THAT(MessageOf([] { Load("[R]\n\nMaxFileLength = = 8\n"); }), StartsWith("station.toml:3: "));
    EXPECT_THAT(MessageOf([] { Load("[R]\nx = 1\nx = 2\n"); }), StartsWith("station.toml:3: "));
    EXPECT_EQ(Open("R")->ReadInteger(S("MaxFileLength"), 0), 7);
}

TEST_F(CfgCenterContract, ReportsWhatIsNoKeyWithFileAndLine)
{
    for (const char* name : {"[,a]", "[.a]", "[]", "[[,]]", "[=]", "\xfc = 1", "\xfc"}) {
        const QString text = QStringLiteral("[Receiver]\nA = 1\n%1\nB = 2\n").arg(QLatin1String(name));
        EXPECT_THAT(MessageOf([&] { CfgCenter::LoadText(text, FileName); }), StartsWith("station.toml:3: ")) << name;
    }
}

TEST_F(CfgCenterContract, ReadsAFile)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(S("N\u00fcrnberg.toml"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("[R]\r\nMaxFileLength = 7\r\nx = true\r\n");
    file.close();
    CfgCenter::LoadFile(path);
    const CfgPtr cfg = Open("R");
    EXPECT_EQ(cfg->ReadInteger(S("MaxFileLength"), 0), 7);
    EXPECT_EQ(MessageOf([&] { (void)cfg->ReadInteger(S("x"), 0); }),
              path.toStdString() + ":3: key \"x\": expected an integer, found a boolean");
}

TEST_F(CfgCenterContract, SaysInOneSentenceThatAFileCannotBeRead)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(S("missing.toml"));
    const std::string message = MessageOf([&] { CfgCenter::LoadFile(path); });
    EXPECT_THAT(message, StartsWith("The configuration file \"" + path.toStdString() + "\" cannot be read: "));
    EXPECT_THAT(message, AllOf(EndsWith("."), Not(EndsWith("..")), Not(EndsWith(" ."))));
    EXPECT_THAT(MessageOf([&] { CfgCenter::LoadFile(directory.path()); }), HasSubstr("cannot be read"));
}
