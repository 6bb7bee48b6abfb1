// The tables of a registry, the same in SQLite and PostgreSQL.
#pragma once

#include <QString>
#include <QStringList>

namespace Zelvo {

inline const QString SchemaVersion = QStringLiteral("1");

/// What a journal alone has. Made when it is opened: journals of older programs lack it.
[[nodiscard]] inline QStringList journalStatements()
{
    return {
        QStringLiteral("CREATE TABLE IF NOT EXISTS file_origins (guid TEXT NOT NULL, id BIGINT NOT NULL, "
                       "file TEXT NOT NULL, journaled BIGINT NOT NULL, deleted BIGINT NOT NULL DEFAULT 0, "
                       "PRIMARY KEY (guid, id))"),
        QStringLiteral("CREATE INDEX IF NOT EXISTS file_origins_file ON file_origins (file)"),
    };
}

[[nodiscard]] inline QStringList schemaStatements()
{
    return {
        QStringLiteral("CREATE TABLE IF NOT EXISTS archive_properties (name TEXT PRIMARY KEY, value TEXT NOT NULL)"),
        QStringLiteral("CREATE TABLE IF NOT EXISTS stations (name TEXT PRIMARY KEY, home TEXT NOT NULL, "
                       "last_run BIGINT NOT NULL DEFAULT 0, storage_error TEXT NOT NULL DEFAULT '', "
                       "attempts BIGINT NOT NULL DEFAULT 0, next_try BIGINT NOT NULL DEFAULT 0)"),
        QStringLiteral("CREATE TABLE IF NOT EXISTS file_groups (guid TEXT PRIMARY KEY, version TEXT NOT NULL, "
                       "description TEXT NOT NULL, title TEXT NOT NULL, start_text TEXT NOT NULL, "
                       "type BIGINT NOT NULL, max_bytes BIGINT NOT NULL, expires BIGINT NOT NULL, "
                       "user_name TEXT NOT NULL, directory TEXT NOT NULL, station TEXT NOT NULL, "
                       "owner TEXT NOT NULL, created BIGINT NOT NULL, asked BIGINT NOT NULL DEFAULT 0, "
                       "abandoned BIGINT NOT NULL DEFAULT 0, superseded BIGINT NOT NULL DEFAULT 0, "
                       "revision BIGINT NOT NULL DEFAULT 1, published BIGINT NOT NULL DEFAULT 0)"),
        QStringLiteral("CREATE INDEX IF NOT EXISTS file_groups_owner ON file_groups (owner)"),
        QStringLiteral("CREATE INDEX IF NOT EXISTS file_groups_created ON file_groups (created)"),
        QStringLiteral("CREATE TABLE IF NOT EXISTS group_files (guid TEXT NOT NULL REFERENCES file_groups (guid), "
                       "id BIGINT NOT NULL, name TEXT NOT NULL, station TEXT NOT NULL, local_path TEXT NOT NULL, "
                       "unfinished TEXT NOT NULL, created BIGINT NOT NULL, state BIGINT NOT NULL DEFAULT 0, "
                       "version BIGINT NOT NULL DEFAULT 1, bytes BIGINT NOT NULL DEFAULT -1, "
                       "sha256 TEXT NOT NULL DEFAULT '', stored_path TEXT NOT NULL DEFAULT '', "
                       "old_path TEXT NOT NULL DEFAULT '', attempts BIGINT NOT NULL DEFAULT 0, "
                       "next_try BIGINT NOT NULL DEFAULT 0, error TEXT NOT NULL DEFAULT '', "
                       "moved BIGINT NOT NULL DEFAULT 0, same_guid TEXT NOT NULL DEFAULT '', "
                       "same_id BIGINT NOT NULL DEFAULT 0, writer TEXT NOT NULL DEFAULT '', "
                       "writer_station TEXT NOT NULL DEFAULT '', writer_until BIGINT NOT NULL DEFAULT 0, "
                       "published BIGINT NOT NULL DEFAULT 0, PRIMARY KEY (guid, id))"),
        QStringLiteral("CREATE INDEX IF NOT EXISTS group_files_state ON group_files (station, state)"),
        QStringLiteral("CREATE INDEX IF NOT EXISTS group_files_path ON group_files (station, local_path)"),
        QStringLiteral("CREATE INDEX IF NOT EXISTS group_files_writer ON group_files (writer_station) "
                       "WHERE writer <> ''"),
        QStringLiteral("CREATE INDEX IF NOT EXISTS group_files_unpublished ON group_files (guid) WHERE published = 0"),
    };
}

}  // namespace Zelvo
