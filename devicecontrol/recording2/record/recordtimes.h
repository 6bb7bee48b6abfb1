// The times of a recording's records, and when it began and ended.
#pragma once

#include <values/maps.h>

#include "../timestamp.h"

namespace Recording2 {

/// Times of records are microseconds since 1970 UTC.
class RecordTimes {
public:
    void begin();                         ///< a file was begun now
    void end() { m_startMoved = false; }  ///< no file is open
    /// The time of a change. The own time of a map becomes the current time of the process, so that the records around
    /// it agree with it, and the start of the recording if it is the first one.
    /// @param timedMap null for a change that has the time of now
    unsigned long long take(const values::MappingBase* timedMap, bool recording);
    void written(unsigned long long recordTime) { m_last.setTime_ts(recordTime); }

    [[nodiscard]] const CTimeStamp& start() const { return m_start; }
    [[nodiscard]] const CTimeStamp& last() const { return m_last; }  ///< of the last record
    /// From the start, or back to it, milliseconds; after the initial states.
    [[nodiscard]] unsigned long long elapsedMs(unsigned long long recordTime) const;

    static constexpr unsigned long long InitialStateMs = 10;

private:
    CTimeStamp m_start;
    CTimeStamp m_last;
    bool m_startMoved = false;  // to the own time of a map
};

}  // namespace Recording2
