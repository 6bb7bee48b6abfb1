// The JSON text of records: what stands there, and that a reader of JSON gets back what was recorded.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include <printing/recordjson.h>
#include <values/maps.h>
#include <values/selection.h>
#include <values/value.h>

namespace RecToolTests {
namespace {

using values::Bearing;
using values::ChannelRange;
using LevelMap = values::FastValueMap<float, values::levelHandler>;
using BearingMap = values::ValueMap<Bearing, values::BearingHandler>;

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

std::string recordText(const std::string& data, const values::ValueBase* value = nullptr)
{
    const std::vector<Recording2::Inspection::TypeEntry> types = {{36, 3, "LEVEL", "/LEVEL"}, {7, 2, "\xdc\"", "/\\"}};
    const RecTool::TypeNames names(types);
    Recording2::Inspection::Record record;
    record.timeMs = 12;
    record.position = 709;
    record.code = 36;
    record.data = data;
    std::string text;
    RecTool::RecordJson(names).append(text, record, value);
    return text;
}

TEST(RecordJson, LevelsAreHundredthsWithAPoint)
{
    EXPECT_EQ(cells({-97.25F, -97.2F, -97, 0, 0.01F, -0.05F, 12.345F, 99.999F}),
              "-97.25,-97.2,-97.0,0.0,0.01,-0.05,12.35,100.0");
}

TEST(RecordJson, LevelsThatAreNoNumbersAreNull)
{
    constexpr float None = std::numeric_limits<float>::quiet_NaN();
    constexpr float Infinite = std::numeric_limits<float>::infinity();
    EXPECT_EQ(cells({None, Infinite, -Infinite}), "null,null,null");
}

TEST(RecordJson, VeryLargeLevelsStayNumbers)
{
    const auto parsed = nlohmann::json::parse('[' + cells({2e6F, -3e9F, 1e30F}) + ']');
    EXPECT_DOUBLE_EQ(parsed[0], 2e6);
    EXPECT_DOUBLE_EQ(parsed[1], double{-3e9F});
    EXPECT_DOUBLE_EQ(parsed[2], double{1e30F});
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

TEST(RecordJson, NumbersAreReadBackExactly)
{
    values::ValueNumeric<double> value;
    for (const double number : {0.0, 1.0, -150.0, 49.4551482, 1e-4, 9.99e-5, 1e14, 999999999999999.9, 1e15, -2.5e300,
                                5e-324, 123456789.123456789}) {
        value.SetValue(number);
        EXPECT_EQ(nlohmann::json::parse(json(value))["value"].get<double>(), number);
    }
    value.SetValue(100'000);
    EXPECT_NE(json(value).find("\"value\":100000.0,"), std::string::npos);
    value.SetValue(std::numeric_limits<double>::infinity());
    EXPECT_TRUE(nlohmann::json::parse(json(value))["value"].is_null());
}

TEST(RecordJson, BearingsHaveNullForWhatWasNotMeasured)
{
    BearingMap map;
    map.SetChannelRange(ChannelRange::List({433.92e6, 446e6}));
    map.SetCell(1, {271.5, std::numeric_limits<double>::quiet_NaN(), -48.25, 97}, 1'700'000'000'123'456);
    EXPECT_EQ(json(map), R"({"kind":"BearingMap","range":{"channelsHz":[433920000.0,446000000.0]},)"
                         R"("timeStampUs":1700000000123456,)"
                         R"("cells":[null,{"azimuthDeg":271.5,"elevationDeg":null,"levelDb":-48.25,"quality":97.0}]})");
}

TEST(RecordJson, AMapWithoutChannelsHasNoCells)
{
    EXPECT_EQ(json(LevelMap()),
              R"({"kind":"LevelMap","range":{"startHz":0.0,"stepHz":0.0,"count":0},"timeStampUs":0,"cells":[]})");
}

TEST(RecordJson, TextsAreEscaped)
{
    values::Value<QString> value;
    value.SetValue(QStringLiteral("a \"b\" \\ \n N\u00fcrnberg"));
    EXPECT_EQ(json(value), "{\"kind\":\"String\",\"value\":\"a \\\"b\\\" \\\\ \\n N\u00fcrnberg\"}");
}

TEST(RecordJson, ARecordTellsWhereItStandsAndWhatItHolds)
{
    values::Value<bool> value;
    EXPECT_EQ(recordText("1;0", &value), R"({"timeMs":12,"position":709,"code":36,"keyword":"LEVEL","path":"/LEVEL",)"
                                         R"("value":{"kind":"Bool","value":false},"data":{"text":"1;0"}})");
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

TEST(RecordJson, BytesThatAreNoTextAreInBase64)
{
    EXPECT_EQ(nlohmann::json::parse(recordText("\xff"))["data"]["base64"], "/w==");
}

}  // namespace
}  // namespace RecToolTests
