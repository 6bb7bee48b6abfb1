// Connecting to SQLite or PostgreSQL, the tables, which are the same in both, statements, transactions, and how their
// failures are told.
#include "database.h"

#include <atomic>

#include <QCoreApplication>
#include <QLibrary>
#include <QSqlDriver>
#include <QUrl>
#include <QUrlQuery>

#include <zelvo/archive.h>

#include "storage/files.h"

namespace Zelvo {

namespace {

const QString SchemaVersion = QStringLiteral("1");

/// What a journal alone has. Made when it is opened: journals of older programs lack it.
QStringList journalStatements()
{
    return {
        QStringLiteral("CREATE TABLE IF NOT EXISTS file_origins (guid TEXT NOT NULL, id BIGINT NOT NULL, "
                       "file TEXT NOT NULL, journaled BIGINT NOT NULL, deleted BIGINT NOT NULL DEFAULT 0, "
                       "PRIMARY KEY (guid, id))"),
        QStringLiteral("CREATE INDEX IF NOT EXISTS file_origins_file ON file_origins (file)"),
    };
}

QStringList schemaStatements()
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

const QString PostgresScheme = QStringLiteral("postgresql://");

QString newConnectionName()
{
    static std::atomic<unsigned> count = 0;
    return QStringLiteral("zelvo-%1").arg(++count);
}

const QString WaitForDevice = QStringLiteral("PRAGMA synchronous = FULL");

const QString SchemaProperty = QStringLiteral("schema");

// Seconds and milliseconds after which a server that does not answer counts as away. Requests wait for nothing longer.
const QString PostgresOptions =
    QStringLiteral("connect_timeout=2;tcp_user_timeout=4000;keepalives_idle=5;application_name=zelvo");

void setUp(QSqlDatabase& database, const QUrl& url)
{
    const QUrlQuery query(url);
    const QString host = query.queryItemValue(QStringLiteral("host"), QUrl::FullyDecoded);
    database.setHostName(host.isEmpty() ? url.host() : host);
    database.setPort(url.port());
    const QString user = query.queryItemValue(QStringLiteral("user"), QUrl::FullyDecoded);
    database.setUserName(user.isEmpty() ? url.userName() : user);
    database.setDatabaseName(url.path().mid(1));
    const QString ssl = query.queryItemValue(QStringLiteral("sslmode"));
    const bool plainWord = !ssl.isEmpty() && !ssl.contains(QLatin1Char(';')) && !ssl.contains(QLatin1Char(' '));
    database.setConnectOptions(plainWord ? PostgresOptions + QStringLiteral(";sslmode=") + ssl : PostgresOptions);
}

// What the server says beside its answers, such as that it is going down, libpq would print.
void silence(const QSqlDatabase& database)
{
    using Processor = void (*)(void*, const char*);
    using SetProcessor = Processor (*)(void*, Processor, void*);
    const QVariant handle = database.driver()->handle();
    constexpr int LibraryVersion = 5;
    const auto setProcessor =
        reinterpret_cast<SetProcessor>(QLibrary::resolve(QStringLiteral("pq"), LibraryVersion, "PQsetNoticeProcessor"));
    if (setProcessor != nullptr && qstrcmp(handle.typeName(), "PGconn*") == 0) {
        setProcessor(
            *static_cast<void* const*>(handle.constData()), [](void* /*data*/, const char* /*text*/) {}, nullptr);
    }
}

}  // namespace

QVariant bound(const QString& text)
{
    QString stored = text.isNull() ? QStringLiteral("") : text;
    return stored.replace(QChar(0), QChar(QChar::ReplacementCharacter));
}

Database::Database(QString address, unsigned fileMode)
    : m_address(std::move(address)),
      m_postgres(m_address.startsWith(PostgresScheme)),
      m_fileMode(fileMode),
      m_connection(newConnectionName())
{
}

Database::~Database()
{
    close();
}

void Database::open()
{
    if (m_open) {
        return;
    }
    const QString driver = m_postgres ? QStringLiteral("QPSQL") : QStringLiteral("QSQLITE");
    const std::filesystem::path folder = System::programFolder();
    if (!QSqlDatabase::isDriverAvailable(driver) && !folder.empty()) {
        // Qt looks there only in processes with an application object, which rectool and hosts may not have.
        QCoreApplication::addLibraryPath(QString::fromStdU16String(folder.generic_u16string()));
    }
    if (!QSqlDatabase::isDriverAvailable(driver)) {
        throw ArchiveError(QStringLiteral("Qt's driver %1 is not installed (Debian: libqt5sql5-%2)")
                               .arg(driver, m_postgres ? QStringLiteral("psql") : QStringLiteral("sqlite")),
                           ZelvoError::NotAvailable);
    }
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(driver, m_connection);
        if (m_postgres) {
            setUp(database, QUrl(m_address));
        } else {
            database.setDatabaseName(m_address);
            database.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000"));
        }
        m_open = database.open();
        if (!m_open) {
            const QSqlError error = database.lastError();
            database = QSqlDatabase();
            fail(QStringLiteral("open"), error);
        }
        if (m_postgres) {
            silence(database);
        }
    }
    configure();
}

void Database::configure()
{
    if (m_postgres) {
        run(QStringLiteral("SET statement_timeout = 10000"));
        run(QStringLiteral("SET lock_timeout = 5000"));
        run(QStringLiteral("SET client_min_messages = warning"));
        return;
    }
    run(QStringLiteral("PRAGMA journal_mode = WAL"));
    // What the registry says must outlast a power cut before an original is deleted.
    run(WaitForDevice);
    run(QStringLiteral("PRAGMA foreign_keys = ON"));
    for (const QString& statement : journalStatements()) {
        run(statement);
    }
}

void Database::close()
{
    m_open = false;
    if (!m_postgres) {
        m_prepared.clear();
    }
    if (QSqlDatabase::contains(m_connection)) {
        QSqlDatabase::database(m_connection, false).close();
        QSqlDatabase::removeDatabase(m_connection);
    }
    // Those of PostgreSQL last: with a connection they would tell the server of their end, and print when it is away.
    m_prepared.clear();
}

void Database::fail(const QString& operation, const QSqlError& error)
{
    const QString reason = error.databaseText().isEmpty() ? error.driverText() : error.databaseText();
    const QString sentence =
        QStringLiteral("the archive's registry %1 cannot %2: %3").arg(m_address, operation, reason.simplified());
    close();
    throw ArchiveError(sentence, ZelvoError::Unreachable);
}

QSqlQuery Database::executed(const QString& sql, const Values& values)
{
    open();
    auto found = m_prepared.find(sql);
    if (found == m_prepared.end()) {
        QSqlQuery query(QSqlDatabase::database(m_connection, false));
        query.setForwardOnly(!m_postgres);
        if (!query.prepare(sql)) {
            fail(QStringLiteral("take a request"), query.lastError());
        }
        found = m_prepared.insert(sql, query);
    }
    QSqlQuery query = *found;
    for (const Value& value : values) {
        query.bindValue(QLatin1Char(':') + value.name, value.value);
    }
    if (!query.exec()) {
        const QSqlError error = query.lastError();
        query = QSqlQuery();
        fail(QStringLiteral("answer"), error);
    }
    return query;
}

void Database::run(const QString& sql)
{
    open();
    QSqlQuery query(QSqlDatabase::database(m_connection, false));
    if (!query.exec(sql)) {
        const QSqlError error = query.lastError();
        query = QSqlQuery();
        fail(QStringLiteral("answer"), error);
    }
}

void Database::select(const QString& sql, const Values& values, const std::function<void(const QSqlQuery&)>& take)
{
    QSqlQuery query = executed(sql, values);
    while (query.next()) {
        take(query);
    }
    const QSqlError error = query.lastError();
    query.finish();
    if (error.isValid()) {
        query = QSqlQuery();
        fail(QStringLiteral("answer"), error);
    }
}

std::optional<QVariant> Database::value(const QString& sql, const Values& values)
{
    std::optional<QVariant> found;
    select(sql, values, [&found](const QSqlQuery& row) { found = row.value(0); });
    return found;
}

std::vector<QString> Database::texts(const QString& sql, const Values& values)
{
    std::vector<QString> found;
    select(sql, values, [&found](const QSqlQuery& row) { found.push_back(row.value(0).toString()); });
    return found;
}

std::int64_t Database::change(const QString& sql, const Values& values)
{
    QSqlQuery query = executed(sql, values);
    const std::int64_t rows = query.numRowsAffected();
    query.finish();
    return rows;
}

std::int64_t Database::update(const char* table, const Values& set, const Values& where, const QString& more)
{
    Values values = where;
    QStringList changes;
    for (Value value : set) {
        const QString column = value.name;
        value.name.prepend(QStringLiteral("new_"));
        changes += column + QStringLiteral(" = :") + value.name;
        values.push_back(value);
    }
    QStringList conditions;
    for (const Value& value : where) {
        conditions += value.name + QStringLiteral(" = :") + value.name;
    }
    if (!more.isEmpty()) {
        conditions += more;
    }
    return change(
        QStringLiteral("UPDATE %1 SET %2 WHERE %3")
            .arg(QLatin1String(table), changes.join(QLatin1Char(',')), conditions.join(QStringLiteral(" AND "))),
        values);
}

void Database::insert(const char* table, const Values& values, const QString& more)
{
    QStringList columns;
    for (const Value& value : values) {
        columns += value.name;
    }
    change(QStringLiteral("INSERT INTO %1 (%2) VALUES (:%3) %4")
               .arg(QLatin1String(table), columns.join(QLatin1Char(',')), columns.join(QStringLiteral(", :")), more),
           values);
}

void Database::atomically(const std::function<void()>& work)
{
    between(m_postgres ? QStringLiteral("BEGIN") : QStringLiteral("BEGIN IMMEDIATE"), work, QStringLiteral("COMMIT"));
}

// How long a server waits for its device is for those to say who run it.
void Database::withoutWaiting(const std::function<void()>& work)
{
    if (m_postgres) {
        work();
    } else {
        between(QStringLiteral("PRAGMA synchronous = NORMAL"), work, WaitForDevice);
    }
}

void Database::between(const QString& before, const std::function<void()>& work, const QString& after)
{
    run(before);
    try {
        work();
        run(after);
    } catch (...) {
        // A connection that failed is closed already, and its transaction and its settings with it.
        if (m_open) {
            close();
        }
        throw;
    }
}

void Database::makeTables()
{
    if (!m_postgres) {
        createEmpty(m_address, m_fileMode);
    }
    atomically([this] {
        if (m_postgres) {
            // Two stations that are set up at the same time take turns.
            run(QStringLiteral("SELECT pg_advisory_xact_lock(7063214)"));
        }
        for (const QString& statement : schemaStatements()) {
            run(statement);
        }
        insert("archive_properties", {{"name", SchemaProperty}, {"value", SchemaVersion}},
               QStringLiteral("ON CONFLICT (name) DO NOTHING"));
        const auto version = value(QStringLiteral("SELECT value FROM archive_properties WHERE name = :name"),
                                   {{"name", SchemaProperty}});
        if (!version || version->toString() != SchemaVersion) {
            throw ArchiveError(
                QStringLiteral("the archive's registry %1 is of another version of this program").arg(m_address));
        }
    });
}

}  // namespace Zelvo
