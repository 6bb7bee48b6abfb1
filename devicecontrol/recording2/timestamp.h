// CTimeStamp: the time type of recordings.
#pragma once

#include <cstdint>
#include <type_traits>

#include <QDate>
#include <QDateTime>
#include <QString>
#include <QTime>

#include <recording2/export.h>

namespace Quon {
class DateTime;
}

namespace Recording2 {

/// The "long" of the interface: 32 bits everywhere, and the compiler's own where that has as many, as on Windows.
using Long = std::conditional_t<sizeof(long) == sizeof(std::int32_t), long, std::int32_t>;
using UnsignedLong = std::make_unsigned_t<Long>;

/// A point in time: microseconds since 1970-01-01 00:00:00 UTC in 64 bits, or null. A null stamp reads as 0 everywhere.
///
/// Owns its date-time object; copies never share it. Objects are used by one thread. No operation reports errors;
/// where memory runs out the stamp is null.
/// An unsigned long fits neither number constructor on purpose: say which unit is meant by the type.
class RECORDING2_EXPORT CTimeStamp {
public:
    CTimeStamp();                                      ///< null
    CTimeStamp(const CTimeStamp& other);               ///< never null: a copy of a null stamp holds 0
    CTimeStamp(const QDate& date);                     // NOLINT(google-explicit-constructor): midnight UTC
    CTimeStamp(const QDate& date, const QTime& time);  ///< UTC
    CTimeStamp(const QDateTime& dt);    // NOLINT(google-explicit-constructor): whole seconds, rest dropped
    CTimeStamp(UnsignedLong ms);        // NOLINT(google-explicit-constructor): milliseconds
    CTimeStamp(unsigned long long us);  // NOLINT(google-explicit-constructor): microseconds
    ~CTimeStamp();

    /// An equal value changes nothing, so a null stamp that is assigned 0 stays null.
    const CTimeStamp& operator=(const CTimeStamp& other);  // NOLINT(misc-unconventional-assign-operator)
    const CTimeStamp& operator=(const QDateTime& dt);      // NOLINT(misc-unconventional-assign-operator)
    void setTime_ts(unsigned long long us);
    /// days x 86,400,000,000 + ms x 1000 in unsigned 32-bit arithmetic, wrapping at every step (the factor acts as
    /// 500,654,080); does nothing on a null stamp. Callers depend on the wrapping.
    void setts(Long days, Long ms);

    [[nodiscard]] unsigned long long getTimeStamp() const;  ///< microseconds
    [[nodiscard]] unsigned long long getMicroSecs() const;  ///< the same
    [[nodiscard]] unsigned long long getMilliSecs() const;  ///< truncated
    [[nodiscard]] Long lTime() const;                       ///< milliseconds since 1970, the low 32 bits
    [[nodiscard]] Long lDate() const;                       ///< whole days since 1970; not to be called on a null stamp
    [[nodiscard]] QTime time() const;                       ///< time of day, UTC; invalid for a null stamp

    [[nodiscard]] unsigned long long microsecsTo(const CTimeStamp& other) const;  ///< absolute difference
    [[nodiscard]] unsigned long long msecsTo(const CTimeStamp& other) const;      ///< absolute, truncated
    /// (other - this) / 1000 as unsigned numbers: a huge positive number when other is the earlier one.
    [[nodiscard]] long long timeDiffInMSecs(const CTimeStamp& other) const;
    /// This time shifted, never below 0 (and 0 for a null stamp); the result is never null.
    [[nodiscard]] CTimeStamp addMSecs(long long ms) const;

    bool operator==(const CTimeStamp& other) const;
    bool operator!=(const CTimeStamp& other) const;
    bool operator<(const CTimeStamp& other) const;
    bool operator<=(const CTimeStamp& other) const;
    bool operator>(const CTimeStamp& other) const;
    bool operator>=(const CTimeStamp& other) const;

    // Texts are UTC and empty for a null stamp.
    [[nodiscard]] QString toString() const;   ///< "yyyy-MM-dd hh-mm-ss.zzz"
    [[nodiscard]] QString toString2() const;  ///< "yyyy-MM-dd__hh-mm-ss"
    [[nodiscard]] QString toString(const QString& fmt) const;
    [[nodiscard]] QString toString(const QString& fmt, long long x) const;  ///< x as Quon::DateTime takes it

    /// The current time: the override if one is set, the station's clock otherwise.
    static CTimeStamp cts();
    /// The same as a number of microseconds, without making an object.
    static unsigned long long ctsMicroSecs();
    /// Overrides the current time of the whole process, in microseconds; 0 returns to the clock. Not locked.
    static void SetCts(unsigned long long us);

private:
    Quon::DateTime* m_time = nullptr;
    static unsigned long long g_tNow;
};

}  // namespace Recording2
