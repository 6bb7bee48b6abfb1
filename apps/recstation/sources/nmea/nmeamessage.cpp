// Reading the fields of GGA, RMC, VTG, HDT, HDG and PASHR sentences.
#include "sources/nmea/nmeamessage.h"

#include <algorithm>
#include <cmath>
#include <string>

#include <QDate>

#include "input/fields.h"

namespace RecStation {

namespace {

constexpr double FullCircle = 360;
constexpr double HighestLatitude = 90;
constexpr double HighestLongitude = 180;
constexpr double RightAngle = 90;
constexpr double HalfCircle = 180;
constexpr double MetresPerNauticalMile = 1852;
constexpr double SecondsPerHour = 3600;

[[noreturn]] void refuse(const char* what, std::string_view field)
{
    throw LineError(std::string("the ") + what + " " + shown(field) + " cannot be read");
}

bool areDigits(std::string_view text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

int twoDigits(std::string_view text, std::size_t at)
{
    return 10 * (text[at] - '0') + (text[at + 1] - '0');
}

std::optional<double> readNumber(std::string_view field, const char* what, double lowest, double highest)
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

// hhmmss with any fraction; microseconds since midnight. The second 60 is a leap second.
std::optional<long long> readTime(std::string_view field)
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

// ddmmyy; days since 1970. Years from 80 on are of the 20th century.
std::optional<long long> readDate(std::string_view field)
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
    const QDate date(year < FirstOfOldCentury ? 2000 + year : 1900 + year, twoDigits(field, 2), twoDigits(field, 0));
    if (!date.isValid()) {
        refuse("date", field);
    }
    return date.toJulianDay() - QDate(1970, 1, 1).toJulianDay();
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

void readPosition(const NmeaSentence& sentence, std::size_t first, NmeaFix& fix)
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

std::optional<double> fromKnots(std::optional<double> knots)
{
    return knots ? std::optional(*knots * MetresPerNauticalMile / SecondsPerHour) : std::nullopt;
}

std::optional<double> readSpeed(std::string_view field)
{
    constexpr double Fastest = 1e5;
    return readNumber(field, "speed", 0, Fastest);
}

// From 0 to below 360, without the dust of a sum in the last digits.
double wrapped(double degrees)
{
    constexpr double PerDegree = 1e6;
    const double turned = std::fmod(std::round(degrees * PerDegree), FullCircle * PerDegree);
    return (turned < 0 ? turned + FullCircle * PerDegree : turned) / PerDegree;
}

std::optional<double> readHeading(std::string_view field)
{
    const auto heading = readNumber(field, "heading", 0, FullCircle);
    return heading ? std::optional(wrapped(*heading)) : std::nullopt;
}

// Of the magnetic deviation or variation: east is added to the heading. No letter, no number: none.
std::optional<double> readEasterly(std::string_view field, std::string_view side, const char* what)
{
    const auto angle = readNumber(field, what, 0, HalfCircle);
    if (!angle || side.empty()) {
        return std::nullopt;
    }
    if (side != "E" && side != "W") {
        refuse(what, std::string(field) + ',' + std::string(side));
    }
    return side == "E" ? *angle : -*angle;
}

// ---- the sentences, by the numbers of their fields after the type

std::optional<NmeaMessage> readGga(const NmeaSentence& sentence)
{
    constexpr double Deepest = -1e5;
    constexpr double Highest = 1e7;
    const std::string_view quality = sentence.field(5);
    if (quality.empty() || quality == "0") {
        return std::nullopt;
    }
    NmeaMessage message;
    message.timeOfDay = readTime(sentence.field(0));
    readPosition(sentence, 1, message.fix);
    const auto altitude = readNumber(sentence.field(8), "altitude", Deepest, Highest);
    if (altitude && sentence.field(9) != "M") {
        refuse("unit of the altitude", sentence.field(9));
    }
    message.fix.altitudeM = altitude;
    return message;
}

std::optional<NmeaMessage> readRmc(const NmeaSentence& sentence)
{
    if (sentence.field(1) != "A" || sentence.field(11) == "N") {
        return std::nullopt;
    }
    NmeaMessage message;
    message.timeOfDay = readTime(sentence.field(0));
    readPosition(sentence, 2, message.fix);
    message.fix.speedMps = fromKnots(readSpeed(sentence.field(6)));
    message.day = readDate(sentence.field(8));
    return message;
}

// Course true, T, course magnetic, M, knots, N, km/h, K, mode.
std::optional<NmeaMessage> readVtg(const NmeaSentence& sentence)
{
    constexpr double MetresPerKilometre = 1000;
    if (sentence.field(8) == "N") {
        return std::nullopt;
    }
    NmeaMessage message;
    message.fix.speedMps = fromKnots(readSpeed(sentence.field(4)));
    if (!message.fix.speedMps) {
        if (const auto kilometresPerHour = readSpeed(sentence.field(6))) {
            message.fix.speedMps = *kilometresPerHour * MetresPerKilometre / SecondsPerHour;
        }
    }
    return message;
}

std::optional<NmeaMessage> readHdt(const NmeaSentence& sentence)
{
    NmeaMessage message;
    message.fix.headingDeg = readHeading(sentence.field(0));
    return message;
}

// Magnetic heading, deviation, E or W, variation, E or W. Without the variation it tells no true heading.
std::optional<NmeaMessage> readHdg(const NmeaSentence& sentence)
{
    NmeaMessage message;
    const auto magnetic = readNumber(sentence.field(0), "heading", 0, FullCircle);
    const auto deviation = readEasterly(sentence.field(1), sentence.field(2), "deviation");
    const auto variation = readEasterly(sentence.field(3), sentence.field(4), "variation");
    if (magnetic && variation) {
        message.fix.headingDeg = wrapped(*magnetic + deviation.value_or(0) + *variation);
    }
    return message;
}

// Time, true heading, T, roll, pitch, heave, three accuracies, quality. Other PASHR sentences have a name there.
std::optional<NmeaMessage> readPashr(const NmeaSentence& sentence)
{
    if (!areDigits(sentence.field(0).substr(0, 1)) || sentence.field(9) == "0") {
        return std::nullopt;
    }
    NmeaMessage message;
    message.timeOfDay = readTime(sentence.field(0));
    message.fix.headingDeg = sentence.field(2) == "T" ? readHeading(sentence.field(1)) : std::nullopt;
    message.fix.rollDeg = readNumber(sentence.field(3), "roll", -HalfCircle, HalfCircle);
    message.fix.pitchDeg = readNumber(sentence.field(4), "pitch", -RightAngle, RightAngle);
    return message;
}

}  // namespace

std::optional<NmeaMessage> readNmeaMessage(const NmeaSentence& sentence)
{
    struct Reader {
        std::string_view type;
        std::optional<NmeaMessage> (*read)(const NmeaSentence&);
    };
    static constexpr Reader Readers[] = {{"GGA", readGga}, {"RMC", readRmc}, {"VTG", readVtg},
                                         {"HDT", readHdt}, {"HDG", readHdg}, {"PASHR", readPashr}};
    for (const Reader& reader : Readers) {
        if (reader.type == sentence.type) {
            return reader.read(sentence);
        }
    }
    return std::nullopt;
}

}  // namespace RecStation
