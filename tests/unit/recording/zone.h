// The time zone of a test.
#pragma once

#include <ctime>

#include "station.h"

namespace RecorderTests {

#if defined(_WIN32)
constexpr bool NamesAsWindows = true;
#else
constexpr bool NamesAsWindows = false;
#endif

#if defined(_WIN32)
/// The same zone as the C runtime of Windows has it: names and offsets, and summers as in the United States.
inline const char* zoneOfRuntime(const std::string& name)
{
    static const std::map<std::string, const char*> Zones = {{"UTC", "UTC0"},
                                                             {"Europe/Berlin", "CET-1CES"},
                                                             {"Europe/London", "GMT0BST"},
                                                             {"Asia/Kolkata", "IST-5:30"},
                                                             {"America/St_Johns", "NST3:30NDT"}};
    return Zones.at(name);
}
#else
inline const char* zoneOfRuntime(const char* name)
{
    return name;
}
#endif

/// The zone of local time for as long as this exists.
class Zone {
public:
    explicit Zone(const char* name) : m_environment("TZ", zoneOfRuntime(name)) { tzset(); }

private:
    struct Restore {
        Restore() = default;
        Restore(const Restore&) = delete;
        Restore& operator=(const Restore&) = delete;
        ~Restore() { tzset(); }
    };
    Restore m_restore;  // runs after the environment is back
    Environment m_environment;
};

}  // namespace RecorderTests
