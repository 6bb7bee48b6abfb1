// Reading a direction-finding log row by row, whether from a file, a pipe or a KrakenSDR, and surveying all of it.
#include "sources/bearings/bearinglog.h"

#include <algorithm>
#include <limits>
#include <set>
#include <stdexcept>
#include <utility>

#include <QFileInfo>

#include <system/stopsignal.h>

#include "input/fields.h"
#include "sources/bearings/krakenrow.h"

namespace RecStation {

namespace {

constexpr std::size_t MostFrequencies = 16'777'216;  // a map has no more

constexpr std::size_t MostKept = 268'435'456;

std::shared_ptr<const LogInput::Kept> readAll(const std::string& file, const std::string& name)
{
    constexpr std::size_t PieceSize = 65'536;
    const ByteInput input = openText(file);
    std::vector<char> piece(PieceSize);
    const auto kept = std::make_shared<LogInput::Kept>();
    try {
        while (const std::size_t count = input(piece.data(), piece.size())) {
            if (kept->bytes.size() + count > MostKept) {
                throw std::runtime_error("bearings: " + name +
                                         " gives more than 256 MiB: store it in a file, which may have any length");
            }
            kept->bytes.append(piece.data(), count);
        }
    } catch (const DamagedInput& error) {
        kept->damage = error.what();
    }
    return kept;
}

/// Rows of a log that a KrakenSDR has written.
class KrakenLog final : public RowReader {
public:
    explicit KrakenLog(const BearingsOptions& options)
        : m_rows(options.mirror),
          m_onlyStation(options.station),
          m_noPosition(options.noPosition),
          m_noHeading(options.noPosition || options.headingDeg)
    {
    }

    [[nodiscard]] static bool isRow(const CsvRecord& row)
    {
        const std::vector<std::string_view> fields(row.fields.begin(), row.fields.end());
        return row.problem.empty() && KrakenRows::isRow(fields);
    }
    [[nodiscard]] LogRow parse(const CsvRecord& row) override
    {
        const std::vector<std::string_view> fields(row.fields.begin(), row.fields.end());
        LoggedBearing bearing = m_rows.parse(fields);
        if (!m_onlyStation.empty() && bearing.station != m_onlyStation) {
            return {};
        }
        if (m_noPosition) {
            bearing.latitudeDeg = bearing.longitudeDeg = std::numeric_limits<double>::quiet_NaN();
        }
        if (m_noHeading) {
            bearing.headingDeg = std::numeric_limits<double>::quiet_NaN();
        }
        const double frequencyHz = bearing.frequencyHz;
        return {frequencyHz, std::move(bearing)};
    }
    [[nodiscard]] bool hasPosition() const override { return !m_noPosition; }
    [[nodiscard]] bool hasAltitude() const override { return false; }
    [[nodiscard]] std::string remark() const override
    {
        return m_rows.foundMirrored() ? KrakenMirrored : std::string();
    }

private:
    KrakenRows m_rows;
    std::string m_onlyStation;
    bool m_noPosition;
    bool m_noHeading;
};

CsvRecord readHeader(CsvReader& csv, const LogInput& input)
{
    auto header = csv.next();
    if (!header) {
        throw std::runtime_error("bearings: " + input.name() + " is empty");
    }
    const bool binary = std::any_of(header->fields.begin(), header->fields.end(),
                                    [](const std::string& field) { return field.find('\0') != std::string::npos; });
    const std::string problem = binary ? "it is no text" : header->problem;
    if (!problem.empty()) {
        throw std::runtime_error("bearings: the first line of " + input.name() + " does not name columns: " + problem);
    }
    return *std::move(header);
}

CsvRecord namedColumns(const std::string& names)
{
    CsvRecord header;
    for (const std::string_view name : CommaFields(names).rest()) {
        header.fields.emplace_back(name);
    }
    return header;
}

void note(const LoggedBearing& bearing, LogSurvey& survey)
{
    if (survey.bearings++ == 0) {
        survey.first = bearing;
    }
    static_cast<void>(survey.order.take(bearing.time));
    survey.lastTime = std::max(survey.lastTime, bearing.time);
    survey.oneStation = survey.oneStation && bearing.station == survey.first.station;
}

}  // namespace

LogInput::LogInput(const std::string& file) : m_file(file), m_name(inputName(file))
{
    if (file == "-" || !QFileInfo(QString::fromStdString(file)).isFile()) {
        m_kept = readAll(m_file, m_name);
    }
}

ByteInput LogInput::open() const
{
    if (m_kept == nullptr) {
        return openText(m_file);
    }
    return [kept = m_kept, position = std::size_t{0}](char* buffer, std::size_t size) mutable {
        const std::size_t count = kept->bytes.copy(buffer, size, position);
        position += count;
        if (count == 0 && !kept->damage.empty()) {
            throw DamagedInput(kept->damage);
        }
        return count;
    };
}

BearingLog::BearingLog(const BearingsOptions& options, const LogInput& input, BadLines* bad)
    : m_csv(input.open(),
            options.separator == options.GuessedSeparator ? std::nullopt : std::optional(options.separator),
            options.decimalComma),
      m_parser(begin(options, input)),
      m_badLines(bad)
{
}

std::unique_ptr<RowReader> BearingLog::begin(const BearingsOptions& options, const LogInput& input)
{
    if (!options.columns.empty()) {
        return std::make_unique<RowParser>(options, namedColumns(options.columns));
    }
    CsvRecord first = readHeader(m_csv, input);
    if (KrakenLog::isRow(first)) {
        m_first = std::move(first);
        return std::make_unique<KrakenLog>(options);
    }
    return std::make_unique<RowParser>(options, first);
}

std::optional<CsvRecord> BearingLog::nextRecord()
{
    return m_first ? std::exchange(m_first, std::nullopt) : m_csv.next();
}

std::optional<LogRow> BearingLog::next()
{
    auto record = nextRecord();
    // Whoever stops the run may well cut a row short.
    while (record && !System::StopSignal::requested()) {
        try {
            if (!record->problem.empty()) {
                throw LineError(record->problem);
            }
            LogRow row = m_parser->parse(*record);
            m_skipped += row.bearing ? 0U : 1U;
            return row;
        } catch (const LineError& error) {
            ++m_bad;
            if (m_badLines != nullptr) {
                m_badLines->add(record->line, error.what());
            }
        }
        record = nextRecord();
    }
    return std::nullopt;
}

LogSurvey surveyLog(const BearingsOptions& options, const LogInput& input, BadLines& bad)
{
    BearingLog log(options, input, &bad);
    LogSurvey survey;
    survey.order = TimeOrder(options.splitGapUs);
    std::set<double> channels;
    while (const auto row = log.next()) {
        if (row->frequencyHz && channels.insert(*row->frequencyHz).second && channels.size() > MostFrequencies) {
            throw std::runtime_error("bearings: " + input.name() + " has more than 16777216 different frequencies");
        }
        if (row->bearing) {
            note(*row->bearing, survey);
        }
    }
    survey.channelsHz.assign(channels.begin(), channels.end());
    survey.hasPosition = log.parser().hasPosition();
    survey.hasAltitude = log.parser().hasAltitude();
    survey.remark = log.parser().remark();
    if (survey.bearings == 0) {
        throw std::runtime_error("bearings: " + input.name() + " holds no bearing (" + std::to_string(log.skipped()) +
                                 " rows skipped, " + std::to_string(log.bad()) + " bad)");
    }
    return survey;
}

}  // namespace RecStation
