// The SQL of what is known of stations. What the shared registry has not heard is told to it, and what arrived there is
// forgotten here.
#include "registry.h"

namespace Zelvo {

namespace {

// Whether all of a group has been moved, and nothing of it is left to do.
bool hasArrived(const GroupRow& group, Registry& shared)
{
    const std::optional<GroupRow> known = shared.group(group.data.guid);
    return known && known->moved == known->files && known->files >= group.files &&
           shared.selectFiles(QStringLiteral("WHERE f.guid = :guid AND f.state = 1"), {{"guid", group.data.guid}})
               .empty();
}

}  // namespace

QString Registry::claimStation(const QString& name, const QString& home)
{
    m_database.insert(StationsTable, {{"name", name}, {"home", home}}, QStringLiteral("ON CONFLICT (name) DO NOTHING"));
    return m_database.value(QStringLiteral("SELECT home FROM stations WHERE name = :name"), {{"name", name}})
        .value_or(QVariant())
        .toString();
}

std::vector<StationInfo> Registry::stations()
{
    std::vector<StationInfo> stations;
    m_database.select(
        QStringLiteral("SELECT %1 FROM stations ORDER BY name").arg(columnList<StationInfo>(StationsTable)), {},
        [&stations](const QSqlQuery& row) { visitColumns(stations.emplace_back(), RowReader(row)); });
    return stations;
}

StationInfo Registry::station(const QString& name, std::int64_t& attempts)
{
    StationInfo station;
    m_database.select(QStringLiteral("SELECT %1, attempts FROM stations WHERE name = :name")
                          .arg(columnList<StationInfo>(StationsTable)),
                      {{"name", name}}, [&](const QSqlQuery& row) {
                          RowReader read(row);
                          visitColumns(station, read);
                          read("attempts", attempts);
                      });
    return station;
}

void Registry::recordRun(const QString& name, std::int64_t nowMs, const QString& storageError, std::int64_t attempts,
                         std::int64_t nextTryMs)
{
    m_database.update(
        StationsTable,
        {{"last_run", nowMs}, {"storage_error", storageError}, {"attempts", attempts}, {"next_try", nextTryMs}},
        {{"name", name}});
}

std::int64_t unpublished(Registry& journal)
{
    return journal.database()
        .value(QStringLiteral("SELECT (SELECT COUNT(*) FROM file_groups WHERE published < revision) + "
                              "(SELECT COUNT(*) FROM group_files WHERE published = 0)"))
        .value()
        .toLongLong();
}

void publish(Registry& journal, Registry& shared)
{
    // Files first: recorders go on meanwhile, and a file's group is always older than the file.
    const std::vector<FileRow> files = journal.selectFiles(QStringLiteral("WHERE f.published = 0"));
    const std::vector<GroupRow> groups = journal.selectGroups(QStringLiteral("WHERE g.published < g.revision"));
    if (groups.empty() && files.empty()) {
        return;
    }
    shared.database().atomically([&] {
        for (const GroupRow& group : groups) {
            shared.database().insert(
                "file_groups", valuesOf(group),
                QStringLiteral("ON CONFLICT (guid) DO UPDATE SET asked = excluded.asked, "
                               "superseded = excluded.superseded, user_name = excluded.user_name"));
        }
        for (const FileRow& file : files) {
            shared.database().insert("group_files", firstValuesOf(file),
                                     QStringLiteral("ON CONFLICT (guid, id) DO NOTHING"));
        }
    });
    journal.database().atomically([&] {
        for (const GroupRow& group : groups) {
            journal.database().update("file_groups", {{"published", group.revision}}, {{"guid", group.data.guid}});
        }
        for (const FileRow& file : files) {
            journal.database().update("group_files", {{"published", 1}}, keyOf(file.where()));
        }
    });
}

void prune(Registry& journal, Registry& shared, const std::function<bool(const QString&)>& ownerLives)
{
    for (const GroupRow& group : journal.selectGroups(QStringLiteral("WHERE g.published = g.revision"))) {
        if (ownerLives(group.owner) || !hasArrived(group, shared)) {
            continue;
        }
        journal.database().atomically([&journal, &group] {
            for (const char* table : {"file_origins", "group_files", "file_groups"}) {
                journal.database().change(QStringLiteral("DELETE FROM %1 WHERE guid = :guid").arg(QLatin1String(table)),
                                          {{"guid", group.data.guid}});
            }
        });
    }
}

}  // namespace Zelvo
