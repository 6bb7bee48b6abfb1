// Exporting CSV, long, as sweep programs write it, or a line a bearing.
#include <cmath>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <terminaltext/quantity.h>

#include "csvsweep.h"
#include "export.h"
#include "exporttime.h"
#include "printing/output.h"
#include "printing/recordjson.h"
#include "printing/text.h"
#include "printing/valuetext.h"

namespace RecTool {

namespace {

/// Lines of CSV, one a level or number, as tables of statistics programs want them.
class CsvLong {
public:
    CsvLong(NewFile& file, ExportedRecords& records, ExportTime time);

    void add(const PlacedRecord& placed, const values::ValueBase& value);
    [[nodiscard]] std::uint64_t lines() const { return m_lines; }

private:
    /// The texts of a range's frequencies, each with the comma behind it, one after the other.
    struct Frequencies {
        values::ChannelRange range;
        std::string texts;
        std::vector<std::size_t> ends;

        void take(const values::ChannelRange& newRange);
    };
    void addLevels(const TrackType& type, const LevelMap& map);

    NewFile& m_file;
    ExportedRecords& m_records;
    ExportTime m_time;
    std::map<std::pair<std::size_t, std::int32_t>, Frequencies> m_frequencies;
    std::string m_begin;  // of the record's lines
    std::string m_text;
    std::uint64_t m_lines = 0;
};

CsvLong::CsvLong(NewFile& file, ExportedRecords& records, ExportTime time)
    : m_file(file), m_records(records), m_time(std::move(time))
{
    m_file.write("time,device,keyword,frequency_hz,value\n");
}

void CsvLong::Frequencies::take(const values::ChannelRange& newRange)
{
    if (range == newRange && !ends.empty()) {
        return;
    }
    range = newRange;
    texts.clear();
    ends.clear();
    for (std::size_t i = 0; i < range.size(); ++i) {
        texts += TerminalText::shortest(range.frequencyHz(i)) + ',';
        ends.push_back(texts.size());
    }
}

void CsvLong::add(const PlacedRecord& placed, const values::ValueBase& value)
{
    m_begin = m_time.iso(placed.momentMs) + ',' + csvText(m_records.device(placed.type)) + ',' +
              csvText(m_records.keyword(placed.type)) + ',';
    const values::ValueType kind = value.GetType();
    if (kind == values::ValueType::LevelMap) {
        addLevels(placed.type, static_cast<const LevelMap&>(value));
    } else if (const std::optional<double> number = plainNumber(&value)) {
        m_text += m_begin + ',' + (std::isfinite(*number) ? TerminalText::shortest(*number) : "") + '\n';
        ++m_lines;
    } else if (kind == values::ValueType::BearingMap || kind == values::ValueType::FastBearingMap) {
        m_records.leaveOut(placed.type);
    } else if (m_records.areNamed()) {
        m_text += m_begin + ',' + csvText(oneLine(value.GetText().toStdString())) + '\n';
        ++m_lines;
    }
    m_file.write(m_text);
    m_text.clear();
}

void CsvLong::addLevels(const TrackType& type, const LevelMap& map)
{
    Frequencies& frequencies = m_frequencies[{type.track, type.code}];
    frequencies.take(map.GetChannelRange());
    const std::span<const float> levels = map.GetCells();
    constexpr std::size_t PieceBytes = 65'536;
    std::size_t begin = 0;
    for (std::size_t i = 0; i < levels.size(); ++i) {
        const std::size_t end = frequencies.ends[i];
        if (std::isfinite(levels[i])) {
            m_text += m_begin;
            m_text.append(frequencies.texts, begin, end - begin);
            appendLevelJson(m_text, levels[i]);
            m_text += '\n';
            ++m_lines;
            if (m_text.size() > PieceBytes) {
                m_file.write(m_text);
                m_text.clear();
            }
        }
        begin = end;
    }
}

ExitCode exportLong(Recordings& recordings, ExportedRecords& records, NewFile& file)
{
    CsvLong csv(file, records, ExportTime(recordings.startMs()));
    records.walk([&] { return file.good(); },
                 [&](const PlacedRecord& placed, const values::ValueBase& value) { csv.add(placed, value); });
    if (csv.lines() == 0 && file.good()) {
        return recordings.refuse("There is no record of a spectrum or plain value in the span. Nothing was written.");
    }
    return endExport(recordings, records, file, counted(csv.lines(), "line"));
}

ExitCode exportSweep(Recordings& recordings, ExportedRecords& records, NewFile& file)
{
    ExportTime time(recordings.startMs());
    if (!time.isKnown()) {
        return recordings.refuse("The recording does not tell when it began, and the sweep form needs clock times.");
    }
    CsvSweep csv(file, records, std::move(time));
    records.walk([&] { return file.good() && csv.problem().empty(); },
                 [&](const PlacedRecord& placed, const values::ValueBase& value) { csv.add(placed, value); });
    if (!csv.problem().empty()) {
        return recordings.refuse(csv.problem() + " Nothing was written.");
    }
    if (csv.sweeps() == 0 && file.good()) {
        return recordings.refuse("There is no spectrum with a level in the span. Nothing was written.");
    }
    if (csv.joined() != 0) {
        complain(recordings.file(),
                 counted(csv.joined(), "time") +
                     " a sweep lies above the one before it: readers of the form take the two for one.");
    }
    return endExport(recordings, records, file, counted(csv.sweeps(), "sweep"));
}

ExitCode exportBearingLines(Recordings& recordings, ExportedRecords& records, NewFile& file)
{
    ExportTime time(recordings.startMs());
    file.write("time,device,frequency_hz,azimuth_deg,heading_deg,elevation_deg,level,quality,latitude,longitude\n");
    records.lookAtBearings([&](const PlacedRecord& placed, const ExportedRecords::BearingRow& row) {
        std::string line = time.iso(placed.momentMs) + ',' + csvText(records.device(placed.type));
        for (const double number : row) {
            line += ',' + (std::isfinite(number) ? TerminalText::shortest(number) : std::string());
        }
        file.write(line + '\n');
    });
    records.walk([&] { return file.good(); },
                 [&](const PlacedRecord& /*placed*/, const values::ValueBase& /*value*/) {});
    if (records.bearings() == 0 && file.good()) {
        return recordings.refuse("There is no bearing in the span. Nothing was written.");
    }
    return endExport(recordings, records, file, counted(records.bearings(), "bearing"));
}

}  // namespace

ExitCode exportCsv(const CsvExportOptions& options)
{
    return exportTo(options, options.form == "sweep"      ? exportSweep
                             : options.form == "bearings" ? exportBearingLines
                                                          : exportLong);
}

}  // namespace RecTool
