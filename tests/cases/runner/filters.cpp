// What stands after a pipe sign in a case: the parts of a printed text that the case is about.
#include <nlohmann/json.hpp>

#include "helpers.h"

namespace Cases {

namespace {

using nlohmann::json;

/// Whether a pattern, in which "*" stands for one part and "**" for all the rest, names a place in a document.
bool names(const std::string& pattern, const std::string& place)
{
    std::size_t p = 0;
    for (std::size_t at = 0; at < place.size();) {
        if (pattern.compare(p, std::string::npos, "**") == 0) {
            return true;
        }
        if (p < pattern.size() && pattern[p] == '*') {
            at = std::min(place.find('/', at), place.size());
            ++p;
        } else if (p < pattern.size() && pattern[p] == place[at]) {
            ++p;
            ++at;
        } else {
            return false;
        }
    }
    return p == pattern.size();
}

void show(const json& value, const std::string& place, const Words& patterns, std::string& shown)
{
    for (const std::string& pattern : patterns) {
        if (names(pattern, place)) {
            shown += (place.empty() ? "/" : place) + ' ' + value.dump() + '\n';
            return;
        }
    }
    if (value.is_array()) {
        for (std::size_t i = 0; i < value.size(); ++i) {
            show(value[i], place + '/' + std::to_string(i), patterns, shown);
        }
    } else if (value.is_object()) {
        for (const auto& [name, member] : value.items()) {
            show(member, place + '/' + name, patterns, shown);
        }
    }
}

/// The places of a document, or of one a line, that a pattern names.
std::string partsOf(const std::string& text, const Words& patterns)
{
    std::string shown;
    const json document = json::parse(text, nullptr, false);
    if (!document.is_discarded()) {
        show(document, "", patterns, shown);
        return shown;
    }
    int number = 0;
    for (const std::string& line : linesOf(text)) {
        show(json::parse(line), '/' + std::to_string(number++), patterns, shown);
    }
    return shown;
}

/// What rectool cat --json prints, shorter: a line a record with its time, keyword and value.
std::string recordsOf(const std::string& text)
{
    std::string shown;
    for (const std::string& line : linesOf(text)) {
        const json record = json::parse(line);
        shown += record.at("timeMs").dump() + ' ' + record.at("keyword").get<std::string>() + ' ' +
                 record.at("value").dump() + '\n';
    }
    return shown;
}

/// The lines in which one of the words from one on stands, or none of them.
std::string linesWith(const std::string& text, const Words& words, bool wanted)
{
    std::string shown;
    for (const std::string& line : linesOf(text)) {
        const bool isThere = std::any_of(words.begin() + 1, words.end(),
                                         [&](const std::string& word) { return line.find(word) != std::string::npos; });
        if (isThere == wanted) {
            shown += line + '\n';
        }
    }
    return shown;
}

}  // namespace

std::string filtered(const Words& words, const std::string& text)
{
    const std::string& name = words.at(0);
    if (name == "json") {
        return partsOf(text, Words(words.begin() + 1, words.end()));
    }
    if (name == "grep" || name == "without") {
        return linesWith(text, words, name == "grep");
    }
    if (name == "records") {
        return recordsOf(text);
    }
    if (name == "save") {
        return helperOf("write")->operator()({"write", words.at(1), text}, {});
    }
    if (name == "lines") {
        return std::to_string(linesOf(text).size()) + '\n';
    }
    throw std::runtime_error("there is no filter \"" + name + '"');
}

}  // namespace Cases
