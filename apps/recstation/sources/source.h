// A source of device values: something that creates values in the tree and changes them over time.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <QString>
#include <QStringList>

namespace RecStation {

/// How much later than the peer's own time its data came, microseconds; negative where its clock is ahead.
struct Lag {
    long long middleUs = 0;
    long long mostUs = 0;
};

/// Counts for the closing report of a run.
struct SourceReport {
    std::uint64_t used = 0;        ///< lines, frames or steps that became changes
    std::uint64_t skipped = 0;     ///< understood and rightly left out
    std::uint64_t bad = 0;         ///< not understood; every one was reported
    bool lines = false;            ///< they are lines of an input
    bool live = false;             ///< what follows is known, and told
    std::uint64_t lost = 0;        ///< what the peer or we had to drop: overruns, broken and overlong lines
    std::uint64_t reconnects = 0;  ///< how often the peer was back after it had been lost
    std::optional<Lag> lag = {};
    bool silent = false;       ///< of a live one: nothing has ever come of it
    std::string missing = {};  ///< the peer of which nothing has ever come, and why; else empty
};

/// Driven by one scheduler: prepare once, then nextTime and step in turn. All errors are std::runtime_error (also
/// VKException) with one sentence that a user can act on.
class Source {
public:
    Source() = default;
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;
    virtual ~Source() = default;

    [[nodiscard]] virtual QString name() const = 0;
    /// Opens the input and creates the source's values in the tree, before any recording starts.
    virtual void prepare() = 0;
    /// When the next step is due on the source's own clock, microseconds since 1970 UTC; nothing at the end. Never
    /// earlier than the answer before, but where the source was told to go back after a gap.
    [[nodiscard]] virtual std::optional<unsigned long long> nextTime() = 0;
    /// Makes the changes that are due at nextTime. The scheduler has set the station's clock to that time.
    virtual void step() = 0;
    /// After the process was asked to stop: when the next of what was read, but waited for more input, was measured.
    /// The step after it shows that. Nothing when there is no more.
    [[nodiscard]] virtual std::optional<unsigned long long> unfinishedTime() { return std::nullopt; }
    /// When the last change will be, where that can be told beforehand; nothing for live input. Reads the input again.
    [[nodiscard]] virtual std::optional<unsigned long long> lastTime() { return std::nullopt; }
    /// What a step changes before its spectrum has the spectrum's time, and not that of the one before: recorders
    /// are to be told the time of every step also when the source runs alone.
    [[nodiscard]] virtual bool plainValuesComeFirst() const { return false; }
    /// Paths of the spectra that only one source of a run can show; a receiver names all that it could, whichever it
    /// was asked for, as frequency, span and level are those of one receiver.
    [[nodiscard]] virtual QStringList spectra() const { return {}; }
    [[nodiscard]] virtual SourceReport report() const = 0;
};

}  // namespace RecStation
