// Reading the times of loggers.
#include "sources/nmea/loggedtime.h"

#include <string>

#include "input/fields.h"
#include "input/isotime.h"

namespace RecStation {

namespace {

// Fields of a letter, a colon and a value, between commas and up to the checksum.
std::optional<unsigned long long> readTagBlock(std::string_view block)
{
    const std::string_view fields = block.substr(0, block.find('*'));
    for (const std::string_view begin : {"\\c:", ",c:"}) {
        const std::size_t found = fields.find(begin);
        if (found != std::string_view::npos) {
            const std::string_view value = fields.substr(found + begin.size());
            return parseEpoch(std::string(value.substr(0, value.find_first_of(",\\"))));
        }
    }
    return std::nullopt;
}

}  // namespace

std::optional<unsigned long long> readLoggedTime(std::string_view front)
{
    constexpr std::size_t DateLength = 10;
    if (front.empty()) {
        return std::nullopt;
    }
    if (front.front() == '\\') {
        return readTagBlock(front);
    }
    std::string text(trimmed(front, " \t[](),;:|<>\""));
    if (text.size() > DateLength && text[DateLength] == ' ') {
        text[DateLength] = 'T';
    }
    const std::size_t comma = text.find(',', DateLength);  // what some write for a point
    if (comma != std::string::npos) {
        text[comma] = '.';
    }
    const auto time = parseIsoTime(text);
    return time ? time : parseEpoch(text);
}

}  // namespace RecStation
