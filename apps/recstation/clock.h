// The station's clock while recstation runs: it shows the time of the change being made.
#pragma once

#include <vkbase/quonos.h>

namespace RecStation {

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
