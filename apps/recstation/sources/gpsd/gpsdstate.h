// What the reports of gpsd's devices together say of the station: one device at a time, and none where it is silent.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "published/positionvalues.h"
#include "sources/gpsd/gpsdreport.h"

namespace RecStation {

/// Positions come from one device and attitudes from one (a receiver and a compass are two): the one that was asked
/// for, or else the first that tells any, until it was silent for five seconds; then what it told is unknown.
class GpsdState {
public:
    using Time = std::chrono::steady_clock::time_point;
    static constexpr std::chrono::seconds Silence{5};

    /// @param device the only one that counts; empty: any
    /// @param variationDeg for compasses instead of what gpsd tells; east is positive
    GpsdState(std::string device, std::optional<double> variationDeg);

    /// @return false when it changes nothing that is recorded
    bool take(const GpsdReport& report, Time now);
    /// Looks who is silent.
    void passTime(Time now);
    /// When passTime is to be called; nothing while no device is in use.
    [[nodiscard]] std::optional<Time> silentAt() const;
    void forget();  ///< a new connection begins: no device is in use, nothing is known

    [[nodiscard]] bool hasChange() const { return !m_change.empty(); }
    /// Since the last call; the newest counts.
    [[nodiscard]] Fix takeChange() { return std::exchange(m_change, {}); }
    /// Clauses that people are told.
    [[nodiscard]] std::vector<std::string> takeNews() { return std::exchange(m_news, {}); }

private:
    struct Use {
        const char* what;  // in sentences
        std::optional<std::string> device;
        std::string before;  // the device that was told last
        Time last;
    };

    bool uses(Use& use, const GpsdReport& report, Time now, bool tells);
    [[nodiscard]] static bool isSilent(const Use& use, Time now);
    void tellDevices(const GpsdReport& report);
    void tellError(const GpsdReport& report);
    bool takeFix(const GpsdReport& report, Time now);
    bool takeAttitude(const GpsdReport& report, Time now);
    void forgetFix();
    void forgetAttitude();

    std::string m_device;
    std::optional<double> m_told;       // the variation on the command line
    std::optional<double> m_variation;  // in use
    Use m_fixes{"positions", {}, {}, {}};
    Use m_attitudes{"headings and attitudes", {}, {}, {}};
    bool m_missingTold = false;
    bool m_compassTold = false;
    bool m_trueHeading = false;  // was told by the device in use: its compass does not count
    std::uint64_t m_errors = 0;
    Fix m_change;
    std::vector<std::string> m_news;
};

}  // namespace RecStation
