// Runs several sources as one: merged by time, the station's clock set before every step.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "clock.h"
#include "sources/source.h"

namespace RecStation {

/// Sources that are due at the same time step in the order they were added.
class Scheduler {
public:
    /// Told before every step what time the clock shows.
    using BeforeStep = std::function<void(unsigned long long time)>;

    explicit Scheduler(SimulatedClock& clock, BeforeStep beforeStep = {});
    Scheduler(const Scheduler&) = delete;
    Scheduler& operator=(const Scheduler&) = delete;
    virtual ~Scheduler() = default;

    /// From now on a step that lies farther than the gap (microseconds) from the one before, in either direction, is
    /// told; what it changes is for a new recording, whose time may be earlier.
    void tellGaps(unsigned long long gapUs, std::function<void(unsigned long long time)> beyondGap);

    void add(std::unique_ptr<Source> source);
    void prepare();  ///< prepares every source in order

    /// When the next step of any source is due, microseconds since 1970 UTC; never earlier than the clock shows, but
    /// after a gap. Waits for a source that reads live input. Nothing when every source has ended.
    [[nodiscard]] virtual std::optional<unsigned long long> nextTime();
    /// Nothing is due because nothing has come yet: nextTime is to be asked again.
    [[nodiscard]] virtual bool isWaiting() const { return false; }
    /// Then, at the latest, while it is waiting; nothing: when somebody tells to.
    [[nodiscard]] virtual std::optional<std::chrono::milliseconds> askAgainIn() { return std::nullopt; }
    /// Sets the clock to nextTime and lets the source that is due make its changes.
    virtual void step();
    /// Ends what sources wait for; before unfinishedTime and before their reports are read.
    virtual void finish() {}
    /// The source, by its place among the sources, did not end: nothing of it but its name may be asked for.
    [[nodiscard]] virtual bool hangs(std::size_t) { return false; }
    /// After the process was asked to stop: the same with what a source has read but was waiting for more input.
    [[nodiscard]] std::optional<unsigned long long> unfinishedTime();
    void stepUnfinished();

    [[nodiscard]] const std::vector<std::unique_ptr<Source>>& sources() const { return m_sources; }

protected:
    /// A source's time as the clock will show it.
    [[nodiscard]] unsigned long long clockTime(unsigned long long time) const;
    void stepAt(unsigned long long time, Source& source);
    [[nodiscard]] const SimulatedClock& clock() const { return m_clock; }

private:
    struct Due {
        bool asked = false;
        std::optional<unsigned long long> time;
    };

    [[nodiscard]] std::optional<std::size_t> earliest();

    [[nodiscard]] bool isBehindGap(unsigned long long time) const;

    SimulatedClock& m_clock;
    BeforeStep m_beforeStep;
    std::optional<unsigned long long> m_gapUs;
    std::function<void(unsigned long long time)> m_beyondGap;
    bool m_stepped = false;
    std::vector<std::unique_ptr<Source>> m_sources;
    std::vector<Due> m_due;  // one per source; asked anew only after the source stepped
    Source* m_unfinished = nullptr;
    std::optional<unsigned long long> m_unfinishedTime;
};

}  // namespace RecStation
