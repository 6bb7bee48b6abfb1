// Checks of a request, from the percent-decoding of its line to who sent it.
#include "incoming.h"

#include <charconv>
#include <system_error>
#include <utility>

#include <boost/beast/http/rfc7230.hpp>

#include <terminaltext/terminaltext.h>

namespace RecView {

namespace {

// Nothing where an escape is cut off or has other digits.
std::optional<std::string> withoutEscapes(std::string_view text, bool plusIsBlank)
{
    constexpr int Base = 16;
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            decoded += plusIsBlank && text[i] == '+' ? ' ' : text[i];
            continue;
        }
        const std::string_view digits = text.substr(i + 1, 2);
        unsigned char byte = 0;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), byte, Base);
        if (error != std::errc() || end != digits.data() + 2) {
            return std::nullopt;
        }
        decoded += static_cast<char>(byte);
        i += 2;
    }
    return decoded;
}

bool isPrintableUtf8(std::string_view text)
{
    while (!text.empty()) {
        const TerminalText::Detail::Decoded decoded = TerminalText::Detail::decode(text);
        if (decoded.bytes == 0 || decoded.character < 0x20U || decoded.character == 0x7FU) {
            return false;
        }
        text.remove_prefix(decoded.bytes);
    }
    return true;
}

std::optional<std::string> decodedPart(std::string_view text, bool plusIsBlank, std::string& problem)
{
    std::optional<std::string> decoded = withoutEscapes(text, plusIsBlank);
    if (!decoded) {
        problem = "A % in the address is not followed by two hexadecimal digits.";
    } else if (!isPrintableUtf8(*decoded)) {
        problem = "The address holds a control character, or is no UTF-8.";
        decoded.reset();
    }
    return decoded;
}

bool takeParameter(std::string_view parameter, Target& target, std::string& problem)
{
    const std::size_t equals = parameter.find('=');
    const auto name = decodedPart(parameter.substr(0, equals), true, problem);
    const auto value = decodedPart(equals == std::string_view::npos ? std::string_view() : parameter.substr(equals + 1),
                                   true, problem);
    if (!name || !value) {
        return false;
    }
    if (!target.query.emplace(*name, *value).second) {
        problem = "\"" + *name + "\" stands twice in the address.";
        return false;
    }
    return true;
}

namespace http = boost::beast::http;

std::string textOf(boost::beast::string_view text)
{
    return {text.data(), text.size()};
}

std::optional<std::string> fieldOf(const Incoming& incoming, boost::beast::string_view name)
{
    const auto found = incoming.find(name);
    return found == incoming.end() ? std::nullopt : std::optional(textOf(found->value()));
}

Credentials credentialsOf(const Incoming& incoming)
{
    Credentials credentials;
    const auto [first, last] = incoming.equal_range(http::field::host);
    for (auto host = first; host != last; ++host) {
        credentials.hosts.push_back(textOf(host->value()));
    }
    credentials.origin = fieldOf(incoming, "Origin");
    credentials.fetchSite = fieldOf(incoming, "Sec-Fetch-Site");
    credentials.cookies = fieldOf(incoming, "Cookie").value_or("");
    return credentials;
}

std::optional<Denial> wrongForm(const Incoming& incoming, std::size_t targetBytes)
{
    if (incoming.target().size() > targetBytes) {
        return Denial{414, "The address is too long."};
    }
    if (incoming.count(http::field::content_length) > 0 && incoming.count(http::field::transfer_encoding) > 0) {
        return Denial{400, "The length of the request is told in two ways."};
    }
    const http::verb method = incoming.method();
    if (method != http::verb::get && method != http::verb::head && method != http::verb::post) {
        return Denial{405, "Only GET, HEAD and POST are understood."};
    }
    return std::nullopt;
}

}  // namespace

std::optional<Target> decodeTarget(std::string_view target, std::string& problem)
{
    if (target.empty() || target.front() != '/') {
        problem = "The address of a request begins with a slash.";
        return std::nullopt;
    }
    if (target.find('#') != std::string_view::npos) {
        problem = "The address of a request has no part behind a #.";
        return std::nullopt;
    }
    const std::size_t mark = target.find('?');
    auto path = decodedPart(target.substr(0, mark), false, problem);
    if (!path) {
        return std::nullopt;
    }
    Target decoded{std::move(*path), {}};
    std::string_view rest = mark == std::string_view::npos ? std::string_view() : target.substr(mark + 1);
    while (!rest.empty()) {
        const std::size_t end = rest.find('&');
        const std::string_view parameter = rest.substr(0, end);
        if (!parameter.empty() && !takeParameter(parameter, decoded, problem)) {
            return std::nullopt;
        }
        rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
    }
    return decoded;
}

std::variant<Request, Denial> judged(Incoming&& incoming, const Gate& gate, std::size_t targetBytes)
{
    if (auto denial = wrongForm(incoming, targetBytes)) {
        return *denial;
    }
    std::string problem;
    auto target = decodeTarget(std::string_view(incoming.target().data(), incoming.target().size()), problem);
    if (!target) {
        return Denial{400, problem};
    }
    Request request{
        incoming.method() == http::verb::post ? "POST" : "GET", std::move(target->path), std::move(target->query), {}};
    if (auto denial = gate.denial(request.method, request.path, credentialsOf(incoming))) {
        return *denial;
    }
    request.body = std::move(incoming.body());
    return request;
}

}  // namespace RecView
