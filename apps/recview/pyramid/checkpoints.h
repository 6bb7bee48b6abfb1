// What is needed to go on from a place in a recording as if all records before had been read.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "overview.h"
#include "store.h"

namespace RecView {

/// What the pass knows of a type's records.
struct TypeMoments {
    double lastMs = 0;      ///< moment of the last record
    double previousMs = 0;  ///< of the one before
    RecordPlace last;       ///< of the last record
};

/// Where reading may begin, in the store.
struct CheckpointEntry {
    RecordPlace next;   ///< of the next record
    double timeMs = 0;  ///< of the last record before, since 1970 UTC
    std::uint64_t firstState = 0;
    std::uint64_t states = 0;
    std::uint64_t channels = 0;  ///< of RecTool::RecordedValues::Load
    std::uint64_t textBytes = 0;
};

/// A type's state at a checkpoint, in the store.
struct StateEntry {
    std::int32_t code = 0;
    std::uint32_t texts = 0;         ///< 0 to 2, as InForce::completeTexts gives them
    RecordPlace last;                ///< of the last record
    std::uint64_t timeMs = 0;        ///< of it, in the recording
    std::uint64_t firstText = 0;     ///< byte in the column of texts
    std::uint64_t firstBytes = 0;    ///< of the first text
    std::uint64_t secondBytes = 0;   ///< of the second text
    std::uint32_t isUnderstood = 0;  ///< the last record
    std::uint32_t isItsText = 0;     ///< the last text is the last record's data
    TypeMoments moments;
};

/// Writes checkpoints as the records pass.
class CheckpointWriter {
public:
    explicit CheckpointWriter(Store& store) : m_store(store) {}

    /// A record takes so many bytes of the file. @return whether it is time for a checkpoint after it
    [[nodiscard]] bool passed(std::uint64_t bytes);
    void write(const RecordPlace& next, double timeMs, const RecTool::InForce& state,
               const std::map<std::int32_t, TypeMoments>& moments);

private:
    Store& m_store;
    double m_credit = 0;
    std::uint64_t m_since = 0;
    double m_lastCost = 0;
};

/// Everything as it was at a checkpoint.
struct Restored {
    RecordPlace next;  ///< where reading goes on
    RecTool::InForce state;
    std::map<std::int32_t, TypeMoments> moments;
};

/// Looks for checkpoints of a store. Its lock must be held.
class CheckpointReader {
public:
    explicit CheckpointReader(const Store& store);

    /// The last checkpoint all of whose records are not after a time; nothing where there is none.
    [[nodiscard]] std::optional<CheckpointEntry> before(double timeMs) const;
    /// The last one at which no record of a type had a moment after this one.
    [[nodiscard]] std::optional<CheckpointEntry> beforeMoment(std::int32_t code, double momentMs) const;
    /// The first one at which a record of a type had a later moment.
    [[nodiscard]] std::optional<CheckpointEntry> afterMoment(std::int32_t code, double momentMs) const;
    /// The states of a checkpoint, of one type or of all.
    [[nodiscard]] std::vector<StateEntry> states(const CheckpointEntry& checkpoint,
                                                 std::optional<std::int32_t> code) const;
    [[nodiscard]] std::vector<std::string> texts(const StateEntry& state) const;

private:
    template <typename Predicate>
    [[nodiscard]] std::uint64_t countWhile(const Predicate& isSo) const;
    [[nodiscard]] std::optional<CheckpointEntry> lastOf(std::uint64_t count) const;
    [[nodiscard]] std::uint64_t countBeforeMoment(std::int32_t code, double momentMs) const;

    const Column* m_checkpoints;
    const Column* m_states;
    const Column* m_texts;
    std::uint64_t m_count = 0;
};

/// @param code only this type; nothing: all @param records where the last records are read
[[nodiscard]] Restored restored(const CheckpointReader& reader, const std::optional<CheckpointEntry>& checkpoint,
                                std::optional<std::int32_t> code, const RecordSource& records);

}  // namespace RecView
