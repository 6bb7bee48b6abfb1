// The examples of doc/recording-text.md are true: every one of them is written by a value and read by another.
#include <map>

#include <QFile>
#include <QTextStream>

#include "listeners.h"

namespace {

using values::ChannelRange;
using values::ValueType;

constexpr double NotMeasured = std::numeric_limits<double>::quiet_NaN();
constexpr unsigned long long Time = 1'700'000'000'123'456;

template <typename T, typename Change>
std::string stateAfter(Change change)
{
    T value;
    change(value);
    return value.GetObjectStateStringForRecording();
}

/// Text of the last change that is made while the value is recorded.
template <typename T, typename Prepare, typename Change>
std::string changeAfter(Prepare prepare, Change change)
{
    T value;
    const TextRecorder recorder(value);
    prepare(value);
    change(value);
    return recorder.last();
}

std::string selectionState()
{
    return stateAfter<values::ValueSelection>([](auto& selection) {
        selection.AddItem(new values::SelectionItem("FFM; 250 kHz", 250'000, 23));
        selection.SelectKey(23);
    });
}

void fourLevels(LevelMap& map)
{
    map.SetChannelRange(ChannelRange::Even(100e6, 25e3, 4));
    map.SetCells(0, std::vector<float>{0, -97.25F, std::numeric_limits<float>::quiet_NaN(), 2000.5F}, Time);
}

void hundredLevels(LevelMap& map)
{
    map.SetChannelRange(ChannelRange::Even(100e6, 25e3, 100));
}

void twoBearings(BearingMap& map)
{
    map.SetChannelRange(ChannelRange::List({433.92e6, 100e6}));
    map.SetCells(0, std::vector<values::Bearing>{{271.5, 3, -48.25, 97}, {NotMeasured, NotMeasured, -90, NotMeasured}},
                 Time);
}

/// What the document must show, by the examples' names.
std::map<std::string, std::string> writtenExamples()
{
    return {
        {"bool", stateAfter<Flag>([](auto& flag) { flag.SetValue(true); })},
        {"text", stateAfter<Text>([](auto& text) { text.SetValue(QString::fromUtf8("Nürnberg Süd")); })},
        {"text-escaped", stateAfter<Text>([](auto& text) { text.SetValue("x134; a|b \\"); })},
        {"number", stateAfter<Number>([](auto& number) {
             number.SetValue(-31.5);
             number.SetLimits(-120, 20);
         })},
        {"number-with-offset", stateAfter<NumberWithOffset>([](auto& number) {
             number.SetValue(98.5e6);
             number.SetLimits(20e6, 3e9);
             number.SetOffset(-1e6);
         })},
        {"selection", selectionState()},
        {"selection-none", values::ValueSelection().GetObjectStateStringForRecording()},
        {"levels-state", stateAfter<LevelMap>(fourLevels)},
        {"levels-change", changeAfter<LevelMap>(hundredLevels, [](auto& map) { map.SetCell(17, -31.5F, Time); })},
        {"levels-time-only", changeAfter<LevelMap>(hundredLevels, [](auto& map) { map.SetCells(0, {}, Time); })},
        {"bearings-state", stateAfter<BearingMap>(twoBearings)},
    };
}

std::map<std::string, std::string> documentedExamples()
{
    QFile document(QStringLiteral(RECORDING_TEXT_DOCUMENT));
    EXPECT_TRUE(document.open(QIODevice::ReadOnly)) << RECORDING_TEXT_DOCUMENT;
    QTextStream lines(&document);
    std::map<std::string, std::string> examples;
    bool inside = false;
    while (!lines.atEnd()) {
        const QString line = lines.readLine();
        if (line.startsWith(QLatin1String("```"))) {
            inside = line == QLatin1String("```recording-text");
        } else if (inside) {
            const int nameEnd = line.indexOf(QLatin1Char(' '));
            examples[line.left(nameEnd).toStdString()] = line.mid(nameEnd).trimmed().toStdString();
        }
    }
    return examples;
}

TEST(RecordingTextDocument, ItsExamplesAreWhatTheValuesWrite)
{
    EXPECT_EQ(documentedExamples(), writtenExamples());
}

TEST(RecordingTextDocument, ItsExamplesCanBeRead)
{
    for (const auto& [name, text] : documentedExamples()) {
        const std::unique_ptr<values::ValueBase> value = values::MakeValue(values::RecordedKind(text));
        ASSERT_NE(value, nullptr) << name;
        if (name == "levels-change") {
            ASSERT_TRUE(value->ApplyRecordedState("34;0,1,100", 0, false));
        }
        EXPECT_TRUE(value->ApplyRecordedState(text, 0, false)) << name;
    }
}

TEST(RecordedKind, IsUnknownForForeignTextsAndForARangeAlone)
{
    for (const char* text : {"", "hello", "34;0,1,5", "134;1,2", "8;1", "0;1", "99;1", "3;1|50;x", "6;1|3;1,2,3"}) {
        EXPECT_EQ(values::RecordedKind(text), ValueType::Unknown) << text;
    }
}

TEST(RecordedKind, TellsChangeTexts)
{
    EXPECT_EQ(values::RecordedKind("6;0|51;3,<<<"), ValueType::LevelMap);
    EXPECT_EQ(values::RecordedKind("7;0|51;3,1/"), ValueType::BearingMap);
    EXPECT_FALSE(values::CarriesChannelRange("6;0|51;3,<<<"));
    EXPECT_TRUE(values::CarriesChannelRange("34;0,1,5"));
    EXPECT_TRUE(values::CarriesChannelRange("7;0|134;1,2|50;//"));
}

TEST(MakeValue, GivesNothingForAnUnknownType)
{
    EXPECT_EQ(values::MakeValue(ValueType::Unknown), nullptr);
    EXPECT_EQ(values::MakeValue(static_cast<ValueType>(77)), nullptr);
}

}  // namespace
