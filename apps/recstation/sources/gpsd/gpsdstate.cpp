// Choosing devices, and making their reports changes of the station's values.
#include "sources/gpsd/gpsdstate.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace RecStation {

namespace {

constexpr double UnknownNumber = std::numeric_limits<double>::quiet_NaN();

std::string deviceName(const std::string& device)
{
    return device.empty() ? "an unnamed device" : device;
}

void putIfTold(std::optional<double>& value, const std::optional<double>& number)
{
    if (number) {
        value = number;
    }
}

}  // namespace

GpsdState::GpsdState(std::string device, std::optional<double> variationDeg)
    : m_device(std::move(device)), m_told(variationDeg), m_variation(variationDeg)
{
}

bool GpsdState::take(const GpsdReport& report, Time now)
{
    passTime(now);
    switch (report.kind) {
        case GpsdReport::Kind::Fix:
            return takeFix(report, now);
        case GpsdReport::Kind::Attitude:
            return takeAttitude(report, now);
        case GpsdReport::Kind::Devices:
            tellDevices(report);
            return false;
        case GpsdReport::Kind::Error:
            tellError(report);
            return false;
        default:
            return false;
    }
}

bool GpsdState::isSilent(const Use& use, Time now)
{
    return use.device && now - use.last >= Silence;
}

void GpsdState::passTime(Time now)
{
    for (Use* use : {&m_fixes, &m_attitudes}) {
        if (isSilent(*use, now)) {
            m_news.push_back(std::string(use->what) + " of " + deviceName(*use->device) + " no longer come");
            use->device.reset();
            use == &m_fixes ? forgetFix() : forgetAttitude();
        }
    }
}

std::optional<GpsdState::Time> GpsdState::silentAt() const
{
    std::optional<Time> first;
    for (const Use* use : {&m_fixes, &m_attitudes}) {
        if (use->device && (!first || use->last + Silence < *first)) {
            first = use->last + Silence;
        }
    }
    return first;
}

void GpsdState::forget()
{
    for (Use* use : {&m_fixes, &m_attitudes}) {
        use->device.reset();
        use->before.clear();
    }
    m_variation = m_told;
    m_missingTold = false;
    m_trueHeading = false;
    m_change = {};
}

// Whether the report is of the device in use, which it becomes when there is none and it tells something.
bool GpsdState::uses(Use& use, const GpsdReport& report, Time now, bool tells)
{
    if (!m_device.empty() && report.device != m_device) {
        return false;
    }
    if (!use.device && tells) {
        use.device = report.device;
        if (m_device.empty() && use.before != report.device) {
            m_news.push_back(std::string(use.what) + " come from " + deviceName(report.device));
            use.before = report.device;
        }
    }
    const bool inUse = use.device == report.device;
    if (inUse && tells) {
        use.last = now;
    }
    return inUse;
}

bool GpsdState::takeFix(const GpsdReport& report, Time now)
{
    if (!uses(m_fixes, report, now, report.dimensions >= 2)) {
        return false;
    }
    if (report.dimensions < 2) {
        if (report.dimensions == 1) {  // 0: this report says nothing about a fix
            forgetFix();
        }
        return report.dimensions == 1;
    }
    putIfTold(m_change.latitudeDeg, report.fix.latitudeDeg);
    putIfTold(m_change.longitudeDeg, report.fix.longitudeDeg);
    putIfTold(m_change.altitudeM, report.fix.altitudeM);
    putIfTold(m_change.speedMps, report.fix.speedMps);
    if (report.dimensions == 2 && !report.fix.altitudeM) {
        m_change.altitudeM = UnknownNumber;
    }
    // gpsd's model and the receiver may take turns, and differ: the first counts.
    if (!m_variation) {
        m_variation = report.variationDeg;
    }
    return true;
}

bool GpsdState::takeAttitude(const GpsdReport& report, Time now)
{
    auto heading = report.fix.headingDeg;
    const bool compass = !heading && report.magneticDeg && !m_trueHeading;
    if (compass && m_variation) {
        heading = wrappedDegrees(*report.magneticDeg + *m_variation);
    }
    const bool tells = heading || report.fix.pitchDeg || report.fix.rollDeg;
    if (compass && !heading && !std::exchange(m_compassTold, true)) {
        m_news.push_back(deviceName(report.device) +
                         " tells a magnetic heading; without a variation it is not recorded");
    }
    if (!uses(m_attitudes, report, now, tells) || !tells) {
        return false;
    }
    m_trueHeading = m_trueHeading || report.fix.headingDeg;
    putIfTold(m_change.headingDeg, heading);
    putIfTold(m_change.pitchDeg, report.fix.pitchDeg);
    putIfTold(m_change.rollDeg, report.fix.rollDeg);
    return true;
}

void GpsdState::forgetFix()
{
    m_change.latitudeDeg = UnknownNumber;
    m_change.longitudeDeg = UnknownNumber;
    m_change.altitudeM = UnknownNumber;
    m_change.speedMps = UnknownNumber;
}

void GpsdState::forgetAttitude()
{
    m_trueHeading = false;
    m_change.headingDeg = UnknownNumber;
    m_change.pitchDeg = UnknownNumber;
    m_change.rollDeg = UnknownNumber;
}

void GpsdState::tellDevices(const GpsdReport& report)
{
    const auto& devices = report.devices;
    if (m_device.empty() || std::find(devices.begin(), devices.end(), m_device) != devices.end() ||
        std::exchange(m_missingTold, true)) {
        return;
    }
    std::string list;
    for (const std::string& device : devices) {
        list += (list.empty() ? "" : ", ") + deviceName(device);
    }
    m_news.push_back("there is no " + m_device + (list.empty() ? ", and no other device" : "; there is " + list));
}

void GpsdState::tellError(const GpsdReport& report)
{
    constexpr std::uint64_t Most = 5;
    if (++m_errors <= Most) {
        m_news.push_back("it says: " + report.text);
    }
}

}  // namespace RecStation
