// What a recorder reads of its configuration, and what it takes where nothing is said.
#include <startup/cfgcenter.h>
#include <vkbase/vkexception.h>

#include "recorder_fixture.h"

namespace RecorderTests {
namespace {

using namespace testing;

const char* const RecorderSource = "devicecontrol\\recording2\\recording";

#if defined(_WIN32)
constexpr bool Windows = true;
#else
constexpr bool Windows = false;
#endif

/// Where recordings go without a configured directory.
QString defaultDirectory()
{
    return Windows ? "c:\\temp" : QDir::tempPath();
}

class RecorderConfiguration : public RecorderTest {
protected:
    void load(const QString& toml) const { CfgCenter::LoadText(toml, "station.toml"); }
};

TEST_F(RecorderConfiguration, AnEmptyInstanceNameReadsNoConfiguration)
{
    makeRecorder(QString());
    EXPECT_EQ(Peer::configuration(recorder()).valuePath, "/Devices/NoName_Driver");
    EXPECT_EQ(Peer::configuration(recorder()).statusValuePath, "/Devices/RecStatus");
    EXPECT_EQ(keywords().size(), 48);
    EXPECT_EQ(Peer::configuration(recorder()).recordingPath, QDir::currentPath());
    EXPECT_EQ(Peer::configuration(recorder()).maxFileLength, 0);
    EXPECT_NE(station.tree.Find("/Devices/NoName_Driver/REC_STATUS"), nullptr);
    EXPECT_NE(station.tree.Find("/Devices/RecStatus/REC_FILENAME"), nullptr);
}

TEST_F(RecorderConfiguration, AnInstanceWithoutConfigurationGetsTheBuiltInDefaults)
{
    const TraceLog log;
    makeRecorder("Nobody");
    EXPECT_EQ(keywords().size(), 48);
    // Nothing gave a status path, and an empty one moves the value path.
    EXPECT_EQ(Peer::configuration(recorder()).valuePath, "/Devices/RecStatus");
    EXPECT_EQ(Peer::configuration(recorder()).statusValuePath, QString());
    EXPECT_EQ(Peer::configuration(recorder()).recordingPath, QDir::currentPath());
    EXPECT_EQ(log.lines().size(), 1U) << "nothing but the construction is traced";
}

TEST_F(RecorderConfiguration, AConfigurationWithoutKeysGivesTheDefaultsOfTheKeys)
{
    load("[Rx]\n");
    makeRecorder();
    EXPECT_EQ(Peer::configuration(recorder()).valuePath, "/Devices/NoName_Driver");
    EXPECT_EQ(Peer::configuration(recorder()).statusValuePath, "/DEVICES/RECSTATUS");
    EXPECT_EQ(Peer::configuration(recorder()).recordingPath, defaultDirectory());
    EXPECT_FALSE(Peer::configuration(recorder()).fileNameFormat83);
    EXPECT_EQ(Peer::configuration(recorder()).maxFileLength, 10'000'000);
    EXPECT_EQ(Peer::configuration(recorder()).fileExpandingSize, 9'000'000);
    EXPECT_EQ(Peer::configuration(recorder()).diskExpandingSize, 100'000'000);
}

TEST_F(RecorderConfiguration, EveryKeyIsRead)
{
    station.configure(
        "RecFileNameFormat83 = true\nMaxFileLength = 1\nFileExpandingSize = 2\nDiskExpandingSize = \"3\"");
    makeRecorder();
    EXPECT_EQ(Peer::configuration(recorder()).valuePath, "/Devices/Rx1");
    EXPECT_EQ(Peer::configuration(recorder()).statusValuePath, "/Status/Rx1");
    EXPECT_EQ(Peer::configuration(recorder()).recordingPath, station.directory());
    EXPECT_TRUE(Peer::configuration(recorder()).fileNameFormat83);
    EXPECT_EQ(Peer::configuration(recorder()).maxFileLength, 1);
    EXPECT_EQ(Peer::configuration(recorder()).fileExpandingSize, 2);
    EXPECT_EQ(Peer::configuration(recorder()).diskExpandingSize, 3);
}

TEST_F(RecorderConfiguration, AnEmptyStatusValuePathMovesTheValuePathAndStaysEmpty)
{
    load("[Rx]\nValuePath = \"/Devices/Rx1\"\nStatusValuePath = \"\"\n");
    makeRecorder();
    EXPECT_EQ(Peer::configuration(recorder()).valuePath, "/Devices/RecStatus");
    EXPECT_EQ(Peer::configuration(recorder()).statusValuePath, QString());
    for (const char* name : {"/REC_FILENAME", "/REC_FILEPATH", "/REC_FILEGUID", "/REC_FILENAMEFORMAT83", "/REC_HEADER",
                             "/REC_UNCFILEPATH", "/REC_ZELVOFILEPATH", "/REC_DF"}) {
        EXPECT_NE(station.tree.Find(name), nullptr) << name;
    }
    EXPECT_NE(station.tree.Find("/Devices/RecStatus/REC_LOADED"), nullptr);
    EXPECT_NE(station.tree.Find("/Devices/RecStatus/REC_STATUS"), nullptr);
}

TEST_F(RecorderConfiguration, AMissingRecordingDirectoryIsReplacedAndTracedWhereThatIsAskedFor)
{
    const QString missing = station.file("missing");
    load(QString("[Rx]\nRecordingPath = \"%1\"\n").arg(missing));
    {
        const TraceLog none(~ErrorHandler::RecordingTraces);
        makeRecorder();
        EXPECT_EQ(Peer::configuration(recorder()).recordingPath, defaultDirectory());
        EXPECT_THAT(none.lines(), IsEmpty());
    }
    const TraceLog log;
    makeRecorder();
    EXPECT_EQ(Peer::configuration(recorder()).recordingPath, defaultDirectory());
    const auto* line = log.find(QString("CRecording::Init() - Cannot find the <%1> directory, set it to <%2>")
                                    .arg(missing, defaultDirectory()));
    ASSERT_NE(line, nullptr);
    EXPECT_EQ(line->source, RecorderSource);
    EXPECT_EQ(line->line, 212);
}

TEST_F(RecorderConfiguration, AMissingDefaultDirectoryIsKept)
{
    const QString missing = station.file("no-temp");
    const Environment temporary("TMPDIR", missing.toUtf8());  // Windows has one default, there or not
    load("[Rx]\nRecordingPath = \"/no/such/directory\"\n");
    makeRecorder();
    EXPECT_EQ(Peer::configuration(recorder()).recordingPath, Windows ? defaultDirectory() : missing);
}

TEST_F(RecorderConfiguration, AnEmptyRecordingPathBecomesTheCurrentDirectory)
{
    load("[Rx]\nRecordingPath = \"\"\n");
    makeRecorder();
    EXPECT_EQ(Peer::configuration(recorder()).recordingPath, QDir::currentPath());
    makeRecorder(QString());
    EXPECT_EQ(Peer::configuration(recorder()).recordingPath, QDir::currentPath());
}

class DiskExpandingSize : public RecorderConfiguration,
                          public testing::WithParamInterface<std::pair<const char*, std::int64_t>> {};

TEST_P(DiskExpandingSize, IsTheLeadingNumberOfItsText)
{
    const auto& [text, expected] = GetParam();
    station.configure(QString("DiskExpandingSize = \"%1\"").arg(QString::fromLatin1(text)));
    makeRecorder();
    EXPECT_EQ(Peer::configuration(recorder()).diskExpandingSize, expected);
}

INSTANTIATE_TEST_SUITE_P(Texts, DiskExpandingSize,
                         testing::Values(std::pair{"123abc", 123}, std::pair{"abc", 0}, std::pair{"", 0},
                                         std::pair{"abc123", 0}, std::pair{" 42", 42}, std::pair{"-7x", -7},
                                         std::pair{"5000000000", 5'000'000'000}));

TEST_F(RecorderConfiguration, TheValuesSectionSuppressesTheBuiltInRowsUnlessItsValuesAreEmpty)
{
    makeRecorder();
    const QStringList builtIn = keywords();
    for (const auto& [values, expected] : std::vector<std::pair<const char*, QStringList>>{
             {"LEVEL = \"/LEVEL\"", {"LEVEL"}},
             {"LEVEL = \"\"\nAZIMUTH = \"/AZIMUTH\"", {"AZIMUTH"}},
             {"LEVEL = \"\"", builtIn},
             {"level = \"/LEVEL\"\nazimuth = \"Df/Azimuth\"", {"AZIMUTH", "LEVEL"}}}) {
        station.configure(QString(), values);
        makeRecorder();
        EXPECT_EQ(keywords(), expected) << values;
    }
    EXPECT_EQ(Peer::resolve(recorder(), "AZIMUTH", QString()), "/Devices/Rx1/Df/Azimuth");
    station.configure(QString(), "level = \"/First\"\nLEVEL = \"/Second\"");
    makeRecorder();
    EXPECT_EQ(Peer::resolve(recorder(), "LEVEL", QString()), "/Second") << "the later of two spellings";
}

TEST_F(RecorderConfiguration, AConfigurationThatIsReadAgainWithoutValuesLeavesThemAsTheyAreObserved)
{
    station.add<Number>("/LEVEL");
    station.configure(QString(), "LEVEL = \"/LEVEL\"");
    attachRecorder();
    station.configure(QString());
    recorder().Init();
    EXPECT_EQ(keywords(), QStringList("LEVEL"));
    EXPECT_EQ(Peer::keywords(recorder()).at("LEVEL").observed, station.tree.Find("/LEVEL"));
}

TEST_F(RecorderConfiguration, OneThatIsReadAgainWithValuesEndsObservingThoseBefore)
{
    auto& level = station.add<Number>("/LEVEL");
    station.configure(QString(), "LEVEL = \"/LEVEL\"");
    startRecorder();
    station.configure(QString(), "AZIMUTH = \"/AZIMUTH\"");
    recorder().Init();
    EXPECT_FALSE(level.IsObservedBy(&recorder()));
    EXPECT_FALSE(level.IsCommandRecording());
    level.SetValue(-40);
    recorder().StopRecording(false);
    EXPECT_THAT(changesIn(readBack(station.fileName())), IsEmpty());
}

TEST_F(RecorderConfiguration, OneThatIsReadAgainWithValuesForgetsTheSpectrumThatTheModeTookAway)
{
    station.addAllKeywords();
    const QString spectra = "RFSPECTRUM = \"/%1\"\nIFSPECTRUM = \"/IfMapping\"\nDRVCOMMANDS = \"Gen/DRVCOMMANDS\"";
    station.configure(QString(), spectra.arg("Before"));
    auto& mode = station.value<Selection>("/Devices/Rx1/Gen/DRVCOMMANDS");
    mode.SelectKey(23);
    startRecorder();
    station.switchOff();
    ASSERT_TRUE(hasInactiveKeyword("RFSPECTRUM"));
    mode.SelectKey(5);
    station.configure(QString(), spectra.arg("After"));
    recorder().Init();
    start();
    EXPECT_EQ(Peer::resolve(recorder(), "RFSPECTRUM", QString()), "/After");
}

TEST_F(RecorderConfiguration, WhatOneThatIsReadAgainDoesNotSayHasItsDefault)
{
    station.configure("Journal = \"off\"");
    makeRecorder();
    station.configure(QString());
    recorder().Init();
    start();
    EXPECT_EQ(station.files().filter(".journal").size(), 1);
}

TEST_F(RecorderConfiguration, TheValuesSectionNeverChangesTypeIds)
{
    station.configure(QString(), "NEWKEYWORD = \"/NEW\"\nLEVEL = \"/Other/Level\"");
    makeRecorder();
    EXPECT_EQ(Peer::typeIds(recorder()).size(), 48U);
    EXPECT_EQ(Peer::typeIds(recorder()).count("NEWKEYWORD"), 0U);
}

TEST_F(RecorderConfiguration, AWrongTypePassesOutWithFileLineAndKey)
{
    for (const auto& [toml, place, key] :
         {std::tuple{"[Rx]\nValuePath = \"/Devices/Rx1\"\nMaxFileLength = \"long\"\n", "station.toml:3",
                     "MaxFileLength"},
          std::tuple{"[Rx]\nValues = 1\n", "station.toml:2", "Values"},
          std::tuple{"[Rx]\nValuePath = \"/Devices/Rx1\"\n\n[Rx.Values]\nLEVEL = 5\n", "station.toml:5", "LEVEL"}}) {
        load(toml);
        try {
            makeRecorder();
            ADD_FAILURE() << "no exception: " << toml;
        } catch (const VKException& exception) {
            EXPECT_THAT(exception.what(), AllOf(HasSubstr(place), HasSubstr(key)));
        }
    }
}

}  // namespace
}  // namespace RecorderTests
