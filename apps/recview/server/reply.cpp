// Making responses.
#include "reply.h"

#include <nlohmann/json.hpp>

namespace RecView {

namespace {

namespace http = boost::beast::http;

constexpr const char* Policy =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data: blob:; connect-src 'self'; "
    "frame-ancestors 'none'; base-uri 'none'; form-action 'none'";

// In quotes for programs that know nothing else, and with every byte for the others.
std::string attachment(const std::string& name)
{
    constexpr std::string_view Hex = "0123456789ABCDEF";
    constexpr std::string_view Plain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._";
    std::string simple;
    std::string escaped;
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        const bool isPlain = Plain.find(c) != std::string_view::npos;
        simple += isPlain ? c : '_';
        escaped += isPlain ? std::string(1, c) : std::string{'%', Hex[byte >> 4U], Hex[byte & 0xFU]};
    }
    return "attachment; filename=\"" + simple + "\"; filename*=UTF-8''" + escaped;
}

}  // namespace

Reply emptyReply(int status)
{
    constexpr unsigned int Version = 11;
    constexpr int MethodNotAllowed = 405;
    Reply reply(static_cast<http::status>(status), Version);
    reply.set("Content-Security-Policy", Policy);
    reply.set("X-Content-Type-Options", "nosniff");
    reply.set("Referrer-Policy", "no-referrer");
    reply.set("Cross-Origin-Resource-Policy", "same-origin");
    reply.set("Cross-Origin-Opener-Policy", "same-origin");
    reply.set(http::field::cache_control, "no-store");
    if (status == MethodNotAllowed) {
        reply.set(http::field::allow, "GET, HEAD, POST");
    }
    return reply;
}

Response errorResponse(const Denial& denial)
{
    Response response;
    response.status = denial.status;
    response.body =
        nlohmann::json{{"error", denial.sentence}}.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    return response;
}

Reply headOf(const Response& response)
{
    Reply reply = emptyReply(response.status);
    reply.set(http::field::content_type, response.type);
    if (!response.fileName.empty()) {
        reply.set(http::field::content_disposition, attachment(response.fileName));
    }
    return reply;
}

Reply pageReply(const PageFile& file, std::string_view knownTags)
{
    constexpr int Ok = 200;
    constexpr int NotModified = 304;
    const bool isKnown = knownTags.find(file.tag) != std::string_view::npos;
    Reply reply = emptyReply(isKnown ? NotModified : Ok);
    reply.set(http::field::cache_control, "no-cache");
    reply.set(http::field::etag, file.tag);
    reply.set(http::field::content_type, file.type);
    if (!isKnown) {
        reply.body() = file.content;
    }
    return reply;
}

}  // namespace RecView
