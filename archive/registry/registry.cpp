// The SQL of groups and files.
#include "registry.h"

#include <algorithm>

namespace Zelvo {

namespace {

const char* const FilesTable = "group_files";
const char* const GroupsTable = "file_groups";

const QString HasCopy = QStringLiteral("state IN (1, 2, 3)");
const QString NotMoved = QStringLiteral("state IN (0, 1, 3)");

const QString& fileColumns()
{
    static const QString columns = columnList<FileRow>("f");
    return columns;
}

const QString& groupColumns()
{
    static const QString columns = columnList<GroupRow>("g");
    return columns;
}

GroupState stateOf(const GroupRow& group)
{
    return group.asked        ? GroupState::Asked
           : group.abandoned  ? GroupState::Abandoned
           : group.superseded ? GroupState::Superseded
                              : GroupState::Open;
}

void readGroup(RowReader& read, GroupRow& group)
{
    visitColumns(group, read);
    group.state = stateOf(group);
}

/// With nothing left of failed attempts.
Values settled(const Values& set)
{
    return set + Values{{"attempts", 0}, {"next_try", 0}, {"error", QString()}};
}

Values writerIs(const QString& owner, const QString& station, std::int64_t untilMs)
{
    return {{"writer", owner}, {"writer_station", station}, {"writer_until", untilMs}};
}

}  // namespace

std::vector<FileRow> Registry::selectFiles(const QString& condition, const Values& values)
{
    std::vector<FileRow> files;
    m_database.select(QStringLiteral("SELECT ") + fileColumns() + QStringLiteral(" FROM group_files f ") + condition,
                      values, [&files](const QSqlQuery& row) { visitColumns(files.emplace_back(), RowReader(row)); });
    return files;
}

std::vector<GroupRow> Registry::selectGroups(const QString& condition, const Values& values)
{
    std::vector<GroupRow> groups;
    const QString counts = QStringLiteral(
        ", (SELECT COUNT(*) FROM group_files f WHERE f.guid = g.guid), "
        "(SELECT COUNT(*) FROM group_files f WHERE f.guid = g.guid AND f.state NOT IN (0, 3)), "
        "(SELECT COUNT(*) FROM group_files f WHERE f.guid = g.guid AND f.attempts > 0) FROM file_groups g ");
    m_database.select(QStringLiteral("SELECT ") + groupColumns() + counts + condition, values,
                      [&groups](const QSqlQuery& row) {
                          GroupRow& group = groups.emplace_back();
                          RowReader read(row);
                          readGroup(read, group);
                          read("files", group.files);
                          read("moved", group.moved);
                          read("failed", group.failed);
                      });
    return groups;
}

bool Registry::updateFile(const Address& address, const Values& set, const Values& was, const QString& more)
{
    return m_database.update(FilesTable, set, keyOf(address) + was, more) == 1;
}

QString Registry::property(const QString& name)
{
    return m_database.value(QStringLiteral("SELECT value FROM archive_properties WHERE name = :name"), {{"name", name}})
        .value_or(QVariant())
        .toString();
}

void Registry::setPropertyOnce(const QString& name, const QString& value)
{
    m_database.insert("archive_properties", {{"name", name}, {"value", value}},
                      QStringLiteral("ON CONFLICT (name) DO NOTHING"));
}

void Registry::createGroup(const GroupRow& group)
{
    m_database.atomically([this, &group] {
        m_database.change(QStringLiteral("UPDATE file_groups SET superseded = 1, revision = revision + 1 "
                                         "WHERE owner = :owner AND asked = 0 AND superseded = 0"),
                          {{"owner", group.owner}});
        m_database.insert(GroupsTable, valuesOf(group));
    });
}

std::uint32_t Registry::addFile(const FileRow& file)
{
    FileRow added = file;
    m_database.atomically([this, &added] {
        added.id = m_database
                       .value(QStringLiteral("SELECT COALESCE(MAX(id), 0) + 1 FROM group_files WHERE guid = :guid"),
                              {{"guid", added.guid}})
                       .value()
                       .toUInt();
        m_database.insert(FilesTable, firstValuesOf(added));
        Origins(m_database).note(added.where(), added.origin);
    });
    return added.id;
}

bool Registry::ask(const QString& guid, const QString& user)
{
    return m_database.change(QStringLiteral("UPDATE file_groups SET asked = 1, revision = revision + 1, "
                                            "user_name = CASE WHEN user_name = '' THEN :user ELSE user_name END "
                                            "WHERE guid = :guid"),
                             {{"user", user}, {"guid", guid}}) == 1;
}

std::vector<QString> Registry::directoriesOf(const QString& owner)
{
    return m_database.texts(QStringLiteral("SELECT directory, MAX(created) FROM file_groups WHERE owner = :owner "
                                           "GROUP BY directory ORDER BY 2 DESC LIMIT 100"),
                            {{"owner", owner}});
}

std::optional<GroupRow> Registry::group(const QString& guid)
{
    const std::vector<GroupRow> found = selectGroups(QStringLiteral("WHERE g.guid = :guid"), {{"guid", guid}});
    return found.empty() ? std::nullopt : std::optional(found.front());
}

std::vector<GroupRow> Registry::groups(std::int64_t limit)
{
    const QString order = QStringLiteral("ORDER BY g.created DESC, g.guid");
    return limit > 0 ? selectGroups(order + QStringLiteral(" LIMIT :most"), {{"most", limit}}) : selectGroups(order);
}

std::optional<FileRow> Registry::file(const Address& address)
{
    const std::vector<FileRow> found =
        selectFiles(QStringLiteral("WHERE f.guid = :guid AND f.id = :id"), keyOf(address));
    return found.empty() ? std::nullopt : std::optional(found.front());
}

FileRow Registry::fileOf(const Address& address)
{
    std::optional<FileRow> found = file(address);
    if (found && found->state == FileState::Same) {
        found = file({found->sameGuid, found->sameId});
    }
    if (!found) {
        throw ArchiveError(QStringLiteral("the archive does not know zelvo:///%1/%2").arg(address.guid).arg(address.id),
                           ZelvoError::UnknownFile);
    }
    return *found;
}

std::vector<FileRow> Registry::files(const QString& guid)
{
    return selectFiles(QStringLiteral("WHERE f.guid = :guid ORDER BY f.id"), {{"guid", guid}});
}

std::vector<FileRow> Registry::storedAfter(const Address& address, const QString& onlyGuid, int limit)
{
    QString condition = QStringLiteral("WHERE (f.guid > :guid OR (f.guid = :guid AND f.id > :id)) AND f.") + HasCopy;
    Values values = keyOf(address) + Values{{"most", limit}};
    if (!onlyGuid.isEmpty()) {
        condition += QStringLiteral(" AND f.guid = :only");
        values.emplace_back("only", onlyGuid);
    }
    return selectFiles(condition + QStringLiteral(" ORDER BY f.guid, f.id LIMIT :most"), values);
}

std::vector<FileRow> Registry::notMoved(int limit)
{
    return selectFiles(QStringLiteral("JOIN file_groups g ON g.guid = f.guid WHERE f.") + NotMoved +
                           QStringLiteral(" ORDER BY g.created, f.guid, f.id LIMIT :most"),
                       {{"most", limit}});
}

void Registry::count(ArchiveStatus& status)
{
    status.groups = m_database.value(QStringLiteral("SELECT COUNT(*) FROM file_groups")).value().toLongLong();
    m_database.select(
        QStringLiteral("SELECT state, COUNT(*), CAST(SUM(CASE WHEN bytes > 0 THEN bytes ELSE 0 END) AS BIGINT), "
                       "CAST(SUM(CASE WHEN attempts > 0 THEN 1 ELSE 0 END) AS BIGINT) "
                       "FROM group_files GROUP BY state"),
        {}, [&status](const QSqlQuery& row) {
            FileState state{};
            std::int64_t files = 0;
            std::int64_t bytes = 0;
            std::int64_t failed = 0;
            RowReader read(row);
            read("state", state);
            read("files", files);
            read("bytes", bytes);
            read("failed", failed);
            if (state == FileState::Waiting || state == FileState::Edited) {
                status.waiting += files;
            } else if (state == FileState::Removed) {
                status.removed += files;
            } else if (state != FileState::Same) {
                status.moved += files;
                status.bytesMoved += bytes;
            }
            status.failed += failed;
        });
}

std::vector<PendingFile> Registry::pending(const QString& station)
{
    std::vector<PendingFile> files;
    m_database.select(QStringLiteral("SELECT ") + fileColumns() + QStringLiteral(", ") + groupColumns() +
                          QStringLiteral(" FROM group_files f JOIN file_groups g ON g.guid = f.guid "
                                         "WHERE f.station = :station AND f.") +
                          NotMoved + QStringLiteral(" ORDER BY g.created, f.guid, f.id"),
                      {{"station", station}}, [&files](const QSqlQuery& row) {
                          PendingFile& pending = files.emplace_back();
                          RowReader read(row);
                          visitColumns(pending.file, read);
                          readGroup(read, pending.group);
                      });
    return files;
}

std::vector<QString> Registry::openOwners(const QString& station)
{
    return m_database.texts(QStringLiteral("SELECT DISTINCT owner FROM file_groups "
                                           "WHERE station = :station AND asked = 0 AND abandoned = 0"),
                            {{"station", station}});
}

void Registry::abandon(const QString& station, const QString& owner)
{
    m_database.change(QStringLiteral("UPDATE file_groups SET abandoned = 1, revision = revision + 1 "
                                     "WHERE station = :station AND owner = :owner AND asked = 0"),
                      {{"station", station}, {"owner", owner}});
}

bool Registry::recordStored(const FileRow& file, const StoredCopy& copy, std::int64_t nowMs,
                            const std::vector<Address>& same)
{
    bool recorded = false;
    m_database.atomically([&] {
        recorded = updateFile(file.where(),
                              settled({{"state", FileState::Stored},
                                       {"version", copy.version},
                                       {"bytes", copy.bytes},
                                       {"sha256", copy.sha256},
                                       {"stored_path", copy.path},
                                       {"old_path", file.storedPath},
                                       {"moved", nowMs}}),
                              {{"station", file.station}, {"state", file.state}, {"version", file.version}});
        for (const Address& other : recorded&& file.state == FileState::Waiting ? same : std::vector<Address>()) {
            markSame(other, file.where());
        }
    });
    return recorded;
}

// Where a power cut takes this away the mover finds the file stored and its original gone, and says it again.
void Registry::recordMoved(const FileRow& file)
{
    m_database.withoutWaiting([&] {
        updateFile(file.where(), settled({{"state", FileState::Moved}, {"old_path", QString()}}),
                   {{"state", FileState::Stored}});
    });
}

void Registry::recordLost(const FileRow& file)
{
    const QString none;
    updateFile(file.where(),
               {{"state", FileState::Waiting}, {"bytes", -1}, {"sha256", none}, {"stored_path", none}, {"moved", 0}},
               {{"state", FileState::Stored}, {"version", 1}});
}

void Registry::recordFailure(const FileRow& file, const QString& error, std::int64_t nextTryMs)
{
    m_database.change(QStringLiteral("UPDATE group_files SET attempts = attempts + 1, next_try = :next, error = :error "
                                     "WHERE guid = :guid AND id = :id AND ") +
                          NotMoved,
                      keyOf(file.where()) + Values{{"next", nextTryMs}, {"error", error}});
}

void Registry::recordNote(const FileRow& file, const QString& note)
{
    updateFile(file.where(), {{"attempts", 0}, {"next_try", 0}, {"error", note}});
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
    return updateFile(address,
                      settled({{"state", FileState::Same}, {"same_guid", counts.guid}, {"same_id", counts.id}}),
                      {{"state", FileState::Waiting}});
}

std::int64_t Registry::forgetPauses(const QString& station, const QString& guid)
{
    const Values now = {{"next_try", 0}};
    m_database.update(StationsTable, now, {{"name", station}});
    const Values ofOne = guid.isEmpty() ? Values() : Values{{"guid", guid}};
    return m_database.update(FilesTable, now, Values{{"station", station}} + ofOne, QStringLiteral("attempts > 0"));
}

std::vector<FileRow> Registry::expired(const QString& station, std::int64_t nowMs)
{
    // A group goes as a whole: not before its last file has arrived.
    return selectFiles(QStringLiteral("JOIN file_groups g ON g.guid = f.guid WHERE g.station = :station "
                                      "AND g.expires > 0 AND g.expires < :now "
                                      "AND (f.state = 2 OR (f.state = 4 AND f.old_path <> '')) "
                                      "AND NOT EXISTS (SELECT 1 FROM group_files o WHERE o.guid = f.guid AND o.") +
                           NotMoved + QStringLiteral(") ORDER BY f.guid, f.id"),
                       {{"station", station}, {"now", nowMs}});
}

bool Registry::recordRemoved(const FileRow& file, std::int64_t nowMs)
{
    return m_database.change(QStringLiteral("UPDATE group_files SET state = 4, error = '', old_path = stored_path "
                                            "WHERE guid = :guid AND id = :id AND state = 2 AND version = :version "
                                            "AND (writer = '' OR writer_until < :now)"),
                             keyOf(file.where()) + Values{{"version", file.version}, {"now", nowMs}}) == 1;
}

void Registry::recordGone(const FileRow& file)
{
    updateFile(file.where(), {{"old_path", QString()}}, {{"state", FileState::Removed}});
}

bool Registry::takeForWriting(const FileRow& file, const QString& owner, const QString& station, std::int64_t untilMs,
                              const std::function<bool(const FileRow&)>& writerIsGone)
{
    bool taken = false;
    m_database.atomically([&] {
        const std::vector<FileRow> now = selectFiles(
            QStringLiteral("WHERE f.guid = :guid AND f.id = :id") + m_database.forUpdate(), keyOf(file.where()));
        const bool free = !now.empty() && now.front().state == FileState::Moved &&
                          now.front().version == file.version &&
                          (now.front().writer.isEmpty() || writerIsGone(now.front()));
        taken = free && updateFile(file.where(), writerIs(owner, station, untilMs));
    });
    return taken;
}

void Registry::giveBack(const Address& address, const QString& owner)
{
    updateFile(address, writerIs({}, {}, 0), {{"writer", owner}});
}

bool Registry::recordEdited(const FileRow& file, const QString& owner, const QString& station, const QString& path)
{
    return updateFile(
        file.where(),
        settled({{"state", FileState::Edited}, {"station", station}, {"local_path", path}}) + writerIs({}, {}, 0),
        {{"state", FileState::Moved}, {"version", file.version}, {"writer", owner}});
}

std::vector<FileRow> Registry::writtenBy(const QString& station)
{
    return selectFiles(QStringLiteral("WHERE f.writer_station = :station AND f.writer <> ''"), {{"station", station}});
}

void Registry::prolong(const FileRow& file, std::int64_t untilMs)
{
    updateFile(file.where(), {{"writer_until", untilMs}}, {{"writer", file.writer}});
}

}  // namespace Zelvo
