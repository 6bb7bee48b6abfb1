// Booleans, texts and numbers: who is told of a change, and which recorded states apply.
#include "listeners.h"

namespace {

using testing::ElementsAre;
using values::ValueType;

TEST(PlainValue, AChangeNotifiesOnceWithValueChanged)
{
    Number number;
    Listener listener(number);
    number.SetValue(3.5);
    EXPECT_THAT(listener.codes(), ElementsAre(TChangeCode::ValueChanged));
    EXPECT_EQ(number.GetValue(), 3.5);
}

TEST(PlainValue, TheSubjectIsTheAddressOfTheValueBase)
{
    Number number;
    Listener listener(number);
    number.SetValue(1);
    EXPECT_EQ(listener.subject(), static_cast<values::ValueBase*>(&number));
}

TEST(PlainValue, SettingItToWhatItIsNotifiesNobody)
{
    Flag flag;
    Text text;
    Number number;
    Listener listener(flag);
    text.AddObserver(&listener);
    number.AddObserver(&listener);
    flag.SetValue(false);
    text.SetValue(QString());
    number.SetValue(0);
    number.SetLimits(0, 0);
    EXPECT_THAT(listener.codes(), ElementsAre());
}

TEST(PlainValue, NotANumberSetAgainNotifiesNobody)
{
    Number number;
    number.SetValue(std::numeric_limits<double>::quiet_NaN());
    Listener listener(number);
    number.SetValue(std::numeric_limits<double>::quiet_NaN());
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

TEST(PlainValue, LimitsAndOffsetAreChangesOfTheirOwn)
{
    NumberWithOffset number;
    Listener listener(number);
    number.SetLimits(-30, 120);
    number.SetOffset(1e6);
    EXPECT_THAT(listener.codes(), ElementsAre(TChangeCode::ValueChanged, TChangeCode::ValueChanged));
    EXPECT_EQ(number.GetLowerLimit(), -30);
    EXPECT_EQ(number.GetUpperLimit(), 120);
    EXPECT_EQ(number.GetOffset(), 1e6);
}

TEST(PlainValue, LimitsDoNotRestrict)
{
    Number number;
    number.SetLimits(0, 10);
    number.SetValue(99);
    EXPECT_EQ(number.GetValue(), 99);
}

TEST(PlainValue, CommandRecordingDoesNotChangeTheCode)
{
    Number number;
    Listener listener(number);
    number.CommandRecordingOn();
    number.SetValue(1);
    EXPECT_THAT(listener.codes(), ElementsAre(TChangeCode::ValueChanged));
}

TEST(PlainValue, TextIsWhatAPersonWouldWrite)
{
    Flag flag;
    Text text;
    Number number;
    EXPECT_EQ(flag.GetText(), "false");
    flag.SetValue(true);
    EXPECT_EQ(flag.GetText(), "true");
    text.SetValue("x134;");
    EXPECT_EQ(text.GetText(), "x134;");
    number.SetValue(98'500'000);
    EXPECT_EQ(number.GetText(), "98500000");
    number.SetValue(-31.5);
    EXPECT_EQ(number.GetText(), "-31.5");
    number.SetValue(1e300);
    EXPECT_EQ(number.GetText(), "1e+300");
    number.SetValue(std::numeric_limits<double>::infinity());
    EXPECT_EQ(number.GetText(), "inf");
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
    EXPECT_EQ(number.QueryChange(TChangeCode::Removed), 0);
    EXPECT_EQ(number.QueryChange(TChangeCode::ValueChanged), 0);
    EXPECT_EQ(number.QueryChange(TChangeCode::CommandsPending), 0);
    EXPECT_EQ(number.QueryChange(TChangeCode::SelectedAgain), 0);
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
