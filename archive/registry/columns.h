// Values of columns: bound to statements by their names, taken from rows in the order of the list that selects them.
#pragma once

#include <cstdint>
#include <type_traits>
#include <vector>

#include <QDateTime>
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

}  // namespace Zelvo
