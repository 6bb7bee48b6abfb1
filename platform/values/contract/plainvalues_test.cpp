// Booleans, texts and numbers: who is told of a change, and which recorded states apply.
#include "listeners.h"

namespace {

using testing::ElementsAre;
using values::ValueType;

TEST(PlainValue, AChangeNotifiesOnceWithValueChangedAndTheAddressOfTheValueBaseAlsoWithCommandRecording)
{
    for (const bool recording : {false, true}) {
        Number number;
        Listener listener(number);
        if (recording) {
            number.CommandRecordingOn();
        }
        number.SetValue(3.5);
        EXPECT_THAT(listener.codes(), ElementsAre(TChangeCode::ValueChanged)) << recording;
        EXPECT_EQ(listener.subject(), static_cast<values::ValueBase*>(&number)) << recording;
        EXPECT_EQ(number.GetValue(), 3.5) << recording;
    }
}

TEST(PlainValue, SettingItToWhatItIsNotifiesNobody)
{
    Flag flag;
    Text text;
    Number number;
    Number unknown;
    unknown.SetValue(std::numeric_limits<double>::quiet_NaN());
    Listener listener(flag);
    text.AddObserver(&listener);
    number.AddObserver(&listener);
    unknown.AddObserver(&listener);
    flag.SetValue(false);
    text.SetValue(QString());
    number.SetValue(0);
    number.SetLimits(0, 0);
    unknown.SetValue(std::numeric_limits<double>::quiet_NaN());
    EXPECT_THAT(listener.codes(), ElementsAre());
}

TEST(PlainValue, TheOriginatorIsNotTold)
{
    Flag flag;
    Listener originator;
    Listener other;
    flag.AddObserver(&originator);
    flag.AddObserver(&other);
    flag.SetValue(true, &originator);
    EXPECT_THAT(originator.codes(), ElementsAre());
    EXPECT_THAT(other.codes(), ElementsAre(TChangeCode::ValueChanged));
}

TEST(PlainValue, AnOriginatorThatDoesNotObserveLeavesNobodyOut)
{
    Flag flag;
    Listener stranger;
    Listener listener(flag);
    flag.SetValue(true, &stranger);
    EXPECT_THAT(listener.codes(), ElementsAre(TChangeCode::ValueChanged));
}

TEST(PlainValue, LimitsAndOffsetAreChangesOfTheirOwnAndDoNotRestrict)
{
    NumberWithOffset number;
    Listener listener(number);
    number.SetLimits(-30, 120);
    number.SetOffset(1e6);
    EXPECT_THAT(listener.codes(), ElementsAre(TChangeCode::ValueChanged, TChangeCode::ValueChanged));
    EXPECT_EQ(number.GetLowerLimit(), -30);
    EXPECT_EQ(number.GetUpperLimit(), 120);
    EXPECT_EQ(number.GetOffset(), 1e6);
    number.SetValue(999);
    EXPECT_EQ(number.GetValue(), 999);
}

TEST(PlainValue, TextIsWhatAPersonWouldWrite)
{
    Flag flag;
    EXPECT_EQ(flag.GetText(), "false");
    flag.SetValue(true);
    EXPECT_EQ(flag.GetText(), "true");
    Text text;
    text.SetValue("x134;");
    EXPECT_EQ(text.GetText(), "x134;");
    for (const auto& [value, expected] :
         {std::pair{98'500'000.0, "98500000"}, std::pair{-31.5, "-31.5"}, std::pair{1e300, "1e+300"},
          std::pair{std::numeric_limits<double>::infinity(), "inf"}}) {
        Number number;
        number.SetValue(value);
        EXPECT_EQ(number.GetText(), expected);
    }
}

TEST(PlainValue, TypesHaveTheirCodes)
{
    EXPECT_EQ(static_cast<int>(Flag().GetType()), 1);
    EXPECT_EQ(static_cast<int>(Text().GetType()), 2);
    EXPECT_EQ(static_cast<int>(Number().GetType()), 3);
    EXPECT_EQ(static_cast<int>(NumberWithOffset().GetType()), 4);
    EXPECT_EQ(static_cast<int>(values::ValueSelection().GetType()), 5);
    EXPECT_EQ(static_cast<int>(LevelMap().GetType()), 6);
    EXPECT_EQ(static_cast<int>(BearingMap().GetType()), 7);
    EXPECT_EQ(static_cast<int>(FastBearingMap().GetType()), 8);
}

TEST(PlainValue, TypeNamesAreKnownAndUnknownOnesSaySo)
{
    EXPECT_EQ(values::ValueTypeName(ValueType::Selection), "Selection");
    EXPECT_EQ(values::ValueTypeName(ValueType::FastBearingMap), "FastBearingMap");
    EXPECT_EQ(values::ValueTypeName(static_cast<ValueType>(9)), "Unknown");
    EXPECT_EQ(values::ValueTypeName(static_cast<ValueType>(-1)), "Unknown");
}

TEST(PlainValue, QueryChangeAnswersZeroForEveryOtherCode)
{
    const Number number;
    for (const TChangeCode code :
         {TChangeCode::Removed, TChangeCode::ValueChanged, TChangeCode::CommandsPending, TChangeCode::SelectedAgain}) {
        EXPECT_EQ(number.QueryChange(code), 0) << static_cast<int>(code);
    }
}

TEST(PlainValue, TheNameIsThePathOutsideTheTree)
{
    Number number;
    number.SetName("LEVEL");
    EXPECT_EQ(number.GetName(), "LEVEL");
    EXPECT_EQ(number.GetPath(), "LEVEL");
}

TEST(PlainValue, ApplyingARecordedStateNotifiesOnceAndOnlyIfItChanges)
{
    NumberWithOffset source;
    source.SetValue(1e8);
    source.SetLimits(-1, 2);
    source.SetOffset(5);
    NumberWithOffset target;
    Listener listener(target);
    const std::string text = source.GetObjectStateStringForRecording();
    EXPECT_TRUE(target.ApplyRecordedState(text, 0, true));
    EXPECT_TRUE(target.ApplyRecordedState(text, 0, true));
    EXPECT_THAT(listener.codes(), ElementsAre(TChangeCode::ValueChanged));
    EXPECT_EQ(target.GetOffset(), 5);
}

TEST(PlainValue, ApplyingSilentlyTellsNobody)
{
    Number target;
    Listener listener(target);
    EXPECT_TRUE(target.ApplyRecordedState("3;7,0,0", 0, false));
    EXPECT_EQ(target.GetValue(), 7);
    EXPECT_THAT(listener.codes(), ElementsAre());
}

TEST(PlainValue, AnEmptyTextAndATextOfAnotherKindChangeNothing)
{
    Number target;
    target.SetValue(4);
    for (const char* text : {"", "1;1", "2;abc", "4;1,2,3,4", "5;1,2,x", "34;0,1,5", "6;0|34;0,1,1|50;<<<"}) {
        EXPECT_TRUE(target.ApplyRecordedState(text, 0, true)) << text;
        EXPECT_EQ(target.GetObjectStateStringForRecording(), "3;4,0,0") << text;
    }
}

TEST(PlainValue, MalformedTextsAreRefusedAndChangeNothing)
{
    Number number;
    Flag flag;
    Text string;
    for (const char* text : {"3", "3;", "3;1", "3;1,2", "3;1,2,3,", "3;1,2,3,4", "3; 1,2,3", "3;1,2,x", "3;1,2,3|",
                             "3;1,2,3|3;1,2,3", "03;1,2,3", "-3;1,2,3", "9;1", "x", ";", "|", "3;1;2", "3;1e999,0,0"}) {
        EXPECT_FALSE(number.ApplyRecordedState(text, 0, true)) << text;
    }
    for (const char* text : {"1;", "1;2", "1;true", "1;11"}) {
        EXPECT_FALSE(flag.ApplyRecordedState(text, 0, true)) << text;
    }
    for (const char* text : {"2;\\", "2;\\u12", "2;\\u123G", "2;\\x0041", "2;\xC3\xBC", "2;\n"}) {
        EXPECT_FALSE(string.ApplyRecordedState(text, 0, true)) << text;
    }
    EXPECT_EQ(number.GetObjectStateStringForRecording(), "3;0,0,0");
    EXPECT_EQ(string.GetValue(), QString());
}

}  // namespace
