// The station's clock while recstation runs: it shows the time of the change being made.
#pragma once

#include <chrono>

#include <vkbase/quonos.h>

namespace RecStation {

/// By the system's clock, microseconds since 1970 UTC.
[[nodiscard]] inline unsigned long long systemTimeUs()
{
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<unsigned long long>(std::chrono::duration_cast<std::chrono::microseconds>(now).count());
}

/// Where a recording of what has no times of its own begins: records tell whole milliseconds.
[[nodiscard]] inline unsigned long long wholeMillisecondUs()
{
    constexpr unsigned long long Millisecond = 1'000;
    return systemTimeUs() / Millisecond * Millisecond;
}

/// What the station's clock shows: while a source steps, the time of the step.
[[nodiscard]] inline unsigned long long stationTimeUs()
{
    return QuonOS::Create()->CurrentTime();
}

/// In force from construction to destruction; nothing else may run at these moments.
class SimulatedClock final : public IQuonOS {
public:
    SimulatedClock() { QuonOS::Replace(this); }
    SimulatedClock(const SimulatedClock&) = delete;
    SimulatedClock& operator=(const SimulatedClock&) = delete;
    ~SimulatedClock() override { QuonOS::Replace(nullptr); }

    [[nodiscard]] unsigned long long CurrentTime() const override { return m_now; }
    void set(unsigned long long microseconds) { m_now = microseconds; }  ///< since 1970 UTC

private:
    unsigned long long m_now = 0;
};

}  // namespace RecStation
