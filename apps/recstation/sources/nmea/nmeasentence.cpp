// Parsing one line: tag block, checksum, type and fields.
#include "sources/nmea/nmeasentence.h"

#include <algorithm>
#include <charconv>
#include <string>

#include "input/fields.h"

namespace RecStation {

namespace {

std::string_view withoutTagBlock(std::string_view text)
{
    if (text.empty() || text.front() != '\\') {
        return text;
    }
    const std::size_t end = text.find('\\', 1);
    return end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
}

void verifyChecksum(std::string_view body, std::string_view digits)
{
    constexpr int Hexadecimal = 16;
    unsigned stated = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, stated, Hexadecimal);
    if (digits.size() != 2 || error != std::errc() || stop != end) {
        throw LineError(shown(digits) + " behind the * is no checksum");
    }
    unsigned sum = 0;
    for (const char c : body) {
        sum ^= static_cast<unsigned char>(c);
    }
    if (sum != stated) {
        throw LineError("the checksum is wrong");
    }
}

// "GPGGA" is a GGA; proprietary sentences begin with P.
std::string_view typeOf(std::string_view address)
{
    constexpr std::size_t AddressLength = 5;
    const bool letters = std::all_of(address.begin(), address.end(),
                                     [](char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); });
    if (address.empty() || !letters) {
        throw LineError(shown(address) + " names no sentence");
    }
    return address.size() == AddressLength && address.front() != 'P' ? address.substr(2) : address;
}

}  // namespace

std::optional<NmeaSentence> parseNmeaSentence(std::string_view line)
{
    const std::string_view text = trimmed(line);
    if (text.empty() || text.front() == '#') {
        return std::nullopt;
    }
    const std::string_view whole = withoutTagBlock(text);
    if (!whole.empty() && whole.front() == '!') {
        return std::nullopt;
    }
    if (whole.empty() || whole.front() != '$') {
        throw LineError(shown(text) + " is no sentence: it does not begin with $");
    }
    const std::size_t star = whole.find('*');
    const std::string_view body = whole.substr(1, star == std::string_view::npos ? star : star - 1);
    NmeaSentence sentence;
    sentence.hasChecksum = star != std::string_view::npos;
    if (sentence.hasChecksum) {
        verifyChecksum(body, whole.substr(star + 1));
    }
    CommaFields fields(body);
    sentence.address = fields.next().value_or(std::string_view());
    sentence.type = typeOf(sentence.address);
    while (const auto field = fields.next()) {
        sentence.fields.push_back(trimmed(*field));
    }
    return sentence;
}

}  // namespace RecStation
