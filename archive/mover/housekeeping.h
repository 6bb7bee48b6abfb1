// What the mover does beside moving: groups and writers of the dead, and files whose time is over.
#pragma once

#include <cstdint>
#include <functional>

#include "station/station.h"
#include "storage/storage.h"

namespace Zelvo {

void abandonGroupsOfTheDead(Station& station);
/// Writers of this station that ended give their files back; the others keep them.
void tendWriters(Station& station, std::int64_t nowMs);
/// @param tell of files that could not be removed
/// @param removed grows by one with each copy that was
void removeExpired(Station& station, const Storage& storage, Files& files, std::int64_t nowMs, std::int64_t& removed,
                   const std::function<void(const FileRow&, const QString&)>& tell);

}  // namespace Zelvo
