// What an overview is made of, for the sources that it is spread over.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <span>

#include "checkpoints.h"
#include "overview.h"
#include "sweeptracker.h"
#include "tables.h"

namespace RecView {

/// The moment of a record since 1970 UTC, not before that of its type's record before.
[[nodiscard]] double momentOf(const Record& record, const OverviewHead& head, const TypeMoments* before);

struct Overview::Private {
    std::unique_ptr<Store> store;
    RecordSource records;
    Tables tables;
    std::map<std::int32_t, std::unique_ptr<SweepTracker>> trackers;  // while it grows
    std::function<void()> settle;                                    // the same: brings blocks and tables up to date
    bool isComplete = false;
    mutable std::shared_mutex mutex;

    /// For reading: as long as it grows by one thread alone, as blocks are brought up to date then.
    class Reading {
    public:
        explicit Reading(const Private& parts);

    private:
        std::shared_lock<std::shared_mutex> m_shared;
        std::unique_lock<std::shared_mutex> m_alone;
    };
    [[nodiscard]] const KnownType* type(std::int32_t code) const;
};

/// What is needed to read the sweeps of a type that are in force from a moment on.
struct Overview::Beginning {
    Restored state;
    RecordSource records;
    OverviewHead head;
};

/// A sweep as it passes; good during the call.
struct PassingSweep {
    const Record& record;
    double momentMs = 0;
    const values::ChannelRange& range;
    std::span<const float> levels;
};

/// Visits the sweeps of a type, the one in force at the checkpoint first, until the visitor gives false.
/// @param from what the checkpoint holds of this type
void readSweeps(const RecordSource& records, const OverviewHead& head, std::int32_t code, Restored from,
                const std::function<bool(const PassingSweep&)>& visit);

}  // namespace RecView
