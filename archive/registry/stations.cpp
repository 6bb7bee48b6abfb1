// The table of stations.
#include "stations.h"

#include "rows.h"

namespace Zelvo {

QString Stations::claim(const QString& name, const QString& home)
{
    m_registry.insert("stations", {{"name", name}, {"home", home}}, QStringLiteral("ON CONFLICT (name) DO NOTHING"));
    return m_registry.value(QStringLiteral("SELECT home FROM stations WHERE name = :name"), {{"name", name}})
        .value_or(QVariant())
        .toString();
}

std::vector<StationInfo> Stations::all()
{
    std::vector<StationInfo> stations;
    m_registry.select(QStringLiteral("SELECT %1 FROM stations ORDER BY name").arg(columnList<StationInfo>("stations")),
                      {}, [&stations](const QSqlQuery& row) { visitColumns(stations.emplace_back(), RowReader(row)); });
    return stations;
}

StationInfo Stations::one(const QString& name, std::int64_t& attempts)
{
    StationInfo station;
    m_registry.select(
        QStringLiteral("SELECT %1, attempts FROM stations WHERE name = :name").arg(columnList<StationInfo>("stations")),
        {{"name", name}}, [&](const QSqlQuery& row) {
            RowReader read(row);
            visitColumns(station, read);
            read("attempts", attempts);
        });
    return station;
}

void Stations::recordRun(const QString& name, std::int64_t nowMs, const QString& storageError, std::int64_t attempts,
                         std::int64_t nextTryMs)
{
    m_registry.update(
        "stations",
        {{"last_run", nowMs}, {"storage_error", storageError}, {"attempts", attempts}, {"next_try", nextTryMs}},
        {{"name", name}});
}

}  // namespace Zelvo
