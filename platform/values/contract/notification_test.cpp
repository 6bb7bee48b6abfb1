// Rounds of notification and the life of the recording text in them.
#include "listeners.h"

namespace {

using namespace testing;

class RecordingTextOfAMap : public testing::Test {
protected:
    RecordingTextOfAMap() { map.SetChannelRange(values::ChannelRange::Even(0, 1, 1000)); }
    LevelMap map;
};

TEST(RecordingText, TwoRecordersReadTheSameTextInOneRound)
{
    Number number;
    const TextRecorder first(number);
    const TextRecorder second(number);
    number.SetValue(2.5);
    EXPECT_THAT(first.texts(), ElementsAre("3;2.5,0,0"));
    EXPECT_EQ(second.texts(), first.texts());
}

TEST_F(RecordingTextOfAMap, TwoRecordersReadTheSame)
{
    const TextRecorder first(map);
    const TextRecorder second(map);
    map.SetCell(5, -10, 1);
    map.SetCell(7, -20, 2);
    EXPECT_EQ(second.texts(), first.texts());
    EXPECT_EQ(first.texts().size(), 2U);
}

TEST_F(RecordingTextOfAMap, ReadingDoesNotConsumeIt)
{
    map.CommandRecordingOn();
    std::string once;
    std::string twice;
    Actor reader([&](TChangeCode) {
        once = map.GetStringForRecording(true);
        twice = map.GetStringForRecording(true);
    });
    map.AddObserver(&reader);
    map.SetCell(5, -10, 1);
    EXPECT_THAT(once, HasSubstr("50;"));
    EXPECT_EQ(twice, once);
}

TEST(RecordingText, ItIsEmptyBetweenRoundsWhileCommandRecordingIsOn)
{
    Number number;
    const TextRecorder recorder(number);
    EXPECT_THAT(number.GetStringForRecording(true), IsEmpty());
    number.SetValue(1);
    EXPECT_THAT(number.GetStringForRecording(true), IsEmpty());
}

TEST_F(RecordingTextOfAMap, ItIsTheCompleteStateWhileCommandRecordingIsOff)
{
    EXPECT_EQ(map.GetStringForRecording(true), map.GetObjectStateStringForRecording());
    std::string inRound;
    Actor reader([&](TChangeCode) { inRound = map.GetStringForRecording(true); });
    map.AddObserver(&reader);
    map.SetCell(2, -10, 1);
    EXPECT_EQ(inRound, map.GetObjectStateStringForRecording());
}

TEST_F(RecordingTextOfAMap, TheCompleteStateCanBeReadInTheRoundToo)
{
    const TextRecorder recorder(map);
    map.SetCell(1, -1, 1);
    std::string state;
    Actor reader([&](TChangeCode) { state = map.GetStringForRecording(false); });
    map.AddObserver(&reader);
    map.SetCell(2, -2, 2);
    EXPECT_EQ(state, map.GetObjectStateStringForRecording());
    EXPECT_NE(recorder.last(), state);
}

TEST(RecordingText, CommandRecordingIsCounted)
{
    Number number;
    number.CommandRecordingOff();
    EXPECT_FALSE(number.IsCommandRecording());
    number.CommandRecordingOn();
    number.CommandRecordingOn();
    number.CommandRecordingOff();
    EXPECT_TRUE(number.IsCommandRecording());
    number.CommandRecordingOff();
    EXPECT_FALSE(number.IsCommandRecording());
    number.CommandRecordingOff();
    number.CommandRecordingOn();
    EXPECT_TRUE(number.IsCommandRecording());
}

TEST(RecordingText, AnObserverThatChangesTheValueAgainIsFollowedByEverybody)
{
    Number number;
    Actor corrector([&](TChangeCode) { number.SetValue(10); });
    number.AddObserver(&corrector);
    const TextRecorder recorder(number);
    number.SetValue(11);
    EXPECT_THAT(recorder.texts(), ElementsAre("3;10,0,0", "3;10,0,0"));
}

TEST_F(RecordingTextOfAMap, CellsWrittenInANestedRoundAreLostForNobody)
{
    Listener readsNothing(map);
    const TextRecorder before(map);
    bool nested = false;
    Actor writer([&](TChangeCode) {
        if (!nested) {
            nested = true;
            map.SetCell(1, -2, 20);
        }
    });
    map.SetCell(0, 0, 1);
    map.AddObserver(&writer);
    const TextRecorder after(map);
    map.SetCell(1, -1, 10);
    for (const TextRecorder* recorder : {&before, &after}) {
        LevelMap replica;
        replica.SetChannelRange(map.GetChannelRange());
        replica.SetCell(0, 0, 1);
        for (const std::string& text : recorder->texts()) {
            EXPECT_TRUE(replica.ApplyRecordedState(text, 0, true));
        }
        EXPECT_EQ(replica.GetObjectStateStringForRecording(), map.GetObjectStateStringForRecording());
    }
}

TEST_F(RecordingTextOfAMap, ASilentChangeGoesIntoTheNextText)
{
    const TextRecorder recorder(map);
    map.SetCell(0, 0, 1);
    LevelMap replica;
    EXPECT_TRUE(replica.ApplyRecordedState(recorder.last(), 0, true));

    EXPECT_TRUE(map.ApplyRecordedState("6;2|51;17,<<<", 0, false));
    EXPECT_EQ(recorder.texts().size(), 1U);
    map.SetCell(18, -1, 3);
    EXPECT_TRUE(replica.ApplyRecordedState(recorder.last(), 0, true));
    EXPECT_EQ(replica.GetObjectStateStringForRecording(), map.GetObjectStateStringForRecording());
}

TEST_F(RecordingTextOfAMap, ASilentChangeInARoundGoesIntoTheNextText)
{
    const TextRecorder recorder(map);
    map.SetCell(0, 0, 1);
    Actor writer([&](TChangeCode) { map.ApplyRecordedState("6;2|51;17,<<<", 0, false); });
    map.AddObserver(&writer);
    map.SetCell(1, 0, 1);
    map.RemoveObserver(&writer);
    map.SetCell(2, 0, 3);
    EXPECT_THAT(recorder.last(), HasSubstr("51;17,<<<"));
}

TEST(RecordingText, AFailingObserverLeavesTheOthersTheirTextAndTheValueUsable)
{
    Number number;
    Actor failing([](TChangeCode) { throw std::runtime_error("disk full"); });
    number.AddObserver(&failing);
    const TextRecorder recorder(number);
    EXPECT_THROW(number.SetValue(1), std::runtime_error);
    EXPECT_THAT(number.GetStringForRecording(true), IsEmpty());
    number.RemoveObserver(&failing);
    number.SetValue(2);
    EXPECT_THAT(recorder.texts(), ElementsAre("3;1,0,0", "3;2,0,0"));
}

TEST(RecordingText, AnObserverMayRemoveTheValueInItsRound)
{
    values::Tree tree;
    auto* number = new Number;
    number->SetName("LEVEL");
    tree.Insert("/", number);
    number->CommandRecordingOn();
    Actor remover([&](TChangeCode code) {
        if (code == TChangeCode::ValueChanged) {
            tree.Remove("/LEVEL");
        }
    });
    Listener listener;
    number->AddObserver(&remover);
    number->AddObserver(&listener);
    number->SetValue(1);
    EXPECT_THAT(listener.codes(), ElementsAre(TChangeCode::Removed));
    EXPECT_EQ(tree.Size(), 0U);
}

TEST_F(RecordingTextOfAMap, CommandRecordingSwitchedOnInARoundIsFullNextTime)
{
    Actor starter([&](TChangeCode) {
        if (!map.IsCommandRecording()) {
            map.CommandRecordingOn();
        }
    });
    map.AddObserver(&starter);
    map.SetCell(0, 0, 1);
    map.RemoveObserver(&starter);
    std::string text;
    Actor reader([&](TChangeCode) { text = map.GetStringForRecording(true); });
    map.AddObserver(&reader);
    map.SetCell(1, 0, 2);
    EXPECT_TRUE(hasRange(text));
}

TEST(VtTransaction, MergesAndDelaysNothing)
{
    Number number;
    Listener listener(number);
    const values::VtTransaction transaction(true);
    number.SetValue(1);
    number.SetValue(2);
    EXPECT_THAT(listener.codes(), ElementsAre(TChangeCode::ValueChanged, TChangeCode::ValueChanged));
}

}  // namespace
