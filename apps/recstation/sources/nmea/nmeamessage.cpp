// What each type of sentence says, by the numbers of its fields after the type, and what these hold.
#include "sources/nmea/nmeamessage.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "input/fields.h"
#include "input/timetext.h"

namespace RecStation {

namespace {

// Fields as numbers, times and angles; an empty field is nothing. All throw LineError when a field is there and cannot
// be read; "what" names it then.
namespace NmeaFields {

[[noreturn]] void refuse(const char* what, std::string_view field)
{
    throw LineError(std::string("the ") + what + " " + shown(field) + " cannot be read");
}

constexpr double FullCircle = 360;
constexpr double RightAngle = 90;
constexpr double HalfCircle = 180;

int twoDigits(std::string_view text, std::size_t at)
{
    return 10 * (text[at] - '0') + (text[at + 1] - '0');
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

// hhmmss with any fraction; microseconds since midnight. The second 60 is a leap second.
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

// ddmmyy; days since 1970. Years from 80 on are of the 20th century.
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

// dd, mm and yyyy; days since 1970.
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

// Latitude, half, longitude, half from the field on: both, or neither.
void position(const NmeaSentence& sentence, std::size_t first, Fix& fix)
{
    const auto latitude = readAngle(sentence.field(first), sentence.field(first + 1), "NS", "latitude", RightAngle);
    const auto longitude =
        readAngle(sentence.field(first + 2), sentence.field(first + 3), "EW", "longitude", HalfCircle);
    if (latitude && longitude) {
        fix.latitudeDeg = latitude;
        fix.longitudeDeg = longitude;
    }
}

// Metres above mean sea level; the field behind it is the unit.
std::optional<double> altitude(std::string_view field)
{
    constexpr double Deepest = -1e5;
    constexpr double Highest = 1e7;
    return number(field, "altitude", Deepest, Highest);
}

// In the unit of the field.
std::optional<double> speed(std::string_view field)
{
    constexpr double Fastest = 1e5;
    return number(field, "speed", 0, Fastest);
}

// Metres a second.
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

// A magnetic deviation or variation, which is added to a heading: east is positive. No letter, no number: none.
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

}  // namespace NmeaFields

NmeaMessage messageOf(bool hasFix)
{
    NmeaMessage message;
    message.valid = hasFix;
    return message;
}

std::optional<NmeaMessage> readGga(const NmeaSentence& sentence)
{
    const std::string_view quality = sentence.field(5);
    if (quality.empty() || quality == "0") {
        return messageOf(false);
    }
    NmeaMessage message = messageOf(true);
    message.timeOfDay = NmeaFields::time(sentence.field(0));
    NmeaFields::position(sentence, 1, message.fix);
    message.fix.altitudeM = NmeaFields::altitude(sentence.field(8));
    if (message.fix.altitudeM && sentence.field(9) != "M") {
        NmeaFields::refuse("unit of the altitude", sentence.field(9));
    }
    return message;
}

// Time, position, a letter for each constellation (N: it gives no fix), satellites, dilution, altitude.
std::optional<NmeaMessage> readGns(const NmeaSentence& sentence)
{
    if (sentence.field(5).find_first_not_of('N') == std::string_view::npos) {
        return messageOf(false);
    }
    NmeaMessage message = messageOf(true);
    message.timeOfDay = NmeaFields::time(sentence.field(0));
    NmeaFields::position(sentence, 1, message.fix);
    message.fix.altitudeM = NmeaFields::altitude(sentence.field(8));
    return message;
}

// Position, time, A for valid, mode. The oldest receivers end behind the position.
std::optional<NmeaMessage> readGll(const NmeaSentence& sentence)
{
    const bool old = sentence.fields.size() == 4;
    if ((sentence.field(5) != "A" && !old) || sentence.field(6) == "N") {
        return messageOf(false);
    }
    NmeaMessage message = messageOf(true);
    NmeaFields::position(sentence, 0, message.fix);
    message.timeOfDay = NmeaFields::time(sentence.field(4));
    return message;
}

// Receivers that do not know it write 0 or 999.9, or have the mode in the place of its side.
std::optional<double> variationOfRmc(std::string_view field, std::string_view side)
{
    constexpr double Least = 0.05;
    constexpr double Most = 180;
    const auto angle = parseNumber<double>(field);
    if (!angle || !(*angle >= Least && *angle <= Most) || (side != "E" && side != "W")) {
        return std::nullopt;
    }
    return side == "E" ? *angle : -*angle;
}

std::optional<NmeaMessage> readRmc(const NmeaSentence& sentence)
{
    if (sentence.field(1) != "A" || sentence.field(11) == "N") {
        return messageOf(false);
    }
    NmeaMessage message = messageOf(true);
    message.timeOfDay = NmeaFields::time(sentence.field(0));
    NmeaFields::position(sentence, 2, message.fix);
    message.fix.speedMps = NmeaFields::knots(sentence.field(6));
    try {
        message.day = NmeaFields::date(sentence.field(8));
    } catch (const LineError& error) {  // which counts only where the day does
        message.dayProblem = error.what();
    }
    message.variationDeg = variationOfRmc(sentence.field(9), sentence.field(10));
    return message;
}

// Time, day, month, year, local zone.
std::optional<NmeaMessage> readZda(const NmeaSentence& sentence)
{
    NmeaMessage message;
    message.clockOnly = true;
    message.timeOfDay = NmeaFields::time(sentence.field(0));
    message.day = NmeaFields::date(sentence.field(1), sentence.field(2), sentence.field(3));
    return message.timeOfDay && message.day ? std::optional(message) : std::nullopt;
}

// Course true, T, course magnetic, M, knots, N, km/h, K, mode.
std::optional<NmeaMessage> readVtg(const NmeaSentence& sentence)
{
    constexpr double MetresPerKilometre = 1000;
    constexpr double SecondsPerHour = 3600;
    if (sentence.field(8) == "N") {
        return std::nullopt;
    }
    NmeaMessage message;
    message.unsure = sentence.field(8).empty();
    message.fix.speedMps = NmeaFields::knots(sentence.field(4));
    if (!message.fix.speedMps) {
        if (const auto kilometresPerHour = NmeaFields::speed(sentence.field(6))) {
            message.fix.speedMps = *kilometresPerHour * MetresPerKilometre / SecondsPerHour;
        }
    }
    return message;
}

std::optional<NmeaMessage> readHdt(const NmeaSentence& sentence)
{
    NmeaMessage message;
    message.fix.headingDeg = NmeaFields::heading(sentence.field(0));
    return message;
}

// True heading, mode: V is not valid.
std::optional<NmeaMessage> readThs(const NmeaSentence& sentence)
{
    return sentence.field(1) == "V" ? std::nullopt : readHdt(sentence);
}

// Magnetic heading, deviation, E or W, variation, E or W.
std::optional<NmeaMessage> readHdg(const NmeaSentence& sentence)
{
    NmeaMessage message;
    const auto compass = NmeaFields::heading(sentence.field(0));
    const auto deviation = NmeaFields::easterly(sentence.field(1), sentence.field(2), "deviation");
    message.variationDeg = NmeaFields::easterly(sentence.field(3), sentence.field(4), "variation");
    if (compass) {
        message.magneticDeg = *compass + deviation.value_or(0);
    }
    if (message.magneticDeg && message.variationDeg) {
        message.fix.headingDeg = wrappedDegrees(*message.magneticDeg + *message.variationDeg);
    }
    return message;
}

std::optional<NmeaMessage> readHdm(const NmeaSentence& sentence)
{
    NmeaMessage message;
    message.magneticDeg = NmeaFields::heading(sentence.field(0));
    return message;
}

// Groups of type (A: an angle), number, unit (D: degrees) and the sensor's name; receivers have names of their own.
std::optional<NmeaMessage> readXdr(const NmeaSentence& sentence)
{
    constexpr std::size_t GroupSize = 4;
    NmeaMessage message;
    for (std::size_t group = 0; group + GroupSize <= sentence.fields.size(); group += GroupSize) {
        if (sentence.field(group) != "A" || sentence.field(group + 2) != "D") {
            continue;
        }
        std::string name(sentence.field(group + 3));
        std::transform(name.begin(), name.end(), name.begin(),
                       [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
        if (name == "PTCH" || name == "PITCH") {
            message.fix.pitchDeg = NmeaFields::pitch(sentence.field(group + 1));
        } else if (name == "ROLL") {
            message.fix.rollDeg = NmeaFields::roll(sentence.field(group + 1));
        }
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
    message.timeOfDay = NmeaFields::time(sentence.field(0));
    message.fix.headingDeg = sentence.field(2) == "T" ? NmeaFields::heading(sentence.field(1)) : std::nullopt;
    message.fix.rollDeg = NmeaFields::roll(sentence.field(3));
    message.fix.pitchDeg = NmeaFields::pitch(sentence.field(4));
    return message;
}

}  // namespace

std::optional<NmeaMessage> readNmeaMessage(const NmeaSentence& sentence)
{
    struct Reader {
        std::string_view type;
        std::optional<NmeaMessage> (*read)(const NmeaSentence&);
    };
    static constexpr Reader Readers[] = {{"GGA", readGga}, {"GNS", readGns}, {"GLL", readGll}, {"RMC", readRmc},
                                         {"ZDA", readZda}, {"VTG", readVtg}, {"HDT", readHdt}, {"THS", readThs},
                                         {"HDG", readHdg}, {"HDM", readHdm}, {"XDR", readXdr}, {"PASHR", readPashr}};
    for (const Reader& reader : Readers) {
        if (reader.type == sentence.type) {
            return reader.read(sentence);
        }
    }
    return std::nullopt;
}

}  // namespace RecStation
