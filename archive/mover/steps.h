// The mover's single steps: bringing one file into the storage (copy, flush, read back and compare, rename); groups and
// writers of the dead, and files whose time is over.
#pragma once

#include <cstdint>
#include <functional>

#include "client/originals.h"
#include "station/station.h"
#include "storage/storage.h"

namespace Zelvo {

struct StoragePlace {
    Storage& storage;
    Files& files;
    unsigned fileMode;
};

/// Nothing that is there under the final name is ever replaced; the same bytes there are taken for the copy.
/// @return of the bytes that the storage has
/// @throws FileError also when the original changed meanwhile, or what is read back is not what was written
Digest copyIntoStorage(const FileRow& file, const Original& original, const QString& storedPath,
                       const StoragePlace& place, const StopWish& stop);

void abandonGroupsOfTheDead(Station& station);
/// Writers of this station that ended give their files back; the others keep them.
void tendWriters(Station& station, std::int64_t nowMs);
/// @param tell of files that could not be removed
/// @param removed grows by one with each copy that was
void removeExpired(Station& station, const Storage& storage, Files& files, std::int64_t nowMs, std::int64_t& removed,
                   const std::function<void(const FileRow&, const QString&)>& tell);

}  // namespace Zelvo
