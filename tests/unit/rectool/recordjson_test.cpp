// The JSON text of records: what stands there, and that a reader of JSON gets back what was recorded.
#include <random>

#include <nlohmann/json.hpp>

#include <printing/recordjson.h>
#include <values/maps.h>
#include <values/value.h>

#include "support/testing.h"

namespace RecToolTests {
namespace {

using values::ChannelRange;
using LevelMap = values::FastValueMap<float, values::levelHandler>;

std::string json(const values::ValueBase& value)
{
    std::string text;
    RecTool::appendJson(text, value);
    return text;
}

/// The text of a level map's cells, without brackets.
std::string cells(const std::vector<float>& levels)
{
    LevelMap map;
    map.SetChannelRange(ChannelRange::Even(1e6, 1e3, levels.size()));
    map.SetCells(0, levels, 0);
    const std::string text = json(map);
    const std::size_t begin = text.find("\"cells\":[") + 9;
    return text.substr(begin, text.rfind("]}") - begin);
}

std::string recordText(const std::string& data)
{
    const std::vector<Recording2::Inspection::TypeEntry> types = {{36, 3, "LEVEL", "/LEVEL"}, {7, 2, "\xdc\"", "/\\"}};
    const RecTool::TypeNames names(types);
    Recording2::Inspection::Record record;
    record.timeMs = 12;
    record.position = 709;
    record.code = 36;
    record.data = data;
    std::string text;
    RecTool::RecordJson(names).append(text, record, nullptr);
    return text;
}

TEST(RecordJson, LevelsThatAreNoNumbersAreNull)
{
    constexpr float None = std::numeric_limits<float>::quiet_NaN();
    constexpr float Infinite = std::numeric_limits<float>::infinity();
    EXPECT_EQ(cells({None, Infinite, -Infinite}), "null,null,null");
}

TEST(RecordJson, AnInfiniteNumberIsNull)
{
    values::ValueNumeric<double> value;
    value.SetValue(std::numeric_limits<double>::infinity());
    EXPECT_TRUE(nlohmann::json::parse(json(value))["value"].is_null());
}

TEST(RecordJson, EveryLevelIsReadBackAsItsHundredths)
{
    std::mt19937 random(3);  // NOLINT(cert-msc51-cpp): the same levels in every run
    std::uniform_real_distribution<float> level(-1300, 1300);
    std::vector<float> levels(20'000);
    for (float& cell : levels) {
        cell = level(random);
    }
    const auto parsed = nlohmann::json::parse('[' + cells(levels) + ']');
    ASSERT_EQ(parsed.size(), levels.size());
    for (std::size_t i = 0; i < levels.size(); ++i) {
        ASSERT_EQ(parsed[i].get<double>(), std::round(double{levels[i]} * 100) / 100);
    }
}

TEST(RecordJson, AnyAsciiIsReadBackAsItIs)
{
    std::string data;
    for (char character = 0; character < 127; ++character) {
        data += character;
        data += '\\';
    }
    data += '\x7f';
    const auto parsed = nlohmann::json::parse(recordText(data));
    EXPECT_EQ(parsed["data"]["text"].get<std::string>(), data);
    EXPECT_TRUE(parsed["value"].is_null());
}

}  // namespace
}  // namespace RecToolTests
