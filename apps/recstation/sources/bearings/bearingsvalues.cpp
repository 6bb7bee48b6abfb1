// The bearing map, frequency and position of a log's direction finder, set bearing by bearing.
#include "sources/bearings/bearingsvalues.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "attachedvalue.h"

namespace RecStation {

namespace {

constexpr double CircleDeg = 360;

}  // namespace

BearingsValues::BearingsValues(const LogSurvey& survey, double headingDeg, const QString& deviceName,
                               const QString& valuePath)
    : m_channelsHz(survey.channelsHz)
{
    setText(valuePath + QStringLiteral("/Adm/DRIVERNAME"), forFileNames(deviceName));
    setText(valuePath + QStringLiteral("/Adm/DEVICE_TYPE"), QStringLiteral("Bearing log"));
    setNumber(valuePath + QStringLiteral("/Scn/StartFreq"), m_channelsHz.front());
    setNumber(valuePath + QStringLiteral("/Scn/StopFreq"), m_channelsHz.back());
    setNumber(QStringLiteral("/TRUEHEADING"), std::fmod(headingDeg + CircleDeg, CircleDeg));
    attachValue(m_frequency, QStringLiteral("/FREQUENCY"));
    if (survey.hasPosition) {
        attachValue(m_latitude, QStringLiteral("/LOCATIONLATITUDE"));
        attachValue(m_longitude, QStringLiteral("/LOCATIONLONGITUDE"));
    }
    if (survey.hasAltitude) {
        attachValue(m_altitude, QStringLiteral("/ALTITUDE"));
    }
    showReceiver(survey.first);
    attachValue(m_map, QStringLiteral("/DfSpectrum"));
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
    m_map->SetCell(static_cast<std::size_t>(channel - m_channelsHz.begin()), cell, bearing.time);
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
}

}  // namespace RecStation
