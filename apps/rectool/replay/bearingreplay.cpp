// Applying map records, and telling each channel whose bearing changed.
#include "bearingreplay.h"

#include <cmath>

namespace RecTool {

using values::Bearing;
using values::BearingHandler;
using values::CellMap;
using values::ValueType;

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
