// In place of the library's time stamps, whose header needs Qt.
#pragma once

namespace Recording2 {
using Long = int;
class CTimeStamp {
public:
    CTimeStamp();
    CTimeStamp(const CTimeStamp&);
    CTimeStamp& operator=(const CTimeStamp&);
    ~CTimeStamp();

private:
    void* m_time;
};
}  // namespace Recording2
