// The columns of a log, and the time, place, frequency and azimuth in its rows.
#include "sources/bearings/rowparser.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include <QStringList>

#include "input/fields.h"
#include "input/isotime.h"

namespace RecStation {

namespace {

constexpr double FullCircle = 360;
constexpr double HighestLatitude = 90;
constexpr double HighestLongitude = 180;
constexpr double Sixty = 60;

[[noreturn]] void failRow(const std::string& sentence)
{
    throw std::runtime_error("bearings: " + sentence);
}

// ---- columns

std::optional<LogColumn> findColumn(const CsvRecord& header, const std::string& name)
{
    const QString wanted = QString::fromStdString(name);
    for (std::size_t i = 0; i < header.fields.size(); ++i) {
        if (QString::fromStdString(header.fields[i]).compare(wanted, Qt::CaseInsensitive) == 0) {
            return LogColumn{i, header.fields[i]};
        }
    }
    return std::nullopt;
}

LogColumn requireColumn(const CsvRecord& header, const std::string& name, const char* option)
{
    auto column = findColumn(header, name);
    if (!column) {
        std::string names;
        for (const std::string& field : header.fields) {
            names += (names.empty() ? "\"" : ", \"") + field + "\"";
        }
        const bool hasNumber = std::any_of(header.fields.begin(), header.fields.end(),
                                           [](const std::string& text) { return parseNumber<double>(text); });
        failRow("the log has no column \"" + name + "\" (" + option + "), only " + names +
                (hasNumber ? "; --columns names those of a log without such a line" : ""));
    }
    return *column;
}

std::optional<LogColumn> optionalColumn(const CsvRecord& header, const std::optional<std::string>& name,
                                        const char* standardName, const char* option)
{
    return name ? requireColumn(header, *name, option) : findColumn(header, standardName);
}

// The columns of degrees, minutes and seconds, as far as they are named; none without a name and a standard column.
std::vector<LogColumn> angleColumns(const CsvRecord& header, const std::optional<std::string>& names,
                                    const char* standardName, const char* option)
{
    constexpr int MostParts = 3;
    std::vector<LogColumn> columns;
    if (!names) {
        if (const auto column = findColumn(header, standardName)) {
            columns.push_back(*column);
        }
        return columns;
    }
    const QStringList parts = QString::fromStdString(*names).split(QLatin1Char(','));
    if (parts.size() > MostParts) {
        failRow(std::string(option) + " names more than degrees, minutes and seconds");
    }
    for (const QString& part : parts) {
        columns.push_back(requireColumn(header, part.trimmed().toStdString(), option));
    }
    return columns;
}

// ---- options

LogDateFormat checkedDateFormat(const std::string& format)
{
    try {
        return LogDateFormat(format);
    } catch (const std::invalid_argument&) {
        failRow("--date-format " + format + " needs one day, one month and one year, as in MM/dd/yy");
    }
}

long long checkedUtcOffset(const std::string& offset)
{
    const auto microseconds = parseUtcOffset(offset);
    if (!microseconds) {
        failRow("--utc-offset " + offset + " is no offset such as -05:00 or UTC");
    }
    return *microseconds;
}

double hzPerUnit(const std::string& unit)
{
    if (unit == "Hz") {
        return 1;
    }
    if (unit == "kHz") {
        return 1e3;
    }
    if (unit == "MHz") {
        return 1e6;
    }
    if (unit == "GHz") {
        return 1e9;
    }
    failRow("--frequency-unit " + unit + " is none of Hz, kHz, MHz and GHz");
}

// ---- fields

const std::string& field(const CsvRecord& row, const LogColumn& column)
{
    return row.fields[column.index];
}

[[noreturn]] void refuse(const CsvRecord& row, const LogColumn& column, const std::string& why)
{
    throw LineError("column \"" + column.name + "\": \"" + field(row, column) + "\" " + why);
}

bool isMissing(const std::string& text)
{
    return text.empty() || text == "NA" || text == "NaN";
}

double readNumber(const CsvRecord& row, const LogColumn& column)
{
    const std::string& text = field(row, column);
    const char* const end = text.data() + text.size();
    const bool plus = text.size() > 1 && text[0] == '+' && text[1] != '-';
    double number = 0;
    const auto [stop, error] = std::from_chars(text.data() + (plus ? 1 : 0), end, number);
    if (error != std::errc() || stop != end || !std::isfinite(number)) {
        refuse(row, column, "is no number");
    }
    return number;
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

double readAzimuth(const CsvRecord& row, const LogColumn& column)
{
    const double azimuth = readNumber(row, column);
    if (azimuth < 0 || azimuth > FullCircle) {
        refuse(row, column, "is not from 0 to 360 degrees");
    }
    return azimuth;
}

// The column of date and time in one; nothing where they are apart.
std::optional<LogColumn> timestampColumn(const BearingsOptions& options, const CsvRecord& header)
{
    const bool apart = findColumn(header, options.dateColumn) && findColumn(header, options.timeColumn);
    return options.timestampColumn || !apart
               ? optionalColumn(header, options.timestampColumn, "timestamp", "--timestamp-column")
               : std::nullopt;
}

// Seconds or milliseconds since 1970: no log of ours has seconds after the year 5000, or milliseconds before 1974.
std::optional<unsigned long long> parseEpoch(const std::string& text)
{
    constexpr double LeastMilliseconds = 1e11;
    constexpr double PerSecond = 1e6;
    constexpr double PerMillisecond = 1e3;
    constexpr double Latest = 1e14;
    const auto number = parseNumber<double>(text);
    if (!number || !(*number > 0 && *number < Latest)) {
        return std::nullopt;
    }
    return static_cast<unsigned long long>(
        std::llround(*number * (*number < LeastMilliseconds ? PerSecond : PerMillisecond)));
}

bool hasZone(const std::string& text)
{
    const std::size_t time = text.find_first_of("T ");
    return time != std::string::npos && text.find_first_of("Z+-", time) != std::string::npos;
}

// Fields too many are harmless while they are empty: some programs end every line with a separator.
void checkLength(const CsvRecord& row, std::size_t columns, bool named)
{
    if (!row.problem.empty()) {
        throw LineError(row.problem);
    }
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
      m_dateFormatText(options.dateFormat),
      m_dateFormat(checkedDateFormat(options.dateFormat)),
      m_utcOffset(checkedUtcOffset(options.utcOffset)),
      m_hzPerUnit(hzPerUnit(options.frequencyUnit)),
      m_onlyStation(options.station),
      m_south(options.south),
      m_west(options.west)
{
    if (m_latitude.empty() != m_longitude.empty()) {
        failRow(
            "the log has only one of latitude and longitude: name both with --latitude-column and --longitude-column");
    }
    if (!m_onlyStation.empty() && !m_station) {
        failRow("--station needs a column with stations: name it with --station-column");
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
    bearing.azimuthDeg = readAzimuth(row, m_azimuth);
    if (hasPosition()) {
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
        refuse(row, m_date, "is no date as " + m_dateFormatText);
    }
    const auto timeOfDay = parseTimeOfDay(field(row, m_time));
    if (!timeOfDay) {
        refuse(row, m_time, "is no time of day such as 5:31 or 05:31:07.25");
    }
    const long long time = *day * MicrosecondsPerDay + *timeOfDay - m_utcOffset;
    if (time <= 0) {
        refuse(row, m_date, "is not after the start of 1970");
    }
    return static_cast<unsigned long long>(time);
}

unsigned long long RowParser::readTimestamp(const CsvRecord& row) const
{
    const std::string& text = field(row, *m_timestamp);
    if (const auto epoch = parseEpoch(text)) {
        return *epoch;
    }
    std::string iso = text;
    std::replace(iso.begin(), iso.end(), ' ', 'T');
    const auto time = parseIsoTime(iso);
    const long long offset = hasZone(text) ? 0 : m_utcOffset;
    if (!time || static_cast<long long>(*time) <= offset) {
        refuse(row, *m_timestamp,
               "is no time after the start of 1970 such as 2026-03-01T08:00:00.25Z, 1772352000.25 or 1772352000250");
    }
    return static_cast<unsigned long long>(static_cast<long long>(*time) - offset);
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
