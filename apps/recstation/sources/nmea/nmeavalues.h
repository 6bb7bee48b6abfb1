// The values of the tree that tell where the station is and how it lies.
#pragma once

#include <values/tree.h>
#include <values/value.h>

#include "sources/nmea/nmeamessage.h"

namespace RecStation {

/// The values stay in the tree when this object goes.
class NmeaValues {
public:
    /// Values that are not there yet are made, and are not a number.
    /// @throws std::runtime_error when there is no tree, or a path holds another kind of value
    NmeaValues();

    void show(const NmeaFix& fix);

private:
    using Number = values::ValuePtr<values::ValueNumeric<double>>;

    Number m_latitude;
    Number m_longitude;
    Number m_altitude;
    Number m_speed;
    Number m_heading;
    Number m_pitch;
    Number m_roll;
};

}  // namespace RecStation
