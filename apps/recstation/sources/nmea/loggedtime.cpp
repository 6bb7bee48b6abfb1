// Reading the times of loggers.
#include "sources/nmea/loggedtime.h"

#include <string>

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

std::string_view withoutMarks(std::string_view text)
{
    constexpr std::string_view Marks = " \t[](),;:|<>\"";
    const std::size_t first = text.find_first_not_of(Marks);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(Marks) - first + 1);
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
    std::string text(withoutMarks(front));
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
