// Names that come from outside, and the paths made of them. Nothing here touches a file.
#pragma once

#include <cstdint>
#include <optional>

#include <QString>

#include <zelvo/zelvo.h>

namespace Zelvo {

struct Address {
    QString guid;
    std::uint32_t id = 0;
};

/// A group's name as the archive gives it: 8-4-4-4-12 lower-case hexadecimal digits.
[[nodiscard]] bool isGuid(const QString& text);
[[nodiscard]] QString newGuid();
/// @return nothing for every text that the archive cannot have given
[[nodiscard]] std::optional<Address> parseAddress(const ZelvoUrl& url);
/// @throws ArchiveError of ZelvoError::BadName for such a text
[[nodiscard]] Address addressOf(const ZelvoUrl& url);
/// One component of a path: no separators, no control characters, not hidden, at most 220 bytes.
[[nodiscard]] bool isFileName(const QString& name);
/// "a.tmp" for "a.rec": the name while the file is recorded.
[[nodiscard]] QString unfinishedName(const QString& name);
/// Where the storage keeps a version: "2026-11/GUID/ID-NAME" or, from the second on, "2026-11/GUID/ID.V-NAME".
[[nodiscard]] QString storedName(std::int64_t createdMs, const Address& address, std::int64_t version,
                                 const QString& name);
/// Whether a path is one that storedName gives.
[[nodiscard]] bool isStoredName(const QString& path);
/// "GUID_ID", as locks and cached files are called.
[[nodiscard]] QString flatName(const Address& address);

}  // namespace Zelvo
