// What a KrakenSDR answers: over HTTP, as a document, and line by line.
#include <string>

#include "input/badlines.h"
#include "input/fields.h"
#include "sources/bearings/krakenrow.h"
#include "sources/kraken/httpfetch.h"
#include "sources/kraken/krakenanswer.h"
#include "support/testing.h"

namespace RecStation {
namespace {

/// The 360 values with their peak at a direction, as the finder writes them: two decimals, flat on top.
std::string outputWithPeak(int peakDeg)
{
    constexpr int Circle = 360;
    std::string text;
    for (int i = 0; i < Circle; ++i) {
        const int apart = ((i - peakDeg) % Circle + Circle) % Circle;
        const int from = apart > Circle / 2 ? Circle - apart : apart;
        text += from <= 5 ? ", 0.47" : ", 0.1" + std::to_string(from % 10);
    }
    return text;
}

std::string krakenLine(const std::string& angle, const std::string& output = {})
{
    return "1679512414650, " + angle +
           ", 0.41, -48.5, 151880000, UCA, 100, dingus, 66.961348, -66.4438057, 12.5, 99, GPS, " + "R, R, R, R" +
           output + " \n";
}

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

LoggedBearing parse(KrakenRows& rows, const std::string& line)
{
    std::vector<std::string_view> fields;
    CommaFields rest(line);
    for (auto field = rest.next(); field; field = rest.next()) {
        fields.push_back(trimmed(*field));
    }
    return rows.parse(fields);
}

double azimuth(Mirror mirror, const std::string& line)
{
    KrakenRows rows(mirror);
    return parse(rows, line).azimuthDeg;
}

TEST(KrakenRow, TellsAllThatHasAKeyword)
{
    KrakenRows rows(Mirror::Auto);
    const LoggedBearing bearing = parse(rows, krakenLine("134"));
    EXPECT_EQ(bearing.time, 1'679'512'414'650'000U);
    EXPECT_EQ(bearing.azimuthDeg, 134);
    EXPECT_EQ(bearing.quality, 0.41);
    EXPECT_EQ(bearing.levelDb, -48.5);
    EXPECT_EQ(bearing.frequencyHz, 151'880'000);
    EXPECT_EQ(bearing.station, "dingus");
    EXPECT_EQ(bearing.latitudeDeg, 66.961348);
    EXPECT_EQ(bearing.longitudeDeg, -66.4438057);
    EXPECT_EQ(bearing.headingDeg, 12.5);
}

TEST(KrakenRow, AnAngleAtThePeakOfTheValuesIsCounterClockwiseUnlessAnOptionDecides)
{
    EXPECT_EQ(azimuth(Mirror::Auto, krakenLine("134", outputWithPeak(134))), 226);
    EXPECT_EQ(azimuth(Mirror::Auto, krakenLine("134.5", outputWithPeak(137))), 225.5);
    EXPECT_EQ(azimuth(Mirror::Auto, krakenLine("134", outputWithPeak(226))), 134);
    EXPECT_EQ(azimuth(Mirror::Auto, krakenLine("360", outputWithPeak(0))), 0);
    EXPECT_EQ(azimuth(Mirror::Yes, krakenLine("134", outputWithPeak(226))), 226);
    EXPECT_EQ(azimuth(Mirror::No, krakenLine("134", outputWithPeak(134))), 134);
    EXPECT_EQ(azimuth(Mirror::Yes, krakenLine("0")), 0);
    EXPECT_EQ(azimuth(Mirror::No, krakenLine("-32")), 328);
}

TEST(KrakenRow, WhatTellsNeitherIsTakenAsTheLineBefore)
{
    KrakenRows rows(Mirror::Auto);
    EXPECT_EQ(parse(rows, krakenLine("100", outputWithPeak(30))).azimuthDeg, 100);  // neither
    EXPECT_FALSE(rows.foundMirrored());
    EXPECT_EQ(parse(rows, krakenLine("30", outputWithPeak(30))).azimuthDeg, 330);
    EXPECT_TRUE(rows.foundMirrored());
    EXPECT_EQ(parse(rows, krakenLine("2", outputWithPeak(0))).azimuthDeg, 358);  // both
    EXPECT_EQ(parse(rows, krakenLine("10")).azimuthDeg, 350);                    // no values
    EXPECT_EQ(parse(rows, krakenLine("330", outputWithPeak(30))).azimuthDeg, 330);
    EXPECT_EQ(parse(rows, krakenLine("10", ", nan" + outputWithPeak(10).substr(6))).azimuthDeg, 10);
}

TEST(KrakenRow, WhatIsNotKnownStaysUnknown)
{
    KrakenRows rows(Mirror::Auto);
    const LoggedBearing bearing =
        parse(rows, "1679512414650, 1, 1e9, -inf, 1, UCA, 100, x, 0.0, 0.0, None, 0, GPS, R, R, R, R");
    EXPECT_TRUE(std::isnan(bearing.latitudeDeg));
    EXPECT_TRUE(std::isnan(bearing.longitudeDeg));
    EXPECT_TRUE(std::isnan(bearing.headingDeg));
    EXPECT_TRUE(std::isnan(bearing.levelDb));
    EXPECT_EQ(bearing.quality, 100);
}

TEST(KrakenRow, WhatCannotBeIsRefused)
{
    const std::string behind = ", UCA, 100, x, 1, 1, 0, 0, GPS, R, R, R, R";
    KrakenRows rows(Mirror::Auto);
    for (const std::string& line :
         {std::string(), std::string("1679512414650, 1, 1, 1, 1"), std::string(20'000, ','), "0, 1, 1, 1, 1" + behind,
          "-1, 1, 1, 1, 1" + behind, "99999999999999999999, 1, 1, 1, 1" + behind,
          "1679512414650, 361, 1, 1, 1" + behind, "1679512414650, inf, 1, 1, 1" + behind,
          "1679512414650, 1, nan, 1, 1" + behind, "1679512414650, 1, 1, 1, 0" + behind,
          "1679512414650, 1, 1, 1, 1e13" + behind,
          std::string("1679512414650, 1, 1, 1, 1, UCA, 100, x, 91, 1, 0, 0, GPS, R, R, R, R")}) {
        EXPECT_THROW(static_cast<void>(parse(rows, line)), LineError) << line.substr(0, 80);
    }
}

std::string bodyOf(const std::string& bytes, std::size_t piece)
{
    HttpAnswer answer;
    for (std::size_t i = 0; i < bytes.size(); i += piece) {
        answer.put(std::string_view(bytes).substr(i, piece));
    }
    if (!answer.isWhole() && !answer.end()) {
        throw ConnectionError("cut off");
    }
    return answer.takeBody();
}

TEST(HttpAnswer, ComesInPiecesOfAnySize)
{
    for (const std::size_t piece : {1U, 7U, 1000U}) {
        EXPECT_EQ(bodyOf("HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nhello", piece), "hello");
        EXPECT_EQ(
            bodyOf("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nhel\r\n2\r\nlo\r\n0\r\n\r\n", piece),
            "hello");
        EXPECT_EQ(bodyOf("HTTP/1.0 200 OK\r\n\r\nhello", piece), "hello");  // the end of the connection ends it
    }
}

TEST(HttpAnswer, WhatIsCutOffTooLargeOrNoHttpIsRefused)
{
    EXPECT_THROW(bodyOf("HTTP/1.1 200 OK\r\nContent-Length: 500\r\n\r\nhello", 1000), ConnectionError);
    EXPECT_THROW(bodyOf("HTTP/1.1 200 OK\r\nConte", 1000), ConnectionError);
    EXPECT_THROW(bodyOf("", 1), ConnectionError);
    EXPECT_THROW(bodyOf("HTTP/1.1 200 OK\r\nContent-Length: 2000000\r\n\r\n", 1000), ConnectionError);
    for (const std::size_t piece : {1U, 7U, 43U, 16'384U}) {
        EXPECT_THROW(bodyOf("HTTP/1.1 200 OK\r\nContent-Length: 2000000\r\n\r\n" + std::string(2'000'000, 'x'), piece),
                     ConnectionError);
    }
    EXPECT_THROW(bodyOf("HTTP/1.1 200 OK\r\n\r\n" + std::string(2'000'000, 'x'), 10'000), ConnectionError);
    EXPECT_THROW(bodyOf("HTTP/1.1 200 OK\r\nX: " + std::string(100'000, 'x'), 10'000), ConnectionError);
    EXPECT_THROW(bodyOf(std::string(100'000, '\0'), 10'000), ConnectionError);
    EXPECT_THROW(bodyOf("SSH-2.0-OpenSSH_9.2\r\n\r\n", 10'000), ConnectionError);
}

TEST(HttpAnswer, ARefusalIsToldWithItsReason)
{
    try {
        static_cast<void>(bodyOf("HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n", 1000));
        FAIL();
    } catch (const ConnectionError& error) {
        EXPECT_STREQ(error.what(), "it answers 404 Not Found");
    }
}

TEST(HttpUrl, AHostAloneIsAKraken)
{
    EXPECT_EQ(urlText(parseHttpUrl("krakensdr").value()), "http://krakensdr:8081/DOA_value.html");
    EXPECT_EQ(urlText(parseHttpUrl("[::1]:90").value()), "http://[::1]:90/DOA_value.html");
    EXPECT_EQ(urlText(parseHttpUrl("http://10.0.0.1/doa.xml?x=1").value()), "http://10.0.0.1:80/doa.xml?x=1");
    EXPECT_EQ(urlText(parseHttpUrl("host/doa.xml").value()), "http://host:8081/doa.xml");
    for (const char* wrong : {"", "http://", "https://host/", "http://u:p@host/", "host/a b", "host/a\r\nX: y",
                              "host:x", "http:///a", "ftp://host/a"}) {
        EXPECT_FALSE(parseHttpUrl(wrong)) << wrong;
    }
}

}  // namespace
}  // namespace RecStation
