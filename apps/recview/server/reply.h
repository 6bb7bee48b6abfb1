// Responses as they go out: status, fields that protect the page, body; and the page as it was compiled into the
// program.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <boost/beast/http/message.hpp>
#include <boost/beast/http/string_body.hpp>

#include "http.h"

namespace RecView {

struct PageFile {
    std::string content;
    const char* type = "";
    std::string tag;  ///< another for another content, in quotes
};

/// @param path of a request; "/" is the page itself
/// @return nullptr where the page has no such file
[[nodiscard]] const PageFile* pageFile(const std::string& path);
[[nodiscard]] std::vector<std::string> pageFiles();  ///< all paths

using Reply = boost::beast::http::response<boost::beast::http::string_body>;

/// What every response has; a body, its length and whether the connection stays are still to be said.
[[nodiscard]] Reply emptyReply(int status);
/// Everything but the body.
[[nodiscard]] Reply headOf(const Response& response);
/// @param knownTags If-None-Match of the request
[[nodiscard]] Reply pageReply(const PageFile& file, std::string_view knownTags);

}  // namespace RecView
