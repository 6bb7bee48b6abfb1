// What each type of sentence says, by the numbers of its fields after the type.
#include "sources/nmea/nmeamessage.h"

#include <algorithm>
#include <string>

#include "input/fields.h"
#include "sources/nmea/nmeafields.h"

namespace RecStation {

namespace {

NmeaMessage withoutFix()
{
    NmeaMessage message;
    message.valid = false;
    return message;
}

NmeaMessage ofFix()
{
    NmeaMessage message;
    message.valid = true;
    return message;
}

std::optional<NmeaMessage> readGga(const NmeaSentence& sentence)
{
    const std::string_view quality = sentence.field(5);
    if (quality.empty() || quality == "0") {
        return withoutFix();
    }
    NmeaMessage message = ofFix();
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
        return withoutFix();
    }
    NmeaMessage message = ofFix();
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
        return withoutFix();
    }
    NmeaMessage message = ofFix();
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
        return withoutFix();
    }
    NmeaMessage message = ofFix();
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
