// Fetched copies of stored files, as many as the configuration allows. Whoever uses one holds the file's lock.
#pragma once

#include <QString>

#include "station/station.h"
#include "storage/files.h"
#include "storage/storage.h"

namespace Zelvo {

/// Brings the storage's copy to a path in a folder of its own, checked against the registry's hash. A copy that is
/// there already stays.
/// @throws ArchiveError of ZelvoError::Damaged or Unreachable
void fetchStored(const FileRow& file, const QString& path, unsigned mode, const ArchiveConfiguration& configuration,
                 const Storage& storage, Files& files);
/// The same without the folder: to a path where no file is.
void copyStored(const FileRow& file, const QString& path, unsigned mode, const Storage& storage, Files& files);
/// Removes those that were not used for the longest time until the cache and what is to come fit; none that is in use.
void makeRoom(Station& station, const Files& files, std::int64_t bytesToCome);
/// Removes the folder that a fetched or edited file lies in.
void removeWithFolder(const QString& path);
/// Removes edited versions that nobody has open and the registry does not know: their writer died.
void removeUnfinishedEdits(Station& station);

}  // namespace Zelvo
