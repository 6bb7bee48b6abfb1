// The values that a receiver with these samples would show in the value tree.
#pragma once

#include <QString>

#include <values/maps.h>
#include <values/tree.h>
#include <values/value.h>

#include "sources/iq/frames.h"
#include "sources/iq/iqplan.h"

namespace RecStation {

/// The values stay in the tree when this object goes.
class IqValues {
public:
    /// Creates the values and sets all that does not change in the run.
    /// @throws std::runtime_error when there is no tree, or a path holds another kind of value
    IqValues(const IqPlan& plan, const QString& valuePath);

    /// @param time of the frame, microseconds since 1970 UTC
    void show(const IqFrame& frame, unsigned long long time);

private:
    values::ValuePtr<values::FastValueMap<float, values::levelHandler>> m_spectrum;
    values::ValuePtr<values::ValueNumeric<double>> m_level;
};

}  // namespace RecStation
