// The values that a receiver with these sweeps would show in the value tree.
#pragma once

#include <string>

#include <QString>

#include <values/maps.h>
#include <values/tree.h>
#include <values/value.h>

#include "sources/sweep/sweepassembly.h"

namespace RecStation {

/// The values stay in the tree when this object goes.
class SweepValues {
public:
    /// Creates the values and sets all that does not depend on the sweeps.
    /// @throws std::runtime_error when there is no tree, or a path holds another kind of value
    SweepValues(const QString& deviceName, const QString& valuePath);

    void setLayout(const SweepLayout& layout);
    void show(const Sweep& sweep);

private:
    QString m_scan;  // path of the scan's values
    values::ValuePtr<values::FastValueMap<float, values::levelHandler>> m_spectrum;
};

}  // namespace RecStation
