// Attaching position, speed and attitude in the tree, and setting what a fix tells.
#include "published/positionvalues.h"

#include <limits>

#include "published/attachedvalue.h"

namespace RecStation {

namespace {

void setIfTold(const values::ValuePtr<values::ValueNumeric<double>>& value, const std::optional<double>& number)
{
    if (number) {
        value->SetValue(*number);
    }
}

}  // namespace

PositionValues::PositionValues()
{
    attachNumber(m_latitude, QStringLiteral("/LOCATIONLATITUDE"));
    attachNumber(m_longitude, QStringLiteral("/LOCATIONLONGITUDE"));
    attachNumber(m_altitude, QStringLiteral("/ALTITUDE"));
    attachNumber(m_speed, QStringLiteral("/VELOCITY"));
    attachNumber(m_heading, QStringLiteral("/TRUEHEADING"));
    attachNumber(m_pitch, QStringLiteral("/PITCH"));
    attachNumber(m_roll, QStringLiteral("/ROLL"));
}

void PositionValues::show(const Fix& fix)
{
    setIfTold(m_latitude, fix.latitudeDeg);
    setIfTold(m_longitude, fix.longitudeDeg);
    setIfTold(m_altitude, fix.altitudeM);
    setIfTold(m_speed, fix.speedMps);
    setIfTold(m_heading, fix.headingDeg);
    setIfTold(m_pitch, fix.pitchDeg);
    setIfTold(m_roll, fix.rollDeg);
}

void PositionValues::forget()
{
    constexpr double Unknown = std::numeric_limits<double>::quiet_NaN();
    show({Unknown, Unknown, Unknown, Unknown, Unknown, Unknown, Unknown});
}

}  // namespace RecStation
