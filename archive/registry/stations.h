// The stations of a registry, and how the last run of each one's mover went.
#pragma once

#include <cstdint>
#include <vector>

#include <zelvo/archive.h>

#include "database.h"

namespace Zelvo {

/// Used by one thread. Everything throws ArchiveError when the registry does not answer.
class Stations {
public:
    explicit Stations(Database& registry) : m_registry(registry) {}

    /// @return the home of the station of this name; the caller's when it is new
    QString claim(const QString& name, const QString& home);
    [[nodiscard]] std::vector<StationInfo> all();
    /// @param attempts failed ones to use the storage, since the last success
    [[nodiscard]] StationInfo one(const QString& name, std::int64_t& attempts);
    void recordRun(const QString& name, std::int64_t nowMs, const QString& storageError, std::int64_t attempts,
                   std::int64_t nextTryMs);

private:
    Database& m_registry;
};

}  // namespace Zelvo
