// Reading the classes TPV, ATT, VERSION, DEVICES and ERROR; SKY and all others say nothing that is recorded.
#include "sources/gpsd/gpsdreport.h"

#include <cmath>
#include <stdexcept>

#include <nlohmann/json.hpp>

#include "input/timetext.h"

namespace RecStation {

namespace {

using GpsdJson = nlohmann::json;

constexpr double GpsdFullCircle = 360;

// What gpsd never sends.
struct NoReport : std::runtime_error {
    using std::runtime_error::runtime_error;
};

const GpsdJson* member(const GpsdJson& object, const char* key)
{
    const auto found = object.find(key);
    return found == object.end() ? nullptr : &*found;
}

std::string fieldOf(const GpsdJson& object, const char* key)
{
    const GpsdJson* value = member(object, key);
    return value != nullptr && value->is_string() ? value->get<std::string>() : std::string();
}

std::optional<double> numberOf(const GpsdJson& object, const char* key, double lowest, double highest)
{
    const GpsdJson* value = member(object, key);
    if (value == nullptr) {
        return std::nullopt;
    }
    const double number = value->is_number() ? value->get<double>() : std::nan("");
    if (!(number >= lowest && number <= highest)) {
        throw NoReport(key);
    }
    return number;
}

std::optional<double> angleOf(const GpsdJson& object, const char* key)
{
    const auto angle = numberOf(object, key, 0, GpsdFullCircle);
    return angle && *angle == GpsdFullCircle ? 0 : angle;
}

// Releases before 3.0 tell seconds since 1970.
std::optional<unsigned long long> timeOf(const GpsdJson& object)
{
    constexpr double PerSecond = 1e6;
    constexpr double Latest = 1e11;
    const GpsdJson* value = member(object, "time");
    if (value == nullptr || !value->is_number()) {
        return value == nullptr ? std::nullopt : parseIsoTime(fieldOf(object, "time"));
    }
    const auto seconds = value->get<double>();
    const long long time = seconds > 0 && seconds < Latest ? std::llround(seconds * PerSecond) : 0;
    return isRecordable(time) ? std::optional(static_cast<unsigned long long>(time)) : std::nullopt;
}

void readFix(const GpsdJson& object, GpsdReport& report)
{
    constexpr double HighestLatitude = 90;
    constexpr double HighestLongitude = 180;
    constexpr double Deepest = -1e5;
    constexpr double Highest = 1e8;
    constexpr double Fastest = 1e5;
    constexpr double MostVariation = 180;
    constexpr int MostDimensions = 3;
    report.dimensions = static_cast<int>(numberOf(object, "mode", 0, MostDimensions).value_or(0));
    if (report.dimensions < 2) {
        return;
    }
    const auto latitude = numberOf(object, "lat", -HighestLatitude, HighestLatitude);
    const auto longitude = numberOf(object, "lon", -HighestLongitude, HighestLongitude);
    if (latitude && longitude) {
        report.fix.latitudeDeg = latitude;
        report.fix.longitudeDeg = longitude;
    }
    report.fix.altitudeM = numberOf(object, "altMSL", Deepest, Highest);
    if (!report.fix.altitudeM && member(object, "altHAE") == nullptr) {
        report.fix.altitudeM = numberOf(object, "alt", Deepest, Highest);  // releases before 3.20
    }
    report.fix.speedMps = numberOf(object, "speed", 0, Fastest);
    // Receivers that do not know it say 999.9, which gpsd hands on.
    const GpsdJson* variation = member(object, "magvar");
    const double angle = variation != nullptr && variation->is_number() ? variation->get<double>() : std::nan("");
    if (std::abs(angle) <= MostVariation) {
        report.variationDeg = angle;
    }
}

void readAttitude(const GpsdJson& object, GpsdReport& report)
{
    constexpr double RightAngle = 90;
    constexpr double HalfCircle = 180;
    report.fix.headingDeg = angleOf(object, "heading");
    report.magneticDeg = angleOf(object, "mheading");
    report.fix.pitchDeg = numberOf(object, "pitch", -RightAngle, RightAngle);
    report.fix.rollDeg = numberOf(object, "roll", -HalfCircle, HalfCircle);
}

void readDevices(const GpsdJson& object, GpsdReport& report)
{
    const GpsdJson* list = member(object, "devices");
    if (list == nullptr || !list->is_array()) {
        throw NoReport("devices");
    }
    for (const GpsdJson& device : *list) {
        if (device.is_object()) {
            report.devices.push_back(fieldOf(device, "path"));
        }
    }
}

GpsdReport readReport(const GpsdJson& object)
{
    const std::string kind = fieldOf(object, "class");
    if (kind.empty()) {
        throw NoReport("class");
    }
    GpsdReport report;
    report.device = fieldOf(object, "device");
    report.timeUs = timeOf(object);
    if (kind == "TPV") {
        report.kind = GpsdReport::Kind::Fix;
        readFix(object, report);
    } else if (kind == "ATT") {
        report.kind = GpsdReport::Kind::Attitude;
        readAttitude(object, report);
    } else if (kind == "VERSION") {
        report.kind = GpsdReport::Kind::Version;
        report.text = fieldOf(object, "release");
    } else if (kind == "DEVICES") {
        report.kind = GpsdReport::Kind::Devices;
        readDevices(object, report);
    } else if (kind == "ERROR") {
        report.kind = GpsdReport::Kind::Error;
        report.text = fieldOf(object, "message");
    }
    return report;
}

}  // namespace

std::optional<GpsdReport> parseGpsdReport(std::string_view line)
{
    // The longest of all, of which nothing is recorded.
    constexpr std::string_view Sky = R"({"class":"SKY",)";
    if (line.substr(0, Sky.size()) == Sky) {
        return GpsdReport();
    }
    const GpsdJson object = GpsdJson::parse(line.begin(), line.end(), nullptr, false);
    if (!object.is_object()) {
        return std::nullopt;
    }
    try {
        return readReport(object);
    } catch (const NoReport&) {
        return std::nullopt;
    }
}

}  // namespace RecStation
