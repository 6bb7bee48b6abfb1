// Reading a direction-finding log row by row, and the walk that surveys all of it.
#include "sources/bearings/bearinglog.h"

#include <algorithm>
#include <set>
#include <stdexcept>
#include <utility>

#include <system/stopsignal.h>

#include "input/fields.h"
#include "sources/bearings/krakenlog.h"

namespace RecStation {

namespace {

constexpr std::size_t MostFrequencies = 16'777'216;  // a map has no more

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
    CommaFields fields(names);
    for (auto field = fields.next(); field; field = fields.next()) {
        header.fields.emplace_back(trimmed(*field));
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

BearingLog::BearingLog(const BearingsOptions& options, const LogInput& input, BadRow badRow)
    : m_csv(input.open(),
            options.separator == options.GuessedSeparator ? std::nullopt : std::optional(options.separator),
            options.decimalComma),
      m_parser(begin(options, input)),
      m_badRow(std::move(badRow))
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
            LogRow row = m_parser->parse(*record);
            m_skipped += row.bearing ? 0U : 1U;
            return row;
        } catch (const LineError& error) {
            ++m_bad;
            m_badRow(record->line, error.what());
        }
        record = nextRecord();
    }
    return std::nullopt;
}

LogSurvey surveyLog(const BearingsOptions& options, const LogInput& input, const BearingLog::BadRow& badRow)
{
    BearingLog log(options, input, badRow);
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
