// Reading a direction-finding log row by row, and the walk that surveys all of it.
#include "sources/bearings/bearinglog.h"

#include <algorithm>
#include <set>
#include <stdexcept>
#include <utility>

#include <system/stopsignal.h>

namespace RecStation {

namespace {

constexpr std::size_t MostFrequencies = 16'777'216;  // a map has no more

std::optional<char> separatorOf(const std::string& option)
{
    if (option == "auto") {
        return std::nullopt;
    }
    if (option == "tab") {
        return '\t';
    }
    if (option.size() == 1 && std::string("\"\r\n").find(option) == std::string::npos) {
        return option.front();
    }
    throw std::runtime_error("bearings: --separator " + option + " is neither one character nor tab nor auto");
}

CsvRecord readHeader(CsvReader& csv, const LogInput& input)
{
    auto header = csv.next();
    if (!header) {
        throw std::runtime_error("bearings: " + input.name() + " is empty");
    }
    if (!header->problem.empty()) {
        throw std::runtime_error("bearings: the first line of " + input.name() +
                                 " does not name columns: " + header->problem);
    }
    return *std::move(header);
}

void note(const LoggedBearing& bearing, LogSurvey& survey)
{
    if (survey.bearings++ == 0) {
        survey.first = bearing;
    }
    static_cast<void>(survey.order.take(bearing.time, 0));
    survey.lastTime = std::max(survey.lastTime, bearing.time);
    survey.oneStation = survey.oneStation && bearing.station == survey.first.station;
}

}  // namespace

BearingLog::BearingLog(const BearingsOptions& options, const LogInput& input, BadRow badRow)
    : m_csv(input.open(), separatorOf(options.separator)),
      m_parser(options, readHeader(m_csv, input)),
      m_badRow(std::move(badRow))
{
}

std::optional<LogRow> BearingLog::next()
{
    auto record = m_csv.next();
    // Whoever stops the run may well cut a row short.
    while (record && !System::StopSignal::requested()) {
        try {
            LogRow row = m_parser.parse(*record);
            m_skipped += row.bearing ? 0U : 1U;
            return row;
        } catch (const LineError& error) {
            ++m_bad;
            m_badRow(record->line, error.what());
        }
        record = m_csv.next();
    }
    return std::nullopt;
}

LogSurvey surveyLog(const BearingsOptions& options, const LogInput& input, const BearingLog::BadRow& badRow)
{
    BearingLog log(options, input, badRow);
    LogSurvey survey;
    survey.order = TimeOrder("bearings", false, options.splitGapUs);
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
    if (survey.bearings == 0) {
        throw std::runtime_error("bearings: " + input.name() + " holds no bearing (" + std::to_string(log.skipped()) +
                                 " rows skipped, " + std::to_string(log.bad()) + " bad)");
    }
    return survey;
}

}  // namespace RecStation
