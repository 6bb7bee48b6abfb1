// A KrakenSDR's lines as rows of a log.
#include "sources/bearings/krakenlog.h"

#include <limits>

namespace RecStation {

KrakenLog::KrakenLog(const BearingsOptions& options)
    : m_rows(options.mirror),
      m_onlyStation(options.station),
      m_noPosition(options.noPosition),
      m_noHeading(options.noPosition || options.headingDeg)
{
}

bool KrakenLog::isRow(const CsvRecord& row)
{
    const std::vector<std::string_view> fields(row.fields.begin(), row.fields.end());
    return row.problem.empty() && KrakenRows::isRow(fields);
}

LogRow KrakenLog::parse(const CsvRecord& row)
{
    if (!row.problem.empty()) {
        throw LineError(row.problem);
    }
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
    LogRow out;
    out.frequencyHz = bearing.frequencyHz;
    out.bearing = std::move(bearing);
    return out;
}

std::string KrakenLog::remark() const
{
    return m_rows.foundMirrored() ? KrakenMirrored : std::string();
}

}  // namespace RecStation
