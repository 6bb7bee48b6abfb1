// What answers in place of a KrakenSDR: HTTP, then CSV or XML.
#include "sources/kraken/httpfetch.h"
#include "sources/kraken/krakenanswer.h"
#include "target.h"

namespace Fuzzing {

namespace {

void parseBody(const std::string& body)
{
    constexpr double FullCircle = 360;
    constexpr double MostQuality = 100;
    for (const auto mirror : {RecStation::Mirror::Auto, RecStation::Mirror::Yes}) {
        try {
            RecStation::KrakenAnswers answers(mirror);
            for (const RecStation::LoggedBearing& bearing : answers.parse(body)) {
                require(bearing.azimuthDeg >= 0 && bearing.azimuthDeg < FullCircle, "an azimuth is none");
                require(bearing.quality >= 0 && bearing.quality <= MostQuality, "a quality is none");
                require(bearing.frequencyHz > 0 && bearing.time > 0, "frequency or time are missing");
                require(!(bearing.headingDeg < 0 || bearing.headingDeg >= FullCircle), "a heading is none");
            }
        } catch (const RecStation::ConnectionError& error) {
            require(*error.what() != '\0', "an error says nothing");
        }
    }
}

}  // namespace

void runKraken(const std::string& input)
{
    parseBody(input);
    try {
        RecStation::HttpAnswer answer;
        const std::size_t half = input.size() / 2;
        answer.put(input.substr(0, half));
        answer.put(input.substr(half));
        if (answer.isWhole() || answer.end()) {
            const std::string body = answer.takeBody();
            require(body.size() <= RecStation::HttpAnswer::LongestBody, "a body is too large");
            parseBody(body);
        }
    } catch (const RecStation::ConnectionError& error) {
        require(*error.what() != '\0', "an error says nothing");
    }
}

std::vector<std::string> krakenSeeds()
{
    const std::string line =
        "1679512414650, 134, 0.41, -48.5, 151880000, UCA, 100, dingus, 66.961348, -66.4438057, 0, 0, GPS, R, R, R, R";
    std::string output;
    for (int i = 0; i < 360; ++i) {
        output += i == 226 ? ", 0.47" : ", 0.1";
    }
    return {
        line + output + " \n", "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(line.size()) + "\r\n\r\n" + line,
        "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4\r\n1679\r\n0\r\n\r\n",
        "<DATA><STATION_ID>N</STATION_ID><TIME>1679512414650</TIME><FREQUENCY>151.88</FREQUENCY><LOCATION><LATITUDE>"
        "66.96</LATITUDE><LONGITUDE>-66.4</LONGITUDE><HEADING>12.5</HEADING></LOCATION><DOA>226</DOA><PWR>51.5</PWR>"
        "<CONF>41</CONF></DATA>"};
}

}  // namespace Fuzzing
