// Bringing one file into the storage: copy, flush, read back and compare, rename.
#pragma once

#include "client/originals.h"
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

}  // namespace Zelvo
