// Percent-decoding of paths and queries.
#include "target.h"

#include <charconv>
#include <system_error>
#include <utility>

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

}  // namespace RecView
