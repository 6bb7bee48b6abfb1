// The documents of a KrakenSDR, and others in their place.

#include <gtest/gtest.h>

#include "krakentesting.h"
#include "sources/kraken/krakenanswer.h"

namespace RecStation {
namespace {

std::string xml(const std::string& doa, const std::string& power, const std::string& confidence)
{
    return "<DATA><STATION_ID>N</STATION_ID><TIME>1679512414650</TIME><FREQUENCY>151.88</FREQUENCY><LOCATION>"
           "<LATITUDE>66.96</LATITUDE><LONGITUDE>-66.4</LONGITUDE><HEADING>12.5</HEADING></LOCATION><DOA>" +
           doa + "</DOA><PWR>" + power + "</PWR><CONF>" + confidence + "</CONF></DATA>";
}

std::vector<LoggedBearing> parse(const std::string& body, Mirror mirror = Mirror::Auto)
{
    KrakenAnswers answers(mirror);
    return answers.parse(body);
}

TEST(KrakenAnswer, EachLineIsABearing)
{
    const auto bearings = parse(krakenLine("134") + "\r\n" + krakenLine("20"));
    ASSERT_EQ(bearings.size(), 2U);
    EXPECT_EQ(bearings[0].azimuthDeg, 134);
    EXPECT_EQ(bearings[1].azimuthDeg, 20);
}

TEST(KrakenAnswer, XmlAndCsvOfOneBearingAreTheSameAndOlderXmlHasPowerAndConfidenceAsCsvHasThem)
{
    const auto csv = parse(krakenLine("134", outputWithPeak(226))).at(0);
    const auto bearings = parse(xml("226", "51.5", "41"));
    ASSERT_EQ(bearings.size(), 1U);
    EXPECT_EQ(bearings[0].azimuthDeg, csv.azimuthDeg);
    EXPECT_EQ(bearings[0].levelDb, csv.levelDb);
    EXPECT_EQ(bearings[0].quality, csv.quality);
    EXPECT_EQ(bearings[0].frequencyHz, csv.frequencyHz);
    EXPECT_EQ(bearings[0].time, csv.time);
    EXPECT_EQ(bearings[0].headingDeg, csv.headingDeg);
    const auto older = parse(xml("226", "-48.5", "2.05"), Mirror::No);
    EXPECT_EQ(older[0].azimuthDeg, 226);
    EXPECT_EQ(older[0].levelDb, -48.5);
    EXPECT_EQ(older[0].quality, 2.05);
}

TEST(KrakenAnswer, WhatIsCutIsPassedOverAndCounted)
{
    KrakenAnswers answers(Mirror::Auto);
    EXPECT_EQ(answers.parse(krakenLine("134") + "16795124146").size(), 1U);
    EXPECT_EQ(answers.parse(xml("1", "1", "1").substr(0, 100)).size(), 0U);
    EXPECT_EQ(answers.parse(" \r\n").size(), 0U);
    EXPECT_EQ(answers.broken(), 2U);
}

TEST(KrakenAnswer, AnythingElseIsRefused)
{
    for (const std::string body :
         {"<!DOCTYPE html><html><body>Index of /</body></html>", "<HTML></HTML>", "<svg/>", "Not found", "{\"a\": 1}",
          "<DATA>\n<DOA>12</DOA>\n<CONF>0.03</CONF>\n<PWR>-8.7</PWR>\n</DATA>"}) {
        EXPECT_THROW(static_cast<void>(parse(body)), ConnectionError) << body;
    }
}

TEST(KrakenAnswer, AnswersThatNeverHoldABearingAreRefusedInTheEnd)
{
    KrakenAnswers answers(Mirror::Auto);
    for (int i = 0; i < 9; ++i) {
        EXPECT_TRUE(answers.parse("123, 45").empty());
    }
    EXPECT_THROW(static_cast<void>(answers.parse("123, 45")), ConnectionError);
}

TEST(KrakenAnswer, HostileDocumentsAreHarmless)
{
    std::string deep;
    for (int i = 0; i < 100'000; ++i) {
        deep += "<DATA>";
    }
    EXPECT_TRUE(parse(deep).empty());
    EXPECT_TRUE(
        parse("<!DOCTYPE DATA [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;\"><!ENTITY c "
              "\"&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;\"><!ENTITY d \"&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;\"><!ENTITY e "
              "\"&d;&d;&d;&d;&d;&d;&d;&d;&d;&d;\">]><DATA><DOA>&e;&e;&e;</DOA></DATA>")
            .empty());
    std::string lines;
    for (int i = 0; i < 1000; ++i) {
        lines += krakenLine("1");
    }
    KrakenAnswers answers(Mirror::Auto);
    EXPECT_EQ(answers.parse(lines).size(), 64U);
    EXPECT_EQ(answers.broken(), 936U);
    EXPECT_TRUE(parse(std::string(1'000'000, '1')).empty());
}

}  // namespace
}  // namespace RecStation
