// The channels of a map: which are allowed, and how they stand in texts. Levels as three digits of 0.01 dB or written
// out, bearings as their numbers.
#include "maptexts.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>
#include <utility>

namespace values {

namespace {

constexpr std::size_t MostChannels = 16'777'216;

bool readEvenRange(std::string_view payload, ChannelRange& range)
{
    std::uint64_t count = 0;
    if (!Text::readNumber(Text::takeField(payload), range.startHz) ||
        !Text::readNumber(Text::takeField(payload), range.stepHz) || !Text::readNumber(payload, count)) {
        return false;
    }
    range.count = static_cast<std::size_t>(count);
    return isAllowed(range);
}

bool readListRange(std::string_view payload, ChannelRange& range)
{
    const auto count = static_cast<std::size_t>(std::count(payload.begin(), payload.end(), Text::FieldEnd)) + 1;
    if (count > MostChannels) {
        return false;
    }
    range.count = count;
    range.channelsHz.resize(count);
    for (double& channel : range.channelsHz) {
        const bool last = &channel == &range.channelsHz.back();
        if (!Text::readNumber(last ? payload : Text::takeField(payload), channel)) {
            return false;
        }
    }
    return isAllowed(range);
}

QString frequencyText(double hz)
{
    struct Unit {
        double size;
        const char* name;
    };
    constexpr Unit Units[]{{1e9, "GHz"}, {1e6, "MHz"}, {1e3, "kHz"}, {1, "Hz"}};
    const auto* unit = std::find_if(std::begin(Units), std::end(Units) - 1,
                                    [hz](const Unit& candidate) { return std::fabs(hz) >= candidate.size; });
    return QStringLiteral("%1 %2").arg(hz / unit->size, 0, 'g', 12).arg(QString::fromLatin1(unit->name));
}

// 64 digits from '<' to '{', which contain no character of the grammar.
constexpr char ZeroDigit = '<';
constexpr unsigned DigitBits = 6;
constexpr std::uint32_t DigitMask = 0x3F;
constexpr std::size_t Digits = 3;

constexpr double StepsPerDb = 100;
constexpr std::uint32_t ZeroDb = 0x20000;
constexpr std::uint32_t NoMeasurement = 0x3FFFF;

constexpr char EscapeBegin = '(';
constexpr char EscapeEnd = ')';
constexpr char BearingEnd = '/';

bool isCompact(double steps)
{
    return steps >= 0 && steps < NoMeasurement;  // false for NaN
}

void putDigits(char* place, std::uint32_t code)
{
    place[0] = static_cast<char>(ZeroDigit + static_cast<char>(code >> (2 * DigitBits)));
    place[1] = static_cast<char>(ZeroDigit + static_cast<char>((code >> DigitBits) & DigitMask));
    place[2] = static_cast<char>(ZeroDigit + static_cast<char>(code & DigitMask));
}

void appendEscape(std::string& text, float level)
{
    text += EscapeBegin;
    Text::appendNumber(text, level);
    text += EscapeEnd;
}

std::uint32_t digit(char character)
{
    return static_cast<std::uint32_t>(static_cast<unsigned char>(character)) - static_cast<std::uint32_t>(ZeroDigit);
}

bool takeCompact(std::string_view& payload, float& level)
{
    if (payload.size() < Digits) {
        return false;
    }
    const std::uint32_t first = digit(payload[0]);
    const std::uint32_t second = digit(payload[1]);
    const std::uint32_t third = digit(payload[2]);
    if ((first | second | third) > DigitMask) {
        return false;
    }
    const std::uint32_t code = (first << (2 * DigitBits)) | (second << DigitBits) | third;
    level = code == NoMeasurement ? std::numeric_limits<float>::quiet_NaN()
                                  : static_cast<float>((static_cast<double>(code) - ZeroDb) / StepsPerDb);
    payload.remove_prefix(Digits);
    return true;
}

bool takeEscape(std::string_view& payload, float& level)
{
    const std::size_t end = payload.find(EscapeEnd);
    if (end == std::string_view::npos || !Text::readNumber(payload.substr(1, end - 1), level)) {
        return false;
    }
    payload.remove_prefix(end + 1);
    return true;
}

using Fields = std::array<double, 4>;

void appendBearing(std::string& text, const Bearing& bearing)
{
    const Fields fields{bearing.azimuthDeg, bearing.elevationDeg, bearing.levelDb, bearing.quality};
    std::size_t fieldEnds = 0;
    for (const double field : fields) {
        if (!std::isnan(field)) {
            text.append(fieldEnds, Text::FieldEnd);
            Text::appendNumber(text, field);
            fieldEnds = 0;
        }
        ++fieldEnds;
    }
    text += BearingEnd;
}

bool readBearing(std::string_view text, Bearing& bearing)
{
    Fields fields{};
    for (double& field : fields) {
        const bool last = &field == &fields.back();
        const std::string_view digits = last ? text : Text::takeField(text);
        field = std::numeric_limits<double>::quiet_NaN();
        if (!digits.empty() && !Text::readNumber(digits, field)) {
            return false;
        }
    }
    bearing = {fields[0], fields[1], fields[2], fields[3]};
    return true;
}

}  // namespace

ChannelRange ChannelRange::Even(double startHz, double stepHz, std::size_t count)
{
    return {startHz, stepHz, count, {}};
}

ChannelRange ChannelRange::List(std::vector<double> channelsHz)
{
    const std::size_t count = channelsHz.size();
    return {0, 0, count, std::move(channelsHz)};
}

double ChannelRange::frequencyHz(std::size_t channel) const
{
    return isList() ? channelsHz[channel] : startHz + stepHz * static_cast<double>(channel);
}

ChannelRange normalized(const ChannelRange& range)
{
    return range.isList() ? ChannelRange::List(range.channelsHz) : range;
}

bool isAllowed(const ChannelRange& range)
{
    return range.size() <= MostChannels && std::isfinite(range.startHz) && std::isfinite(range.stepHz) &&
           std::all_of(range.channelsHz.begin(), range.channelsHz.end(), [](double hz) { return std::isfinite(hz); });
}

void appendRange(std::string& text, const ChannelRange& range)
{
    if (!range.isList()) {
        Text::appendCommand(text, Text::EvenRange);
        Text::appendNumber(text, range.startHz);
        text += Text::FieldEnd;
        Text::appendNumber(text, range.stepHz);
        text += Text::FieldEnd;
        Text::appendNumber(text, range.count);
        return;
    }
    Text::appendCommand(text, Text::ListRange);
    for (const double channel : range.channelsHz) {
        Text::appendNumber(text, channel);
        text += Text::FieldEnd;
    }
    text.pop_back();
}

bool readRange(const Text::Command& command, ChannelRange& range)
{
    return command.number == Text::EvenRange ? readEvenRange(command.payload, range)
                                             : readListRange(command.payload, range);
}

QString rangeText(const ChannelRange& range)
{
    const std::size_t count = range.size();
    if (count == 0) {
        return QStringLiteral("no channels");
    }
    if (count == 1) {
        return QStringLiteral("1 channel, %1").arg(frequencyText(range.frequencyHz(0)));
    }
    return QStringLiteral("%1 channels, %2 to %3")
        .arg(count)
        .arg(frequencyText(range.frequencyHz(0)), frequencyText(range.frequencyHz(count - 1)));
}

void appendCells(std::string& text, std::span<const float> levels)
{
    std::array<char, 256 * Digits> block{};
    std::size_t used = 0;
    for (const float level : levels) {
        // Adding a half and cutting off rounds to the nearest step.
        const double steps = static_cast<double>(level) * StepsPerDb + (ZeroDb + 0.5);
        const bool none = std::isnan(level);
        if (!none && !isCompact(steps)) {
            text.append(block.data(), used);
            used = 0;
            appendEscape(text, level);
            continue;
        }
        if (used == block.size()) {
            text.append(block.data(), used);
            used = 0;
        }
        putDigits(block.data() + used, none ? NoMeasurement : static_cast<std::uint32_t>(steps));
        used += Digits;
    }
    text.append(block.data(), used);
}

void appendCells(std::string& text, std::span<const Bearing> bearings)
{
    for (const Bearing& bearing : bearings) {
        appendBearing(text, bearing);
    }
}

bool readCells(std::string_view payload, std::size_t most, std::vector<float>& levels)
{
    levels.reserve(levels.size() + std::min(most, payload.size() / Digits));
    for (; !payload.empty() && most > 0; --most) {
        float level = 0;
        if (payload.front() == EscapeBegin ? !takeEscape(payload, level) : !takeCompact(payload, level)) {
            return false;
        }
        levels.push_back(level);
    }
    return payload.empty();
}

bool readCells(std::string_view payload, std::size_t most, std::vector<Bearing>& bearings)
{
    for (; !payload.empty() && most > 0; --most) {
        const std::size_t end = payload.find(BearingEnd);
        Bearing bearing;
        if (end == std::string_view::npos || !readBearing(payload.substr(0, end), bearing)) {
            return false;
        }
        bearings.push_back(bearing);
        payload.remove_prefix(end + 1);
    }
    return payload.empty();
}

}  // namespace values
