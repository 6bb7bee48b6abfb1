// One connection to a registry: SQLite or PostgreSQL.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include <QHash>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QString>
#include <QVariantList>

namespace Zelvo {

/// Values for binding. A null text would be stored as NULL, and no registry stores a NUL character.
[[nodiscard]] QVariant bound(const QString& text);
[[nodiscard]] inline QVariant bound(std::int64_t number)
{
    return QVariant(static_cast<qlonglong>(number));
}

/// Opened at the first use. Used by one thread. Failures throw ArchiveError: Unreachable where the registry does not
/// answer; the next use then connects anew.
class Database {
public:
    /// @param address a path of an SQLite file, or postgresql://USER@HOST:PORT/DATABASE
    Database(QString address, unsigned fileMode);
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;
    ~Database();

    [[nodiscard]] bool isPostgres() const { return m_postgres; }
    /// For people; never with a password.
    [[nodiscard]] const QString& address() const { return m_address; }
    /// Makes the tables where they are missing. @throws ArchiveError also when they are of a newer program
    void makeTables();
    void run(const QString& sql);
    /// Gives each row to a taker, which must not use this connection.
    void select(const QString& sql, const QVariantList& values, const std::function<void(const QSqlQuery&)>& take);
    /// How many rows a change met.
    std::int64_t change(const QString& sql, const QVariantList& values);
    /// All of the work or nothing of it. SQLite lets one writer in at a time, PostgreSQL locks what is selected with
    /// forUpdate().
    void atomically(const std::function<void()>& work);
    [[nodiscard]] QString forUpdate() const { return m_postgres ? QStringLiteral(" FOR UPDATE") : QString(); }

private:
    void open();
    void close();
    void configure();
    QSqlQuery executed(const QString& sql, const QVariantList& values);
    [[noreturn]] void fail(const QString& operation, const QSqlError& error);

    QString m_address;
    bool m_postgres;
    unsigned m_fileMode;
    QString m_connection;
    QHash<QString, QSqlQuery> m_prepared;
    bool m_open = false;
};

}  // namespace Zelvo
