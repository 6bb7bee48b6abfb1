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

#include "columns.h"

namespace Zelvo {

/// Opened at the first use. Used by one thread. Failures throw ArchiveError: Unreachable where the registry does not
/// answer; the next use then connects anew.
class Database {
public:
    /// @param address a path of an SQLite file, or postgresql://USER@HOST:PORT/DATABASE
    Database(QString address, unsigned fileMode);
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;
    ~Database();

    /// For people; never with a password.
    [[nodiscard]] const QString& address() const { return m_address; }
    /// Makes the tables where they are missing. @throws ArchiveError also when they are of a newer program
    void makeTables();
    void run(const QString& sql);
    /// Gives each row to a taker, which must not use this connection.
    void select(const QString& sql, const Values& values, const std::function<void(const QSqlQuery&)>& take);
    /// The first column of the last row; nothing where there is none.
    [[nodiscard]] std::optional<QVariant> value(const QString& sql, const Values& values = {});
    /// Rows of one column of texts.
    [[nodiscard]] std::vector<QString> texts(const QString& sql, const Values& values);
    /// How many rows a change met.
    std::int64_t change(const QString& sql, const Values& values);
    /// Sets columns of the rows whose columns have given values. @param more a further condition
    /// @return how many rows there were
    std::int64_t update(const char* table, const Values& set, const Values& where, const QString& more = {});
    /// @param more what becomes of one that is there already
    void insert(const char* table, const Values& values, const QString& more = {});
    /// All of the work or nothing of it. SQLite lets one writer in at a time, PostgreSQL locks what is selected with
    /// forUpdate().
    void atomically(const std::function<void()>& work);
    [[nodiscard]] QString forUpdate() const { return m_postgres ? QStringLiteral(" FOR UPDATE") : QString(); }

private:
    void open();
    void close();
    void configure();
    QSqlQuery executed(const QString& sql, const Values& values);
    [[noreturn]] void fail(const QString& operation, const QSqlError& error);

    QString m_address;
    bool m_postgres;
    unsigned m_fileMode;
    QString m_connection;
    QHash<QString, QSqlQuery> m_prepared;
    bool m_open = false;
};

}  // namespace Zelvo
