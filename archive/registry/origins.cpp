// The journal's table of the files on the disk: noted, changed, shared and forgotten.
#include "origins.h"

#include <QVariant>

namespace Zelvo {

namespace {

QVariantList placeOf(const Address& address)
{
    return {bound(address.guid), bound(std::int64_t{address.id})};
}

}  // namespace

void Origins::note(const Address& address, const Origin& origin)
{
    if (!origin.file.isEmpty()) {
        m_journal.change(
            QStringLiteral("INSERT INTO file_origins (guid, id, file, journaled) VALUES (?, ?, ?, ?)"),
            placeOf(address) + QVariantList{bound(origin.file), bound(static_cast<std::int64_t>(origin.journaled))});
    }
}

Origin Origins::of(const Address& address)
{
    Origin origin;
    m_journal.select(QStringLiteral("SELECT file, journaled FROM file_origins WHERE guid = ? AND id = ?"),
                     placeOf(address), [&origin](const QSqlQuery& row) {
                         origin = {row.value(0).toString(), row.value(1).toLongLong() != 0};
                     });
    return origin;
}

void Origins::change(const Address& address, const QString& file)
{
    m_journal.change(QStringLiteral("UPDATE file_origins SET file = ? WHERE guid = ? AND id = ?"),
                     QVariantList{bound(file)} + placeOf(address));
}

void Origins::forget(const Address& address)
{
    m_journal.change(QStringLiteral("UPDATE file_origins SET deleted = 1 WHERE guid = ? AND id = ?"), placeOf(address));
}

bool Origins::isAnothers(const QString& file, const Address& address)
{
    bool found = false;
    m_journal.select(QStringLiteral("SELECT 1 FROM file_origins WHERE file = ? AND deleted = 0 "
                                    "AND NOT (guid = ? AND id = ?) LIMIT 1"),
                     QVariantList{bound(file)} + placeOf(address),
                     [&found](const QSqlQuery& /*row*/) { found = true; });
    return found;
}

std::vector<Address> Origins::sharing(const Address& address)
{
    std::vector<Address> others;
    m_journal.select(QStringLiteral("SELECT o.guid, o.id FROM file_origins o JOIN file_origins m ON m.file = o.file "
                                    "WHERE m.guid = ? AND m.id = ? AND NOT (o.guid = m.guid AND o.id = m.id)"),
                     placeOf(address), [&others](const QSqlQuery& row) {
                         others.push_back({row.value(0).toString(), row.value(1).toUInt()});
                     });
    return others;
}

std::vector<QString> Origins::owners(const QString& file)
{
    std::vector<QString> owners;
    m_journal.select(QStringLiteral("SELECT g.owner FROM file_origins o JOIN file_groups g ON g.guid = o.guid "
                                    "WHERE o.file = ? AND o.deleted = 0"),
                     {bound(file)}, [&owners](const QSqlQuery& row) { owners.push_back(row.value(0).toString()); });
    return owners;
}

}  // namespace Zelvo
