// The start of a recording, to the second in UTC, and where its journal lies, out of its file's name.
#include "recordingname.h"

#include <chrono>
#include <regex>

#include "../file/journal.h"

namespace Recording2::Inspection {

std::optional<std::uint64_t> startInName(const std::string& path)
{
    static const std::regex form(R"(__(\d{4})-(\d\d)-(\d\d)__(\d\d)-(\d\d)-(\d\d)_UTC[^/\\]*$)");
    std::smatch found;
    if (!std::regex_search(path, found, form)) {
        return std::nullopt;
    }
    const auto number = [&](std::size_t group) { return std::stoi(found[group].str()); };
    const std::chrono::year_month_day day(std::chrono::year(number(1)),
                                          std::chrono::month(static_cast<unsigned>(number(2))),
                                          std::chrono::day(static_cast<unsigned>(number(3))));
    if (!day.ok()) {
        return std::nullopt;
    }
    const auto time = std::chrono::sys_days(day) + std::chrono::hours(number(4)) + std::chrono::minutes(number(5)) +
                      std::chrono::seconds(number(6));
    const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count();
    return ms > 0 ? std::optional<std::uint64_t>(static_cast<std::uint64_t>(ms)) : std::nullopt;
}

std::string journalOf(const std::string& recording)
{
    constexpr std::string_view Closed = ".rec";
    const bool renamed = recording.size() > Closed.size() && recording.ends_with(Closed);
    return Journal::pathFor(renamed ? recording.substr(0, recording.size() - Closed.size()) + ".tmp" : recording);
}

}  // namespace Recording2::Inspection
