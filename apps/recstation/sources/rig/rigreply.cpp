// Reading answers line by line, and the values in them.
#include "sources/rig/rigreply.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "input/fields.h"

namespace RecStation {

namespace {

constexpr std::string_view CodeMark = "RPRT ";

// What a command before may have left behind: some versions end the answer to chk_vfo with a code, some do not.
bool isLeftOver(std::string_view line)
{
    return line.empty() || line.starts_with(CodeMark);
}

}  // namespace

std::optional<RigReply> RigReplyReader::take(std::string_view line)
{
    if (++m_lines > MostLines) {
        throw ConnectionError("its answer to " + m_command + " has no end");
    }
    if (!m_begun) {
        m_begun = line.starts_with(m_command) && line.substr(m_command.size()).starts_with(':');
        if (!m_begun && !isLeftOver(line)) {
            throw ConnectionError("it does not answer as rigctld does: " + shown(line));
        }
        return std::nullopt;
    }
    if (!line.starts_with(CodeMark)) {
        const std::size_t colon = line.find(": ");
        m_reply.values.emplace_back(trimmed(colon == std::string_view::npos ? line : line.substr(colon + 2)));
        return std::nullopt;
    }
    const auto code = parseNumber<int>(trimmed(line.substr(CodeMark.size())));
    if (!code) {
        throw ConnectionError("it does not answer as rigctld does: " + shown(line));
    }
    m_reply.code = *code;
    return std::move(m_reply);
}

bool isNotOffered(int code)
{
    constexpr std::array Lasting = {-1, -4, -11, -18};  // invalid, not implemented, not available, deprecated
    return std::find(Lasting.begin(), Lasting.end(), code) != Lasting.end();
}

std::string rigErrorText(int code)
{
    constexpr std::array Texts = {
        "all is well",
        "invalid parameter",
        "invalid configuration",
        "no memory",
        "not implemented",
        "communication timed out",
        "input or output failed",
        "internal error",
        "protocol error",
        "rejected by the receiver",
        "cut short",
        "not available",
        "VFO not accessible",
        "bus error",
        "bus collision",
        "invalid handle",
        "invalid VFO",
        "out of range",
        "deprecated",
        "password needed",
        "receiver is off",
    };
    const auto index = static_cast<std::size_t>(-static_cast<long long>(code));
    return (index < Texts.size() ? std::string(Texts[index]) + ", " : std::string()) + "RPRT " + std::to_string(code);
}

std::optional<double> parseRigHertz(std::string_view text)
{
    constexpr double Highest = 1e12;
    const auto number = parseNumber<double>(text);
    return number && *number > 0 && *number <= Highest ? number : std::nullopt;
}

std::optional<double> parseRigStrength(std::string_view text)
{
    constexpr double Farthest = 1000;
    const auto number = parseNumber<double>(text);
    return number && std::abs(*number) <= Farthest ? number : std::nullopt;
}

std::optional<std::string> parseRigMode(std::string_view text)
{
    constexpr std::size_t Longest = 16;
    const bool good = !text.empty() && text.size() <= Longest &&
                      text.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_") ==
                          std::string_view::npos;
    return good ? std::optional<std::string>(text) : std::nullopt;
}

std::optional<bool> parseVfoMode(std::string_view line)
{
    const std::string_view text = trimmed(line);
    const std::string_view last = text.substr(text.find_last_of(' ') + 1);  // all of it without a blank
    return last == "0" || last == "1" ? std::optional(last == "1") : std::nullopt;
}

}  // namespace RecStation
