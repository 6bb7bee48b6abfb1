// Properties of the texts for any content, and what hostile texts can do. Seeds are fixed.
#include <algorithm>
#include <bit>
#include <random>
#include <type_traits>

#include "listeners.h"

namespace {

using values::Bearing;
using values::ChannelRange;
using values::ValueBase;
using values::ValueType;

constexpr std::array AllTypes{
    ValueType::Bool,      ValueType::String,   ValueType::Numeric,    ValueType::NumericWithOffset,
    ValueType::Selection, ValueType::LevelMap, ValueType::BearingMap, ValueType::FastBearingMap};

class Dice {
public:
    explicit Dice(std::uint32_t seed) : m_engine(seed) {}

    std::size_t below(std::size_t end) { return static_cast<std::size_t>(m_engine() % end); }
    bool coin() { return below(2) == 0; }

    double number()
    {
        switch (below(5)) {
            case 0:
                return std::bit_cast<double>(m_engine());
            case 1:
                return static_cast<double>(below(1'000'000)) / 1000 - 500;
            case 2:
                return static_cast<double>(below(4'000'000'000));
            case 3:
                return 34;
            default:
                return m_special[below(m_special.size())];
        }
    }

    double finite()
    {
        const double drawn = number();
        return std::isfinite(drawn) ? drawn : 134;
    }

    QString string()
    {
        QString drawn;
        for (std::size_t left = below(12); left > 0; --left) {
            drawn += coin() ? m_pieces[below(m_pieces.size())] : QString(QChar(static_cast<char16_t>(below(0x10000))));
        }
        return drawn;
    }

    float level()
    {
        return below(4) == 0 ? static_cast<float>(std::clamp(number(), -3e38, 3e38))
                             : static_cast<float>(below(20'000)) / 100 - 150;
    }

    Bearing bearing() { return {number(), number(), number(), number()}; }

    ChannelRange range()
    {
        if (coin()) {
            return ChannelRange::Even(finite(), finite(), below(200));
        }
        std::vector<double> channels(below(50));
        std::generate(channels.begin(), channels.end(), [this] { return finite(); });
        return ChannelRange::List(channels);
    }

private:
    std::mt19937_64 m_engine;
    std::array<double, 9> m_special{0.0,
                                    -0.0,
                                    std::numeric_limits<double>::quiet_NaN(),
                                    std::numeric_limits<double>::infinity(),
                                    -std::numeric_limits<double>::infinity(),
                                    std::numeric_limits<double>::denorm_min(),
                                    std::numeric_limits<double>::max(),
                                    std::numeric_limits<double>::min(),
                                    0.1};
    std::array<QString, 10> m_pieces{
        "x134;", "34;", "3", "4", ";", "|", "\\u003B", ",", QString::fromUtf8("ü€😀"), QString(QChar(0))};
};

/// How often the text has the words.
std::size_t occurrences(const std::string& text, const std::string& words)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(words); at != std::string::npos; at = text.find(words, at + 1)) {
        ++count;
    }
    return count;
}

bool isPrintable(const std::string& text)
{
    return std::all_of(text.begin(), text.end(), [](char character) { return character >= ' ' && character <= '~'; });
}

/// Every ';' has a number before it that begins the text or stands after a separator.
bool marksOnlyCommands(const std::string& text)
{
    for (std::size_t at = text.find(';'); at != std::string::npos; at = text.find(';', at + 1)) {
        std::size_t begin = at;
        while (begin > 0 && text[begin - 1] >= '0' && text[begin - 1] <= '9') {
            --begin;
        }
        if (begin == at || (begin > 0 && text[begin - 1] != '|')) {
            return false;
        }
    }
    return true;
}

void expectGrammar(const std::string& text, bool range, bool list)
{
    ASSERT_TRUE(isPrintable(text)) << text;
    ASSERT_TRUE(marksOnlyCommands(text)) << text;
    ASSERT_EQ(occurrences(text, "34;"), range ? 1U : 0U) << text;
    ASSERT_EQ(occurrences(text, "134;"), range && list ? 1U : 0U) << text;
    ASSERT_EQ(values::CarriesChannelRange(text), range) << text;
}

std::unique_ptr<ValueBase> randomPlain(ValueType type, Dice& dice)
{
    std::unique_ptr<ValueBase> value = values::MakeValue(type);
    if (auto* flag = dynamic_cast<Flag*>(value.get())) {
        flag->SetValue(dice.coin());
    } else if (auto* text = dynamic_cast<Text*>(value.get())) {
        text->SetValue(dice.string());
    } else if (auto* number = dynamic_cast<Number*>(value.get())) {
        number->SetValue(dice.number());
        number->SetLimits(dice.number(), dice.number());
        if (auto* withOffset = dynamic_cast<NumberWithOffset*>(number)) {
            withOffset->SetOffset(dice.number());
        }
    } else if (auto* selection = dynamic_cast<values::ValueSelection*>(value.get())) {
        const QString name = dice.string();
        selection->AddItem(
            new values::SelectionItem(name, dice.number(), static_cast<std::int32_t>(dice.below(1U << 31U))));
        selection->Select(name);
    }
    return value;
}

TEST(RecordingTextProperty, PlainValuesComeBackAndKeepTheGrammar)
{
    Dice dice(1);
    for (int round = 0; round < 4000; ++round) {
        const ValueType type = AllTypes[dice.below(5)];
        const std::unique_ptr<ValueBase> value = randomPlain(type, dice);
        const std::string text = value->GetObjectStateStringForRecording();
        ASSERT_NO_FATAL_FAILURE(expectGrammar(text, false, false));
        ASSERT_EQ(values::RecordedKind(text), type);
        const std::unique_ptr<ValueBase> replica = values::MakeValue(type);
        ASSERT_TRUE(replica->ApplyRecordedState(text, 0, true)) << text;
        ASSERT_EQ(replica->GetObjectStateStringForRecording(), text);
        ASSERT_EQ(replica->GetText(), value->GetText());
    }
}

TEST(RecordingTextProperty, EveryUtf16UnitComesBack)
{
    QString all;
    for (std::uint32_t unit = 0; unit <= 0xFFFF; ++unit) {
        all += QChar(static_cast<char16_t>(unit));
    }
    Text source;
    source.SetValue(all);
    Text target;
    ASSERT_TRUE(target.ApplyRecordedState(source.GetObjectStateStringForRecording(), 0, true));
    EXPECT_EQ(target.GetValue(), all);
}

TEST(RecordingTextProperty, NumbersComeBackToTheBit)
{
    Dice dice(2);
    for (int round = 0; round < 20'000; ++round) {
        Number source;
        const double drawn = dice.number();
        source.SetValue(drawn);
        Number target;
        ASSERT_TRUE(target.ApplyRecordedState(source.GetObjectStateStringForRecording(), 0, true));
        if (std::isnan(drawn)) {
            ASSERT_TRUE(std::isnan(target.GetValue()));
        } else {
            ASSERT_EQ(std::bit_cast<std::uint64_t>(target.GetValue()), std::bit_cast<std::uint64_t>(drawn));
        }
    }
}

/// A random change of a map; what it draws depends on the seed alone.
template <typename Map, typename Draw>
void changeMap(Map& map, Dice& dice, Draw draw)
{
    if (dice.below(10) == 0) {
        map.SetChannelRange(dice.range());
        return;
    }
    const std::size_t first = dice.below(map.size() + 1);
    std::vector<std::remove_cvref_t<decltype(draw())>> cells(dice.below(dice.coin() ? 3 : map.size() + 1) %
                                                             (map.size() - first + 1));
    std::generate(cells.begin(), cells.end(), draw);
    map.SetCells(first, cells, dice.coin() ? 0 : 1'700'000'000'000'000U + dice.below(1'000'000'000));
}

/// Follows a map by its texts.
template <typename Replica>
class Follower final : public IObserver {
public:
    explicit Follower(ValueBase& value) : m_value(value) {}
    void Update(void* /*subject*/, TChangeCode code) override
    {
        EXPECT_EQ(code, TChangeCode::CommandsPending);
        m_text = m_value.GetStringForRecording(true);
        EXPECT_TRUE(m_replica.ApplyRecordedState(m_text, 0, true)) << m_text;
    }
    [[nodiscard]] const std::string& text() const { return m_text; }
    [[nodiscard]] std::string state() const { return m_replica.GetObjectStateStringForRecording(); }

private:
    ValueBase& m_value;
    Replica m_replica;
    std::string m_text;
};

template <typename Map, typename Replica, typename Draw>
void followChanges(Dice& dice, Draw draw)
{
    Map map;
    Follower<Replica> follower(map);
    // Changes the map inside its rounds now and then; it stands before one follower and after another.
    int depth = 0;
    Actor meddler([&](TChangeCode) {
        if (depth < 2 && dice.below(8) == 0) {
            ++depth;
            changeMap(map, dice, draw);
            --depth;
        }
    });
    Follower<Replica> late(map);
    map.AddObserver(&follower);
    map.AddObserver(&meddler);
    map.AddObserver(&late);
    map.CommandRecordingOn();
    for (int round = 0; round < 3000; ++round) {
        values::HandlerBase::SetDataCompressMode(dice.below(4) != 0);
        const ChannelRange before = map.GetChannelRange();
        changeMap(map, dice, draw);
        const std::string state = map.GetObjectStateStringForRecording();
        ASSERT_EQ(follower.state(), state);
        ASSERT_EQ(late.state(), state);
        ASSERT_NO_FATAL_FAILURE(expectGrammar(state, true, map.GetChannelRange().isList()));
        const bool range = hasRange(late.text());
        ASSERT_NO_FATAL_FAILURE(expectGrammar(late.text(), range, range && map.GetChannelRange().isList()));
        ASSERT_TRUE(range || before == map.GetChannelRange());
    }
    values::HandlerBase::SetDataCompressMode(true);
}

TEST(RecordingTextProperty, LevelMapsAreFollowedThroughAnyChanges)
{
    Dice dice(3);
    followChanges<LevelMap, LevelMap>(dice, [&dice] { return dice.level(); });
}

TEST(RecordingTextProperty, BearingMapsAreFollowedThroughAnyChanges)
{
    Dice dice(4);
    followChanges<BearingMap, FastBearingMap>(dice, [&dice] { return dice.bearing(); });
    followChanges<FastBearingMap, BearingMap>(dice, [&dice] { return dice.bearing(); });
}

TEST(RecordingTextProperty, AFullTextGivesTheSameStateOnAnyOlderMap)
{
    Dice dice(5);
    for (int round = 0; round < 500; ++round) {
        LevelMap map;
        LevelMap older;
        for (int change = 0; change < 5; ++change) {
            changeMap(map, dice, [&dice] { return dice.level(); });
            changeMap(older, dice, [&dice] { return dice.level(); });
        }
        const std::string text = map.GetObjectStateStringForRecording();
        ASSERT_TRUE(older.ApplyRecordedState(text, 0, true));
        ASSERT_EQ(older.GetObjectStateStringForRecording(), text);
    }
}

void applyToEverything(const std::vector<std::unique_ptr<ValueBase>>& targets, const std::string& text)
{
    for (const auto& target : targets) {
        const std::string before = target->GetObjectStateStringForRecording();
        if (!target->ApplyRecordedState(text, 0, true)) {
            ASSERT_EQ(target->GetObjectStateStringForRecording(), before) << text;
        }
    }
    static_cast<void>(values::RecordedKind(text));
    static_cast<void>(values::CarriesChannelRange(text));
}

std::vector<std::unique_ptr<ValueBase>> oneOfEachType()
{
    std::vector<std::unique_ptr<ValueBase>> targets;
    targets.reserve(AllTypes.size());
    for (const ValueType type : AllTypes) {
        targets.push_back(values::MakeValue(type));
    }
    return targets;
}

TEST(HostileRecordingText, RandomBytesAreHarmless)
{
    Dice dice(6);
    const auto targets = oneOfEachType();
    const std::string grammar = "0123456789;|,/()<{\\u34infae+-.";
    for (int round = 0; round < 30'000; ++round) {
        std::string text;
        for (std::size_t left = dice.below(40); left > 0; --left) {
            text += dice.below(8) == 0 ? static_cast<char>(dice.below(256)) : grammar[dice.below(grammar.size())];
        }
        ASSERT_NO_FATAL_FAILURE(applyToEverything(targets, text));
    }
}

TEST(HostileRecordingText, DamagedTextsAreHarmless)
{
    Dice dice(7);
    const auto targets = oneOfEachType();
    LevelMap levels;
    BearingMap bearings;
    for (int round = 0; round < 10'000; ++round) {
        changeMap(levels, dice, [&dice] { return dice.level(); });
        changeMap(bearings, dice, [&dice] { return dice.bearing(); });
        const std::unique_ptr<ValueBase> plain = randomPlain(AllTypes[dice.below(5)], dice);
        const std::array<const ValueBase*, 3> sources{&levels, &bearings, plain.get()};
        std::string text = sources[dice.below(sources.size())]->GetObjectStateStringForRecording();
        for (std::size_t left = dice.below(4); left > 0 && !text.empty(); --left) {
            text[dice.below(text.size())] = static_cast<char>(dice.below(256));
        }
        if (dice.below(3) == 0) {
            text.resize(dice.below(text.size() + 1));
        }
        ASSERT_NO_FATAL_FAILURE(applyToEverything(targets, text));
    }
}

TEST(HostileRecordingText, CountsPastTheLimitAreRefused)
{
    LevelMap map;
    for (const char* text : {"6;0|34;0,1,16777217", "6;0|34;0,1,18446744073709551615",
                             "6;0|34;0,1,18446744073709551616", "34;0,1,4294967296"}) {
        EXPECT_FALSE(map.ApplyRecordedState(text, 0, true)) << text;
    }
    EXPECT_EQ(map.size(), 0U);
}

TEST(RecordedKind, TellsTheTypeOfEveryText)
{
    for (const ValueType type : AllTypes) {
        const ValueType expected = type == ValueType::FastBearingMap ? ValueType::BearingMap : type;
        EXPECT_EQ(values::RecordedKind(values::MakeValue(type)->GetObjectStateStringForRecording()), expected);
        EXPECT_EQ(values::MakeValue(type)->GetType(), type);
    }
}

}  // namespace
