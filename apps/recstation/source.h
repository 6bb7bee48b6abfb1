// A source of device values: something that creates values in the tree and changes them over time.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <QString>

namespace recstation {

/// Counts for the closing report of a run.
struct SourceReport {
    std::uint64_t used = 0;     ///< lines, frames or steps that became changes
    std::uint64_t skipped = 0;  ///< understood and rightly left out
    std::uint64_t bad = 0;      ///< not understood; every one was reported
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
    /// earlier than the answer before.
    [[nodiscard]] virtual std::optional<unsigned long long> nextTime() = 0;
    /// Makes the changes that are due at nextTime. The scheduler has set the station's clock to that time.
    virtual void step() = 0;
    [[nodiscard]] virtual SourceReport report() const = 0;
};

}  // namespace recstation
