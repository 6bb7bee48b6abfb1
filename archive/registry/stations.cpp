// The SQL of what is known of stations.
#include "registry.h"

namespace Zelvo {

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

}  // namespace Zelvo
