// The record type table, the choice between the spectra, and what attaching takes from the tree.
#include "recorder_fixture.h"

namespace RecorderTests {
namespace {

struct Row {
    const char* keyword;
    const char* path;
    std::int32_t id;
};

constexpr Row Rows[]{{"RFSPECTRUM", "Scn/RfSpectrum", 1},
                     {"DRVCOMMANDS", "Gen/DRVCOMMANDS", 3},
                     {"SEARCHSCANMODE", "Scn/SEARCHSCANMODE", 4},
                     {"BANDWIDTH", "Mon/BANDWIDTH", 5},
                     {"MODULATION", "Mon/DEMODULATION", 6},
                     {"SQUELCHVALUE", "Mon/SquelchValue", 7},
                     {"SQUELCHSTATE", "Mon/SquelchState", 17},
                     {"ATTENUATION", "Mon/Attenuation", 8},
                     {"ANTENNA", "Mon/Antenna", 9},
                     {"FREQOFFSET", "Mon/FreqOffset", 10},
                     {"RFYLIMIT", "Mon/RFYLIMIT", 16},
                     {"STARTFREQ", "Scn/StartFreq", 11},
                     {"STOPFREQ", "Scn/StopFreq", 12},
                     {"STEPFREQ", "Scn/StepFreq", 13},
                     {"DEVICENAME", "Adm/DRIVERNAME", 18},
                     {"DEVICETYPE", "Adm/DEVICE_TYPE", 19},
                     {"DFSPECTRUM", "/DfSpectrum", 20},
                     {"AZIMUTHSTART", "/RFSTARTAZIMUTH", 21},
                     {"AZIMUTHSTOP", "/RFSTOPAZIMUTH", 22},
                     {"ELEVATIONSTART", "/RFSTARTELEVATION", 23},
                     {"ELEVATIONSTOP", "/RFSTOPELEVATION", 24},
                     {"STARTLEVEL", "Scn/StartLevel", 14},
                     {"STOPLEVEL", "Scn/StopLevel", 15},
                     {"LOCATIONLATITUDE", "/LOCATIONLATITUDE", 25},
                     {"LOCATIONLONGITUDE", "/LOCATIONLONGITUDE", 26},
                     {"RFAZIMUTHRULER", "/RFAZIMUTHRULER", 27},
                     {"RFELEVATIONRULER", "/RFELEVATIONRULER", 28},
                     {"IFSTARTLEVEL", "/IFSTARTLEVEL", 29},
                     {"IFSTOPLEVEL", "/IFSTOPLEVEL", 30},
                     {"IFLEVELTHRESHOLD", "/IFLEVELTHRESHOLD", 31},
                     {"IFSPAN", "/IFSPAN", 32},
                     {"DFBANDWIDTH", "/DFBANDWIDTH", 33},
                     {"AFBANDWIDTH", "/AFBANDWIDTH", 34},
                     {"AZIMUTH", "/AZIMUTH", 35},
                     {"LEVEL", "/LEVEL", 36},
                     {"FIELDSTRENGTH", "/FIELDSTRENGTH", 37},
                     {"ELEVATION", "/ELEVATION", 38},
                     {"QUALITY", "/QUALITY", 39},
                     {"OPERATEMODE", "/OPERATEMODE", 40},
                     {"IFSPECTRUM", "/IfMapping", 2},
                     {"TRUEHEADING", "/TRUEHEADING", 41},
                     {"ALTITUDE", "/ALTITUDE", 42},
                     {"VELOCITY", "/VELOCITY", 43},
                     {"PITCH", "/PITCH", 44},
                     {"ROLL", "/ROLL", 45},
                     {"FREQUENCY", "/FREQUENCY", 46},
                     {"DEVICE_CAPTION", "/DEVICE_CAPTION", 47},
                     {"DFSPECTRUMSAMPLE", "/DEVICE_CAPTION", 48}};

TEST(RecordTypeTable, HasIts48RowsInOrder)
{
    ASSERT_EQ(Recording2::RecordTypeTable.size(), std::size(Rows));
    for (std::size_t row = 0; row < std::size(Rows); ++row) {
        EXPECT_STREQ(Recording2::RecordTypeTable[row].keyword, Rows[row].keyword) << "row " << row;
        EXPECT_STREQ(Recording2::RecordTypeTable[row].defaultPath, Rows[row].path) << "row " << row;
        EXPECT_EQ(Recording2::RecordTypeTable[row].id, Rows[row].id) << "row " << row;
    }
}

class RecorderTypes : public RecorderTest {
protected:
    void setRecDf(bool on) const { station.value<Flag>("/Status/Rx1/REC_DF").SetValue(on); }
    void setAntennaMode(const char* mode) const
    {
        auto& selection = station.value<Selection>("/Devices/Rx1/AntennaMode");
        selection.AddItem(std::make_unique<values::SelectionItem>(mode, 0, 0).release());
        selection.Select(mode);
    }
    [[nodiscard]] bool shouldRecord(std::int32_t id) const { return Peer::shouldRecord(recorder(), id); }
};

TEST_F(RecorderTypes, EveryRowIsInTheKeywordMapAndTheTypeIdMap)
{
    makeRecorder();
    EXPECT_EQ(keywords().size(), 48);
    for (const Row& row : Rows) {
        const QString keyword = QString::fromLatin1(row.keyword);
        ASSERT_TRUE(hasKeyword(row.keyword)) << row.keyword;
        EXPECT_EQ(Peer::keywords(recorder()).at(keyword).valuePath, QString::fromLatin1(row.path));
        EXPECT_EQ(Peer::typeIds(recorder()).at(keyword), row.id);
    }
}

TEST_F(RecorderTypes, ARelativePathHangsUnderTheValuePathAlsoWhereItIsTheCallers)
{
    makeRecorder();
    EXPECT_EQ(Peer::resolve(recorder(), "DFSPECTRUMSAMPLE", QString()), "/DEVICE_CAPTION");
    station.configure(QString(), "AZIMUTH = \"Mon/Level\"\nLEVEL = \"/LEVEL\"");
    makeRecorder();
    EXPECT_EQ(Peer::resolve(recorder(), "AZIMUTH", QString()), "/Devices/Rx1/Mon/Level");
    EXPECT_EQ(Peer::resolve(recorder(), "LEVEL", QString()), "/LEVEL");
    EXPECT_EQ(Peer::resolve(recorder(), "DEVICENAME", "Adm/DRIVERNAME"), "/Devices/Rx1/Adm/DRIVERNAME");
    EXPECT_EQ(Peer::resolve(recorder(), "LEVEL", "Other"), "/LEVEL");
}

struct ModeCase {
    std::int32_t key;
    bool excludesIf;      // antenna mode other than "DF"
    bool excludesIfAtDf;  // antenna mode "DF"
    bool recordsRf;       // REC_DF off
    bool takesIfKeyword;  // the mode switch puts the IF spectrum in place of the RF spectrum
};

std::ostream& operator<<(std::ostream& out, const ModeCase& mode)
{
    return out << "mode " << mode.key;
}

// Three sets of modes that differ and are meant to.
constexpr ModeCase Modes[]{
    {0, true, true, true, false},       {3, false, false, false, true}, {5, true, true, true, false},
    {23, false, false, false, true},    {24, false, true, true, true},  {27, false, false, true, false},
    {42, false, false, false, true},    {43, true, true, true, false},  {-1, true, true, true, false},
    {100'000, true, true, true, false}, {2, true, true, true, false},   {35, true, true, true, false},
    {67, true, true, true, false},      {-29, true, true, true, false}, {74, true, true, true, false}};

class RecorderModes : public RecorderTypes, public testing::WithParamInterface<ModeCase> {
protected:
    void SetUp() override { Peer::modeKey(makeRecorder()) = GetParam().key; }
};

INSTANTIATE_TEST_SUITE_P(Keys, RecorderModes, testing::ValuesIn(Modes));

TEST_P(RecorderModes, DecideWhetherTheIfSpectrumIsExcluded)
{
    EXPECT_EQ(Peer::excludesIfSpectrum(recorder(), GetParam().key), GetParam().excludesIf);
    setAntennaMode("Monitoring");
    EXPECT_EQ(Peer::excludesIfSpectrum(recorder(), GetParam().key), GetParam().excludesIf);
    setAntennaMode("DF");
    EXPECT_EQ(Peer::excludesIfSpectrum(recorder(), GetParam().key), GetParam().excludesIfAtDf);
}

TEST_P(RecorderModes, ChooseBetweenTheSpectraWhileRecDfIsOff)
{
    EXPECT_EQ(shouldRecord(1), GetParam().recordsRf);
    EXPECT_EQ(shouldRecord(2), !GetParam().excludesIf);
    EXPECT_FALSE(shouldRecord(20));
    setAntennaMode("DF");
    EXPECT_EQ(shouldRecord(1), GetParam().recordsRf);
    EXPECT_EQ(shouldRecord(2), !GetParam().excludesIfAtDf);
}

TEST_P(RecorderModes, LeaveOnlyTheDfSpectrumWhileRecDfIsOn)
{
    setRecDf(true);
    EXPECT_FALSE(shouldRecord(1));
    EXPECT_FALSE(shouldRecord(2));
    EXPECT_TRUE(shouldRecord(20));
}

TEST_P(RecorderModes, RecordEveryTypeThatIsNoSpectrum)
{
    for (const bool recDf : {false, true}) {
        setRecDf(recDf);
        for (const std::int32_t id : {0, 3, 4, 16, 17, 19, 21, 32, 46, 47, 48, 49, -1}) {
            EXPECT_TRUE(shouldRecord(id)) << id;
        }
    }
}

TEST_P(RecorderModes, SwitchTheSpectrumKeywords)
{
    Peer::applyModeKeywords(recorder());
    EXPECT_EQ(hasKeyword("IFSPECTRUM"), GetParam().takesIfKeyword);
    EXPECT_EQ(hasInactiveKeyword("RFSPECTRUM"), GetParam().takesIfKeyword);
    EXPECT_EQ(hasKeyword("RFSPECTRUM"), !GetParam().takesIfKeyword);
    EXPECT_EQ(hasInactiveKeyword("IFSPECTRUM"), !GetParam().takesIfKeyword);
    EXPECT_EQ(keywords().size(), 47);
}

TEST_P(RecorderModes, SwitchOnlyOnce)
{
    Peer::applyModeKeywords(recorder());
    const QStringList before = keywords();
    Peer::applyModeKeywords(recorder());
    EXPECT_EQ(keywords(), before);
}

TEST_F(RecorderTypes, KeywordFormLooksTheIdUp)
{
    makeRecorder();
    EXPECT_FALSE(Peer::shouldRecord(recorder(), "DFSPECTRUM"));
    EXPECT_TRUE(Peer::shouldRecord(recorder(), "RFSPECTRUM"));
    EXPECT_TRUE(Peer::shouldRecord(recorder(), "NOSUCHKEYWORD"));
}

TEST_F(RecorderTypes, SpectraAreAlwaysRecordedWhereOnlyOneKindIsConfigured)
{
    station.configure(QString(), "RFSPECTRUM = \"Scn/RfSpectrum\"");
    makeRecorder();
    Peer::modeKey(recorder()) = 23;
    setRecDf(true);
    EXPECT_TRUE(shouldRecord(1));
    EXPECT_TRUE(shouldRecord(2));
    EXPECT_TRUE(shouldRecord(20));
}

TEST_F(RecorderTypes, AnIfSpectrumCountsAsASpectrumOfItsOwn)
{
    station.configure(QString(), "IFSPECTRUM = \"/IfMapping\"\nDFSPECTRUM = \"/DfSpectrum\"");
    makeRecorder();
    EXPECT_FALSE(shouldRecord(2)) << "mode 0 is no IF mode";
    EXPECT_FALSE(shouldRecord(20));
    setRecDf(true);
    EXPECT_TRUE(shouldRecord(20));
}

TEST_F(RecorderTypes, EverythingIsRecordedBeforeThereAreKeywords)
{
    CRecording bare("Rx");
    for (const std::int32_t id : {1, 2, 20}) {
        EXPECT_TRUE(Peer::shouldRecord(bare, id));
    }
}

}  // namespace
}  // namespace RecorderTests
