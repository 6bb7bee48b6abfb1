// Exporting CSV, long, as sweep programs write it, or a line a bearing.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <terminaltext/quantity.h>
#include <values/maps.h>

#include "export.h"
#include "printing/output.h"
#include "printing/recordjson.h"
#include "printing/text.h"
#include "printing/valuetext.h"
#include "replay/frequencies.h"

namespace RecTool {

namespace {

constexpr double HighestSweepHz = 1e12;
constexpr float HighestSweepDb = 1000;
constexpr double AloneHz = 1;  // the width of an only channel, which nobody knows

bool isInSweep(float level)
{
    return std::abs(level) <= HighestSweepDb;
}

/// The rows of a sweep: channels that lie side by side are one. A channel is the middle of its bin.
class SweepRows {
public:
    struct Row {
        std::vector<std::size_t> channels;  ///< ascending by frequency
        std::string band;                   ///< "lowest, highest, bin width, samples" as the row has it
    };

    /// @return why the form cannot hold the range; empty when it can
    [[nodiscard]] std::string take(const values::ChannelRange& range)
    {
        constexpr double SideBySide = 1e-6;  // of a channel's width
        m_rows.clear();
        const double known = std::abs(channelWidthHz(range));
        const double widthHz = known > 0 ? known : AloneHz;
        for (const std::size_t channel : byFrequency(range)) {
            const bool goesOn = !m_rows.empty() &&
                                std::abs(range.frequencyHz(channel) - range.frequencyHz(m_rows.back().channels.back()) -
                                         widthHz) <= SideBySide * widthHz;
            if (!goesOn) {
                close(range, widthHz);
                m_rows.emplace_back();
            }
            m_rows.back().channels.push_back(channel);
        }
        close(range, widthHz);
        if (m_rows.empty()) {
            return "";
        }
        m_lowHz = range.frequencyHz(m_rows.front().channels.front()) - widthHz / 2;
        m_highHz = range.frequencyHz(m_rows.back().channels.back()) + widthHz / 2;
        if (m_lowHz < 0 || m_highHz > HighestSweepHz) {
            return "The sweep form has no frequencies below 0 and above 1 THz, and the spectrum reaches from " +
                   frequency(m_lowHz) + " to " + frequency(m_highHz) + "; --form long takes it.";
        }
        return "";
    }
    [[nodiscard]] const std::vector<Row>& rows() const { return m_rows; }
    [[nodiscard]] double lowHz() const { return m_lowHz; }
    [[nodiscard]] double highHz() const { return m_highHz; }

private:
    /// Ends the last row.
    void close(const values::ChannelRange& range, double widthHz)
    {
        if (m_rows.empty()) {
            return;
        }
        Row& row = m_rows.back();
        const double low = range.frequencyHz(row.channels.front()) - widthHz / 2;
        const double high = low + widthHz * static_cast<double>(row.channels.size());
        row.band = TerminalText::shortest(low) + ", " + TerminalText::shortest(high) + ", " +
                   TerminalText::shortest(widthHz) + ", 1";
    }

    std::vector<Row> m_rows;
    double m_lowHz = 0;
    double m_highHz = 0;
};

class CsvSweep {
public:
    CsvSweep(NewFile& file, ExportedRecords& records, ExportTime time)
        : m_file(file), m_records(records), m_time(std::move(time))
    {
    }

    /// What is no spectrum has no place in the form.
    void add(const PlacedRecord& placed, const values::ValueBase& value);
    [[nodiscard]] std::uint64_t sweeps() const { return m_sweeps; }
    /// Why what was added cannot be written; empty when it can.
    [[nodiscard]] const std::string& problem() const { return m_problem; }
    /// Sweeps that readers of the form take for more of the one before.
    [[nodiscard]] std::uint64_t joined() const { return m_joined; }

private:
    void takeRange(const LevelMap& map)
    {
        if (m_range && *m_range == map.GetChannelRange()) {
            return;
        }
        m_range = map.GetChannelRange();
        m_problem = m_rows.take(*m_range);
    }

    NewFile& m_file;
    ExportedRecords& m_records;
    ExportTime m_time;
    std::optional<TrackType> m_type;  // of the only spectrum
    std::optional<values::ChannelRange> m_range;
    SweepRows m_rows;
    double m_lastHighHz = 0;  // of the sweep written last
    std::string m_text;
    std::string m_problem;
    std::uint64_t m_sweeps = 0;
    std::uint64_t m_joined = 0;
};

void CsvSweep::add(const PlacedRecord& placed, const values::ValueBase& value)
{
    if (value.GetType() != values::ValueType::LevelMap) {
        if (m_records.areNamed()) {
            m_records.leaveOut(placed.type);
        }
        return;
    }
    const auto& map = static_cast<const LevelMap&>(value);
    const std::span<const float> levels = map.GetCells();
    if (!m_problem.empty() || std::none_of(levels.begin(), levels.end(), isInSweep)) {
        return;
    }
    if (m_type && !(*m_type == placed.type)) {
        m_problem = "The sweep form holds one spectrum of one device, and there are more: choose with --type.";
        return;
    }
    m_type = placed.type;
    takeRange(map);
    if (!m_problem.empty()) {
        return;
    }
    m_joined += m_sweeps > 0 && m_rows.lowHz() >= m_lastHighHz ? 1U : 0U;
    m_lastHighHz = m_rows.highHz();
    ++m_sweeps;
    const std::string begin = m_time.dateAndTime(placed.momentMs) + ", ";
    for (const SweepRows::Row& row : m_rows.rows()) {
        m_text = begin + row.band;
        for (const std::size_t channel : row.channels) {
            m_text += ", ";
            if (isInSweep(levels[channel])) {
                appendLevelJson(m_text, levels[channel]);
            } else {
                m_text += "nan";
            }
        }
        m_text += '\n';
        m_file.write(m_text);
    }
}

/// Lines of CSV, one a level or number, as tables of statistics programs want them.
class CsvLong {
public:
    CsvLong(NewFile& file, ExportedRecords& records, ExportTime time)
        : m_file(file), m_records(records), m_time(std::move(time))
    {
        m_file.write("time,device,keyword,frequency_hz,value\n");
    }

    void add(const PlacedRecord& placed, const values::ValueBase& value)
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
    [[nodiscard]] std::uint64_t lines() const { return m_lines; }

private:
    /// The texts of a range's frequencies, each with the comma behind it, one after the other.
    struct Frequencies {
        values::ChannelRange range;
        std::string texts;
        std::vector<std::size_t> ends;

        void take(const values::ChannelRange& newRange)
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
    };
    void addLevels(const TrackType& type, const LevelMap& map)
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

    NewFile& m_file;
    ExportedRecords& m_records;
    ExportTime m_time;
    std::map<std::pair<std::size_t, std::int32_t>, Frequencies> m_frequencies;
    std::string m_begin;  // of the record's lines
    std::string m_text;
    std::uint64_t m_lines = 0;
};

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
