// What all sources with a peer have in common: connecting, trying again, telling, times.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "live/connection.h"
#include "live/livetimes.h"
#include "live/retry.h"
#include "sources/offeredsource.h"
#include "sources/source.h"

namespace RecStation {

/// A source that lives as long as the run, whatever its peer does. When the peer is lost that is told once, the values
/// become unknown, and it is tried again with growing pauses. nextTime runs in a thread of the source's own, all else
/// in the station's; never both at a time, so that no source needs a lock.
class PeerSource : public Source {
public:
    /// @param name "rig"
    /// @param peer how messages name it behind the source's name: "127.0.0.1:4532"
    PeerSource(const char* name, std::string peer, const SourceRun& run);

    [[nodiscard]] QString name() const final { return m_name; }
    [[nodiscard]] std::optional<unsigned long long> nextTime() final;
    void step() final;
    [[nodiscard]] SourceReport report() const final;

protected:
    // In the source's own thread. They never touch the value tree; what they throw otherwise ends the run.

    /// Reaches the peer and asks for what is wanted. @throws ConnectionError, Stopped
    virtual void connect() = 0;
    /// Waits for what apply is to set, be it the newest of many lines. Called again after each step. @throws
    /// ConnectionError when the peer is gone, or is none that this source understands, Stopped
    [[nodiscard]] virtual Received receive() = 0;
    virtual void disconnect() noexcept = 0;

    // In the station's thread, while the other waits. They never wait.

    /// Sets the values of what was received. The station's clock shows the time of the step.
    virtual void apply() = 0;
    /// Sets to unknown what is measured; never FREQUENCY, IFSPAN, START/STOPFREQ, START/STOPLEVEL and RFYLIMIT, of
    /// which the header of a recording is made.
    virtual void forget() = 0;
    /// used, skipped, bad and lost; the rest is added.
    [[nodiscard]] virtual SourceReport counts() const = 0;

    /// Tells people a sentence about the peer; from either thread.
    void say(const std::string& clause) const;

private:
    bool tryToConnect();
    [[nodiscard]] std::optional<Received> tryToReceive();
    void tellMissing(const std::string& why);
    void tellBack();

    QString m_name;
    std::string m_peer;
    InputReport m_report;
    LiveTimes m_times;
    Retry m_retry;
    TellRate m_tellRate;
    bool m_connected = false;
    Deadline m_connectedSince;
    bool m_missing = false;
    bool m_told = false;      // that it is missing
    bool m_rateTold = false;  // that not all of that is told
    bool m_known = false;     // it has sent something in this run
    bool m_toForget = false;  // what the next step does
    std::string m_why;        // it could not be reached, or was lost, at last
    std::uint64_t m_reconnects = 0;
};

}  // namespace RecStation
