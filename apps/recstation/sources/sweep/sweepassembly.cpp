// When a sweep is complete, and how its rows share one grid of channels.
#include "sources/sweep/sweepassembly.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>

namespace RecStation {

namespace {

constexpr std::size_t MostRows = 262'144;

using Place = SweepLayout::Place;

double binWidth(const Place& row)
{
    return (row.highHz - row.lowHz) / static_cast<double>(row.bins);
}

// The channel of a row's bin; the offset is that within a bin, in bins.
double channelHz(const Place& row, std::size_t bin, double offset)
{
    return row.lowHz + (static_cast<double>(bin) + offset) * binWidth(row);
}

double firstChannelHz(const Place& row, double offset)
{
    return channelHz(row, row.skipped, offset);
}

double centre(double lowHz, double highHz)
{
    return lowHz + (highHz - lowHz) / 2;
}

bool coverEachOther(double low1, double high1, double low2, double high2)
{
    const double centre1 = centre(low1, high1);
    const double centre2 = centre(low2, high2);
    return (low1 <= centre2 && centre2 < high1) || (low2 <= centre1 && centre1 < high2);
}

}  // namespace

SweepLayout::SweepLayout(std::vector<Place> rows, bool lowerEdges) : m_rows(std::move(rows))
{
    const double offset = lowerEdges ? 0 : 0.5;
    skipOverlaps(lowerEdges);
    if (!placeOnGrid(offset)) {
        placeInList(offset);
    }
}

double SweepLayout::stepHz() const
{
    return m_range.isList() ? binWidth(m_rows.front()) : m_range.stepHz;
}

// Bins whose channel lies in the row below. Edges that are rounded to whole Hz overlap by less.
void SweepLayout::skipOverlaps(bool lowerEdges)
{
    constexpr double Tolerance = 0.01;  // bins
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        Place& row = m_rows[i];
        const double bins = i == 0 ? 0 : (m_rows[i - 1].highHz - row.lowHz) / binWidth(row);
        const double skipped = lowerEdges ? std::ceil(bins - Tolerance) : std::round(bins);
        row.skipped = skipped <= 0 ? 0 : std::min(row.bins - 1, static_cast<std::size_t>(skipped));
    }
}

bool SweepLayout::placeOnGrid(double offset)
{
    constexpr double Tolerance = 0.01;  // bins
    constexpr std::size_t WidestGaps = 3;
    const double firstHz = firstChannelHz(m_rows.front(), offset);
    // From row to row with the width of the first; then the width that fits them all.
    double steps = 0;
    double measured = 0;
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        const double below = i == 0 ? firstHz : firstChannelHz(m_rows[i - 1], offset);
        steps += std::round((firstChannelHz(m_rows[i], offset) - below) / binWidth(m_rows.front()));
        m_rows[i].channel = steps < static_cast<double>(SweepRowParser::MostBins) ? static_cast<std::size_t>(steps) : 0;
        measured += static_cast<double>(m_rows[i].bins - m_rows[i].skipped);
    }
    const Place& last = m_rows.back();
    const double total = steps + static_cast<double>(last.bins - last.skipped);
    if (total > std::min((WidestGaps + 1) * measured, static_cast<double>(SweepRowParser::MostBins))) {
        return false;
    }
    const double stepHz = steps > 0 ? (firstChannelHz(last, offset) - firstHz) / steps : binWidth(last);
    std::size_t next = 0;
    for (const Place& row : m_rows) {
        const auto offGrid = [&](std::size_t bin) {
            const double gridHz = firstHz + stepHz * static_cast<double>(row.channel + bin - row.skipped);
            return std::abs(channelHz(row, bin, offset) - gridHz) > Tolerance * stepHz;
        };
        if (row.channel < next || offGrid(row.skipped) || offGrid(row.bins - 1)) {
            return false;
        }
        next = row.channel + row.bins - row.skipped;
    }
    m_range = values::ChannelRange::Even(firstHz, stepHz, next);
    return true;
}

void SweepLayout::placeInList(double offset)
{
    std::vector<double> channels;
    for (Place& row : m_rows) {
        row.channel = channels.size();
        for (std::size_t bin = row.skipped; bin < row.bins; ++bin) {
            channels.push_back(channelHz(row, bin, offset));
        }
    }
    m_range = values::ChannelRange::List(std::move(channels));
}

bool SweepAssembly::beginsNext(const SweepRow& row) const
{
    if (m_rows.empty()) {
        return false;
    }
    const auto above = m_rows.upper_bound(row.lowHz);
    if (above != m_rows.end() && coverEachOther(row.lowHz, row.highHz, above->first, above->second.highHz)) {
        return true;
    }
    if (above == m_rows.begin()) {
        return row.time != m_lastTime;  // below all of them
    }
    const auto below = std::prev(above);
    return coverEachOther(row.lowHz, row.highHz, below->first, below->second.highHz);
}

void SweepAssembly::add(const SweepRow& row)
{
    if (row.levelsDb.size() > SweepRowParser::MostBins - m_levels.size()) {
        throw LineError("the sweep has more than " + std::to_string(SweepRowParser::MostBins) + " values");
    }
    if (m_rows.size() >= MostRows) {
        throw LineError("the sweep has more than " + std::to_string(MostRows) + " rows");
    }
    if (m_rows.empty()) {
        m_time = row.time;
    }
    m_lastTime = row.time;
    m_rows.emplace(row.lowHz, Row{row.highHz, row.levelsDb.size(), m_levels.size()});
    m_levels.insert(m_levels.end(), row.levelsDb.begin(), row.levelsDb.end());
}

bool SweepAssembly::isLayout() const
{
    return m_rows.size() == m_layout.rows().size() && isPartOfLayout();
}

// Both ascend, so one walk finds every row.
bool SweepAssembly::isPartOfLayout() const
{
    auto place = m_layout.rows().begin();
    for (const auto& [lowHz, row] : m_rows) {
        place = std::find_if(place, m_layout.rows().end(),
                             [lowHz = lowHz](const Place& candidate) { return candidate.lowHz >= lowHz; });
        if (place == m_layout.rows().end() || !place->sameRow({lowHz, row.highHz, row.bins})) {
            return false;
        }
    }
    return true;
}

bool SweepAssembly::complete() const
{
    constexpr std::size_t Sure = 2;
    return m_sameLayouts >= Sure && isLayout();
}

void SweepAssembly::take(Sweep& sweep)
{
    const bool same = isLayout();
    sweep.newLayout = !same && !(m_loss && isPartOfLayout());
    if (sweep.newLayout) {
        std::vector<Place> places;
        places.reserve(m_rows.size());
        for (const auto& [lowHz, row] : m_rows) {
            places.push_back({lowHz, row.highHz, row.bins});
        }
        m_layout = SweepLayout(std::move(places), m_lowerEdges);
        m_sameLayouts = 0;
    }
    m_sameLayouts += same || sweep.newLayout ? 1 : 0;
    sweep.time = m_time;
    sweep.cells.assign(m_layout.range().size(), std::numeric_limits<float>::quiet_NaN());
    for (const Place& place : m_layout.rows()) {
        const auto row = m_rows.find(place.lowHz);
        if (row != m_rows.end()) {
            const auto first = m_levels.begin() + static_cast<std::ptrdiff_t>(row->second.firstLevel + place.skipped);
            std::copy_n(first, place.bins - place.skipped,
                        sweep.cells.begin() + static_cast<std::ptrdiff_t>(place.channel));
        }
    }
    m_rows.clear();
    m_levels.clear();
    m_loss = false;
}

}  // namespace RecStation
