// What a request's target says, decoded strictly: what could be read in two ways is refused.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace RecView {

struct Target {
    std::string path;
    std::map<std::string, std::string> query;
};

/// @param target as in a request line: "/api/view?recording=a%20b&type=3"; a "+" in the query is a blank
/// @param problem one sentence where the result is nothing
[[nodiscard]] std::optional<Target> decodeTarget(std::string_view target, std::string& problem);

}  // namespace RecView
