// One pass over the records: blocks of levels, checkpoints, and the part of others.
#include <algorithm>
#include <utility>

#include "overviewparts.h"
#include "rectool/printing/text.h"
#include "rectool/replay/recordingtime.h"
#include "sweeptext.h"

namespace RecView {

namespace {

constexpr std::size_t MostTypes = 4096;  // of which a state is kept
constexpr std::size_t MostSpectra = 32;  // of which blocks are made
constexpr std::size_t RecordExtra = 30;  // bytes that a record takes beside its data, with its entry of the time table

}  // namespace

double momentOf(const Record& record, const OverviewHead& head, const TypeMoments* before)
{
    const auto filed = static_cast<double>(record.timeMs);
    const double measured = RecTool::momentMs(record, static_cast<std::uint64_t>(head.startMs));
    const double moment = head.startMs + (measured > std::max(head.lengthMs, filed) ? filed : measured);
    return before == nullptr ? moment : std::max(moment, before->lastMs);
}

struct OverviewBuilder::Private {
    struct Type {
        SweepTracker* tracker = nullptr;
        const LevelMap* map = nullptr;  // as the records before left it, but for the pending one
        Record pending;                 // a sweep that is in the blocks, but not yet in the state
        bool isPending = false;
    };

    void settleAll()
    {
        for (auto& [code, type] : types) {
            if (type.tracker != nullptr) {
                type.tracker->settle(type.map);
                type.tracker->refresh();
            }
        }
    }
    void applyPending(Type& type)
    {
        if (type.isPending) {
            state.apply(type.pending);
            type.isPending = false;
        }
    }
    bool takeWhole(Type& type, const Record& record, const TrackedSweep& sweep);
    const values::ValueBase* apply(Type& type, const Record& record, const TrackedSweep& sweep);
    void track(Type& type, std::int32_t code);
    void writeCheckpoint(const RecordPlace& next);

    std::shared_ptr<Overview> overview;
    Overview::Private* to = nullptr;
    std::unique_ptr<OverviewPart> part;  // null: none
    RecTool::InForce state;
    std::map<std::int32_t, Type> types;
    std::map<std::int32_t, TypeMoments> moments;
    SeriesLimits limits;
    std::unique_ptr<CheckpointWriter> checkpoints;
    bool isCheckpointDue = false;
    std::uint64_t number = 0;
    std::vector<float> levels;
};

bool OverviewBuilder::Private::takeWhole(Type& type, const Record& record, const TrackedSweep& sweep)
{
    bool allMeasured = false;
    const bool mayBe = type.tracker != nullptr && type.map != nullptr && type.map->size() > 0;
    if (!mayBe || !readWholeSweep(record.data, type.map->size(), levels, allMeasured)) {
        return false;
    }
    type.tracker->takeWhole(sweep, levels, allMeasured, *type.map);
    type.pending = record;
    type.isPending = true;
    return true;
}

const values::ValueBase* OverviewBuilder::Private::apply(Type& type, const Record& record, const TrackedSweep& sweep)
{
    applyPending(type);
    if (type.tracker != nullptr) {
        type.tracker->prepare(record.data, sweep.momentMs, type.map);
    }
    state.apply(record);
    const values::ValueBase* value = state.find(record.code)->value;
    type.map = asLevels(state.value(record.code));
    if (const LevelMap* map = asLevels(value); map != nullptr && map->size() > 0) {
        track(type, record.code);
        if (type.tracker != nullptr) {
            type.tracker->take(sweep, *map);
        }
    }
    return value;
}

void OverviewBuilder::Private::track(Type& type, std::int32_t code)
{
    if (type.tracker != nullptr || to->trackers.size() >= MostSpectra) {
        return;
    }
    std::unique_ptr<SweepTracker>& tracker = to->trackers[code];
    tracker = std::make_unique<SweepTracker>(*to->store, code, to->tables.types[code], limits);
    type.tracker = tracker.get();
}

void OverviewBuilder::Private::writeCheckpoint(const RecordPlace& next)
{
    for (auto& [code, type] : types) {
        applyPending(type);
    }
    checkpoints->write(next, to->tables.head.growthMs, state, moments);
    isCheckpointDue = false;
}

OverviewBuilder::OverviewBuilder(std::unique_ptr<Store> store, const Summary& summary, RecordSource records,
                                 const MakePart& makePart)
    : d(std::make_unique<Private>())
{
    auto parts = std::make_unique<Overview::Private>();
    d->to = parts.get();
    parts->store = std::move(store);
    parts->records = std::move(records);
    const Recording2::Inspection::Header& header = summary.header;
    OverviewHead& head = parts->tables.head;
    head.startMs = header.startMs > RecTool::EndOfYear9999Ms ? 0 : static_cast<double>(header.startMs);
    head.lengthMs = header.stopMs > header.startMs ? static_cast<double>(header.stopMs - header.startMs) : 0;
    head.endMs = head.growthMs = head.startMs;
    d->checkpoints = std::make_unique<CheckpointWriter>(*parts->store);
    if (makePart) {
        d->part = makePart(*parts->store, summary);
    }
    parts->settle = [this] { d->settleAll(); };
    d->overview.reset(new Overview(std::move(parts)));
}

OverviewBuilder::~OverviewBuilder()
{
    const std::unique_lock lock(d->to->mutex);
    if (!d->to->isComplete) {
        d->settleAll();
    }
    d->to->settle = nullptr;
}

void OverviewBuilder::add(const Record& record)
{
    const std::uint64_t number = d->number++;
    if (record.timeMs == 0 || d->to->isComplete || (d->types.size() >= MostTypes && !d->types.contains(record.code))) {
        return;
    }
    const std::unique_lock lock(d->to->mutex);
    const RecordPlace place{record.position, number};
    if (d->isCheckpointDue) {
        d->writeCheckpoint(place);
    }
    OverviewHead& head = d->to->tables.head;
    const bool isNew = !d->moments.contains(record.code);
    TypeMoments& moments = d->moments[record.code];
    const double moment = momentOf(record, head, isNew ? nullptr : &moments);
    moments = {moment, isNew ? moment : moments.lastMs, place};
    head.growthMs = head.startMs + static_cast<double>(record.timeMs);
    head.endMs = std::max({head.endMs, head.growthMs, head.startMs + head.lengthMs});
    ++head.records;
    head.bytes = record.position + static_cast<std::int64_t>(record.data.size());

    Private::Type& type = d->types[record.code];
    const std::size_t bytes = record.data.size() + RecordExtra;
    const TrackedSweep sweep{moment, record.position, bytes};
    PassedRecord passed{record, head.growthMs, moment, nullptr, false};
    passed.isSweep = d->takeWhole(type, record, sweep);
    if (!passed.isSweep) {
        passed.value = d->apply(type, record, sweep);
        passed.isSweep = asLevels(passed.value) != nullptr;
    }
    if (d->part != nullptr) {
        d->part->add(passed);
    }
    d->isCheckpointDue = d->checkpoints->passed(bytes);
}

void OverviewBuilder::finish(double endMs)
{
    const std::unique_lock lock(d->to->mutex);
    for (auto& [code, type] : d->types) {
        d->applyPending(type);
        if (type.tracker != nullptr) {
            type.tracker->finish(type.map);
        }
    }
    if (d->part != nullptr) {
        d->part->finish();
    }
    OverviewHead& head = d->to->tables.head;
    head.endMs = endMs > 0 ? endMs : head.endMs;
    d->to->tables.write(*d->to->store);
    d->to->trackers.clear();
    d->to->isComplete = true;
    d->to->settle = nullptr;
}

std::shared_ptr<Overview> OverviewBuilder::overview() const
{
    return d->overview;
}

}  // namespace RecView
