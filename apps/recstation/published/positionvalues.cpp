// Attaching position, speed and attitude in the tree, and setting what a fix tells.
#include "published/positionvalues.h"

#include <limits>

namespace RecStation {

namespace {

struct PositionValue {
    std::optional<double> Fix::*number;
    const char* path;
};

constexpr std::array<PositionValue, 7> PositionPaths = {{{&Fix::latitudeDeg, "/LOCATIONLATITUDE"},
                                                         {&Fix::longitudeDeg, "/LOCATIONLONGITUDE"},
                                                         {&Fix::altitudeM, "/ALTITUDE"},
                                                         {&Fix::speedMps, "/VELOCITY"},
                                                         {&Fix::headingDeg, "/TRUEHEADING"},
                                                         {&Fix::pitchDeg, "/PITCH"},
                                                         {&Fix::rollDeg, "/ROLL"}}};

}  // namespace

PositionValues::PositionValues()
{
    for (std::size_t i = 0; i < m_values.size(); ++i) {
        attachNumber(m_values.at(i), QString::fromLatin1(PositionPaths.at(i).path));
    }
}

void PositionValues::show(const Fix& fix)
{
    for (std::size_t i = 0; i < m_values.size(); ++i) {
        if (const auto& number = fix.*PositionPaths.at(i).number) {
            m_values.at(i)->SetValue(*number);
        }
    }
}

void PositionValues::forget()
{
    for (const auto& value : m_values) {
        value->SetValue(std::numeric_limits<double>::quiet_NaN());
    }
}

}  // namespace RecStation
