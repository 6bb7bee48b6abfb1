// Groups and files as the registry's tables have them, with the name of each column said once.
#pragma once

#include <cstdint>
#include <type_traits>

#include <QString>
#include <QStringList>

#include <zelvo/archive.h>

#include "origins.h"
#include "storage/names.h"

namespace Zelvo {

inline const char* const StationsTable = "stations";

struct GroupRow : GroupInfo {
    QString owner;  ///< the lock of the process that records into it
    bool asked = false;
    bool abandoned = false;
    bool superseded = false;
    std::int64_t revision = 1;
};

struct FileRow : FileInfo {
    QString unfinished;  ///< the name it had while it was recorded; empty: the final one
    std::int64_t createdMs = 0;
    QString oldPath;  ///< relative to the storage: an older version that is still to be deleted
    QString writer;   ///< the owner that has it open for writing; empty: nobody
    QString writerStation;
    std::int64_t writerUntilMs = 0;
    Origin origin;  ///< of one that is added; the journal alone keeps it

    [[nodiscard]] Address where() const { return {guid, id}; }
};

/// Shows each column of a group with its name.
template <typename Group, typename Visitor>
void visitColumns(Group& group, Visitor&& visit) requires std::is_same_v<std::remove_const_t<Group>, GroupRow>
{
    visit("guid", group.data.guid);
    visit("version", group.version);
    visit("description", group.data.description);
    visit("title", group.title);
    visit("start_text", group.startText);
    visit("type", group.data.type);
    visit("max_bytes", group.data.maxBytes);
    visit("expires", group.data.expires);
    visit("user_name", group.data.user);
    visit("directory", group.directory);
    visit("station", group.station);
    visit("owner", group.owner);
    visit("created", group.createdMs);
    visit("asked", group.asked);
    visit("abandoned", group.abandoned);
    visit("superseded", group.superseded);
    visit("revision", group.revision);
}

/// Those of a file that are known when it is registered.
template <typename File, typename Visitor>
void visitFirstColumns(File& file, Visitor&& visit)
{
    visit("guid", file.guid);
    visit("id", file.id);
    visit("name", file.name);
    visit("station", file.station);
    visit("local_path", file.localPath);
    visit("unfinished", file.unfinished);
    visit("created", file.createdMs);
}

template <typename File, typename Visitor>
void visitColumns(File& file, Visitor&& visit) requires std::is_same_v<std::remove_const_t<File>, FileRow>
{
    visitFirstColumns(file, visit);
    visit("state", file.state);
    visit("version", file.version);
    visit("bytes", file.bytes);
    visit("sha256", file.sha256);
    visit("stored_path", file.storedPath);
    visit("old_path", file.oldPath);
    visit("attempts", file.attempts);
    visit("next_try", file.nextTryMs);
    visit("error", file.error);
    visit("moved", file.movedMs);
    visit("same_guid", file.sameGuid);
    visit("same_id", file.sameId);
    visit("writer", file.writer);
    visit("writer_station", file.writerStation);
    visit("writer_until", file.writerUntilMs);
}

template <typename Station, typename Visitor>
void visitColumns(Station& station, Visitor&& visit) requires std::is_same_v<std::remove_const_t<Station>, StationInfo>
{
    visit("name", station.name);
    visit("last_run", station.lastRunMs);
    visit("storage_error", station.storageError);
    visit("next_try", station.nextTryMs);
}

/// "f.guid, f.id, ...", as RowReader takes them.
template <typename Row>
[[nodiscard]] QString columnList(const char* table)
{
    QStringList columns;
    Row row;
    visitColumns(row, [&](const char* name, const auto& /*value*/) {
        columns += QStringLiteral("%1.%2").arg(QLatin1String(table), QLatin1String(name));
    });
    return columns.join(QStringLiteral(", "));
}

[[nodiscard]] inline Values valuesOf(const GroupRow& group)
{
    Values values;
    visitColumns(group, [&values](const char* name, const auto& value) { values.emplace_back(name, value); });
    return values;
}

/// Of what is known of a file when it is registered.
[[nodiscard]] inline Values firstValuesOf(const FileRow& file)
{
    Values values;
    visitFirstColumns(file, [&values](const char* name, const auto& value) { values.emplace_back(name, value); });
    return values;
}

}  // namespace Zelvo
