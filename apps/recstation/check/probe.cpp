// Counting changes by source and value, and what the values are at the end.
#include "check/probe.h"

#include <algorithm>
#include <cmath>

#include <values/maps.h>
#include <values/value.h>

namespace RecStation {

namespace {

using LevelCells = values::FastValueMap<float, values::levelHandler>;
using BearingCells = values::ValueMap<values::Bearing, values::BearingHandler>;
using FastBearingCells = values::FastValueMap<values::Bearing, values::BearingHandler>;

bool isMeasured(float level)
{
    return !std::isnan(level);
}

bool isMeasured(const values::Bearing& bearing)
{
    return !std::isnan(bearing.azimuthDeg);
}

template <typename Map>
bool hasMeasurement(const Map& map)
{
    const auto cells = map.GetCells();
    return std::any_of(cells.begin(), cells.end(), [](const auto& cell) { return isMeasured(cell); });
}

bool isRecorderStatus(const QString& path)
{
    return path.contains(QStringLiteral("/REC_"));
}

FoundValue foundValueOf(const values::ValueBase& value)
{
    FoundValue found;
    found.path = value.GetPath();
    found.unknown = isUnknown(value);
    if (const auto* map = dynamic_cast<const values::MappingBase*>(&value)) {
        const values::ChannelRange& range = map->GetChannelRange();
        found.cells = range.size();
        if (found.cells > 0) {
            found.lowestHz = range.frequencyHz(0);
            found.highestHz = range.frequencyHz(found.cells - 1);
        }
    } else {
        found.text = value.GetText();
    }
    return found;
}

}  // namespace

bool isUnknown(const values::ValueBase& value)
{
    if (const auto* levels = dynamic_cast<const LevelCells*>(&value)) {
        return !hasMeasurement(*levels);
    }
    if (const auto* bearings = dynamic_cast<const BearingCells*>(&value)) {
        return !hasMeasurement(*bearings);
    }
    if (const auto* bearings = dynamic_cast<const FastBearingCells*>(&value)) {
        return !hasMeasurement(*bearings);
    }
    if (const auto* number = dynamic_cast<const values::ValueNumeric<double>*>(&value)) {
        return std::isnan(number->GetValue());
    }
    const QString text = value.GetText();
    return text.isEmpty() || text == QLatin1String("UNKNOWN");
}

void Probe::leaveOut(const values::Tree& tree)
{
    m_leftOut = tree.Paths();
    m_followed = tree.Size();
}

void Probe::begin(std::size_t source, unsigned long long timeUs)
{
    m_source = source;
    m_timeUs = timeUs;
}

void Probe::follow(const values::Tree& tree)
{
    if (tree.Size() == m_followed) {
        return;
    }
    for (const QString& path : tree.Paths()) {
        values::ValueBase* value = tree.Find(path);
        if (!isRecorderStatus(path) && !m_leftOut.contains(path) && !value->IsObservedBy(this)) {
            value->AddObserver(this);
            m_seen[m_source][path];
        }
    }
    m_followed = tree.Size();
}

void Probe::Update(void* subject, TChangeCode code)
{
    const auto* value = static_cast<const values::ValueBase*>(subject);
    if (code == TChangeCode::Removed) {
        m_followed -= value->QueryChange(code) == 1 ? 1U : 0U;
        return;
    }
    Seen& seen = m_seen[m_source][value->GetPath()];
    if (!isUnknown(*value)) {
        seen.firstUs = seen.shown == 0 ? m_timeUs : seen.firstUs;
        seen.lastUs = m_timeUs;
        ++seen.shown;
    }
}

std::vector<FoundValue> Probe::valuesOf(std::size_t source, const values::Tree& tree) const
{
    constexpr double MicrosecondsPerSecond = 1e6;
    std::vector<FoundValue> all;
    const auto own = m_seen.find(source);
    if (own == m_seen.end()) {
        return all;
    }
    for (const auto& [path, seen] : own->second) {
        if (const values::ValueBase* value = tree.Find(path)) {
            FoundValue found = foundValueOf(*value);
            found.shown = seen.shown;
            if (seen.shown > 1 && seen.lastUs > seen.firstUs) {
                found.perSecond = static_cast<double>(seen.shown - 1) * MicrosecondsPerSecond /
                                  static_cast<double>(seen.lastUs - seen.firstUs);
            }
            all.push_back(found);
        }
    }
    return all;
}

std::uint64_t Probe::shown(std::size_t source, const QString& path) const
{
    const auto own = m_seen.find(source);
    if (own == m_seen.end()) {
        return 0;
    }
    const auto seen = own->second.find(path);
    return seen == own->second.end() ? 0 : seen->second.shown;
}

std::uint64_t Probe::shown(std::size_t source) const
{
    std::uint64_t sum = 0;
    if (const auto own = m_seen.find(source); own != m_seen.end()) {
        for (const auto& [path, seen] : own->second) {
            sum += seen.shown;
        }
    }
    return sum;
}

}  // namespace RecStation
