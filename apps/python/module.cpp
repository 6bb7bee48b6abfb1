// The extension module recording2._core: arguments in, arrays out, rectool's sentences as exceptions.
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <cmath>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <vkbase/vkexception.h>

#include "bearingtable.h"
#include "files.h"
#include "levelseries.h"
#include "plainvalues.h"
#include "pythonvalues.h"
#include "recordcursor.h"
#include "refusal.h"
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

/// Without the interpreter's lock.
template <typename Found, typename Asked>
Found unlocked(Found (*read)(const Asked& request), const Asked& request)
{
    const py::gil_scoped_release withoutLock;
    return read(request);
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

py::dict spectra(const std::vector<std::string>& files, const std::string& keyword, const std::string& device,
                 const std::string& from, const std::string& to, std::optional<double> lowHz,
                 std::optional<double> highHz, std::uint64_t every, bool complete, bool byRange)
{
    const LevelRequest request{{files, keyword, device, from, to}, lowHz, highHz, every, complete, byRange};
    FoundSpectra found = unlocked(readSpectra, request);
    py::list series;
    for (const auto& one : found.series) {
        const py::array levels = takenLevels(*one);
        series.append(py::make_tuple(takenArray(std::move(one->sinceStartUs)),
                                     takenArray(std::move(one->frequenciesHz)), levels));
    }
    py::dict all = aboutType(found);
    all["series"] = series;
    return all;
}

py::dict values(const std::vector<std::string>& files, const std::string& keyword, const std::string& device,
                const std::string& from, const std::string& to)
{
    const Request request{files, keyword, device, from, to};
    FoundValues found = unlocked(readValues, request);
    py::dict all = aboutType(found);
    all["unit"] = pythonText(found.unit);
    all["since_start_us"] = takenArray(std::move(found.sinceStartUs));
    all["booleans"] = found.areBooleans;
    if (found.texts.empty()) {
        all["numbers"] = takenArray(std::move(found.numbers));
    } else {
        py::list texts;
        for (const std::string& text : found.texts) {
            texts.append(pythonText(text));
        }
        all["texts"] = texts;
    }
    return all;
}

py::dict bearings(const std::vector<std::string>& files, const std::string& keyword, const std::string& device,
                  const std::string& from, const std::string& to)
{
    const Request request{files, keyword, device, from, to};
    FoundBearings found = unlocked(readBearings, request);
    py::dict all = aboutType(found);
    all["since_start_us"] = takenArray(std::move(found.sinceStartUs));
    py::dict columns;
    columns["frequency"] = takenArray(std::move(found.frequenciesHz));
    columns["azimuth"] = takenArray(std::move(found.azimuthsDeg));
    columns["elevation"] = takenArray(std::move(found.elevationsDeg));
    columns["level"] = takenArray(std::move(found.levelsDb));
    columns["quality"] = takenArray(std::move(found.qualities));
    all["columns"] = columns;
    return all;
}

/// Records as tuples: ms of the axis or None, device, keyword, type number, file, bytes, value.
class RecordTuples {
public:
    RecordTuples(const std::vector<std::string>& files, const std::string& keyword, const std::string& device,
                 const std::string& from, const std::string& to, bool decode)
        : m_cursor({{files, keyword, device, from, to}, decode})
    {
    }

    py::tuple next()
    {
        bool isThere = false;
        {
            const py::gil_scoped_release unlocked;
            isThere = m_cursor.next();
        }
        if (!isThere) {
            throw py::stop_iteration();
        }
        const RecTool::TrackType type = m_cursor.type();
        const auto time = m_cursor.timeMs();
        return py::make_tuple(time ? py::object(py::float_(*time)) : py::none(), device(type.track), keyword(type),
                              type.code, file(), py::bytes(m_cursor.record().data),
                              m_converter.convert(m_cursor.value(), type));
    }
    [[nodiscard]] py::list damage() const { return pythonDamage(m_cursor.damage()); }
    [[nodiscard]] std::int64_t startUs() const { return m_cursor.reading().startUs(); }

private:
    // Texts that many records share are made once.
    py::str keyword(const RecTool::TrackType& type)
    {
        const auto [known, isNew] = m_keywords.try_emplace({type.track, type.code});
        if (isNew) {
            known->second = pythonText(m_cursor.reading().keywordOf(type));
        }
        return known->second;
    }
    py::str device(std::size_t track)
    {
        const auto [known, isNew] = m_devices.try_emplace(track);
        if (isNew) {
            known->second = pythonText(m_cursor.reading().deviceOf(track));
        }
        return known->second;
    }
    py::str file()
    {
        const auto [known, isNew] = m_files.try_emplace(m_cursor.part());
        if (isNew) {
            known->second = pythonName(m_cursor.reading().recordings().fileOf(m_cursor.part()));
        }
        return known->second;
    }

    RecordCursor m_cursor;
    ValueConverter m_converter;
    std::map<std::pair<std::size_t, std::int32_t>, py::str> m_keywords;
    std::map<std::size_t, py::str> m_devices;
    std::map<std::size_t, py::str> m_files;
};

py::list state(const std::vector<std::string>& files, const std::string& device, const std::string& at)
{
    return stateOf({files, {}, device, "0", at, "at"});
}

/// A time as text in milliseconds of the axis.
double moment(const std::vector<std::string>& files, const std::string& text)
{
    return std::round(Reading({files, {}, {}, "0", text, "at"}).recordings().span().toMs);
}

void addReading(py::module_& module)
{
    module.def("describe", &describeFiles);
    module.def("moment", &moment);
    module.def("spectra", &spectra);
    module.def("values", &values);
    module.def("bearings", &bearings);
    module.def("state", &state);
    module.def("add_bookmark", &addBookmark, py::call_guard<py::gil_scoped_release>());
    module.def("remove_bookmark", &removeBookmark, py::call_guard<py::gil_scoped_release>());
    module.def("rename_bookmark", &renameBookmark, py::call_guard<py::gil_scoped_release>());
    py::class_<RecordTuples>(module, "Records")
        .def(py::init<const std::vector<std::string>&, const std::string&, const std::string&, const std::string&,
                      const std::string&, bool>())
        .def("__iter__", [](py::object self) { return self; })
        .def("__next__", &RecordTuples::next)
        .def_property_readonly("damage", &RecordTuples::damage)
        .def_property_readonly("start_us", &RecordTuples::startUs);
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
