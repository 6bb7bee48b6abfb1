// The clock of the station, which a host can replace by recorded or simulated time.
#pragma once

#include <vkbase/export.h>

/// Operating-system services. Implementations outlive every use of them.
class VKBASE_EXPORT IQuonOS {
public:
    IQuonOS() = default;
    IQuonOS(const IQuonOS&) = delete;
    IQuonOS& operator=(const IQuonOS&) = delete;
    virtual ~IQuonOS();

    /// Microseconds since 1970-01-01 00:00:00 UTC.
    [[nodiscard]] virtual unsigned long long CurrentTime() const = 0;
};

class VKBASE_EXPORT QuonOS {
public:
    QuonOS() = delete;

    /// The services in force: the host's replacement, otherwise the system's. Never null, not owned by the caller.
    static IQuonOS* Create();
    /// Puts a replacement in force (null: back to the system's). Not owned; call it while nothing else runs.
    static void Replace(IQuonOS* replacement);
};
