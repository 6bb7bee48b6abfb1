// The SQL of groups, files and stations, and from the journal to the shared registry.
#include "registry.h"

#include <algorithm>

#include <QVariant>

namespace Zelvo {

namespace {

const QString FileColumns = QStringLiteral(
    "f.guid, f.id, f.name, f.station, f.local_path, f.unfinished, f.created, f.state, f.version, f.bytes, "
    "f.sha256, f.stored_path, f.old_path, f.attempts, f.next_try, f.error, f.moved, f.same_guid, f.same_id, "
    "f.writer, f.writer_station, f.writer_until");
constexpr int FileColumnCount = 22;

const QString GroupColumns = QStringLiteral(
    "g.guid, g.version, g.description, g.title, g.start_text, g.type, g.max_bytes, g.expires, g.user_name, "
    "g.directory, g.station, g.owner, g.created, g.asked, g.abandoned, g.superseded, g.revision");

const QString Waits = QStringLiteral("state IN (0, 3)");
const QString HasCopy = QStringLiteral("state IN (1, 2, 3)");

std::int64_t number(const QSqlQuery& row, int column)
{
    return row.value(column).toLongLong();
}

QString text(const QSqlQuery& row, int column)
{
    return row.value(column).toString();
}

FileRow fileOf(const QSqlQuery& row)
{
    FileRow file;
    int column = 0;
    file.guid = text(row, column++);
    file.id = row.value(column++).toUInt();
    file.name = text(row, column++);
    file.station = text(row, column++);
    file.localPath = text(row, column++);
    file.unfinished = text(row, column++);
    file.createdMs = number(row, column++);
    file.state = static_cast<FileState>(row.value(column++).toInt());
    file.version = number(row, column++);
    file.bytes = number(row, column++);
    file.sha256 = text(row, column++);
    file.storedPath = text(row, column++);
    file.oldPath = text(row, column++);
    file.attempts = number(row, column++);
    file.nextTryMs = number(row, column++);
    file.error = text(row, column++);
    file.movedMs = number(row, column++);
    file.sameGuid = text(row, column++);
    file.sameId = row.value(column++).toUInt();
    file.writer = text(row, column++);
    file.writerStation = text(row, column++);
    file.writerUntilMs = number(row, column++);
    return file;
}

GroupState stateOf(const GroupRow& group)
{
    return group.asked        ? GroupState::Asked
           : group.abandoned  ? GroupState::Abandoned
           : group.superseded ? GroupState::Superseded
                              : GroupState::Open;
}

GroupRow groupOf(const QSqlQuery& row, int column)
{
    GroupRow group;
    group.data.guid = text(row, column++);
    group.version = text(row, column++);
    group.data.description = text(row, column++);
    group.title = text(row, column++);
    group.startText = text(row, column++);
    group.data.type = static_cast<FileType>(row.value(column++).toInt());
    group.data.maxBytes = row.value(column++).toULongLong();
    const std::int64_t expires = number(row, column++);
    group.data.expires = expires > 0 ? QDateTime::fromMSecsSinceEpoch(expires) : QDateTime();
    group.data.user = text(row, column++);
    group.directory = text(row, column++);
    group.station = text(row, column++);
    group.owner = text(row, column++);
    group.createdMs = number(row, column++);
    group.asked = number(row, column++) != 0;
    group.abandoned = number(row, column++) != 0;
    group.superseded = number(row, column++) != 0;
    group.revision = number(row, column++);
    group.state = stateOf(group);
    return group;
}

QVariantList valuesOf(const GroupRow& group)
{
    const std::int64_t expires = group.data.expires.isValid() ? group.data.expires.toMSecsSinceEpoch() : 0;
    return {bound(group.data.guid),
            bound(group.version),
            bound(group.data.description),
            bound(group.title),
            bound(group.startText),
            bound(static_cast<std::int64_t>(group.data.type)),
            bound(static_cast<std::int64_t>(group.data.maxBytes)),
            bound(expires),
            bound(group.data.user),
            bound(group.directory),
            bound(group.station),
            bound(group.owner),
            bound(group.createdMs),
            bound(static_cast<std::int64_t>(group.asked)),
            bound(static_cast<std::int64_t>(group.abandoned)),
            bound(static_cast<std::int64_t>(group.superseded)),
            bound(group.revision)};
}

const QString InsertGroup = QStringLiteral(
    "INSERT INTO file_groups (guid, version, description, title, start_text, type, max_bytes, expires, user_name, "
    "directory, station, owner, created, asked, abandoned, superseded, revision) "
    "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");

const QString InsertFile = QStringLiteral(
    "INSERT INTO group_files (guid, id, name, station, local_path, unfinished, created) "
    "VALUES (?, ?, ?, ?, ?, ?, ?)");

QVariantList valuesOf(const FileRow& file)
{
    return {bound(file.guid),      bound(std::int64_t{file.id}), bound(file.name),     bound(file.station),
            bound(file.localPath), bound(file.unfinished),       bound(file.createdMs)};
}

QVariantList keyOf(const Address& address)
{
    return {bound(address.guid), bound(std::int64_t{address.id})};
}

}  // namespace

QString Registry::property(const QString& name)
{
    QString value;
    m_database.select(QStringLiteral("SELECT value FROM archive_properties WHERE name = ?"), {bound(name)},
                      [&value](const QSqlQuery& row) { value = text(row, 0); });
    return value;
}

void Registry::setPropertyOnce(const QString& name, const QString& value)
{
    m_database.change(
        QStringLiteral("INSERT INTO archive_properties (name, value) VALUES (?, ?) ON CONFLICT (name) DO NOTHING"),
        {bound(name), bound(value)});
}

void Registry::createGroup(const GroupRow& group)
{
    m_database.atomically([this, &group] {
        m_database.change(QStringLiteral("UPDATE file_groups SET superseded = 1, revision = revision + 1 "
                                         "WHERE owner = ? AND asked = 0 AND superseded = 0"),
                          {bound(group.owner)});
        m_database.change(InsertGroup, valuesOf(group));
    });
}

std::uint32_t Registry::addFile(const FileRow& file)
{
    FileRow added = file;
    m_database.atomically([this, &added] {
        m_database.select(QStringLiteral("SELECT COALESCE(MAX(id), 0) + 1 FROM group_files WHERE guid = ?"),
                          {bound(added.guid)}, [&added](const QSqlQuery& row) { added.id = row.value(0).toUInt(); });
        m_database.change(InsertFile, valuesOf(added));
        Origins(m_database).note(added.where(), added.origin);
    });
    return added.id;
}

bool Registry::ask(const QString& guid, const QString& user)
{
    return m_database.change(QStringLiteral("UPDATE file_groups SET asked = 1, revision = revision + 1, "
                                            "user_name = CASE WHEN user_name = '' THEN ? ELSE user_name END "
                                            "WHERE guid = ?"),
                             {bound(user), bound(guid)}) == 1;
}

std::vector<QString> Registry::directoriesOf(const QString& owner)
{
    std::vector<QString> directories;
    m_database.select(QStringLiteral("SELECT directory, MAX(created) FROM file_groups WHERE owner = ? "
                                     "GROUP BY directory ORDER BY 2 DESC LIMIT 100"),
                      {bound(owner)}, [&directories](const QSqlQuery& row) { directories.push_back(text(row, 0)); });
    return directories;
}

std::vector<FileRow> Registry::selectFiles(const QString& condition, const QVariantList& values)
{
    std::vector<FileRow> files;
    m_database.select(QStringLiteral("SELECT ") + FileColumns + QStringLiteral(" FROM group_files f ") + condition,
                      values, [&files](const QSqlQuery& row) { files.push_back(fileOf(row)); });
    return files;
}

std::vector<GroupRow> Registry::selectGroups(const QString& condition, const QVariantList& values)
{
    std::vector<GroupRow> groups;
    constexpr int CountsBegin = 17;
    const QString counts = QStringLiteral(
        ", (SELECT COUNT(*) FROM group_files f WHERE f.guid = g.guid), "
        "(SELECT COUNT(*) FROM group_files f WHERE f.guid = g.guid AND f.state NOT IN (0, 3)), "
        "(SELECT COUNT(*) FROM group_files f WHERE f.guid = g.guid AND f.attempts > 0)");
    m_database.select(
        QStringLiteral("SELECT ") + GroupColumns + counts + QStringLiteral(" FROM file_groups g ") + condition, values,
        [&groups](const QSqlQuery& row) {
            GroupRow group = groupOf(row, 0);
            group.files = number(row, CountsBegin);
            group.moved = number(row, CountsBegin + 1);
            group.failed = number(row, CountsBegin + 2);
            groups.push_back(group);
        });
    return groups;
}

std::optional<GroupRow> Registry::group(const QString& guid)
{
    std::vector<GroupRow> found = selectGroups(QStringLiteral("WHERE g.guid = ?"), {bound(guid)});
    return found.empty() ? std::nullopt : std::optional(found.front());
}

std::vector<GroupRow> Registry::groups(std::int64_t limit)
{
    const QString order = QStringLiteral("ORDER BY g.created DESC, g.guid");
    return limit > 0 ? selectGroups(order + QStringLiteral(" LIMIT ?"), {bound(limit)}) : selectGroups(order, {});
}

std::optional<FileRow> Registry::file(const Address& address)
{
    std::vector<FileRow> found = selectFiles(QStringLiteral("WHERE f.guid = ? AND f.id = ?"), keyOf(address));
    return found.empty() ? std::nullopt : std::optional(found.front());
}

std::vector<FileRow> Registry::files(const QString& guid)
{
    return selectFiles(QStringLiteral("WHERE f.guid = ? ORDER BY f.id"), {bound(guid)});
}

std::vector<FileRow> Registry::storedAfter(const Address& address, const QString& onlyGuid, int limit)
{
    QString condition = QStringLiteral("WHERE (f.guid > ? OR (f.guid = ? AND f.id > ?)) AND f.") + HasCopy;
    QVariantList values = {bound(address.guid), bound(address.guid), bound(std::int64_t{address.id})};
    if (!onlyGuid.isEmpty()) {
        condition += QStringLiteral(" AND f.guid = ?");
        values += bound(onlyGuid);
    }
    values += bound(std::int64_t{limit});
    return selectFiles(condition + QStringLiteral(" ORDER BY f.guid, f.id LIMIT ?"), values);
}

std::vector<FileRow> Registry::notMoved(int limit)
{
    return selectFiles(QStringLiteral("JOIN file_groups g ON g.guid = f.guid WHERE f.state IN (0, 1, 3) "
                                      "ORDER BY g.created, f.guid, f.id LIMIT ?"),
                       {bound(std::int64_t{limit})});
}

void Registry::count(ArchiveStatus& status)
{
    m_database.select(QStringLiteral("SELECT COUNT(*) FROM file_groups"), {},
                      [&status](const QSqlQuery& row) { status.groups = number(row, 0); });
    m_database.select(
        QStringLiteral("SELECT state, COUNT(*), CAST(SUM(CASE WHEN bytes > 0 THEN bytes ELSE 0 END) AS BIGINT), "
                       "CAST(SUM(CASE WHEN attempts > 0 THEN 1 ELSE 0 END) AS BIGINT) "
                       "FROM group_files GROUP BY state"),
        {}, [&status](const QSqlQuery& row) {
            const auto state = static_cast<FileState>(row.value(0).toInt());
            const std::int64_t files = number(row, 1);
            if (state == FileState::Waiting || state == FileState::Edited) {
                status.waiting += files;
            } else if (state == FileState::Removed) {
                status.removed += files;
            } else if (state != FileState::Same) {
                status.moved += files;
                status.bytesMoved += number(row, 2);
            }
            status.failed += number(row, 3);
        });
}

std::vector<StationInfo> Registry::stations()
{
    std::vector<StationInfo> stations;
    m_database.select(QStringLiteral("SELECT name, last_run, storage_error, next_try FROM stations ORDER BY name"), {},
                      [&stations](const QSqlQuery& row) {
                          stations.push_back({text(row, 0), number(row, 1), text(row, 2), number(row, 3)});
                      });
    return stations;
}

std::vector<PendingFile> Registry::pending(const QString& station)
{
    std::vector<PendingFile> files;
    m_database.select(QStringLiteral("SELECT ") + FileColumns + QStringLiteral(", ") + GroupColumns +
                          QStringLiteral(" FROM group_files f JOIN file_groups g ON g.guid = f.guid "
                                         "WHERE f.station = ? AND f.state IN (0, 1, 3) "
                                         "ORDER BY g.created, f.guid, f.id"),
                      {bound(station)}, [&files](const QSqlQuery& row) {
                          files.push_back({fileOf(row), groupOf(row, FileColumnCount)});
                      });
    return files;
}

std::vector<QString> Registry::openOwners(const QString& station)
{
    std::vector<QString> owners;
    m_database.select(QStringLiteral("SELECT DISTINCT owner FROM file_groups "
                                     "WHERE station = ? AND asked = 0 AND abandoned = 0"),
                      {bound(station)}, [&owners](const QSqlQuery& row) { owners.push_back(text(row, 0)); });
    return owners;
}

void Registry::abandon(const QString& station, const QString& owner)
{
    m_database.change(QStringLiteral("UPDATE file_groups SET abandoned = 1, revision = revision + 1 "
                                     "WHERE station = ? AND owner = ? AND asked = 0"),
                      {bound(station), bound(owner)});
}

bool Registry::recordStored(const FileRow& file, const StoredCopy& copy, std::int64_t nowMs,
                            const std::vector<Address>& same)
{
    bool recorded = false;
    m_database.atomically([&] {
        const QVariantList values = {bound(static_cast<std::int64_t>(FileState::Stored)),
                                     bound(copy.version),
                                     bound(copy.bytes),
                                     bound(copy.sha256),
                                     bound(copy.path),
                                     bound(file.storedPath),
                                     bound(nowMs)};
        const QVariantList known = {bound(file.station), bound(static_cast<std::int64_t>(file.state)),
                                    bound(file.version)};
        recorded =
            m_database.change(QStringLiteral("UPDATE group_files SET state = ?, version = ?, bytes = ?, sha256 = ?, "
                                             "stored_path = ?, old_path = ?, moved = ?, attempts = 0, next_try = 0, "
                                             "error = '' WHERE guid = ? AND id = ? AND station = ? AND state = ? "
                                             "AND version = ?"),
                              values + keyOf(file.where()) + known) == 1;
        for (const Address& other : recorded&& file.state == FileState::Waiting ? same : std::vector<Address>()) {
            markSame(other, file.where());
        }
    });
    return recorded;
}

void Registry::recordMoved(const FileRow& file)
{
    m_database.change(QStringLiteral("UPDATE group_files SET state = ?, old_path = '', attempts = 0, next_try = 0, "
                                     "error = '' WHERE guid = ? AND id = ? AND state = ?"),
                      QVariantList{bound(static_cast<std::int64_t>(FileState::Moved))} + keyOf(file.where()) +
                          QVariantList{bound(static_cast<std::int64_t>(FileState::Stored))});
}

void Registry::recordLost(const FileRow& file)
{
    m_database.change(QStringLiteral("UPDATE group_files SET state = 0, bytes = -1, sha256 = '', stored_path = '', "
                                     "moved = 0 WHERE guid = ? AND id = ? AND state = 1 AND version = 1"),
                      keyOf(file.where()));
}

void Registry::recordFailure(const FileRow& file, const QString& error, std::int64_t nextTryMs)
{
    m_database.change(QStringLiteral("UPDATE group_files SET attempts = attempts + 1, next_try = ?, error = ? "
                                     "WHERE guid = ? AND id = ? AND state IN (0, 1, 3)"),
                      QVariantList{bound(nextTryMs), bound(error)} + keyOf(file.where()));
}

void Registry::recordNote(const FileRow& file, const QString& note)
{
    m_database.change(QStringLiteral("UPDATE group_files SET attempts = 0, next_try = 0, error = ? "
                                     "WHERE guid = ? AND id = ?"),
                      QVariantList{bound(note)} + keyOf(file.where()));
}

bool Registry::recordSame(const FileRow& file, const std::vector<Address>& same)
{
    return std::any_of(same.begin(), same.end(), [&](const Address& address) {
        const std::optional<FileRow> other = this->file(address);
        return other && other->state != FileState::Waiting && other->state != FileState::Same &&
               other->movedMs >= file.createdMs && markSame(file.where(), address);
    });
}

bool Registry::markSame(const Address& address, const Address& counts)
{
    return m_database.change(
               QStringLiteral("UPDATE group_files SET state = ?, same_guid = ?, same_id = ?, "
                              "attempts = 0, next_try = 0, error = '' "
                              "WHERE guid = ? AND id = ? AND state = 0"),
               QVariantList{bound(static_cast<std::int64_t>(FileState::Same))} + keyOf(counts) + keyOf(address)) == 1;
}

std::int64_t Registry::forgetPauses(const QString& station, const QString& guid)
{
    m_database.change(QStringLiteral("UPDATE stations SET next_try = 0 WHERE name = ?"), {bound(station)});
    const QString sql = QStringLiteral("UPDATE group_files SET next_try = 0 WHERE station = ? AND attempts > 0");
    return guid.isEmpty() ? m_database.change(sql, {bound(station)})
                          : m_database.change(sql + QStringLiteral(" AND guid = ?"), {bound(station), bound(guid)});
}

std::vector<FileRow> Registry::expired(const QString& station, std::int64_t nowMs)
{
    // A group goes as a whole: not before its last file has arrived.
    return selectFiles(QStringLiteral("JOIN file_groups g ON g.guid = f.guid WHERE g.station = ? AND g.expires > 0 "
                                      "AND g.expires < ? AND (f.state = 2 OR (f.state = 4 AND f.old_path <> '')) "
                                      "AND NOT EXISTS (SELECT 1 FROM group_files o WHERE o.guid = f.guid "
                                      "AND o.state IN (0, 1, 3)) ORDER BY f.guid, f.id"),
                       {bound(station), bound(nowMs)});
}

bool Registry::recordRemoved(const FileRow& file, std::int64_t nowMs)
{
    return m_database.change(
               QStringLiteral(
                   "UPDATE group_files SET state = ?, error = '', old_path = stored_path "
                   "WHERE guid = ? AND id = ? AND state = 2 AND version = ? AND (writer = '' OR writer_until < ?)"),
               QVariantList{bound(static_cast<std::int64_t>(FileState::Removed))} + keyOf(file.where()) +
                   QVariantList{bound(file.version), bound(nowMs)}) == 1;
}

void Registry::recordGone(const FileRow& file)
{
    m_database.change(QStringLiteral("UPDATE group_files SET old_path = '' WHERE guid = ? AND id = ? AND state = 4"),
                      keyOf(file.where()));
}

bool Registry::takeForWriting(const FileRow& file, const QString& owner, const QString& station, std::int64_t untilMs,
                              const std::function<bool(const FileRow&)>& writerIsGone)
{
    bool taken = false;
    m_database.atomically([&] {
        const std::vector<FileRow> now =
            selectFiles(QStringLiteral("WHERE f.guid = ? AND f.id = ?") + m_database.forUpdate(), keyOf(file.where()));
        if (now.empty() || now.front().state != FileState::Moved || now.front().version != file.version ||
            (!now.front().writer.isEmpty() && !writerIsGone(now.front()))) {
            return;
        }
        taken =
            m_database.change(QStringLiteral("UPDATE group_files SET writer = ?, writer_station = ?, "
                                             "writer_until = ? WHERE guid = ? AND id = ?"),
                              QVariantList{bound(owner), bound(station), bound(untilMs)} + keyOf(file.where())) == 1;
    });
    return taken;
}

void Registry::giveBack(const Address& address, const QString& owner)
{
    m_database.change(QStringLiteral("UPDATE group_files SET writer = '', writer_station = '', writer_until = 0 "
                                     "WHERE guid = ? AND id = ? AND writer = ?"),
                      keyOf(address) + QVariantList{bound(owner)});
}

bool Registry::recordEdited(const FileRow& file, const QString& owner, const QString& station, const QString& path)
{
    return m_database.change(
               QStringLiteral("UPDATE group_files SET state = ?, station = ?, local_path = ?, "
                              "attempts = 0, next_try = 0, error = '', writer = '', "
                              "writer_station = '', writer_until = 0 WHERE guid = ? AND id = ? "
                              "AND state = 2 AND version = ? AND writer = ?"),
               QVariantList{bound(static_cast<std::int64_t>(FileState::Edited)), bound(station), bound(path)} +
                   keyOf(file.where()) + QVariantList{bound(file.version), bound(owner)}) == 1;
}

std::vector<FileRow> Registry::writtenBy(const QString& station)
{
    return selectFiles(QStringLiteral("WHERE f.writer_station = ? AND f.writer <> ''"), {bound(station)});
}

void Registry::prolong(const FileRow& file, std::int64_t untilMs)
{
    m_database.change(
        QStringLiteral("UPDATE group_files SET writer_until = ? WHERE guid = ? AND id = ? AND writer = ?"),
        QVariantList{bound(untilMs)} + keyOf(file.where()) + QVariantList{bound(file.writer)});
}

QString Registry::claimStation(const QString& name, const QString& home)
{
    m_database.change(QStringLiteral("INSERT INTO stations (name, home) VALUES (?, ?) ON CONFLICT (name) DO NOTHING"),
                      {bound(name), bound(home)});
    QString owner;
    m_database.select(QStringLiteral("SELECT home FROM stations WHERE name = ?"), {bound(name)},
                      [&owner](const QSqlQuery& row) { owner = text(row, 0); });
    return owner;
}

StationInfo Registry::station(const QString& name, std::int64_t& attempts)
{
    StationInfo info;
    m_database.select(
        QStringLiteral("SELECT name, last_run, storage_error, next_try, attempts FROM stations WHERE name = ?"),
        {bound(name)}, [&info, &attempts](const QSqlQuery& row) {
            constexpr int Attempts = 4;
            info = {text(row, 0), number(row, 1), text(row, 2), number(row, 3)};
            attempts = number(row, Attempts);
        });
    return info;
}

void Registry::recordRun(const QString& station, std::int64_t nowMs, const QString& storageError, std::int64_t attempts,
                         std::int64_t nextTryMs)
{
    m_database.change(QStringLiteral("UPDATE stations SET last_run = ?, storage_error = ?, attempts = ?, next_try = ? "
                                     "WHERE name = ?"),
                      {bound(nowMs), bound(storageError), bound(attempts), bound(nextTryMs), bound(station)});
}

std::int64_t Registry::unpublished()
{
    std::int64_t count = 0;
    m_database.select(QStringLiteral("SELECT (SELECT COUNT(*) FROM file_groups WHERE published < revision) + "
                                     "(SELECT COUNT(*) FROM group_files WHERE published = 0)"),
                      {}, [&count](const QSqlQuery& row) { count = number(row, 0); });
    return count;
}

void Registry::publish(Registry& journal, Registry& shared)
{
    // Files first: recorders go on meanwhile, and a file's group is always older than the file.
    const std::vector<FileRow> files = journal.selectFiles(QStringLiteral("WHERE f.published = 0"), {});
    const std::vector<GroupRow> groups = journal.selectGroups(QStringLiteral("WHERE g.published < g.revision"), {});
    if (groups.empty() && files.empty()) {
        return;
    }
    shared.m_database.atomically([&] {
        for (const GroupRow& group : groups) {
            shared.m_database.change(
                InsertGroup + QStringLiteral(" ON CONFLICT (guid) DO UPDATE SET asked = excluded.asked, "
                                             "superseded = excluded.superseded, user_name = excluded.user_name"),
                valuesOf(group));
        }
        for (const FileRow& file : files) {
            shared.m_database.change(InsertFile + QStringLiteral(" ON CONFLICT (guid, id) DO NOTHING"), valuesOf(file));
        }
    });
    journal.m_database.atomically([&] {
        for (const GroupRow& group : groups) {
            journal.m_database.change(QStringLiteral("UPDATE file_groups SET published = ? WHERE guid = ?"),
                                      {bound(group.revision), bound(group.data.guid)});
        }
        for (const FileRow& file : files) {
            journal.m_database.change(QStringLiteral("UPDATE group_files SET published = 1 WHERE guid = ? AND id = ?"),
                                      keyOf(file.where()));
        }
    });
}

void Registry::prune(Registry& journal, Registry& shared, const std::function<bool(const QString&)>& ownerLives)
{
    const std::vector<GroupRow> groups = journal.selectGroups(QStringLiteral("WHERE g.published = g.revision"), {});
    for (const GroupRow& group : groups) {
        if (ownerLives(group.owner)) {
            continue;
        }
        const std::optional<GroupRow> known = shared.group(group.data.guid);
        const bool arrived = known && known->moved == known->files && known->files >= group.files;
        if (!arrived ||
            !shared.selectFiles(QStringLiteral("WHERE f.guid = ? AND f.state = 1"), {bound(group.data.guid)}).empty()) {
            continue;
        }
        journal.m_database.atomically([&journal, &group] {
            for (const char* table : {"file_origins", "group_files"}) {
                journal.m_database.change(QStringLiteral("DELETE FROM %1 WHERE guid = ?").arg(QLatin1String(table)),
                                          {bound(group.data.guid)});
            }
            journal.m_database.change(QStringLiteral("DELETE FROM file_groups WHERE guid = ?"),
                                      {bound(group.data.guid)});
        });
    }
}

}  // namespace Zelvo
