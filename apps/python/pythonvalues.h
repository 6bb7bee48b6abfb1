// Values and arrays as Python has them. Everything here needs the interpreter's lock.
#pragma once

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <values/maps.h>
#include <values/valuebase.h>

#include "reading.h"
#include "rectool/replay/recordings.h"

namespace RecPython {

/// UTF-8 as a str, with a sign in the place of what is none.
[[nodiscard]] pybind11::str pythonText(const std::string& utf8);
/// A file's name as Python has it: bytes that are no UTF-8 survive.
[[nodiscard]] pybind11::str pythonName(const std::string& file);

/// An array that owns the numbers. Not copied.
template <typename Number>
[[nodiscard]] pybind11::array_t<Number> takenArray(std::vector<Number>&& numbers)
{
    auto* const kept = new std::vector<Number>(std::move(numbers));
    const pybind11::capsule owner(kept, [](void* memory) { delete static_cast<std::vector<Number>*>(memory); });
    return pybind11::array_t<Number>(static_cast<pybind11::ssize_t>(kept->size()), kept->data(), owner);
}
/// [(file, offset, sentence), ...]
[[nodiscard]] pybind11::list pythonDamage(const std::vector<FoundDamage>& damage);
/// To which a call adds its arrays.
[[nodiscard]] pybind11::dict aboutType(const FoundType& found);
/// What a reader finds, without the interpreter's lock.
template <typename Reader, typename Asked>
[[nodiscard]] auto readUnlocked(const Asked& request)
{
    const pybind11::gil_scoped_release unlocked;
    return Reader(request).read();
}

/// Frequencies of ranges as arrays that cannot be changed; records that share a range share one.
class ValueConverter {
public:
    /// A number, a boolean, a text; of a map a dict of arrays; None for null. @param type that the value is of
    [[nodiscard]] pybind11::object convert(const values::ValueBase* value, const RecTool::TrackType& type);

private:
    [[nodiscard]] pybind11::array frequencies(const values::ChannelRange& range, const RecTool::TrackType& type);

    std::map<std::pair<std::size_t, std::int32_t>, std::pair<values::ChannelRange, pybind11::array>> m_ranges;
};

}  // namespace RecPython
