// The values of the tree that tell where the station is and how it lies.
#pragma once

#include <array>

#include "published/attachedvalue.h"
#include "published/fix.h"

namespace RecStation {

/// The values stay in the tree when this object goes.
class PositionValues {
public:
    /// Values that are not there yet are made, and are not a number.
    /// @throws std::runtime_error when there is no tree, or a path holds another kind of value
    PositionValues();

    void show(const Fix& fix);
    void forget();  ///< none of them is known any more: not a number

private:
    std::array<values::ValuePtr<values::ValueNumeric<double>>, 7> m_values;
};

}  // namespace RecStation
