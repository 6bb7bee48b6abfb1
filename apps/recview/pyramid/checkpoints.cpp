// Writing the state of every value now and then, and going back to it.
#include "checkpoints.h"

#include <algorithm>
#include <string>
#include <utility>

#include "tables.h"

namespace RecView {

namespace {

constexpr std::uint64_t LeastBetween = std::uint64_t{1} << 20U;  // bytes of records: read in a few milliseconds
constexpr double ShareForCheckpoints = 1.0 / 64;                 // of the bytes of records

}  // namespace

bool CheckpointWriter::passed(std::uint64_t bytes)
{
    m_since += bytes;
    m_credit += static_cast<double>(bytes) * ShareForCheckpoints;
    return m_since >= LeastBetween && m_credit >= m_lastCost;
}

void CheckpointWriter::write(const RecordPlace& next, double timeMs, const RecTool::InForce& state,
                             const std::map<std::int32_t, TypeMoments>& moments)
{
    // A map of very many channels is not put into words before there is room for them.
    double expected = 0;
    for (const auto& [code, last] : state.entries()) {
        constexpr double PerCell = 3;
        const auto* map = dynamic_cast<const values::MappingBase*>(state.value(code));
        const double cells = map == nullptr ? 0 : static_cast<double>(map->size());
        const double listed = map == nullptr ? 0 : static_cast<double>(map->GetChannelRange().channelsHz.size());
        expected += cells * PerCell + listed * 12 + sizeof(StateEntry);
    }
    m_since = 0;
    m_lastCost = expected;
    if (expected > m_credit) {
        return;
    }
    Column& states = m_store.column(keyOf(TableKind::States));
    Column& texts = m_store.column(keyOf(TableKind::Texts));
    const auto load = state.load();
    CheckpointEntry checkpoint{next,          timeMs,        states.count<StateEntry>(), state.entries().size(),
                               load.channels, load.textBytes};
    double cost = sizeof checkpoint;
    for (const auto& [code, last] : state.entries()) {
        const std::vector<std::string> complete = state.completeTexts(code);
        StateEntry entry;
        entry.code = code;
        entry.texts = static_cast<std::uint32_t>(complete.size());
        entry.timeMs = last.record.timeMs;
        entry.firstText = texts.bytes();
        entry.firstBytes = complete.empty() ? 0 : complete[0].size();
        entry.secondBytes = complete.size() < 2 ? 0 : complete[1].size();
        entry.isUnderstood = last.value != nullptr ? 1 : 0;
        entry.isItsText = !complete.empty() && complete.back() == last.record.data ? 1 : 0;
        const auto known = moments.find(code);
        entry.moments = known == moments.end() ? TypeMoments() : known->second;
        entry.last = {last.record.position, entry.moments.last.number};
        for (const std::string& text : complete) {
            texts.append(std::span<const char>(text));
            cost += static_cast<double>(text.size());
        }
        states.append(entry);
        cost += sizeof entry;
    }
    m_store.column(keyOf(TableKind::Checkpoints)).append(checkpoint);
    m_credit -= cost;
    m_lastCost = cost;
}

CheckpointReader::CheckpointReader(const Store& store)
    : m_checkpoints(store.find(keyOf(TableKind::Checkpoints))),
      m_states(store.find(keyOf(TableKind::States))),
      m_texts(store.find(keyOf(TableKind::Texts))),
      m_count(m_checkpoints != nullptr && m_states != nullptr && m_texts != nullptr
                  ? m_checkpoints->count<CheckpointEntry>()
                  : 0)
{
}

template <typename Predicate>
std::uint64_t CheckpointReader::countWhile(const Predicate& isSo) const
{
    return m_count == 0 ? 0 : m_checkpoints->partitionPoint<CheckpointEntry>(isSo);
}

std::optional<CheckpointEntry> CheckpointReader::lastOf(std::uint64_t count) const
{
    return count == 0 ? std::nullopt : std::optional(m_checkpoints->at<CheckpointEntry>(count - 1));
}

std::optional<CheckpointEntry> CheckpointReader::before(double timeMs) const
{
    return lastOf(countWhile([timeMs](const CheckpointEntry& checkpoint) { return checkpoint.timeMs <= timeMs; }));
}

std::uint64_t CheckpointReader::countBeforeMoment(std::int32_t code, double momentMs) const
{
    return countWhile([&](const CheckpointEntry& checkpoint) {
        const std::vector<StateEntry> found = states(checkpoint, code);
        // Without a record of the type all of them come later.
        return found.empty() || found.front().moments.lastMs <= momentMs;
    });
}

std::optional<CheckpointEntry> CheckpointReader::beforeMoment(std::int32_t code, double momentMs) const
{
    return lastOf(countBeforeMoment(code, momentMs));
}

std::optional<CheckpointEntry> CheckpointReader::afterMoment(std::int32_t code, double momentMs) const
{
    const std::uint64_t count = countBeforeMoment(code, momentMs);
    return count < m_count ? lastOf(count + 1) : std::nullopt;
}

std::vector<StateEntry> CheckpointReader::states(const CheckpointEntry& checkpoint,
                                                 std::optional<std::int32_t> code) const
{
    std::vector<StateEntry> states(static_cast<std::size_t>(
        std::min(checkpoint.states,
                 m_states->count<StateEntry>() - std::min(checkpoint.firstState, m_states->count<StateEntry>()))));
    if (!m_states->read(checkpoint.firstState, std::span(states))) {
        return {};
    }
    if (code) {
        std::erase_if(states, [&](const StateEntry& state) { return state.code != *code; });
    }
    return states;
}

std::vector<std::string> CheckpointReader::texts(const StateEntry& state) const
{
    std::vector<std::string> texts;
    std::uint64_t at = state.firstText;
    for (const std::uint64_t bytes : {state.firstBytes, state.secondBytes}) {
        if (texts.size() < state.texts && at <= m_texts->bytes() && bytes <= m_texts->bytes() - at) {
            std::string& text = texts.emplace_back(static_cast<std::size_t>(bytes), '\0');
            static_cast<void>(m_texts->read(at, std::span(text)));
            at += bytes;
        }
    }
    return texts;
}

Restored restored(const CheckpointReader& reader, const std::optional<CheckpointEntry>& checkpoint,
                  std::optional<std::int32_t> code, const RecordSource& records)
{
    Restored restored;
    if (!checkpoint) {
        return restored;
    }
    restored.next = checkpoint->next;
    for (const StateEntry& entry : reader.states(*checkpoint, code)) {
        std::vector<std::string> texts = reader.texts(entry);
        Record last{entry.last.position, entry.timeMs, entry.code, {}};
        if (entry.isItsText != 0 && !texts.empty()) {
            last.data = texts.back();
        } else {
            records(entry.last, [&](const Record& record) {
                last.data = record.data;
                return false;
            });
        }
        restored.state.restore(std::move(last), texts, entry.isUnderstood != 0);
        restored.moments[entry.code] = entry.moments;
    }
    restored.state.setLoad({checkpoint->channels, checkpoint->textBytes});
    return restored;
}

}  // namespace RecView
