// Headers, tables, states and bookmarks through rectool's parts.
#include "calls.h"

#include <cmath>
#include <functional>
#include <map>
#include <optional>

#include <recording2/inspection/inspection.h>

#include "pythonvalues.h"
#include "rectool/making/filechange.h"
#include "rectool/printing/text.h"
#include "rectool/replay/inforce.h"

namespace RecPython {

namespace py = pybind11;

namespace {

using RecTool::fromLatin1;

py::dict describePart(const RecTool::Recordings::Part& part)
{
    const auto& header = part.summary.header;
    py::dict described;
    described["path"] = pythonName(part.file);
    described["device"] = pythonText(fromLatin1(header.deviceName));
    described["device_type"] = pythonText(fromLatin1(header.deviceType));
    described["start_ms"] = header.startMs;
    described["stop_ms"] = header.stopMs;
    described["offset_ms"] = part.offsetMs;
    described["length_ms"] = part.lengthMs();
    described["bytes"] = part.summary.fileSize;
    described["records"] = part.summary.times.size();
    return described;
}

py::list describeTypes(const Reading& reading)
{
    py::list types;
    for (const auto& part : reading.recordings().parts()) {
        for (const auto& type : part.summary.types) {
            types.append(py::make_tuple(pythonText(fromLatin1(part.summary.header.deviceName)), type.typeNumber,
                                        pythonText(reading.keywordOf({part.track, type.typeNumber})),
                                        pythonText(fromLatin1(type.valuePath))));
        }
    }
    return types;
}

/// A track's state: what its last file up to the moment built up.
struct TrackState {
    const RecTool::Recordings::Part* part = nullptr;
    RecTool::InForce inForce;
    std::vector<FoundDamage> damage;
};

void applyUpTo(TrackState& state, double momentMs)
{
    Patience patience;
    Recording2::Inspection::RecordReader reader(state.part->file, state.part->summary);
    Recording2::Inspection::Record record;
    while (reader.next(record) && state.part->offsetMs + static_cast<double>(record.timeMs) <= momentMs) {
        patience.next();
        state.inForce.apply(record);
    }
}

std::map<std::size_t, TrackState> statesAt(Reading& reading, double momentMs)
{
    std::map<std::size_t, TrackState> states;
    for (const auto& part : reading.recordings().parts()) {
        if (reading.isWanted(part.track) && part.offsetMs <= momentMs) {
            states[part.track].part = &part;  // the last one that has begun
        }
    }
    for (auto& [track, state] : states) {
        applyUpTo(state, momentMs);
    }
    return states;
}

/// @param change of the checked file
void changeFile(const std::string& file, const std::function<RecTool::ExitCode(RecTool::FileChange&)>& change)
{
    const Kept kept;
    RecTool::FileChange checked(file, true);
    kept.require(checked.check());
    kept.require(change(checked));
}

}  // namespace

py::dict describeFiles(const std::vector<std::string>& files)
{
    Request request;
    request.files = files;
    const Reading reading(request);
    py::dict described;
    described["start_us"] = reading.startUs();
    py::list parts;
    double end = 0;
    for (const auto& part : reading.recordings().parts()) {
        parts.append(describePart(part));
        end = std::max(end, part.offsetMs + part.lengthMs());
    }
    described["files"] = parts;
    described["duration_ms"] = end;
    described["types"] = describeTypes(reading);
    py::list bookmarks;
    for (const auto& part : reading.recordings().parts()) {
        for (const auto& bookmark : part.summary.bookmarks) {
            bookmarks.append(py::make_tuple(part.offsetMs + static_cast<double>(bookmark.timeMs),
                                            pythonText(fromLatin1(bookmark.text)), pythonName(part.file)));
        }
    }
    described["bookmarks"] = bookmarks;
    described["damage"] = pythonDamage(reading.damage());
    return described;
}

py::list stateOf(const std::vector<std::string>& files, const std::string& device, const std::string& at)
{
    constexpr double Ever = 1e300;
    const Request request{files, {}, device, "0", at, "at"};
    std::optional<Reading> reading;
    std::map<std::size_t, TrackState> states;
    {
        const py::gil_scoped_release unlocked;
        reading.emplace(request);
        states = statesAt(*reading, request.to.empty() ? Ever : reading->recordings().span().toMs);
    }
    ValueConverter converter;
    py::list all;
    for (const auto& [track, state] : states) {
        for (const auto& [code, entry] : state.inForce.entries()) {
            const RecTool::TrackType type{track, code};
            all.append(py::make_tuple(pythonText(reading->deviceOf(track)), pythonText(reading->keywordOf(type)), code,
                                      state.part->offsetMs + static_cast<double>(entry.record.timeMs),
                                      converter.convert(entry.value, type), py::bytes(entry.record.data)));
        }
    }
    return all;
}

double momentOf(const std::vector<std::string>& files, const std::string& text)
{
    return std::round(Reading({files, {}, {}, "0", text, "at"}).recordings().span().toMs);
}

void addBookmark(const std::string& file, std::uint64_t timeMs, const std::string& text)
{
    changeFile(file, [&](RecTool::FileChange& change) { return RecTool::storeBookmark(change, timeMs, text); });
}

void removeBookmark(const std::string& file, std::uint64_t timeMs)
{
    changeFile(file, [&](RecTool::FileChange& change) { return RecTool::dropBookmark(change, timeMs); });
}

void renameBookmark(const std::string& file, std::uint64_t timeMs, const std::string& text)
{
    changeFile(file, [&](RecTool::FileChange& change) { return RecTool::renameBookmark(change, timeMs, text); });
}

}  // namespace RecPython
