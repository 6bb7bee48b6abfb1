// Parsing one line: tag block, checksum, type and fields.
#include "sources/nmea/nmeasentence.h"

#include <algorithm>
#include <charconv>
#include <string>

#include "input/fields.h"

namespace RecStation {

namespace {

// Where the next sentence begins: a line may begin with any $, behind other characters a capital letter follows.
std::size_t findSentence(std::string_view text, std::size_t from)
{
    std::size_t begin = text.find('$', from);
    while (begin != std::string_view::npos && begin > 0) {
        const char next = begin + 1 < text.size() ? text[begin + 1] : ' ';
        if (next >= 'A' && next <= 'Z') {
            break;
        }
        begin = text.find('$', begin + 1);
    }
    return begin;
}

// "!AIVDM,": a sentence of AIS, at the beginning or behind what a logger put there.
bool holdsAis(std::string_view text)
{
    constexpr std::size_t AddressLength = 5;
    const std::size_t begin = text.find('!');
    return begin == 0 || (begin != std::string_view::npos && text.find(',', begin) == begin + 1 + AddressLength);
}

// Some loggers write a time behind the sentence, too.
std::string_view checksumDigits(std::string_view behindStar)
{
    return behindStar.substr(0, behindStar.find_first_of(" \t,;"));
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

// "GPGGA" is a GGA; proprietary sentences begin with P, and some of them have other characters in the name.
std::string_view typeOf(std::string_view address, bool hasChecksum)
{
    constexpr std::size_t AddressLength = 5;
    const bool letters = std::all_of(address.begin(), address.end(),
                                     [](char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); });
    if (address.empty() || (!letters && !hasChecksum)) {
        throw LineError(shown(address) + " names no sentence");
    }
    return address.size() == AddressLength && address.front() != 'P' ? address.substr(2) : address;
}

}  // namespace

bool isBinary(std::string_view text)
{
    return std::any_of(text.begin(), text.end(), [](char c) {
        const auto code = static_cast<unsigned char>(c);
        return (code < ' ' && c != '\t') || code > '~';
    });
}

NmeaLine readNmeaLine(std::string_view line)
{
    std::string_view text = trimmed(line.substr(line.starts_with(ByteOrderMark) ? ByteOrderMark.size() : 0));
    if (text.empty() || text.front() == '#' || text.front() == '{') {
        return {};
    }
    // Of several $ the last: some receivers write two.
    if (text.front() == '$') {
        text.remove_prefix(std::min(text.find_first_not_of('$'), text.size()) - 1);
    }
    const std::size_t begin = std::min(findSentence(text, 0), text.size());
    if (begin == text.size() && !isBinary(text) && !holdsAis(text)) {
        throw LineError(shown(text) + " is no sentence: it does not begin with $");
    }
    return {trimmed(text.substr(0, begin)), text.substr(begin)};
}

std::string_view takeNmeaSentence(std::string_view& sentences)
{
    const std::size_t end = std::min(findSentence(sentences, 1), sentences.size());
    std::string_view sentence = trimmed(sentences.substr(0, end));
    while (sentence.size() > 1 && sentence.ends_with('$')) {  // of the next
        sentence.remove_suffix(1);
    }
    sentences.remove_prefix(end);
    return sentence;
}

NmeaSentence parseNmeaSentence(std::string_view text)
{
    const std::string_view whole = trimmed(text);
    const std::size_t star = whole.find('*');
    const std::string_view body = whole.substr(1, star == std::string_view::npos ? star : star - 1);
    NmeaSentence sentence;
    sentence.hasChecksum = star != std::string_view::npos;
    if (sentence.hasChecksum) {
        verifyChecksum(body, checksumDigits(whole.substr(star + 1)));
    }
    CommaFields fields(body);
    sentence.address = fields.next().value_or(std::string_view());
    sentence.type = typeOf(sentence.address, sentence.hasChecksum);
    sentence.fields = fields.rest();
    return sentence;
}

}  // namespace RecStation
