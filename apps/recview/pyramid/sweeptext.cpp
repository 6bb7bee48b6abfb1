// Three characters a level, in two loops that the processor can hurry through.
#include "sweeptext.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>

namespace RecView {

namespace {

// The grammar of doc/recording-text.md.
constexpr std::string_view LevelsTag = "6;";
constexpr std::string_view AllCellsTag = "50;";
constexpr std::string_view SomeCellsTag = "51;";
constexpr char CommandEnd = '|';
constexpr std::size_t CellBytes = 3;
constexpr std::uint32_t ZeroDigit = '<';
constexpr std::uint32_t DigitMask = 0x3F;
constexpr std::int32_t ZeroLevel = 0x20000;
constexpr std::int32_t NoLevel = 0x3FFFF - ZeroLevel;
constexpr float PerDb = 100;

/// Takes "6;TIME" off the front, and the separator where something follows.
bool takeHead(std::string_view& text)
{
    if (!text.starts_with(LevelsTag)) {
        return false;
    }
    std::uint64_t time = 0;
    const char* end = text.data() + text.size();
    const auto [last, error] = std::from_chars(text.data() + LevelsTag.size(), end, time);
    if (error != std::errc() || (last != end && *last != CommandEnd)) {
        return false;
    }
    text.remove_prefix(static_cast<std::size_t>(last - text.data()));
    if (!text.empty()) {
        text.remove_prefix(1);
        return !text.empty();
    }
    return true;
}

/// How many cells a payload has; nothing is said of their digits.
bool countCells(std::string_view payload, std::size_t& count)
{
    count = 0;
    while (!payload.empty()) {
        std::size_t bytes = CellBytes;
        if (payload.front() == '(') {
            const std::size_t close = payload.find(')');
            bytes = close == std::string_view::npos ? payload.size() + 1 : close + 1;
        }
        if (bytes > payload.size()) {
            return false;
        }
        payload.remove_prefix(bytes);
        ++count;
    }
    return count > 0;
}

}  // namespace

bool readWholeSweep(std::string_view text, std::size_t channels, std::vector<float>& levels, bool& allMeasured)
{
    if (!takeHead(text) || !text.starts_with(AllCellsTag) || text.size() != AllCellsTag.size() + CellBytes * channels) {
        return false;
    }
    const auto* digits = reinterpret_cast<const unsigned char*>(text.data() + AllCellsTag.size());
    levels.resize(channels);
    std::uint32_t all = 0;
    constexpr std::size_t Block = 256;
    std::int32_t steps[Block];
    std::int32_t highest = std::numeric_limits<std::int32_t>::min();
    for (std::size_t begin = 0; begin < channels; begin += Block) {
        const std::size_t count = std::min(Block, channels - begin);
        for (std::size_t i = 0; i < count; ++i, digits += CellBytes) {
            const std::uint32_t first = digits[0] - ZeroDigit;
            const std::uint32_t second = digits[1] - ZeroDigit;
            const std::uint32_t third = digits[2] - ZeroDigit;
            all |= first | second | third;
            steps[i] = static_cast<std::int32_t>((first << 12U) | (second << 6U) | third) - ZeroLevel;
        }
        float* out = levels.data() + begin;
        for (std::size_t i = 0; i < count; ++i) {
            out[i] = static_cast<float>(steps[i]) / PerDb;
            highest = std::max(highest, steps[i]);
        }
    }
    allMeasured = highest < NoLevel;
    if (!allMeasured) {
        std::replace(levels.begin(), levels.end(), static_cast<float>(NoLevel) / PerDb,
                     std::numeric_limits<float>::quiet_NaN());
    }
    return all <= DigitMask;
}

bool readWrittenCells(std::string_view text, std::size_t channels, std::vector<CellRun>& runs)
{
    runs.clear();
    if (!takeHead(text)) {
        return false;
    }
    std::size_t behind = 0;
    while (!text.empty()) {
        if (!text.starts_with(SomeCellsTag)) {
            return false;
        }
        std::string_view payload = text.substr(SomeCellsTag.size());
        const std::size_t length = std::min(payload.find(CommandEnd), payload.size());
        text = payload.substr(length == payload.size() ? length : length + 1);
        payload = payload.substr(0, length);
        std::size_t first = 0;
        std::size_t count = 0;
        const char* end = payload.data() + payload.size();
        const auto [last, error] = std::from_chars(payload.data(), end, first);
        if (error != std::errc() || last == end || *last != ',' || first < behind || first >= channels) {
            return false;
        }
        payload.remove_prefix(static_cast<std::size_t>(last - payload.data()) + 1);
        if (!countCells(payload, count) || count > channels - first) {
            return false;
        }
        behind = first + count;
        runs.emplace_back(first, behind);
    }
    return true;
}

}  // namespace RecView
