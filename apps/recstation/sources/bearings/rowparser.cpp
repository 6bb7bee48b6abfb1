// The columns of a log, and the time, place, frequency and azimuth in its rows.
#include "sources/bearings/rowparser.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <utility>

#include "input/fields.h"
#include "input/timetext.h"

namespace RecStation {

namespace {

constexpr double FullCircle = 360;
constexpr double HighestLatitude = 90;
constexpr double HighestLongitude = 180;
constexpr double HighestElevation = 90;
constexpr double HighestDb = 1000;
constexpr double HighestQuality = 100;
constexpr double Sixty = 60;

// ---- fields

const std::string& field(const CsvRecord& row, const LogColumn& column)
{
    return row.fields[column.index];
}

[[noreturn]] void refuse(const CsvRecord& row, const LogColumn& column, const std::string& why)
{
    constexpr int Most = 100;
    QString text = QString::fromStdString(field(row, column));
    if (text.size() > Most) {
        text = text.left(Most) + QStringLiteral("...");
    }
    throw LineError("column \"" + column.name + "\": \"" + text.toStdString() + "\" " + why);
}

bool isMissing(const std::string& text)
{
    return text.empty() || text == "NA" || text == "NaN";
}

std::string withPoint(std::string text)
{
    std::replace(text.begin(), text.end(), ',', '.');
    return text;
}

double readNumber(const CsvRecord& row, const LogColumn& column)
{
    const std::string& text = field(row, column);
    const auto number = row.decimalComma ? parseNumber<double>(withPoint(text)) : parseNumber<double>(text);
    if (!number || !std::isfinite(*number)) {
        const bool hasComma = text.find(',') != std::string::npos && parseNumber<double>(withPoint(text));
        refuse(row, column, hasComma ? "is no number without --decimal-comma" : "is no number");
    }
    return *number;
}

// Degrees, minutes and seconds; the sign of the degrees is that of the whole.
double readAngle(const CsvRecord& row, const std::vector<LogColumn>& columns, double limit, const char* unsignedOption)
{
    const double degrees = readNumber(row, columns.front());
    double magnitude = std::abs(degrees);
    double unit = 1;
    for (std::size_t i = 1; i < columns.size(); ++i) {
        const double part = readNumber(row, columns[i]);
        if (std::signbit(part) || part >= Sixty) {
            refuse(row, columns[i], "is not from 0 to below 60");
        }
        unit /= Sixty;
        magnitude += part * unit;
    }
    if (magnitude > limit) {
        refuse(row, columns.front(), "is no degrees of this coordinate");
    }
    if (unsignedOption != nullptr && std::signbit(degrees)) {
        refuse(row, columns.front(), std::string("has a sign in spite of ") + unsignedOption);
    }
    return unsignedOption != nullptr || std::signbit(degrees) ? -magnitude : magnitude;
}

double readBetween(const CsvRecord& row, const LogColumn& column, double low, double high, const char* otherwise)
{
    const double number = readNumber(row, column);
    if (number < low || number > high) {
        refuse(row, column, otherwise);
    }
    return number;
}

// Nothing where there is no such column.
double readWhereTold(const CsvRecord& row, const std::optional<LogColumn>& column, double low, double high,
                     const char* otherwise)
{
    return column && !isMissing(field(row, *column)) ? readBetween(row, *column, low, high, otherwise)
                                                     : std::numeric_limits<double>::quiet_NaN();
}

// A heading that nobody asked for may be added to the azimuths already.
std::string remarkOnHeading(const CsvRecord& header, const BearingsOptions& options)
{
    if (options.headingDeg || !options.headingColumn.empty()) {
        return {};
    }
    const auto heading = findColumn(header, "heading");
    return heading
               ? "column \"" + heading->name +
                     "\" is left out: azimuths that are relative to it need --heading-column \"" + heading->name + "\""
               : std::string();
}

// The column of date and time in one; nothing where they are apart.
std::optional<LogColumn> timestampColumn(const BearingsOptions& options, const CsvRecord& header)
{
    const auto date = findColumn(header, options.dateColumn);
    const auto time = findColumn(header, options.timeColumn);
    if (!options.timestampColumn && date && time) {
        return std::nullopt;
    }
    if (auto timestamp = optionalColumn(header, options.timestampColumn, "timestamp", "--timestamp-column")) {
        return timestamp;
    }
    return options.timestampColumn || date ? std::nullopt : time;
}

// "2026-03-01 08:00:00 +01:00" and "2026-03-01 08:00:00 UTC", as people and databases write it.
std::string asIso(std::string text)
{
    constexpr std::string_view Utc = " UTC";
    if (text.ends_with(Utc)) {
        text.replace(text.size() - Utc.size(), Utc.size(), "Z");
    }
    const std::size_t date = text.find_first_of("Tt ");
    if (date != std::string::npos) {
        text[date] = 'T';
    }
    std::erase(text, ' ');
    return text;
}

bool hasZone(const std::string& iso)
{
    const std::size_t time = iso.find('T');
    return time != std::string::npos && iso.find_first_of("Zz+-", time) != std::string::npos;
}

// Fields too many are harmless while they are empty: some programs end every line with a separator.
void checkLength(const CsvRecord& row, std::size_t columns, bool named)
{
    const auto surplus = row.fields.begin() + static_cast<std::ptrdiff_t>(std::min(columns, row.fields.size()));
    const bool tooMany = std::any_of(surplus, row.fields.end(), [](const std::string& text) { return !text.empty(); });
    if (row.fields.size() < columns || tooMany) {
        throw LineError(std::to_string(row.fields.size()) + " fields stand where " +
                        (named ? "--columns names " : "the first line has ") + std::to_string(columns));
    }
}

}  // namespace

RowParser::RowParser(const BearingsOptions& options, const CsvRecord& header)
    : m_columns(header.fields.size()),
      m_named(!options.columns.empty()),
      m_timestamp(timestampColumn(options, header)),
      m_date(m_timestamp ? *m_timestamp : requireColumn(header, options.dateColumn, "--date-column")),
      m_time(m_timestamp ? *m_timestamp : requireColumn(header, options.timeColumn, "--time-column")),
      m_station(optionalColumn(header, options.stationColumn, "station", "--station-column")),
      m_latitude(options.noPosition ? std::vector<LogColumn>()
                                    : angleColumns(header, options.latitudeColumns, "latitude", "--latitude-column")),
      m_longitude(options.noPosition
                      ? std::vector<LogColumn>()
                      : angleColumns(header, options.longitudeColumns, "longitude", "--longitude-column")),
      m_altitude(options.noPosition ? std::nullopt
                                    : optionalColumn(header, options.altitudeColumn, "altitude", "--altitude-column")),
      m_frequency(requireColumn(header, options.frequencyColumn, "--frequency-column")),
      m_azimuth(requireColumn(header, options.azimuthColumn, "--azimuth-column")),
      m_elevation(optionalColumn(header, options.elevationColumn, "elevation", "--elevation-column")),
      m_level(optionalColumn(header, options.levelColumn, "level", "--level-column")),
      m_quality(optionalColumn(header, options.qualityColumn, "quality", "--quality-column")),
      m_heading(
          optionalColumn(header, options.headingDeg ? std::string() : options.headingColumn, "", "--heading-column")),
      m_remark(remarkOnHeading(header, options)),
      m_dateFormat(options.dateFormat),
      m_utcOffsetUs(options.utcOffsetUs),
      m_hzPerUnit(options.hzPerUnit.value_or(hzPerUnitOf(m_frequency.name))),
      m_onlyStation(options.station),
      m_south(options.south),
      m_west(options.west)
{
    if (m_latitude.empty() != m_longitude.empty()) {
        failLog(
            "the log has only one of latitude and longitude: name both with --latitude-column and --longitude-column");
    }
    if (!m_onlyStation.empty() && !m_station) {
        failLog("--station needs a column with stations: name it with --station-column");
    }
}

LogRow RowParser::parse(const CsvRecord& row)
{
    checkLength(row, m_columns, m_named);
    LogRow out;
    if (!m_onlyStation.empty() && field(row, *m_station) != m_onlyStation) {
        return out;
    }
    out.frequencyHz = readFrequency(row);
    if (!isMissing(field(row, m_azimuth))) {
        out.bearing = readBearing(row, *out.frequencyHz);
    }
    return out;
}

LoggedBearing RowParser::readBearing(const CsvRecord& row, double frequencyHz) const
{
    LoggedBearing bearing;
    bearing.time = readTime(row);
    bearing.frequencyHz = frequencyHz;
    bearing.azimuthDeg = readBetween(row, m_azimuth, 0, FullCircle, "is not from 0 to 360 degrees");
    bearing.elevationDeg =
        readWhereTold(row, m_elevation, -HighestElevation, HighestElevation, "is not from -90 to 90 degrees");
    bearing.levelDb = readWhereTold(row, m_level, -HighestDb, HighestDb, "is not within 1000 dB");
    bearing.quality = readWhereTold(row, m_quality, 0, HighestQuality, "is not from 0 to 100");
    bearing.headingDeg =
        azimuthOf(readWhereTold(row, m_heading, -FullCircle, FullCircle, "is not within a circle"), false);
    if (hasPosition() && !(isMissing(field(row, m_latitude.front())) && isMissing(field(row, m_longitude.front())))) {
        bearing.latitudeDeg = readAngle(row, m_latitude, HighestLatitude, m_south ? "--south" : nullptr);
        bearing.longitudeDeg = readAngle(row, m_longitude, HighestLongitude, m_west ? "--west" : nullptr);
    }
    if (m_altitude && !isMissing(field(row, *m_altitude))) {
        bearing.altitudeM = readNumber(row, *m_altitude);
    }
    if (m_station) {
        bearing.station = field(row, *m_station);
    }
    return bearing;
}

unsigned long long RowParser::readTime(const CsvRecord& row) const
{
    constexpr long long MicrosecondsPerDay = 86'400'000'000;
    if (m_timestamp) {
        return readTimestamp(row);
    }
    const auto day = m_dateFormat.parse(field(row, m_date));
    if (!day) {
        refuse(row, m_date, "is no date as " + m_dateFormat.text());
    }
    const auto timeOfDay = parseTimeOfDay(field(row, m_time));
    if (!timeOfDay) {
        refuse(row, m_time, "is no time of day such as 5:31 or 05:31:07.25");
    }
    const long long time = *day * MicrosecondsPerDay + *timeOfDay - m_utcOffsetUs;
    if (!isRecordable(time)) {
        refuse(row, m_date, "is not from 1970 to 2500");
    }
    return static_cast<unsigned long long>(time);
}

unsigned long long RowParser::readTimestamp(const CsvRecord& row) const
{
    const std::string& text = field(row, *m_timestamp);
    if (const auto epoch = row.decimalComma ? parseEpoch(withPoint(text)) : parseEpoch(text)) {
        return *epoch;
    }
    const std::string iso = asIso(text);
    const auto time = parseIsoTime(iso);
    const long long us = static_cast<long long>(time.value_or(0)) - (hasZone(iso) ? 0 : m_utcOffsetUs);
    if (!time || !isRecordable(us)) {
        refuse(row, *m_timestamp,
               "is no time from 1970 to 2500 such as 2026-03-01T08:00:00.25Z, 1772352000.25 or 1772352000250");
    }
    return static_cast<unsigned long long>(us);
}

double RowParser::readFrequency(const CsvRecord& row) const
{
    constexpr double HighestHz = 1e12;
    constexpr double StepsPerHz = 1000;
    // To 0.001 Hz, so that 150.015 MHz is not 150014999.99999997 Hz.
    const double frequencyHz = std::round(readNumber(row, m_frequency) * m_hzPerUnit * StepsPerHz) / StepsPerHz;
    if (!(frequencyHz > 0 && frequencyHz <= HighestHz)) {
        refuse(row, m_frequency, "is no frequency above 0 and up to 1000 GHz");
    }
    return frequencyHz;
}

}  // namespace RecStation
