// Reading channel ranges from record texts, and joining them to a few spans.
#include "recordedranges.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <system_error>
#include <utility>

namespace RecTool {

namespace {

// The grammar of doc/recording-text.md.
constexpr std::string_view EvenRange = "34;";
constexpr std::string_view ListRange = "134;";
constexpr char CommandSeparator = '|';

/// The command of the channel range, which is the first of a text or stands after the kind; empty without one.
std::string_view rangeCommand(std::string_view text)
{
    for (int i = 0; i < 2 && !text.empty(); ++i) {
        const std::string_view command = text.substr(0, text.find(CommandSeparator));
        if (command.starts_with(EvenRange) || command.starts_with(ListRange)) {
            return command;
        }
        text.remove_prefix(std::min(text.size(), command.size() + 1));
    }
    return {};
}

/// Cuts a number off the front of a list; nothing when none stands there.
std::optional<double> takeNumber(std::string_view& fields)
{
    const std::string_view field = fields.substr(0, fields.find(','));
    fields.remove_prefix(std::min(fields.size(), field.size() + 1));
    double number = 0;
    const auto [last, error] = std::from_chars(field.data(), field.data() + field.size(), number);
    const bool isNumber = error == std::errc() && last == field.data() + field.size() && std::isfinite(number);
    return isNumber ? std::optional(number) : std::nullopt;
}

}  // namespace

void RecordedRanges::add(std::string_view text)
{
    const std::string_view command = rangeCommand(text);
    if (command.empty() || command == m_last) {
        return;
    }
    m_last = command;
    if (command.starts_with(EvenRange)) {
        addEven(command.substr(EvenRange.size()));
    } else {
        addList(command.substr(ListRange.size()));
    }
}

void RecordedRanges::addEven(std::string_view fields)
{
    const std::optional<double> start = takeNumber(fields);
    const std::optional<double> step = takeNumber(fields);
    const std::optional<double> count = takeNumber(fields);
    if (start && step && count && *count >= 1) {
        const double stop = *start + *step * (*count - 1);
        addSpan(std::min(*start, stop), std::max(*start, stop), *count > 1 ? std::abs(*step) : 0);
    }
}

void RecordedRanges::addList(std::string_view fields)
{
    std::optional<FrequencySpan> span;
    while (!fields.empty()) {
        if (const std::optional<double> channel = takeNumber(fields)) {
            span = span ? FrequencySpan{std::min(span->lowHz, *channel), std::max(span->highHz, *channel)}
                        : FrequencySpan{*channel, *channel};
        }
    }
    if (span) {
        addSpan(span->lowHz, span->highHz, 0);
    }
}

void RecordedRanges::addSpan(double lowHz, double highHz, double stepHz)
{
    constexpr std::size_t MostSteps = 8;
    constexpr std::size_t MostSpans = 32;
    if (stepHz > 0 && m_steps.size() < MostSteps) {
        m_steps.insert(stepHz);
    }
    FrequencySpan added{lowHz, highHz};
    std::vector<FrequencySpan> spans;
    for (const FrequencySpan& span : m_spans) {
        if (span.highHz + stepHz < added.lowHz || added.highHz + stepHz < span.lowHz) {
            spans.push_back(span);
        } else {
            added = {std::min(added.lowHz, span.lowHz), std::max(added.highHz, span.highHz)};
        }
    }
    const auto place =
        std::find_if(spans.begin(), spans.end(), [&](const FrequencySpan& s) { return s.lowHz > added.lowHz; });
    spans.insert(place, added);
    m_spans = std::move(spans);
    if (m_spans.size() > MostSpans) {
        joinNearest();
    }
}

void RecordedRanges::joinNearest()
{
    std::size_t nearest = 1;
    const auto gap = [&](std::size_t i) { return m_spans[i].lowHz - m_spans[i - 1].highHz; };
    for (std::size_t i = 2; i < m_spans.size(); ++i) {
        nearest = gap(i) < gap(nearest) ? i : nearest;
    }
    m_spans[nearest - 1].highHz = m_spans[nearest].highHz;
    m_spans.erase(m_spans.begin() + static_cast<std::ptrdiff_t>(nearest));
}

}  // namespace RecTool
