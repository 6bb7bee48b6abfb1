// Attaching position, speed and attitude in the tree, and setting what a fix tells.
#include "position/positionvalues.h"

#include <limits>

#include "attachedvalue.h"

namespace RecStation {

namespace {

void attachNumber(values::ValuePtr<values::ValueNumeric<double>>& value, const char* path)
{
    const QString where = QString::fromLatin1(path);
    const bool made = values::Tree::Instance() != nullptr && values::Tree::Instance()->Find(where) == nullptr;
    attachValue(value, where);
    if (made) {
        value->SetValue(std::numeric_limits<double>::quiet_NaN());
    }
}

void setIfTold(const values::ValuePtr<values::ValueNumeric<double>>& value, const std::optional<double>& number)
{
    if (number) {
        value->SetValue(*number);
    }
}

}  // namespace

PositionValues::PositionValues()
{
    attachNumber(m_latitude, "/LOCATIONLATITUDE");
    attachNumber(m_longitude, "/LOCATIONLONGITUDE");
    attachNumber(m_altitude, "/ALTITUDE");
    attachNumber(m_speed, "/VELOCITY");
    attachNumber(m_heading, "/TRUEHEADING");
    attachNumber(m_pitch, "/PITCH");
    attachNumber(m_roll, "/ROLL");
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
