// A request as it came in, judged: either something to answer, or a denial. What its target says is decoded strictly:
// what could be read in two ways is refused.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include <boost/beast/http/message.hpp>
#include <boost/beast/http/string_body.hpp>

#include "gate.h"
#include "http.h"

namespace RecView {

struct Target {
    std::string path;
    std::map<std::string, std::string> query;
};

/// @param target as in a request line: "/api/view?recording=a%20b&type=3"; a "+" in the query is a blank
/// @param problem one sentence where the result is nothing
[[nodiscard]] std::optional<Target> decodeTarget(std::string_view target, std::string& problem);

using Incoming = boost::beast::http::request<boost::beast::http::string_body>;

/// @param targetBytes how long a target may be
[[nodiscard]] std::variant<Request, Denial> judged(Incoming&& incoming, const Gate& gate, std::size_t targetBytes);

}  // namespace RecView
