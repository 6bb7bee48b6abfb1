// Setting, comparing, shifting and printing a time stamp, also one that holds no time.
#include "timestamp.h"

#include <new>

#include <vkbase/datetime.h>
#include <vkbase/quonos.h>

namespace Recording2 {

namespace {

constexpr unsigned long long MicrosecondsPerMillisecond = 1000;
constexpr unsigned long long MicrosecondsPerSecond = 1'000'000;

unsigned long long wholeSeconds(const QDateTime& dt)
{
    return static_cast<unsigned long long>(dt.toTime_t()) * MicrosecondsPerSecond;
}

}  // namespace

unsigned long long CTimeStamp::g_tNow = 0;

CTimeStamp::CTimeStamp() = default;

CTimeStamp::CTimeStamp(const CTimeStamp& other) : m_time(new (std::nothrow) Quon::DateTime(other.getTimeStamp()))
{
}

CTimeStamp::CTimeStamp(const QDate& date) : m_time(new (std::nothrow) Quon::DateTime(date))
{
}

CTimeStamp::CTimeStamp(const QDate& date, const QTime& time) : m_time(new (std::nothrow) Quon::DateTime(date, time))
{
}

CTimeStamp::CTimeStamp(const QDateTime& dt) : m_time(new (std::nothrow) Quon::DateTime(wholeSeconds(dt)))
{
}

CTimeStamp::CTimeStamp(UnsignedLong ms) : m_time(new (std::nothrow) Quon::DateTime(ms * MicrosecondsPerMillisecond))
{
}

CTimeStamp::CTimeStamp(unsigned long long us) : m_time(new (std::nothrow) Quon::DateTime(us))
{
}

CTimeStamp::~CTimeStamp()
{
    delete m_time;
    m_time = nullptr;
}

const CTimeStamp& CTimeStamp::operator=(const CTimeStamp& other)
{
    if (this != &other && *this != other) {
        setTime_ts(other.getTimeStamp());
    }
    return *this;
}

const CTimeStamp& CTimeStamp::operator=(const QDateTime& dt)
{
    setTime_ts(wholeSeconds(dt));
    return *this;
}

void CTimeStamp::setTime_ts(unsigned long long us)
{
    if (m_time == nullptr) {
        m_time = new (std::nothrow) Quon::DateTime(us);
    } else {
        m_time->setTime_ts(us);
    }
}

void CTimeStamp::setts(Long days, Long ms)
{
    if (m_time == nullptr) {
        return;
    }
    constexpr auto MicrosecondsPerDay = static_cast<std::uint32_t>(86'400'000'000ULL);  // cut: the factor that applies
    const std::uint32_t wrapped =
        static_cast<std::uint32_t>(days) * MicrosecondsPerDay + static_cast<std::uint32_t>(ms) * 1000U;
    m_time->setTime_ts(wrapped);
}

unsigned long long CTimeStamp::getTimeStamp() const
{
    return m_time == nullptr ? 0 : m_time->getTimeStamp();
}

unsigned long long CTimeStamp::getMicroSecs() const
{
    return getTimeStamp();
}

unsigned long long CTimeStamp::getMilliSecs() const
{
    return getTimeStamp() / MicrosecondsPerMillisecond;
}

Long CTimeStamp::lTime() const
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(getMilliSecs()));
}

Long CTimeStamp::lDate() const
{
    const unsigned long long epoch = 0;
    return Quon::DateTime(epoch).daysTo(*m_time);
}

QTime CTimeStamp::time() const
{
    return m_time == nullptr ? QTime() : m_time->time();
}

unsigned long long CTimeStamp::microsecsTo(const CTimeStamp& other) const
{
    const unsigned long long mine = getTimeStamp();
    const unsigned long long theirs = other.getTimeStamp();
    return mine > theirs ? mine - theirs : theirs - mine;
}

unsigned long long CTimeStamp::msecsTo(const CTimeStamp& other) const
{
    return microsecsTo(other) / MicrosecondsPerMillisecond;
}

long long CTimeStamp::timeDiffInMSecs(const CTimeStamp& other) const
{
    return static_cast<long long>((other.getTimeStamp() - getTimeStamp()) / MicrosecondsPerMillisecond);
}

CTimeStamp CTimeStamp::addMSecs(long long ms) const
{
    const unsigned long long value = getTimeStamp();
    CTimeStamp result(value);
    if (m_time == nullptr) {
        return result;
    }
    // Unsigned, so that extreme shifts wrap instead of overflowing.
    const unsigned long long shift = static_cast<unsigned long long>(ms) * MicrosecondsPerMillisecond;
    const bool backwards = static_cast<long long>(shift) < 0;
    const bool beforeEpoch = backwards && 0 - shift >= value;
    result.setTime_ts(beforeEpoch ? 0 : value + shift);
    return result;
}

bool CTimeStamp::operator==(const CTimeStamp& other) const
{
    return getTimeStamp() == other.getTimeStamp();
}

bool CTimeStamp::operator!=(const CTimeStamp& other) const
{
    return getTimeStamp() != other.getTimeStamp();
}

bool CTimeStamp::operator<(const CTimeStamp& other) const
{
    return getTimeStamp() < other.getTimeStamp();
}

bool CTimeStamp::operator<=(const CTimeStamp& other) const
{
    return getTimeStamp() <= other.getTimeStamp();
}

bool CTimeStamp::operator>(const CTimeStamp& other) const
{
    return getTimeStamp() > other.getTimeStamp();
}

bool CTimeStamp::operator>=(const CTimeStamp& other) const
{
    return getTimeStamp() >= other.getTimeStamp();
}

QString CTimeStamp::toString() const
{
    return toString(QStringLiteral("yyyy-MM-dd hh-mm-ss.zzz"));
}

QString CTimeStamp::toString2() const
{
    return toString(QStringLiteral("yyyy-MM-dd__hh-mm-ss"));
}

QString CTimeStamp::toString(const QString& fmt) const
{
    return m_time == nullptr ? QString() : m_time->toString(fmt);
}

QString CTimeStamp::toString(const QString& fmt, long long x) const
{
    return m_time == nullptr ? QString() : m_time->toString(fmt, x);
}

CTimeStamp CTimeStamp::cts()
{
    return CTimeStamp(ctsMicroSecs());
}

unsigned long long CTimeStamp::ctsMicroSecs()
{
    return g_tNow != 0 ? g_tNow : QuonOS::Create()->CurrentTime();
}

void CTimeStamp::SetCts(unsigned long long us)
{
    g_tNow = us;
}

}  // namespace Recording2
