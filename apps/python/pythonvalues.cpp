// Turning values, maps and damage into Python's objects.
#include "pythonvalues.h"

#include <values/value.h>

namespace RecPython {

namespace py = pybind11;

namespace {

using BearingCells = values::CellMap<values::Bearing, values::BearingHandler>;

py::array_t<double> column(const BearingCells& map, double values::Bearing::*figure)
{
    std::vector<double> figures;
    figures.reserve(map.size());
    for (const values::Bearing& bearing : map.GetCells()) {
        figures.push_back(bearing.*figure);
    }
    return takenArray(std::move(figures));
}

}  // namespace

py::str pythonText(const std::string& utf8)
{
    PyObject* const text = PyUnicode_DecodeUTF8(utf8.data(), static_cast<py::ssize_t>(utf8.size()), "replace");
    if (text == nullptr) {
        throw py::error_already_set();
    }
    return py::reinterpret_steal<py::str>(text);
}

py::str pythonName(const std::string& file)
{
    PyObject* const name = PyUnicode_DecodeFSDefaultAndSize(file.data(), static_cast<py::ssize_t>(file.size()));
    if (name == nullptr) {
        throw py::error_already_set();
    }
    return py::reinterpret_steal<py::str>(name);
}

py::list pythonDamage(const std::vector<FoundDamage>& damage)
{
    py::list all;
    for (const FoundDamage& found : damage) {
        all.append(py::make_tuple(pythonName(found.file), found.offset, pythonText(found.text)));
    }
    return all;
}

py::dict aboutType(const FoundType& found)
{
    py::dict about;
    about["keyword"] = pythonText(found.keyword);
    about["device"] = pythonText(found.device);
    about["start_us"] = found.startUs;
    about["not_understood"] = found.notUnderstood;
    about["damage"] = pythonDamage(found.damage);
    return about;
}

py::array ValueConverter::frequencies(const values::ChannelRange& range, const RecTool::TrackType& type)
{
    auto& [known, array] = m_ranges[{type.track, type.code}];
    if (known == range && array.size() == static_cast<py::ssize_t>(range.size())) {
        return array;
    }
    std::vector<double> hz;
    hz.reserve(range.size());
    for (std::size_t channel = 0; channel < range.size(); ++channel) {
        hz.push_back(range.frequencyHz(channel));
    }
    known = range;
    array = takenArray(std::move(hz));
    array.attr("setflags")(py::arg("write") = false);
    return array;
}

py::object ValueConverter::convert(const values::ValueBase* value, const RecTool::TrackType& type)
{
    using values::ValueType;
    if (value == nullptr) {
        return py::none();
    }
    switch (value->GetType()) {
        case ValueType::Bool:
            return py::bool_(static_cast<const values::Value<bool>&>(*value).GetValue());
        case ValueType::Numeric:
        case ValueType::NumericWithOffset:
            return py::float_(static_cast<const values::ValueNumeric<double>&>(*value).GetValue());
        case ValueType::LevelMap: {
            const auto& map = static_cast<const RecTool::LevelMap&>(*value);
            py::dict levels;
            levels["frequencies"] = frequencies(map.GetChannelRange(), type);
            levels["measured_us"] = map.GetTimeStamp();
            levels["levels"] = takenArray(std::vector<float>(map.GetCells().begin(), map.GetCells().end()));
            return levels;
        }
        case ValueType::BearingMap:
        case ValueType::FastBearingMap: {
            const auto& map = static_cast<const BearingCells&>(*value);
            py::dict bearings;
            bearings["frequencies"] = frequencies(map.GetChannelRange(), type);
            bearings["measured_us"] = map.GetTimeStamp();
            bearings["azimuth"] = column(map, &values::Bearing::azimuthDeg);
            bearings["elevation"] = column(map, &values::Bearing::elevationDeg);
            bearings["level"] = column(map, &values::Bearing::levelDb);
            bearings["quality"] = column(map, &values::Bearing::quality);
            return bearings;
        }
        case ValueType::String:
        case ValueType::Selection:
        case ValueType::Unknown:
            break;
    }
    return pythonText(value->GetText().toStdString());
}

}  // namespace RecPython
