// Applying map records, and telling each channel whose bearing changed or was measured again: all cells of a map are
// marked, and a record's text overwrites marks.
#include "bearingreplay.h"

#include <algorithm>
#include <cmath>

#include <values/recordingtext.h>

#include "printing/valuetext.h"

namespace RecTool {

using values::Bearing;
using values::BearingHandler;
using values::CellMap;
using values::ValueType;

namespace {

constexpr double Mark = -1e300;  // no direction finder says it

}  // namespace

// A text overwrites the cells that it carries: those of marked cells that are not marked any more.
bool CarriedCells::read(const std::string& text, const values::ChannelRange& range)
{
    m_channels.clear();
    m_map.SetChannelRange(range);
    m_marks.resize(range.size());
    for (values::Bearing& mark : m_marks) {
        mark.azimuthDeg = Mark;
    }
    m_map.SetCells(0, m_marks, 0);
    if (!m_map.ApplyRecordedState(text, 0, false)) {
        return false;
    }
    for (std::size_t i = 0; i < m_map.size(); ++i) {
        if (m_map.GetCells()[i].azimuthDeg != Mark) {
            m_channels.push_back(i);
        }
    }
    return true;
}

void MeasuredBearings::apply(const Recording2::Inspection::Record& record)
{
    m_changed.clear();
    m_replay.apply(record);
    if (!m_carried.read(record.data, m_replay.range())) {
        return;
    }
    const bool isState = values::CarriesChannelRange(record.data) && m_carried.timeStampUs() == m_timeStampUs;
    for (const std::size_t channel : measuredChannels(isState)) {
        m_listener({channel, m_replay.channels()[channel].bearing, record.timeMs, m_carried.timeStampUs()});
    }
    m_timeStampUs = m_carried.timeStampUs();
}

std::vector<std::size_t> MeasuredBearings::measuredChannels(bool isState) const
{
    std::vector<std::size_t> channels = m_changed;
    if (isState || m_carried.channels().empty()) {
        return channels;
    }
    const bool namesCells = !m_carried.all() || m_carried.channels().size() == 1;
    if (namesCells) {
        channels.insert(channels.end(), m_carried.channels().begin(), m_carried.channels().end());
        std::sort(channels.begin(), channels.end());
        channels.erase(std::unique(channels.begin(), channels.end()), channels.end());
    }
    return channels.empty() ? likelyChannel() : channels;
}

/// Of a complete map in which nothing changed: what was measured again, as far as anybody can know.
std::vector<std::size_t> MeasuredBearings::likelyChannel() const
{
    constexpr double SameHz = 0.001;  // frequencies are written that exactly
    std::vector<std::size_t> withBearing;
    for (const BearingChange& channel : m_replay.channels()) {
        if (isEmpty(channel.bearing)) {
            continue;
        }
        if (std::abs(range().frequencyHz(channel.channel) - m_frequencyHz) <= SameHz) {
            return {channel.channel};
        }
        withBearing.push_back(channel.channel);
    }
    return withBearing.size() == 1 ? withBearing : std::vector<std::size_t>();
}

bool isSame(const Bearing& a, const Bearing& b)
{
    const auto same = [](double x, double y) { return x == y || (std::isnan(x) && std::isnan(y)); };
    return same(a.azimuthDeg, b.azimuthDeg) && same(a.elevationDeg, b.elevationDeg) && same(a.levelDb, b.levelDb) &&
           same(a.quality, b.quality);
}

void BearingReplay::apply(const Recording2::Inspection::Record& record)
{
    const values::ValueBase* value = m_recorded.apply(record);
    const bool isMap = value != nullptr &&
                       (value->GetType() == ValueType::BearingMap || value->GetType() == ValueType::FastBearingMap);
    if (isMap) {
        update(static_cast<const CellMap<Bearing, BearingHandler>&>(*value), record.timeMs);
    } else {
        ++m_passedOver;
    }
}

void BearingReplay::update(const CellMap<Bearing, BearingHandler>& map, std::uint64_t timeMs)
{
    if (!(map.GetChannelRange() == m_range)) {
        m_range = map.GetChannelRange();
        m_channels.assign(m_range.size(), {});
        for (std::size_t i = 0; i < m_channels.size(); ++i) {
            m_channels[i].channel = i;
        }
    }
    for (std::size_t i = 0; i < m_channels.size(); ++i) {
        if (isSame(m_channels[i].bearing, map.GetCells()[i])) {
            continue;
        }
        m_channels[i] = {i, map.GetCells()[i], timeMs, map.GetTimeStamp()};
        if (m_listener) {
            m_listener(m_channels[i]);
        }
    }
}

}  // namespace RecTool
