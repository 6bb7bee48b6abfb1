// What is known of a recording's sweeps beside their blocks, in memory and in the store.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "overview.h"
#include "store.h"

namespace RecView {

/// Kinds of columns that are tables.
enum class TableKind : std::uint32_t {
    Head = 100,    ///< one OverviewHead
    Series,        ///< SeriesEntry, of all types
    ListChannels,  ///< double: channels of ranges that are lists
    Pauses,        ///< by type number: Pause
    Changes,       ///< by type number: SeriesChange
    Checkpoints,   ///< CheckpointEntry
    States,        ///< StateEntry
    Texts,         ///< char
};

[[nodiscard]] inline ColumnKey keyOf(TableKind kind, std::int32_t code = 0)
{
    return {static_cast<std::uint32_t>(kind), code, 0, 0};
}

/// Two sweeps of a type that follow each other, a second or more apart.
struct Pause {
    double fromMs = 0;
    double toMs = 0;
    std::uint32_t series = 0;  ///< of the first one
    std::uint32_t spare = 0;
};

/// From here on sweeps are those of a series.
struct SeriesChange {
    double ms = 0;
    std::uint32_t series = 0;
    std::uint32_t spare = 0;
};

struct KnownSeries {
    Series series;
    double againMs = 0;  ///< the median distance of its own sweeps
};

/// How long a sweep stands when no other follows: four times the usual distance, at least a second.
[[nodiscard]] double longestHold(double usualMs);

/// A type that holds sweeps.
struct KnownType {
    std::vector<KnownSeries> series;
    std::vector<Pause> pauses;          ///< ascending; all that may be gaps
    std::vector<SeriesChange> changes;  ///< ascending; of very many the first
    double firstMs = 0;
    double lastMs = 0;
    std::uint32_t lastSeries = 0;
    std::uint64_t sweeps = 0;

    /// Where something was in force, within a stretch.
    [[nodiscard]] std::vector<Stretch> covered(const Stretch& within) const;
};

struct Tables {
    OverviewHead head;
    std::map<std::int32_t, KnownType> types;

    void write(Store& store) const;
    /// @return false where the store's columns are no tables
    bool read(const Store& store);
};

}  // namespace RecView
