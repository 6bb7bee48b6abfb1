// Exporting HDF5: which record goes into which group.
#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <memory>
#include <string_view>
#include <tuple>
#include <utility>

#include "export.h"
#include "hdf5series.h"
#include "printing/output.h"
#include "printing/text.h"
#include "printing/valuetext.h"

namespace RecTool {

namespace {

/// A name that is one part of a path.
std::string hdf5Name(const std::string& text)
{
    std::string name = oneLine(text);
    std::replace(name.begin(), name.end(), '/', '_');
    return name.empty() || name.find_first_not_of('.') == std::string::npos ? "_" + name : name;
}

/// As libraries for units know it.
std::string unitInFile(const std::string& keyword)
{
    const std::string unit = unitOfKeyword(keyword);
    return unit == "\u00b0" ? "degrees" : unit;
}

std::size_t hashOf(const values::ChannelRange& range)
{
    const auto bytesOf = [](const double* numbers, std::size_t count) {
        return std::string_view(static_cast<const char*>(static_cast<const void*>(numbers)), count * sizeof(double));
    };
    if (range.isList()) {
        return std::hash<std::string_view>()(bytesOf(range.channelsHz.data(), range.channelsHz.size()));
    }
    const double numbers[] = {range.startHz, range.stepHz, static_cast<double>(range.count)};
    return std::hash<std::string_view>()(bytesOf(numbers, std::size(numbers)));
}

/// The groups of a file. Series that wait for more are kept open as long as they hold little together.
class Hdf5Groups {
public:
    Hdf5Groups(Hdf5Group& root, const Recordings& recordings, ExportedRecords& records, std::string unit)
        : m_root(root), m_records(records), m_time(recordings.startMs()), m_unit(std::move(unit))
    {
        for (const Track& track : recordings.tracks()) {
            const std::string name = hdf5Name(track.device);
            const auto again = std::count(m_names.begin(), m_names.end(), name);
            m_names.push_back(name);
            m_folders.push_back(recordings.tracks().size() == 1 ? ""
                                : again == 0                    ? name + '/'
                                                                : name + '_' + std::to_string(again + 1) + '/');
        }
    }

    void add(const PlacedRecord& placed, const values::ValueBase& value)
    {
        const values::ValueType kind = value.GetType();
        const std::int64_t us = m_time.us(placed.momentMs);
        if (kind == values::ValueType::LevelMap) {
            addLevels(placed, static_cast<const LevelMap&>(value));
        } else if (const std::optional<double> number = plainNumber(&value)) {
            put(plainSeries<Hdf5Numbers>(placed.type, "_number"), us, *number);
        } else if (kind != values::ValueType::BearingMap && kind != values::ValueType::FastBearingMap) {
            put(plainSeries<Hdf5Texts>(placed.type, "_text"), us, oneLine(value.GetText().toStdString()));
        }
    }
    void addBearing(const PlacedRecord& placed, const Hdf5Bearings::Row& row)
    {
        const TrackType& type = placed.type;
        put(series<Hdf5Bearings>({type.track, type.code, "bearings"}, nameOf(type, m_unit)), m_time.us(placed.momentMs),
            row);
    }
    void addBookmarks(const std::vector<Recording2::Inspection::Bookmark>& bookmarks)
    {
        if (bookmarks.empty()) {
            return;
        }
        Hdf5Texts texts(m_root, {"bookmarks", "bookmarks", "", 0, ""});
        for (const Recording2::Inspection::Bookmark& bookmark : bookmarks) {
            texts.add(m_time.us(static_cast<double>(bookmark.timeMs)), oneLine(fromLatin1(bookmark.text)));
        }
        texts.flush();
    }
    void flush()
    {
        for (const auto& [key, series] : m_series) {
            series->flush();
        }
        m_series.clear();
        m_bytes = 0;
    }
    [[nodiscard]] std::uint64_t sweeps() const { return m_sweeps; }
    [[nodiscard]] std::uint64_t plain() const { return m_plain; }

private:
    using Key = std::tuple<std::size_t, std::int32_t, std::string>;  // device, type, what of it

    [[nodiscard]] SeriesName nameOf(const TrackType& type, const std::string& unit)
    {
        const std::string& keyword = m_records.keyword(type);
        return {m_folders[type.track] + hdf5Name(keyword), keyword, m_records.device(type), type.code, unit};
    }
    void addLevels(const PlacedRecord& placed, const LevelMap& map)
    {
        const values::ChannelRange& range = map.GetChannelRange();
        const std::span<const float> levels = map.GetCells();
        if (std::all_of(levels.begin(), levels.end(), [](float level) { return std::isnan(level); })) {
            return;  // the state at a recording's start, say
        }
        auto& numbers = m_ranges[{placed.type.track, placed.type.code}];
        const std::size_t number = numbers.try_emplace(hashOf(range), numbers.size() + 1).first->second;
        const std::string part = "range_" + std::to_string(number);
        const Key key(placed.type.track, placed.type.code, part);
        SeriesName name;
        if (m_series.find(key) == m_series.end()) {
            name = nameOf(placed.type, m_unit);
            name.path += '/' + part;
        }
        put(series<Hdf5Spectra>(key, name, range), m_time.us(placed.momentMs), levels);
        ++m_sweeps;
    }
    /// A keyword that has been another kind of value before gets a group of its own for this one.
    template <typename Series>
    Series& plainSeries(const TrackType& type, const char* kind)
    {
        ++m_plain;
        const std::string& first = m_kinds.try_emplace({type.track, type.code}, kind).first->second;
        SeriesName name = nameOf(type, unitInFile(m_records.keyword(type)));
        name.path += first == kind ? "" : kind;
        return series<Series>({type.track, type.code, kind}, name);
    }
    template <typename Series, typename... More>
    Series& series(const Key& key, const SeriesName& name, const More&... more)
    {
        std::unique_ptr<Hdf5Series>& found = m_series[key];
        if (found == nullptr) {
            found = std::make_unique<Series>(m_root, name, more...);
        }
        return static_cast<Series&>(*found);  // a key says which kind it is
    }
    template <typename Series, typename Row>
    void put(Series& series, std::int64_t us, Row&& row)
    {
        constexpr std::size_t MostBytes = 33'554'432;
        constexpr std::size_t MostSeries = 500;  // each has pieces of the file in memory
        const std::size_t before = series.bytes();
        series.add(us, std::forward<Row>(row));
        m_bytes += series.bytes() - before;
        if (m_bytes > MostBytes || m_series.size() > MostSeries) {
            flush();
        }
    }

    Hdf5Group& m_root;
    ExportedRecords& m_records;
    ExportTime m_time;
    std::string m_unit;
    std::vector<std::string> m_names;                                                             // of the devices
    std::vector<std::string> m_folders;                                                           // of the devices
    std::map<std::pair<std::size_t, std::int32_t>, std::map<std::size_t, std::size_t>> m_ranges;  // numbers by hash
    std::map<std::pair<std::size_t, std::int32_t>, std::string> m_kinds;  // that plain values had first
    std::map<Key, std::unique_ptr<Hdf5Series>> m_series;
    std::size_t m_bytes = 0;  // that series hold
    std::uint64_t m_sweeps = 0;
    std::uint64_t m_plain = 0;
};

void describeFile(Hdf5Group& root, const Hdf5ExportOptions& options, const Recordings& recordings)
{
    std::string files;
    for (const std::string& file : options.files) {
        files += (files.empty() ? "" : "\n") + printedName(file);
    }
    root.describe("Conventions", "CF-1.8");
    root.describe("title", "Recording of " + recordings.devices().toStdString());
    root.describe("source", files);
    root.describe("history", "rectool export hdf5");
    ExportTime time(recordings.startMs());
    if (time.isKnown()) {
        root.describe("start", time.iso(0));
    }
}

/// @return why it could not be written
std::string writeHdf5(const Hdf5ExportOptions& options, Recordings& recordings, ExportedRecords& records, NewFile& file,
                      std::string& summary)
{
    Hdf5Setting setting;
    setting.deflate = static_cast<unsigned int>(options.deflate);
    setting.hasClock = ExportTime(recordings.startMs()).isKnown();
    Hdf5Group root(setting, file.part());
    if (!setting.problem.text().empty()) {
        return setting.problem.text();
    }
    describeFile(root, options, recordings);
    {
        Hdf5Groups groups(root, recordings, records, options.unit);
        records.lookAtBearings(
            [&](const PlacedRecord& placed, const Hdf5Bearings::Row& row) { groups.addBearing(placed, row); });
        records.walk([&] { return file.good() && setting.problem.text().empty(); },
                     [&](const PlacedRecord& placed, const values::ValueBase& value) { groups.add(placed, value); });
        groups.addBookmarks(recordings.bookmarks());
        groups.flush();
        if (groups.sweeps() + groups.plain() + records.bearings() > 0) {
            summary = counted(groups.sweeps(), "sweep") + ", " + counted(groups.plain(), "plain value") +
                      (records.bearings() > 0 ? ", " + counted(records.bearings(), "bearing") : "");
        }
    }
    root.close();
    return setting.problem.text();
}

}  // namespace

ExitCode exportHdf5(const Hdf5ExportOptions& options)
{
    return exportTo(options, [&](Recordings& recordings, ExportedRecords& records, NewFile& file) {
        std::string summary;
        const std::string problem = writeHdf5(options, recordings, records, file, summary);
        if (summary.empty() && problem.empty() && file.good()) {
            return recordings.refuse(
                "There is no record of a spectrum, plain value or bearing in the span. Nothing was written.");
        }
        return endExport(recordings, records, file, summary, problem);
    });
}

}  // namespace RecTool
