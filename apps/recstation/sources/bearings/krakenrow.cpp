// Reading the fields of a KrakenSDR's line, and finding out which way its angle is counted.
#include "sources/bearings/krakenrow.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

#include "input/fields.h"
#include "input/timetext.h"

namespace RecStation {

namespace {

constexpr double FullCircleDeg = 360;
constexpr double MostQuality = 100;

namespace Field {
constexpr std::size_t Time = 0;
constexpr std::size_t Angle = 1;
constexpr std::size_t Confidence = 2;
constexpr std::size_t Power = 3;
constexpr std::size_t Frequency = 4;
constexpr std::size_t Antennas = 5;
constexpr std::size_t Station = 7;
constexpr std::size_t Latitude = 8;
constexpr std::size_t Longitude = 9;
constexpr std::size_t GpsHeading = 10;
constexpr std::size_t CompassHeading = 11;
constexpr std::size_t HeadingBy = 12;
}  // namespace Field

constexpr std::size_t Directions = 360;
using Output = std::array<double, Directions>;

std::optional<Output> readOutput(std::span<const std::string_view> texts)
{
    if (texts.size() != Directions) {
        return std::nullopt;
    }
    Output output{};
    for (std::size_t i = 0; i < Directions; ++i) {
        const auto number = parseNumber<double>(texts[i]);
        if (!number || !std::isfinite(*number)) {
            return std::nullopt;
        }
        output.at(i) = *number;
    }
    return output;
}

// Values have two decimals, so that a peak may be flat; angles may have lost their fraction.
bool isAtPeak(const Output& output, double angleDeg)
{
    constexpr double HalfDecimal = 0.005;
    const double peak = *std::max_element(output.begin(), output.end());
    const auto direction = static_cast<std::size_t>(angleDeg);
    const auto isPeak = [&](std::size_t i) { return output.at(i % Directions) >= peak - HalfDecimal; };
    return isPeak(direction) || isPeak(direction + 1) || isPeak(direction + Directions - 1);
}

}  // namespace

double azimuthOf(double angleDeg, bool mirrored)
{
    const double turned = std::fmod(mirrored ? -angleDeg : angleDeg, FullCircleDeg);
    const double azimuth = turned < 0 ? turned + FullCircleDeg : turned + 0.0;  // not -0
    return azimuth == FullCircleDeg ? 0 : azimuth;                              // a hair below 0
}

double krakenNumberOrNone(std::string_view text)
{
    const auto number = parseNumber<double>(text);
    return number && std::isfinite(*number) ? *number : std::numeric_limits<double>::quiet_NaN();
}

unsigned long long krakenTime(std::string_view milliseconds)
{
    constexpr long long LatestMs = 100'000'000'000'000;
    constexpr long long MicrosecondsPerMillisecond = 1000;
    const auto time = parseNumber<long long>(milliseconds);
    if (!time || *time < 0 || *time > LatestMs || !isRecordable(*time * MicrosecondsPerMillisecond)) {
        throw LineError("the time " + shown(milliseconds) + " is not in milliseconds since 1970");
    }
    return static_cast<unsigned long long>(*time * MicrosecondsPerMillisecond);
}

double krakenFrequency(std::string_view text, double unitHz)
{
    constexpr double HighestHz = 1e12;
    constexpr double StepsPerHz = 1000;
    // To 0.001 Hz, so that 150.015 MHz is not 150014999.99999997 Hz.
    const double frequency = std::round(requireNumber(text, "frequency") * unitHz * StepsPerHz) / StepsPerHz;
    if (!(frequency > 0 && frequency <= HighestHz)) {
        throw LineError("the frequency " + shown(text) + " is not above 0 and up to 1000 GHz");
    }
    return frequency;
}

void setKrakenPosition(LoggedBearing& bearing, std::string_view latitude, std::string_view longitude)
{
    constexpr double HighestLatitude = 90;
    constexpr double HighestLongitude = 180;
    const double north = krakenNumberOrNone(latitude);
    const double east = krakenNumberOrNone(longitude);
    if (std::isnan(north) || std::isnan(east) || (north == 0 && east == 0)) {
        return;
    }
    if (std::abs(north) > HighestLatitude || std::abs(east) > HighestLongitude) {
        throw LineError("there is no position " + shown(latitude) + ", " + shown(longitude));
    }
    bearing.latitudeDeg = north;
    bearing.longitudeDeg = east;
}

bool KrakenRows::isRow(std::span<const std::string_view> fields)
{
    constexpr std::size_t DigitsOfTime = 13;
    return fields.size() >= FixedFields && fields[Field::Time].size() == DigitsOfTime &&
           areDigits(fields[Field::Time]) && parseNumber<double>(fields[Field::Angle]) &&
           parseNumber<double>(fields[Field::Frequency]) && !fields[Field::Antennas].empty() &&
           !parseNumber<double>(fields[Field::Antennas]);
}

LoggedBearing KrakenRows::parse(std::span<const std::string_view> fields)
{
    if (fields.size() < FixedFields) {
        throw LineError(std::to_string(fields.size()) + " fields are no line of a KrakenSDR, which has " +
                        std::to_string(FixedFields) + " and mostly " + std::to_string(Directions) + " more");
    }
    LoggedBearing bearing;
    bearing.time = krakenTime(fields[Field::Time]);
    bearing.frequencyHz = krakenFrequency(fields[Field::Frequency], 1);
    const double angle = requireNumber(fields[Field::Angle], "angle");
    if (std::abs(angle) > FullCircleDeg) {
        throw LineError("the angle " + shown(fields[Field::Angle]) + " is not within a circle");
    }
    bearing.azimuthDeg = azimuthOf(angle, isMirrored(azimuthOf(angle, false), fields.subspan(FixedFields)));
    bearing.quality = std::clamp(requireNumber(fields[Field::Confidence], "confidence"), 0.0, MostQuality);
    bearing.levelDb = krakenNumberOrNone(fields[Field::Power]);
    bearing.station = fields[Field::Station];
    setKrakenPosition(bearing, fields[Field::Latitude], fields[Field::Longitude]);
    const bool byCompass = fields[Field::HeadingBy] == "Compass";
    const double heading = krakenNumberOrNone(fields[byCompass ? Field::CompassHeading : Field::GpsHeading]);
    bearing.headingDeg = azimuthOf(heading, false);
    return bearing;
}

bool KrakenRows::isMirrored(double angleDeg, std::span<const std::string_view> output)
{
    if (m_mirror != Mirror::Auto) {
        return m_mirror == Mirror::Yes;
    }
    if (const auto values = readOutput(output)) {
        const bool atPeak = isAtPeak(*values, angleDeg);
        if (atPeak != isAtPeak(*values, azimuthOf(angleDeg, true))) {
            m_counterClockwise = atPeak;
            m_foundMirrored = m_foundMirrored || atPeak;
        }
    }
    return m_counterClockwise;
}

}  // namespace RecStation
