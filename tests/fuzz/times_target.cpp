// Times as users and logs write them.
#include <recording2/inspection/inspection.h>

#include "input/timetext.h"
#include "replay/recordingtime.h"
#include "target.h"

namespace Fuzzing {

void runTimes(const std::string& input)
{
    static_cast<void>(RecStation::parseIsoTime(input));
    static_cast<void>(RecStation::parseTimeOfDay(input));
    static_cast<void>(RecStation::parseUtcOffset(input));
    // The first line as a format, the rest as a date.
    const std::size_t end = input.find('\n');
    try {
        const RecStation::LogDateFormat format(input.substr(0, end));
        static_cast<void>(format.parse(end == std::string::npos ? input : input.substr(end + 1)));
    } catch (const std::invalid_argument&) {  // no format
    }
    Recording2::Inspection::Summary summary;
    for (const std::uint64_t start : {std::uint64_t{0}, std::uint64_t{1'700'000'000'000}, ~std::uint64_t{0}}) {
        summary.header.startMs = start;
        summary.bookmarks = {{1000, "alarm"}, {~std::uint64_t{0}, "end"}};
        static_cast<void>(RecTool::parseTime(input, summary));
    }
}

std::vector<std::string> timesSeeds()
{
    return {"2026-11-21T08:30:00.25Z",
            "2026-11-21T08:30",
            "05:31:07.25",
            "-05:00",
            "yyyy-MM-dd\n2026-11-21",
            "M/d/yy\n1/14/17",
            "1500",
            "2023-11-14 22:13:21.5 UTC",
            "22:13:21 local",
            "bookmark:alarm-500",
            "18446744073709551615",
            "bookmark:end+5"};
}

}  // namespace Fuzzing
