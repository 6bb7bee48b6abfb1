// Reading numbers, times, dates and angles out of fields.
#include "sources/nmea/nmeafields.h"

#include <algorithm>
#include <cmath>
#include <string>

#include <QDate>

#include "input/fields.h"

namespace RecStation::NmeaFields {

namespace {

constexpr double FullCircle = 360;
constexpr double HighestLatitude = 90;
constexpr double HighestLongitude = 180;
constexpr double RightAngle = 90;
constexpr double HalfCircle = 180;

int twoDigits(std::string_view text, std::size_t at)
{
    return 10 * (text[at] - '0') + (text[at + 1] - '0');
}

std::optional<long long> daysSince1970(int year, int month, int day)
{
    const QDate date(year, month, day);
    return date.isValid() ? std::optional(date.toJulianDay() - QDate(1970, 1, 1).toJulianDay()) : std::nullopt;
}

// ddmm.mmmm or dddmm.mmmm, and the letter of the half of the earth.
std::optional<double> readAngle(std::string_view field, std::string_view half, std::string_view halves,
                                const char* what, double limit)
{
    constexpr double MinutesPerDegree = 60;
    if (field.empty() || half.empty()) {
        return std::nullopt;
    }
    const std::size_t wholeDigits = std::min(field.find('.'), field.size());
    if (wholeDigits < 3 || !areDigits(field.substr(0, wholeDigits)) || half.size() != 1 ||
        halves.find(half.front()) == std::string_view::npos) {
        refuse(what, std::string(field) + ',' + std::string(half));
    }
    const auto degrees = parseNumber<double>(field.substr(0, wholeDigits - 2));
    const auto minutes = parseNumber<double>(field.substr(wholeDigits - 2));
    if (!degrees || !minutes || *minutes >= MinutesPerDegree || *degrees + *minutes / MinutesPerDegree > limit) {
        refuse(what, field);
    }
    const double angle = *degrees + *minutes / MinutesPerDegree;
    return half.front() == halves.front() ? angle : -angle;
}

}  // namespace

void refuse(const char* what, std::string_view field)
{
    throw LineError(std::string("the ") + what + " " + shown(field) + " cannot be read");
}

std::optional<double> number(std::string_view field, const char* what, double lowest, double highest)
{
    if (field.empty()) {
        return std::nullopt;
    }
    const auto number = parseNumber<double>(field);
    if (!number || !(*number >= lowest && *number <= highest)) {
        refuse(what, field);
    }
    return number;
}

std::optional<long long> time(std::string_view field)
{
    constexpr std::size_t WholeLength = 6;
    constexpr long long MicrosecondsPerSecond = 1'000'000;
    if (field.empty()) {
        return std::nullopt;
    }
    const std::string_view whole = field.substr(0, WholeLength);
    const std::string_view fraction = field.size() > WholeLength + 1 ? field.substr(WholeLength + 1) : "0";
    const bool shaped = field.size() <= WholeLength || field[WholeLength] == '.';
    if (whole.size() != WholeLength || !areDigits(whole) || !shaped || !areDigits(fraction)) {
        refuse("time", field);
    }
    const int hours = twoDigits(whole, 0);
    const int minutes = twoDigits(whole, 2);
    const int seconds = twoDigits(whole, 4);
    if (hours > 23 || minutes > 59 || seconds > 60) {
        refuse("time", field);
    }
    long long microseconds = 0;
    long long unit = MicrosecondsPerSecond / 10;
    for (const char digit : fraction) {
        microseconds += unit * (digit - '0');
        unit /= 10;
    }
    return ((hours * 60LL + minutes) * 60 + seconds) * MicrosecondsPerSecond + microseconds;
}

std::optional<long long> date(std::string_view field)
{
    constexpr std::size_t Length = 6;
    constexpr int FirstOfOldCentury = 80;
    if (field.empty()) {
        return std::nullopt;
    }
    if (field.size() != Length || !areDigits(field)) {
        refuse("date", field);
    }
    const int year = twoDigits(field, 4);
    const auto day =
        daysSince1970(year < FirstOfOldCentury ? 2000 + year : 1900 + year, twoDigits(field, 2), twoDigits(field, 0));
    if (!day) {
        refuse("date", field);
    }
    return day;
}

std::optional<long long> date(std::string_view day, std::string_view month, std::string_view year)
{
    if (day.empty() || month.empty() || year.empty()) {
        return std::nullopt;
    }
    const std::string whole = std::string(day) + ',' + std::string(month) + ',' + std::string(year);
    const bool shaped = day.size() <= 2 && month.size() <= 2 && year.size() == 4 && areDigits(day) &&
                        areDigits(month) && areDigits(year);
    const auto days = shaped ? daysSince1970(100 * twoDigits(year, 0) + twoDigits(year, 2),
                                             parseNumber<int>(month).value_or(0), parseNumber<int>(day).value_or(0))
                             : std::nullopt;
    if (!days || *days < 0) {
        refuse("date", whole);
    }
    return days;
}

void position(const NmeaSentence& sentence, std::size_t first, Fix& fix)
{
    const auto latitude =
        readAngle(sentence.field(first), sentence.field(first + 1), "NS", "latitude", HighestLatitude);
    const auto longitude =
        readAngle(sentence.field(first + 2), sentence.field(first + 3), "EW", "longitude", HighestLongitude);
    if (latitude && longitude) {
        fix.latitudeDeg = latitude;
        fix.longitudeDeg = longitude;
    }
}

std::optional<double> altitude(std::string_view field)
{
    constexpr double Deepest = -1e5;
    constexpr double Highest = 1e7;
    return number(field, "altitude", Deepest, Highest);
}

std::optional<double> speed(std::string_view field)
{
    constexpr double Fastest = 1e5;
    return number(field, "speed", 0, Fastest);
}

std::optional<double> knots(std::string_view field)
{
    constexpr double MetresPerNauticalMile = 1852;
    constexpr double SecondsPerHour = 3600;
    const auto knots = speed(field);
    return knots ? std::optional(*knots * MetresPerNauticalMile / SecondsPerHour) : std::nullopt;
}

std::optional<double> heading(std::string_view field)
{
    const auto heading = number(field, "heading", 0, FullCircle);
    return heading ? std::optional(wrappedDegrees(*heading)) : std::nullopt;
}

std::optional<double> easterly(std::string_view field, std::string_view side, const char* what)
{
    const auto angle = number(field, what, 0, HalfCircle);
    if (!angle || side.empty()) {
        return std::nullopt;
    }
    if (side != "E" && side != "W") {
        refuse(what, std::string(field) + ',' + std::string(side));
    }
    return side == "E" ? *angle : -*angle;
}

std::optional<double> roll(std::string_view field)
{
    return number(field, "roll", -HalfCircle, HalfCircle);
}

std::optional<double> pitch(std::string_view field)
{
    return number(field, "pitch", -RightAngle, RightAngle);
}

}  // namespace RecStation::NmeaFields
