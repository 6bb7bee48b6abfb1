// The channels of a map: which are allowed, and how they stand in texts.
#include "channelrange.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string_view>
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

}  // namespace values
