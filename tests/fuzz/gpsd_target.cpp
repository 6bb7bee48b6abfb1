// What a peer that calls itself gpsd sends, line by line.
#include <chrono>
#include <cmath>

#include "sources/gpsd/gpsdreport.h"
#include "sources/gpsd/gpsdstate.h"
#include "target.h"

namespace Fuzzing {

void runGpsd(const std::string& input)
{
    constexpr double HighestLatitude = 90;
    constexpr double FullCircle = 360;
    RecStation::GpsdState any("", {});
    RecStation::GpsdState one("/dev/ttyS0", 2.0);
    RecStation::GpsdState::Time now;
    std::string_view rest = input;
    while (!rest.empty()) {
        const std::size_t end = rest.find('\n');
        const auto report = RecStation::parseGpsdReport(rest.substr(0, end));
        rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
        now += std::chrono::seconds(1);
        for (RecStation::GpsdState* state : {&any, &one}) {
            state->passTime(now);
            if (report) {
                state->take(*report, now);
            }
            const RecStation::Fix change = state->takeChange();
            require(!change.latitudeDeg || !(std::abs(*change.latitudeDeg) > HighestLatitude), "a latitude is one");
            require(!change.headingDeg || !(*change.headingDeg < 0 || *change.headingDeg >= FullCircle),
                    "a heading is from 0 to below 360");
        }
    }
}

std::vector<std::string> gpsdSeeds()
{
    return {R"({"class":"VERSION","release":"3.22","rev":"3.22","proto_major":3,"proto_minor":14})"
            "\n"
            R"({"class":"DEVICES","devices":[{"class":"DEVICE","path":"/dev/pts/1","native":0,"bps":4800}]})"
            "\n"
            R"({"class":"TPV","device":"/dev/ttyS0","status":2,"mode":3,"time":"2026-05-02T19:41:16.000Z",)"
            R"("lat":44.435293333,"lon":-71.675498333,"altMSL":268.0,"alt":268.0,"magvar":-14.7,"speed":2.919})"
            "\n"
            R"({"class":"ATT","device":"/dev/pts/1","heading":274.12,"mheading":218.634,"pitch":0.135,"roll":3.861})"
            "\n"
            R"({"class":"TPV","mode":1})"
            "\n"
            R"({"class":"ERROR","message":"Unrecognized request"})"
            "\n"};
}

}  // namespace Fuzzing
