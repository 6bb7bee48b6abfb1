// The bearing map, frequency and position of a log's direction finder, set bearing by bearing.
#include "sources/bearings/bearingsvalues.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "sources/bearings/krakenrow.h"

namespace RecStation {

BearingsValues::BearingsValues(const LogSurvey& survey, std::optional<double> headingDeg, const QString& deviceName,
                               const QString& valuePath)
    : m_valuePath(valuePath), m_channelsHz(survey.channelsHz)
{
    addDevice(headingDeg, deviceName, QStringLiteral("Bearing log"));
    if (survey.hasPosition) {
        attachValue(m_latitude, QStringLiteral("/LOCATIONLATITUDE"));
        attachValue(m_longitude, QStringLiteral("/LOCATIONLONGITUDE"));
    }
    if (survey.hasAltitude) {
        attachValue(m_altitude, QStringLiteral("/ALTITUDE"));
    }
    showReceiver(survey.first);
    setChannels();
}

BearingsValues::BearingsValues(bool hasPosition, std::optional<double> headingDeg, const QString& deviceName,
                               const QString& valuePath)
    : m_valuePath(valuePath)
{
    constexpr double Unknown = std::numeric_limits<double>::quiet_NaN();
    addDevice(headingDeg, deviceName, QStringLiteral("Direction finder"));
    setScanRange(m_valuePath, Unknown, Unknown);
    if (!headingDeg) {
        m_heading->SetValue(Unknown);
    }
    if (hasPosition) {
        attachValue(m_latitude, QStringLiteral("/LOCATIONLATITUDE"));
        attachValue(m_longitude, QStringLiteral("/LOCATIONLONGITUDE"));
        m_latitude->SetValue(Unknown);
        m_longitude->SetValue(Unknown);
    }
}

void BearingsValues::addDevice(std::optional<double> headingDeg, const QString& deviceName, const QString& deviceType)
{
    setDevice(m_valuePath, forFileNames(deviceName), deviceType);
    attachValue(m_heading, QStringLiteral("/TRUEHEADING"));
    m_heading->SetValue(azimuthOf(headingDeg.value_or(0), false));
    attachNumber(m_frequency, QStringLiteral("/FREQUENCY"));
    attachValue(m_map, QStringLiteral("/DfSpectrum"));
}

void BearingsValues::setChannels()
{
    setScanRange(m_valuePath, m_channelsHz.front(), m_channelsHz.back());
    m_map->SetChannelRange(values::ChannelRange::List(m_channelsHz));
}

void BearingsValues::show(const LoggedBearing& bearing)
{
    const auto channel = std::lower_bound(m_channelsHz.begin(), m_channelsHz.end(), bearing.frequencyHz);
    if (channel == m_channelsHz.end() || *channel != bearing.frequencyHz) {
        throw std::runtime_error("bearings: the log was changed while it was read");
    }
    showReceiver(bearing);
    values::Bearing cell;
    cell.azimuthDeg = bearing.azimuthDeg;
    cell.elevationDeg = bearing.elevationDeg;
    cell.levelDb = bearing.levelDb;
    cell.quality = bearing.quality;
    m_map->SetCell(static_cast<std::size_t>(channel - m_channelsHz.begin()), cell, bearing.time);
}

void BearingsValues::showLive(const LoggedBearing& bearing)
{
    const auto above = std::lower_bound(m_channelsHz.begin(), m_channelsHz.end(), bearing.frequencyHz);
    if (above == m_channelsHz.end() || *above != bearing.frequencyHz) {
        m_channelsHz.insert(above, bearing.frequencyHz);
        setChannels();
    }
    show(bearing);
}

void BearingsValues::forget(unsigned long long time)
{
    constexpr double Unknown = std::numeric_limits<double>::quiet_NaN();
    for (Number* number : {&m_latitude, &m_longitude, &m_altitude}) {
        if (*number) {
            (*number)->SetValue(Unknown);
        }
    }
    if (m_headingTold) {
        m_heading->SetValue(Unknown);
    }
    if (!m_channelsHz.empty()) {
        m_map->SetCells(0, std::vector<values::Bearing>(m_channelsHz.size()), time);
    }
}

void BearingsValues::showReceiver(const LoggedBearing& bearing)
{
    m_frequency->SetValue(bearing.frequencyHz);
    if (m_latitude) {
        m_latitude->SetValue(bearing.latitudeDeg);
        m_longitude->SetValue(bearing.longitudeDeg);
    }
    if (m_altitude) {
        m_altitude->SetValue(bearing.altitudeM);
    }
    if (!std::isnan(bearing.headingDeg)) {
        m_headingTold = true;
        m_heading->SetValue(bearing.headingDeg);
    }
}

}  // namespace RecStation
