// The journal's table of the files on the disk: noted, changed, shared and forgotten.
#include "origins.h"

namespace Zelvo {

namespace {

const char* const OriginTable = "file_origins";

}  // namespace

Values keyOf(const Address& address)
{
    return {{"guid", address.guid}, {"id", address.id}};
}

void Origins::note(const Address& address, const Origin& origin)
{
    if (!origin.file.isEmpty()) {
        m_journal.insert(OriginTable, keyOf(address) + Values{{"file", origin.file}, {"journaled", origin.journaled}});
    }
}

Origin Origins::of(const Address& address)
{
    Origin origin;
    m_journal.select(QStringLiteral("SELECT file, journaled FROM file_origins WHERE guid = :guid AND id = :id"),
                     keyOf(address), [&origin](const QSqlQuery& row) {
                         RowReader read(row);
                         read("file", origin.file);
                         read("journaled", origin.journaled);
                     });
    return origin;
}

void Origins::change(const Address& address, const QString& file)
{
    m_journal.update(OriginTable, {{"file", file}}, keyOf(address));
}

void Origins::forget(const Address& address)
{
    m_journal.update(OriginTable, {{"deleted", 1}}, keyOf(address));
}

bool Origins::isAnothers(const QString& file, const Address& address)
{
    return m_journal
        .value(QStringLiteral("SELECT 1 FROM file_origins WHERE file = :file AND deleted = 0 "
                              "AND NOT (guid = :guid AND id = :id) LIMIT 1"),
               keyOf(address) + Values{{"file", file}})
        .has_value();
}

std::vector<Address> Origins::sharing(const Address& address)
{
    std::vector<Address> others;
    m_journal.select(QStringLiteral("SELECT o.guid, o.id FROM file_origins o JOIN file_origins m ON m.file = o.file "
                                    "WHERE m.guid = :guid AND m.id = :id AND NOT (o.guid = m.guid AND o.id = m.id)"),
                     keyOf(address), [&others](const QSqlQuery& row) {
                         RowReader read(row);
                         read("guid", others.emplace_back().guid);
                         read("id", others.back().id);
                     });
    return others;
}

Address Origins::firstOf(const Address& address)
{
    Address first = address;
    m_journal.select(QStringLiteral("SELECT o.guid, o.id FROM file_origins o JOIN file_origins m ON m.file = o.file "
                                    "WHERE m.guid = :guid AND m.id = :id AND m.deleted = 0 AND o.deleted = 0 "
                                    "ORDER BY o.rowid LIMIT 1"),
                     keyOf(address), [&first](const QSqlQuery& row) {
                         RowReader read(row);
                         read("guid", first.guid);
                         read("id", first.id);
                     });
    return first;
}

std::vector<QString> Origins::owners(const QString& file)
{
    return m_journal.texts(QStringLiteral("SELECT g.owner FROM file_origins o JOIN file_groups g ON g.guid = o.guid "
                                          "WHERE o.file = :file AND o.deleted = 0"),
                           {{"file", file}});
}

}  // namespace Zelvo
