// One connection to a registry: SQLite or PostgreSQL. Values of columns are bound to statements by their names, and
// taken from rows in the order of the list that selects them.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <type_traits>
#include <vector>

#include <QDateTime>
#include <QHash>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QString>
#include <QVariant>

namespace Zelvo {

/// A null text would be stored as NULL, and no registry stores a NUL character.
[[nodiscard]] QVariant bound(const QString& text);
/// 0 for an invalid time.
[[nodiscard]] inline QVariant bound(const QDateTime& time)
{
    return QVariant(time.isValid() ? time.toMSecsSinceEpoch() : qlonglong{0});
}
template <typename Number>
[[nodiscard]] QVariant bound(Number number) requires(std::is_integral_v<Number> || std::is_enum_v<Number>)
{
    return QVariant(static_cast<qlonglong>(number));
}

/// For the placeholder ":name" of a statement.
struct Value {
    template <typename T>
    Value(const char* columnName, const T& columnValue) : name(QLatin1String(columnName)), value(bound(columnValue))
    {
    }
    QString name;
    QVariant value;
};
using Values = std::vector<Value>;

[[nodiscard]] inline Values operator+(Values first, const Values& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

/// Takes one column after the other from a row.
class RowReader {
public:
    explicit RowReader(const QSqlQuery& row) : m_row(row) {}

    template <typename T>
    void operator()(const char* /*name*/, T& member)
    {
        const QVariant value = m_row.value(m_next++);
        if constexpr (std::is_same_v<T, QString>) {
            member = value.toString();
        } else if constexpr (std::is_same_v<T, QDateTime>) {
            const std::int64_t time = value.toLongLong();
            member = time > 0 ? QDateTime::fromMSecsSinceEpoch(time) : QDateTime();
        } else {
            member = static_cast<T>(value.toLongLong());
        }
    }

private:
    const QSqlQuery& m_row;
    int m_next = 0;
};

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
    /// Changes that need not be on the device yet when this returns, because whoever finds the state before them does
    /// them again. The next change that waits makes these last too. Outside of atomically.
    void withoutWaiting(const std::function<void()>& work);
    [[nodiscard]] QString forUpdate() const { return m_postgres ? QStringLiteral(" FOR UPDATE") : QString(); }

private:
    void open();
    void close();
    void configure();
    void between(const QString& before, const std::function<void()>& work, const QString& after);
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
