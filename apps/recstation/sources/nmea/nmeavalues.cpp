// Attaching position, speed and attitude in the tree, and setting what a fix tells.
#include "sources/nmea/nmeavalues.h"

#include <limits>

#include "attachedvalue.h"

namespace RecStation {

namespace {

void attach(values::ValuePtr<values::ValueNumeric<double>>& value, const char* path)
{
    const QString where = QString::fromLatin1(path);
    const bool made = values::Tree::Instance() != nullptr && values::Tree::Instance()->Find(where) == nullptr;
    attachValue(value, where);
    if (made) {
        value->SetValue(std::numeric_limits<double>::quiet_NaN());
    }
}

void set(const values::ValuePtr<values::ValueNumeric<double>>& value, const std::optional<double>& number)
{
    if (number) {
        value->SetValue(*number);
    }
}

}  // namespace

NmeaValues::NmeaValues()
{
    attach(m_latitude, "/LOCATIONLATITUDE");
    attach(m_longitude, "/LOCATIONLONGITUDE");
    attach(m_altitude, "/ALTITUDE");
    attach(m_speed, "/VELOCITY");
    attach(m_heading, "/TRUEHEADING");
    attach(m_pitch, "/PITCH");
    attach(m_roll, "/ROLL");
}

void NmeaValues::show(const NmeaFix& fix)
{
    set(m_latitude, fix.latitudeDeg);
    set(m_longitude, fix.longitudeDeg);
    set(m_altitude, fix.altitudeM);
    set(m_speed, fix.speedMps);
    set(m_heading, fix.headingDeg);
    set(m_pitch, fix.pitchDeg);
    set(m_roll, fix.rollDeg);
}

}  // namespace RecStation
