// How a change becomes a record: keyword, text, channel range flag; and values that go.
#include "recorder_fixture.h"
#include "scripted_value.h"

namespace RecorderTests {
namespace {

using namespace testing;

class RecorderCapture : public FullStationTest {};

// --- which changes, under which type

TEST_F(RecorderCapture, EveryKeywordsChangeIsARecordOfItsType)
{
    startRecorder();
    std::vector<std::pair<std::int32_t, std::string>> expected;
    for (const auto& row : Recording2::RecordTypeTable) {
        const QString path = Peer::resolve(recorder(), row.keyword, QString());
        values::ValueBase* value = station.tree.Find(path);
        if (auto* number = dynamic_cast<Number*>(value)) {
            number->SetValue(number->GetValue() + 1);
        } else if (auto* flag = dynamic_cast<Flag*>(value)) {
            flag->SetValue(!flag->GetValue());
        } else {
            continue;
        }
        expected.emplace_back(row.id, value->GetObjectStateStringForRecording());
    }
    std::vector<std::pair<std::int32_t, std::string>> found;
    for (const auto& record : changesIn(stopAndRead())) {
        found.emplace_back(record.code, record.data);
    }
    EXPECT_EQ(found, expected);
    EXPECT_GT(found.size(), 30U);
}

TEST_F(RecorderCapture, ALimitOrOffsetIsAChangeOfItsValue)
{
    startRecorder();
    level().SetLimits(-120, 20);
    frequency().SetOffset(5);
    EXPECT_THAT(dataOf(changesIn(stopAndRead())), ElementsAre("3;0,-120,20", "4;0,0,0,5"));
}

TEST_F(RecorderCapture, SelectingTheSelectedItemIsARecordToo)
{
    startRecorder();
    at<Selection>("/OPERATEMODE").SelectKey(0);
    EXPECT_THAT(dataOf(changesIn(stopAndRead())), ElementsAre("5;0,0,Normal"));
}

TEST_F(RecorderCapture, AValueSharedByTwoKeywordsIsOneRecordOfTheFirst)
{
    startRecorder();
    at<Text>("/DEVICE_CAPTION").SetValue("South");
    const auto changes = changesIn(stopAndRead());
    ASSERT_THAT(changes, SizeIs(1));
    EXPECT_EQ(changes[0].code, 47);
    EXPECT_EQ(changes[0].data, "2;South");
}

TEST_F(RecorderCapture, ASharedValueIsSwitchedOffAsOftenAsOn)
{
    startRecorder();
    EXPECT_TRUE(at<Text>("/DEVICE_CAPTION").IsCommandRecording());
    station.switchOff();
    EXPECT_FALSE(at<Text>("/DEVICE_CAPTION").IsCommandRecording());
}

TEST_F(RecorderCapture, AnotherObserverReadsTheSameText)
{
    prepareSpectra();
    makeRecorder();
    std::vector<std::string> read;
    start();
    const Listener listener(rfSpectrum(), [&read](values::ValueBase& value, TChangeCode) {
        read.push_back(value.GetStringForRecording(true));
    });
    rfSpectrum().SetCell(3, -50, 0);
    rfSpectrum().SetCell(4, -60, 0);
    EXPECT_EQ(dataOf(changesIn(stopAndRead())), read);
    EXPECT_THAT(read, SizeIs(2));
}

TEST_F(RecorderCapture, AnEmptyTextIsNoRecord)
{
    station.tree.Remove("/LEVEL");
    auto& scripted = station.add<ScriptedValue>("/LEVEL");
    startRecorder();
    scripted.change("", TChangeCode::ValueChanged);
    scripted.change("x", TChangeCode::ValueChanged);
    EXPECT_THAT(dataOf(changesIn(stopAndRead())), ElementsAre("x"));
}

// --- channel range flag

struct FlagCase {
    const char* keyword;
    std::int32_t id;
    const char* text;
    TChangeCode code;
    bool flagged;
};

std::ostream& operator<<(std::ostream& out, const FlagCase& flag)
{
    return out << flag.keyword << " \"" << flag.text << "\" code " << static_cast<std::int32_t>(flag.code);
}

class RecorderFlags : public RecorderTest, public testing::WithParamInterface<FlagCase> {};

constexpr auto Pending = TChangeCode::CommandsPending;
INSTANTIATE_TEST_SUITE_P(
    Changes, RecorderFlags,
    testing::Values(FlagCase{"RFSPECTRUM", 1, "a34;b", Pending, true},
                    FlagCase{"RFSPECTRUM", 1, "a134;b", Pending, true}, FlagCase{"RFSPECTRUM", 1, "34", Pending, false},
                    FlagCase{"RFSPECTRUM", 1, "35;", Pending, false},
                    FlagCase{"RFSPECTRUM", 1, "a34;b", TChangeCode::ValueChanged, false},
                    FlagCase{"RFSPECTRUM", 1, "a34;b", TChangeCode::SelectedAgain, false},
                    FlagCase{"IFSPECTRUM", 2, "a34;b", Pending, true}, FlagCase{"IFSPAN", 32, "a34;b", Pending, true},
                    FlagCase{"DFSPECTRUMSAMPLE", 48, "134;", Pending, true},
                    FlagCase{"DFSPECTRUM", 20, "a34;b", Pending, false}, FlagCase{"LEVEL", 36, "a34;b", Pending, false},
                    FlagCase{"FREQUENCY", 46, "a34;b", Pending, false},
                    FlagCase{"SPECIAL", 0, "a34;b", Pending, false}));

TEST_P(RecorderFlags, TellWhichChangesAreChannelRangeDefinitions)
{
    station.configure(QString(), QString("%1 = \"/Value\"").arg(QString::fromLatin1(GetParam().keyword)));
    auto& value = station.add<ScriptedValue>("/Value");
    // The IF spectrum is taken into a recording only in the modes that have one.
    Peer::modeKey(makeRecorder()) = GetParam().id == 2 ? 23 : 0;
    start();
    value.change(GetParam().text, GetParam().code);
    const ParsedRecording recording = stopAndRead();
    ASSERT_THAT(recording.records, SizeIs(2));
    EXPECT_EQ(recording.records[1].code, GetParam().id);
    if (GetParam().flagged) {
        EXPECT_THAT(recording.rangeDefs, ElementsAre(recording.records[1].time));
    } else {
        EXPECT_THAT(recording.rangeDefs, IsEmpty());
        EXPECT_EQ(recording.header.channelRangeTable, 0);
    }
}

TEST_F(RecorderCapture, ANewChannelRangeOfASpectrumIsAChannelRangeDefinition)
{
    prepareSpectra();
    startRecorder();
    rfSpectrum().SetCell(0, -50, 0);  // the first text after the start carries the range once more
    rfSpectrum().SetCell(1, -50, 0);
    rfSpectrum().SetChannelRange(values::ChannelRange::List({1e6, 2e6}));
    const ParsedRecording recording = stopAndRead();
    const auto spectra = recordsOf(recording, 1);
    ASSERT_THAT(spectra, SizeIs(4));
    EXPECT_THAT(recording.rangeDefs, ElementsAre(spectra[0].time, spectra[1].time, spectra[3].time));
}

// --- removal

TEST_F(RecorderCapture, AValueRemovedWhileRecordingIsForgotten)
{
    startRecorder();
    level().SetValue(1);
    station.tree.Remove("/LEVEL");
    EXPECT_EQ(Peer::keywords(recorder()).at("LEVEL").observed, nullptr);
    EXPECT_TRUE(hasKeyword("LEVEL"));
    station.add<Number>("/LEVEL").SetValue(2);
    const ParsedRecording recording = stopAndRead();
    EXPECT_THAT(dataOf(changesIn(recording)), ElementsAre("3;1,0,0")) << "the removal is no record";
    start();
    level().SetValue(3);
    EXPECT_THAT(dataOf(changesIn(stopAndRead())), ElementsAre("3;3,0,0")) << "the next start finds the new value";
}

TEST_F(RecorderCapture, ARemovalForgetsTheValueInEveryEntry)
{
    startRecorder();
    for (const char* keyword : {"DEVICE_CAPTION", "DFSPECTRUMSAMPLE"}) {
        EXPECT_NE(Peer::keywords(recorder()).at(keyword).observed, nullptr);
    }
    station.tree.Remove("/DEVICE_CAPTION");
    for (const char* keyword : {"DEVICE_CAPTION", "DFSPECTRUMSAMPLE"}) {
        EXPECT_EQ(Peer::keywords(recorder()).at(keyword).observed, nullptr) << keyword;
    }
    EXPECT_THAT(changesIn(stopAndRead()), IsEmpty());
}

TEST_F(RecorderCapture, AValueOfTwoKeywordsIsRecordedWhileOneIsDropped)
{
    prepareSpectra();
    station.configure(QString(),
                      "RFSPECTRUM = \"/IfMapping\"\nIFSPECTRUM = \"/IfMapping\"\n"
                      "DRVCOMMANDS = \"Gen/DRVCOMMANDS\"");
    startRecorder();  // drops the IF spectrum
    ifSpectrum().SetCell(3, -50, 0);
    mode().SelectKey(23);  // and this the RF spectrum
    ifSpectrum().SetCell(3, -51, 0);
    std::vector<std::int32_t> types;
    for (const auto& change : changesIn(stopAndRead())) {
        types.push_back(change.code);
    }
    EXPECT_THAT(types, ElementsAre(1, 3, 2));
    EXPECT_FALSE(ifSpectrum().IsObservedBy(&recorder()));
    EXPECT_FALSE(ifSpectrum().IsCommandRecording());
}

TEST_F(RecorderCapture, ARemovalForgetsTheValueOfTwoKeywordsOfWhichOneWasDropped)
{
    station.configure(QString(), "RFSPECTRUM = \"/IfMapping\"\nIFSPECTRUM = \"/IfMapping\"");
    startRecorder();
    station.tree.Remove("/IfMapping");
    EXPECT_EQ(Peer::keywords(recorder()).at("RFSPECTRUM").observed, nullptr);
    EXPECT_THAT(changesIn(stopAndRead()), IsEmpty());
}

TEST_F(RecorderCapture, ADeletedItemIsNoRecordAndKeepsTheSelectionWatched)
{
    startRecorder();
    auto& operation = at<Selection>("/OPERATEMODE");
    operation.DeleteItem("Normal");
    operation.SelectKey(1);
    EXPECT_THAT(dataOf(changesIn(stopAndRead())), ElementsAre("5;1,0,Gate"));
}

TEST_F(RecorderCapture, EveryValueMayGoWhileRecording)
{
    startRecorder();
    for (const QString& path : station.tree.Paths()) {
        if (!path.contains("/REC_")) {
            station.tree.Remove(path);
        }
    }
    const ParsedRecording recording = stopAndRead();
    EXPECT_THAT(changesIn(recording), IsEmpty());
    EXPECT_EQ(recording.header.deviceName, "UNKNOWN");
}

TEST_F(RecorderCapture, ASpectrumRemovedWhileItIsDroppedIsNotTaken)
{
    startRecorder();
    mode().SelectKey(23);
    station.tree.Remove("/Devices/Rx1/Scn/RfSpectrum");
    mode().SelectKey(5);
    EXPECT_TRUE(hasKeyword("RFSPECTRUM"));
    EXPECT_EQ(Peer::keywords(recorder()).at("RFSPECTRUM").observed, nullptr);
}

// --- others

TEST_F(RecorderCapture, ANotificationOfAStrangerIsIgnored)
{
    Number stranger;
    startRecorder();
    recorder().Update(&stranger, TChangeCode::ValueChanged);
    recorder().Update(&stranger, TChangeCode::Removed);
    EXPECT_THAT(changesIn(stopAndRead()), IsEmpty());
    EXPECT_NO_THROW(recorder().Update(&stranger, TChangeCode::ValueChanged));
}

TEST_F(RecorderCapture, TheRecordersOwnStatusValuesCanBeRecorded)
{
    station.configure(QString(), "HEADERTEXT = \"/Status/Rx1/REC_HEADER\"");
    startRecorder();
    at<Text>("/Status/Rx1/REC_HEADER").SetValue("noted");
    EXPECT_THAT(dataOf(changesIn(stopAndRead())), ElementsAre("2;noted"));
}

TEST_F(RecorderCapture, AControlValueThatIsRecordedControlsTheNextRecordingToo)
{
    station.configure(QString(), "STATUSTEXT = \"/Devices/Rx1/REC_STATUS\"\nPATHTEXT = \"/Status/Rx1/REC_FILEPATH\"");
    startRecorder();
    station.switchOff();
    EXPECT_FALSE(Peer::isRecording(recorder()));
    at<Text>("/Status/Rx1/REC_FILEPATH").SetValue(station.file("elsewhere"));
    EXPECT_EQ(Peer::configuration(recorder()).recordingPath, station.file("elsewhere"));
    station.switchOn();
    EXPECT_TRUE(Peer::isRecording(recorder()));
}

}  // namespace
}  // namespace RecorderTests
