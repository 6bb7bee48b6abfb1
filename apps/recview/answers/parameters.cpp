// Parsing numbers, words and spans out of a query.
#include "parameters.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

namespace RecView {

namespace {

[[noreturn]] void refuseParameter(const std::string& name, const std::string& what)
{
    throw Refusal(400, "The parameter \"" + name + "\" " + what + ".");
}

template <typename Number>
std::optional<Number> parsedNumber(const std::string& text)
{
    Number number = 0;
    const char* const end = text.data() + text.size();
    const auto [last, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && last == end ? std::optional(number) : std::nullopt;
}

}  // namespace

Parameters::Parameters(const Request& request, std::initializer_list<const char*> known) : m_query(request.query)
{
    for (const auto& [name, value] : m_query) {
        if (std::find(known.begin(), known.end(), name) == known.end()) {
            refuseParameter(name, "is not one of " + request.path);
        }
    }
}

const std::string& Parameters::text(const std::string& name) const
{
    const auto found = m_query.find(name);
    if (found == m_query.end() || found->second.empty()) {
        refuseParameter(name, "is missing");
    }
    return found->second;
}

std::string Parameters::word(const std::string& name, const std::vector<std::string>& words) const
{
    if (!has(name)) {
        return words.front();
    }
    const std::string& given = text(name);
    if (std::find(words.begin(), words.end(), given) == words.end()) {
        std::string all;
        for (const std::string& one : words) {
            all += (all.empty() ? "" : ", ") + one;
        }
        refuseParameter(name, "is none of " + all);
    }
    return given;
}

double Parameters::number(const std::string& name, const char* what) const
{
    const std::optional<double> number = parsedNumber<double>(text(name));
    constexpr double Most = 1e15;  // far beyond every time and frequency, and exact to a part of a millisecond
    if (!number || !(std::abs(*number) <= Most)) {
        refuseParameter(name, std::string("is not ") + what);
    }
    return *number;
}

double Parameters::moment(const std::string& name) const
{
    return number(name, "a time in milliseconds since 1970");
}

double Parameters::frequency(const std::string& name) const
{
    return number(name, "a frequency in Hz");
}

bool Parameters::flag(const std::string& name) const
{
    return word(name, {"0", "1"}) == "1";
}

std::int64_t Parameters::whole(const std::string& name, std::int64_t least, std::int64_t most,
                               std::optional<std::int64_t> otherwise) const
{
    if (!has(name) && otherwise) {
        return *otherwise;
    }
    const std::optional<std::int64_t> number = parsedNumber<std::int64_t>(text(name));
    if (!number || *number < least || *number > most) {
        refuseParameter(name, "is not a whole number from " + std::to_string(least) + " to " + std::to_string(most));
    }
    return *number;
}

Parameters::Span Parameters::moments() const
{
    const Span span{moment("from"), moment("to")};
    if (span.from > span.to) {
        refuseParameter("from", "lies behind \"to\"");
    }
    return span;
}

Parameters::Span Parameters::frequencies() const
{
    constexpr double Everything = std::numeric_limits<double>::infinity();
    if (!has("low") && !has("high")) {
        return {-Everything, Everything};
    }
    const Span span{frequency("low"), frequency("high")};
    if (span.from > span.to) {
        refuseParameter("low", "lies above \"high\"");
    }
    return span;
}

Parameters::Span Parameters::stretch() const
{
    const Span span = moments();
    if (span.from == span.to) {
        refuseParameter("to", "is the same as \"from\"");
    }
    return span;
}

Parameters::Span Parameters::band(double lowest, double highest) const
{
    Span span = frequencies();
    if (!has("low")) {
        span = {std::isfinite(lowest) ? lowest : 0, std::isfinite(highest) ? highest : 0};
        span.to = span.from < span.to ? span.to : span.from + 1;  // of a single channel
    }
    if (span.from == span.to) {
        refuseParameter("high", "is the same as \"low\"");
    }
    return span;
}

}  // namespace RecView
