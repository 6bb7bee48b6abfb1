// What is known of a recording, given to any thread.
#include "overview.h"

#include <algorithm>
#include <utility>

#include "overviewparts.h"
#include "sweeptext.h"

namespace RecView {

Overview::Private::Reading::Reading(const Private& parts)
{
    m_shared = std::shared_lock(parts.mutex);
    if (parts.settle) {
        m_shared.unlock();
        m_alone = std::unique_lock(parts.mutex);
        if (parts.settle) {
            parts.settle();
        }
    }
}

const KnownType* Overview::Private::type(std::int32_t code) const
{
    const auto found = tables.types.find(code);
    return found == tables.types.end() || found->second.sweeps == 0 ? nullptr : &found->second;
}

Overview::Overview(std::unique_ptr<Private> parts) : d(std::move(parts))
{
}

Overview::~Overview() = default;

std::shared_ptr<Overview> Overview::open(std::unique_ptr<Store> store, RecordSource records)
{
    auto parts = std::make_unique<Private>();
    if (store == nullptr || !parts->tables.read(*store)) {
        return nullptr;
    }
    parts->store = std::move(store);
    parts->records = std::move(records);
    parts->isComplete = true;
    return std::shared_ptr<Overview>(new Overview(std::move(parts)));
}

OverviewHead Overview::head() const
{
    const std::shared_lock lock(d->mutex);
    return d->tables.head;
}

bool Overview::isComplete() const
{
    const std::shared_lock lock(d->mutex);
    return d->isComplete;
}

std::shared_lock<std::shared_mutex> Overview::lock() const
{
    return std::shared_lock(d->mutex);
}

const Store& Overview::store() const
{
    return *d->store;
}

bool Overview::keepAs(const std::filesystem::path& path)
{
    const std::unique_lock lock(d->mutex);
    return d->isComplete && d->store->keep(path);
}

void Overview::setRecords(RecordSource records)
{
    const std::unique_lock lock(d->mutex);
    d->records = std::move(records);
}

std::vector<Spectrum> Overview::spectra() const
{
    const Private::Reading reading(*d);
    std::vector<Spectrum> spectra;
    for (const auto& [code, type] : d->tables.types) {
        if (type.sweeps == 0) {
            continue;
        }
        Spectrum& spectrum = spectra.emplace_back();
        spectrum = {code, type.series.front().series.span, type.firstMs, type.lastMs, type.sweeps};
        for (const KnownSeries& known : type.series) {
            // The grid of mixed ranges is wider than they are; it counts where nothing else is known.
            const RecTool::FrequencySpan& span = known.series.span;
            spectrum.span = {std::min(spectrum.span.lowHz, span.lowHz), std::max(spectrum.span.highHz, span.highHz)};
        }
    }
    return spectra;
}

std::vector<Series> Overview::series() const
{
    const Private::Reading reading(*d);
    std::vector<Series> all;
    for (const auto& [code, type] : d->tables.types) {
        std::transform(type.series.begin(), type.series.end(), std::back_inserter(all),
                       [](const KnownSeries& known) { return known.series; });
    }
    return all;
}

std::vector<RangeChange> Overview::ranges(std::int32_t code, const Stretch& span, std::size_t most) const
{
    const std::shared_lock lock(d->mutex);
    std::vector<RangeChange> changes;
    const KnownType* type = d->type(code);
    if (type == nullptr) {
        return changes;
    }
    const auto after = [](double ms, const SeriesChange& change) { return ms < change.ms; };
    auto change = std::upper_bound(type->changes.begin(), type->changes.end(), span.fromMs, after);
    change -= change == type->changes.begin() ? 0 : 1;
    for (; change != type->changes.end() && change->ms <= span.toMs && changes.size() < most; ++change) {
        changes.push_back({change->ms, type->series[change->series].series.span});
    }
    return changes;
}

RecTool::InForce Overview::stateAt(double ms) const
{
    RecTool::InForce state;
    walk(
        {ms, ms}, [](const Record&, const RecTool::InForce&) { return true; }, &state);
    return state;
}

void Overview::walk(const Stretch& time, const std::function<bool(const Record&, const RecTool::InForce&)>& visit,
                    RecTool::InForce* last) const
{
    std::shared_lock lock(d->mutex);
    const RecordSource records = d->records;
    const double startMs = d->tables.head.startMs;
    const CheckpointReader reader(*d->store);
    // The state at the beginning of the stretch may be asked for, so records at that very time come after it.
    Restored from =
        restored(reader, reader.before(last != nullptr ? time.fromMs : time.fromMs - 1), std::nullopt, records);
    lock.unlock();
    records(from.next, [&](const Record& record) {
        const double timeMs = startMs + static_cast<double>(record.timeMs);
        if (record.timeMs != 0 && timeMs > time.toMs) {
            return false;
        }
        from.state.apply(record);
        return record.timeMs == 0 || timeMs < time.fromMs || visit(record, from.state);
    });
    if (last != nullptr) {
        *last = std::move(from.state);
    }
}

void Overview::sweeps(std::int32_t code, const Stretch& time, const SweepVisitor& visit) const
{
    auto [from, records, head] = sweepsFrom(code, time.fromMs);
    readSweeps(records, head, code, std::move(from), [&](const PassingSweep& sweep) {
        return sweep.momentMs < time.fromMs ||
               (sweep.momentMs <= time.toMs && visit(sweep.record, sweep.momentMs, sweep.range, sweep.levels));
    });
}

Overview::Beginning Overview::sweepsFrom(std::int32_t code, double momentMs) const
{
    const std::shared_lock lock(d->mutex);
    const CheckpointReader reader(*d->store);
    return {restored(reader, reader.beforeMoment(code, momentMs), code, d->records), d->records, d->tables.head};
}

void readSweeps(const RecordSource& records, const OverviewHead& head, std::int32_t code, Restored from,
                const std::function<bool(const PassingSweep&)>& visit)
{
    std::optional<TypeMoments> moments;
    const LevelMap* map = asLevels(from.state.value(code));
    if (const RecTool::LastRecord* last = from.state.find(code)) {
        moments = from.moments[code];
        const LevelMap* inForce = asLevels(last->value);
        if (inForce != nullptr && inForce->size() > 0 &&
            !visit({last->record, moments->lastMs, inForce->GetChannelRange(), inForce->GetCells()})) {
            return;
        }
    }
    std::vector<float> levels;
    Record pending;  // a sweep that the map has not taken over yet
    bool isPending = false;
    records(from.next, [&](const Record& record) {
        if (record.code != code || record.timeMs == 0) {
            return true;
        }
        const double moment = momentOf(record, head, moments ? &*moments : nullptr);
        moments = TypeMoments{moment, 0, {}};
        bool allMeasured = false;
        if (map != nullptr && map->size() > 0 && readWholeSweep(record.data, map->size(), levels, allMeasured)) {
            pending = record;
            isPending = true;
            return visit({record, moment, map->GetChannelRange(), levels});
        }
        if (isPending) {
            from.state.apply(pending);
            isPending = false;
        }
        from.state.apply(record);
        const LevelMap* after = asLevels(from.state.find(code)->value);
        map = asLevels(from.state.value(code));
        const bool isSweep = after != nullptr && after->size() > 0;
        return !isSweep || visit({record, moment, after->GetChannelRange(), after->GetCells()});
    });
}

std::optional<Sweep> Overview::sweepAt(std::int32_t code, double ms) const
{
    auto [from, records, head] = sweepsFrom(code, ms);
    std::optional<Sweep> found;
    std::optional<double> before;
    if (from.moments.contains(code) && from.moments[code].previousMs < from.moments[code].lastMs) {
        before = from.moments[code].previousMs;
    }
    readSweeps(records, head, code, std::move(from), [&](const PassingSweep& sweep) {
        if (sweep.momentMs > ms) {
            if (found) {
                found->nextMs = sweep.momentMs;
            }
            return false;
        }
        before = found ? std::optional(found->momentMs) : before;
        found = Sweep{sweep.record, sweep.momentMs, before,
                      std::nullopt, sweep.range,    {sweep.levels.begin(), sweep.levels.end()}};
        return true;
    });
    return found;
}

}  // namespace RecView
