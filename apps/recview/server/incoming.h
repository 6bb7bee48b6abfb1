// A request as it came in, judged: either something to answer, or a denial.
#pragma once

#include <cstddef>
#include <variant>

#include <boost/beast/http/message.hpp>
#include <boost/beast/http/string_body.hpp>

#include "gate.h"
#include "http.h"

namespace RecView {

using Incoming = boost::beast::http::request<boost::beast::http::string_body>;

/// @param targetBytes how long a target may be
[[nodiscard]] std::variant<Request, Denial> judged(Incoming&& incoming, const Gate& gate, std::size_t targetBytes);

}  // namespace RecView
