// Writing and reading the tables of an overview.
#include "tables.h"

#include <algorithm>
#include <span>
#include <utility>

#include "units.h"

namespace RecView {

namespace {

struct SeriesEntry {
    std::int32_t code = 0;
    std::uint32_t isMixed = 0;
    double firstMs = 0;
    double lastMs = 0;
    double usualMs = 0;
    double againMs = 0;
    std::uint64_t sweeps = 0;
    double startHz = 0;
    double stepHz = 0;
    std::uint64_t channels = 0;
    std::uint64_t listed = 0;  // channels in the column of lists
};

template <typename Entry>
bool readAll(const Store& store, TableKind kind, std::int32_t code, std::vector<Entry>& entries)
{
    const Column* column = store.find(keyOf(kind, code));
    if (column == nullptr) {
        return true;
    }
    entries.resize(static_cast<std::size_t>(column->count<Entry>()));
    return column->read(0, std::span(entries));
}

SeriesEntry entryOf(std::int32_t code, const KnownSeries& known)
{
    const Series& series = known.series;
    return {code,
            series.isMixed ? 1U : 0U,
            series.firstMs,
            series.lastMs,
            series.usualMs,
            known.againMs,
            series.sweeps,
            series.range.startHz,
            series.range.stepHz,
            series.range.size(),
            series.range.channelsHz.size()};
}

}  // namespace

double longestHold(double usualMs)
{
    constexpr double Times = 4;
    constexpr double LeastMs = 1000;
    return std::max(Times * usualMs, LeastMs);
}

std::vector<Stretch> KnownType::covered(const Stretch& within) const
{
    std::vector<Stretch> covered;
    if (sweeps == 0) {
        return covered;
    }
    const auto holdOf = [&](std::uint32_t number) { return longestHold(series[number].series.usualMs); };
    double from = firstMs;
    auto pause = std::lower_bound(pauses.begin(), pauses.end(), within.fromMs,
                                  [](const Pause& p, double ms) { return p.toMs < ms; });
    for (; pause != pauses.end() && pause->fromMs <= within.toMs; ++pause) {
        const double end = pause->fromMs + holdOf(pause->series);
        if (end < pause->toMs) {
            covered.push_back({from, end});
            from = pause->toMs;
        }
    }
    covered.push_back({from, pause == pauses.end() ? lastMs + holdOf(lastSeries) : std::max(within.toMs, from)});
    std::erase_if(covered, [&](const Stretch& s) { return s.toMs < within.fromMs || s.fromMs > within.toMs; });
    return covered;
}

void Tables::write(Store& store) const
{
    store.column(keyOf(TableKind::Head)).append(head);
    for (const auto& [code, type] : types) {
        for (const KnownSeries& known : type.series) {
            store.column(keyOf(TableKind::Series)).append(entryOf(code, known));
            store.column(keyOf(TableKind::ListChannels)).append(std::span<const double>(known.series.range.channelsHz));
        }
        store.column(keyOf(TableKind::Pauses, code)).append(std::span<const Pause>(type.pauses));
        store.column(keyOf(TableKind::Changes, code)).append(std::span<const SeriesChange>(type.changes));
    }
}

bool Tables::read(const Store& store)
{
    std::vector<OverviewHead> heads;
    std::vector<SeriesEntry> entries;
    std::vector<double> channels;
    if (!readAll(store, TableKind::Head, 0, heads) || heads.size() != 1 ||
        !readAll(store, TableKind::Series, 0, entries) || !readAll(store, TableKind::ListChannels, 0, channels)) {
        return false;
    }
    head = heads.front();
    std::size_t listed = 0;
    for (const SeriesEntry& entry : entries) {
        KnownType& type = types[entry.code];
        if (entry.listed > channels.size() - listed) {
            return false;
        }
        const auto first = channels.begin() + static_cast<std::ptrdiff_t>(listed);
        listed += static_cast<std::size_t>(entry.listed);
        values::ChannelRange range =
            values::ChannelRange::Even(entry.startHz, entry.stepHz, static_cast<std::size_t>(entry.channels));
        if (entry.listed > 0) {
            range = values::ChannelRange::List({first, first + static_cast<std::ptrdiff_t>(entry.listed)});
        }
        const auto number = static_cast<std::uint32_t>(type.series.size());
        const RecTool::FrequencySpan span = wholeSpan(range);
        type.series.push_back({{entry.code, number, std::move(range), entry.isMixed != 0, span, entry.sweeps,
                                entry.firstMs, entry.lastMs, entry.usualMs},
                               entry.againMs});
        const bool isFirst = type.sweeps == 0;
        type.firstMs = isFirst ? entry.firstMs : std::min(type.firstMs, entry.firstMs);
        if (isFirst || entry.lastMs >= type.lastMs) {
            type.lastMs = entry.lastMs;
            type.lastSeries = number;
        }
        type.sweeps += entry.sweeps;
    }
    return std::all_of(types.begin(), types.end(), [&](auto& each) {
        auto& [code, type] = each;
        return readAll(store, TableKind::Pauses, code, type.pauses) &&
               readAll(store, TableKind::Changes, code, type.changes);
    });
}

}  // namespace RecView
