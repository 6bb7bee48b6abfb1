// Times of changes: now, or as a map tells.
#include "recordtimes.h"

#include <algorithm>

namespace Recording2 {

void RecordTimes::begin()
{
    m_start = CTimeStamp::cts();
    m_last = m_start;
    m_startMoved = false;
}

unsigned long long RecordTimes::take(const values::MappingBase* timedMap, bool recording)
{
    const unsigned long long own = timedMap == nullptr ? 0 : timedMap->GetTimeStamp();
    if (own == 0) {
        return CTimeStamp::ctsMicroSecs();
    }
    CTimeStamp::SetCts(own);
    if (!m_startMoved && recording) {
        m_start.setTime_ts(own);
        m_startMoved = true;
    }
    return own;
}

unsigned long long RecordTimes::elapsedMs(unsigned long long recordTime) const
{
    const unsigned long long start = m_start.getTimeStamp();
    const unsigned long long elapsed = (recordTime > start ? recordTime - start : start - recordTime) / 1000;
    return std::max(elapsed, InitialStateMs + 1);
}

}  // namespace Recording2
