// Responses as they go out: status, fields that protect the page, body.
#pragma once

#include <string>
#include <string_view>

#include <boost/beast/http/message.hpp>
#include <boost/beast/http/string_body.hpp>

#include "http.h"
#include "page.h"

namespace RecView {

using Reply = boost::beast::http::response<boost::beast::http::string_body>;

/// What every response has; a body, its length and whether the connection stays are still to be said.
[[nodiscard]] Reply emptyReply(int status);
/// Everything but the body.
[[nodiscard]] Reply headOf(const Response& response);
/// @param knownTags If-None-Match of the request
[[nodiscard]] Reply pageReply(const PageFile& file, std::string_view knownTags);

}  // namespace RecView
