// The extension module recording2._core: arguments in, arrays out, rectool's sentences as exceptions.
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <string>
#include <utility>
#include <vector>

#include <vkbase/vkexception.h>

#include "calls.h"
#include "pythonvalues.h"
#include "reading.h"
#include "records.h"
#include "stationrecorder.h"

namespace py = pybind11;

namespace RecPython {

namespace {

/// The exceptions, which live as long as the interpreter.
struct ErrorClasses {
    PyObject* request = nullptr;
    PyObject* file = nullptr;
};

ErrorClasses& errorClasses()
{
    static ErrorClasses classes;
    return classes;
}

PyObject* makeError(py::module_& module, const char* name, const char* text, const py::tuple& bases)
{
    PyObject* const made =
        PyErr_NewExceptionWithDoc((std::string("recording2.") + name).c_str(), text, bases.ptr(), nullptr);
    if (made == nullptr) {
        throw py::error_already_set();
    }
    module.add_object(name, py::handle(made));
    return made;
}

void setError(const Refusal& refusal)
{
    const bool isRequest = refusal.code() == RecTool::ExitCode::Usage;
    const py::handle type(isRequest ? errorClasses().request : errorClasses().file);
    const py::object path = refusal.file().empty() ? py::object(py::none()) : pythonName(refusal.file());
    const py::str sentence = pythonText(refusal.what());
    const py::object error = type(path.is_none() ? sentence : py::str("{}: {}").format(path, sentence));
    error.attr("path") = path;
    PyErr_SetObject(type.ptr(), error.ptr());
}

void translate(std::exception_ptr thrown)
{
    try {
        std::rethrow_exception(std::move(thrown));
    } catch (const Refusal& refusal) {
        setError(refusal);
    } catch (const VKException& error) {  // the recorder's
        setError(Refusal(RecTool::ExitCode::CannotRead, {}, error.what()));
    } catch (const Interrupted&) {
        if (PyErr_Occurred() == nullptr) {
            PyErr_SetNone(PyExc_KeyboardInterrupt);
        }
    }
}

void addErrors(py::module_& module)
{
    const auto exception = py::reinterpret_borrow<py::object>(PyExc_Exception);
    const auto base = py::reinterpret_borrow<py::object>(makeError(
        module, "Error", "What rectool would say, in one sentence. Attribute path: the file that it is about, or None.",
        py::make_tuple(exception)));
    errorClasses().request = makeError(
        module, "RequestError",
        "Something was asked for that the recordings do not have, or that cannot be done (also a ValueError).",
        py::make_tuple(base, py::reinterpret_borrow<py::object>(PyExc_ValueError)));
    errorClasses().file = makeError(module, "FileError",
                                    "A file could not be read or written, or is damaged where that must not be (also "
                                    "an OSError).",
                                    py::make_tuple(base, py::reinterpret_borrow<py::object>(PyExc_OSError)));
    py::register_exception_translator(&translate);
}

void addReading(py::module_& module)
{
    module.def("describe", &describeFiles);
    module.def("moment", &momentOf);
    module.def("spectra", &spectraOf);
    module.def("values", &valuesOf);
    module.def("bearings", &bearingsOf);
    module.def("state", &stateOf);
    module.def("add_bookmark", &addBookmark, py::call_guard<py::gil_scoped_release>());
    module.def("remove_bookmark", &removeBookmark, py::call_guard<py::gil_scoped_release>());
    module.def("rename_bookmark", &renameBookmark, py::call_guard<py::gil_scoped_release>());
    py::class_<Records>(module, "Records")
        .def(py::init<const std::vector<std::string>&, const std::string&, const std::string&, const std::string&,
                      const std::string&, bool>())
        .def("__iter__", [](py::object self) { return self; })
        .def("__next__", &Records::next)
        .def_property_readonly("damage", &Records::damage)
        .def_property_readonly("start_us", &Records::startUs);
}

using Levels = py::array_t<float, py::array::c_style | py::array::forcecast>;

void addRecorder(py::module_& module)
{
    py::class_<StationRecorder>(module, "Recorder")
        .def(py::init([](std::string folder, std::string device, std::string deviceType, std::string caption,
                         std::string journal, std::uint64_t startUs,
                         std::vector<std::pair<std::string, PlainValue>> plain,
                         std::vector<std::pair<std::string, std::vector<double>>> spectra) {
            return std::make_unique<StationRecorder>(
                StationOptions{std::move(folder), std::move(device), std::move(deviceType), std::move(caption),
                               std::move(journal), startUs, std::move(plain), std::move(spectra)});
        }))
        .def("set", &StationRecorder::set)
        .def("set_channels", &StationRecorder::setChannels)
        .def("set_levels",
             [](StationRecorder& recorder, const std::string& keyword, std::size_t first, const Levels& levels,
                std::uint64_t timeUs) {
                 recorder.setLevels(keyword, first, {levels.data(), static_cast<std::size_t>(levels.size())}, timeUs);
             })
        .def("close", &StationRecorder::close)
        .def_property_readonly("is_open", &StationRecorder::isOpen)
        .def_property_readonly("now_us", &StationRecorder::nowUs)
        .def_property_readonly("files", [](const StationRecorder& recorder) {
            py::list files;
            for (const std::string& file : recorder.files()) {
                files.append(pythonName(file));
            }
            return files;
        });
}

}  // namespace

}  // namespace RecPython

PYBIND11_MODULE(_core, module)
{
    module.doc() = "What the package recording2 is made on; use that.";
    module.attr("__version__") = RECORDING2_VERSION;
    RecPython::addErrors(module);
    RecPython::addReading(module);
    RecPython::addRecorder(module);
}
