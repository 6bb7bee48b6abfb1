// A line or a feature an emission.
#include "emissions.h"

#include <algorithm>
#include <cmath>
#include <iostream>

#include <terminaltext/quantity.h>

#include "printing/json.h"
#include "printing/output.h"
#include "printing/text.h"

namespace RecTool {

namespace {

/// Where the station was when the emission was strongest; where that was not recorded, where its bearing was taken.
std::optional<Geo::Position> placeOf(const FoundEmission& emission)
{
    return emission.place || !emission.bearing ? emission.place : emission.bearing->place;
}

std::string bearingText(const FoundEmission& emission)
{
    if (!emission.bearing) {
        return "-";
    }
    return fixed(emission.bearing->azimuthDeg, 1) + (emission.bearing->isTrue ? "°" : "° rel");
}

std::string placeText(const FoundEmission& emission)
{
    constexpr int Digits = 5;
    const auto place = placeOf(emission);
    return place ? fixed(place->latitudeDeg, Digits) + ' ' + fixed(place->longitudeDeg, Digits) : "-";
}

void printEmissionTable(const EmissionsOptions& options, const Recordings& recordings,
                        const std::vector<Spectrum>& spectra, const FoundEmissions& found)
{
    const bool hasBearing =
        std::any_of(found.all.begin(), found.all.end(), [](const auto& emission) { return emission.bearing; });
    const bool hasPlace =
        std::any_of(found.all.begin(), found.all.end(), [](const auto& emission) { return placeOf(emission); });
    std::string columns = "rrrrrrr";
    std::vector<std::string> heading{"Start", "Stop", "Centre", "Bandwidth", "Max", "Mean", "Sweeps"};
    const auto addColumn = [&](bool isShown, char align, const char* name) {
        if (isShown) {
            columns.push_back(align);
            heading.emplace_back(name);
        }
    };
    addColumn(hasBearing, 'r', "Bearing");
    addColumn(hasPlace, 'r', "Position");
    addColumn(true, 'l', "Spectrum");
    Table table(columns, heading);
    ClockText clock(timeFormOf(options.time), recordings.startMs());
    for (const FoundEmission& emission : found.all) {
        std::vector<std::string> row{momentText(clock, emission.startMs),
                                     momentText(clock, emission.stopMs),
                                     frequency(emission.centreHz()),
                                     frequency(emission.band.width(), 4),
                                     fixed(emission.highest, 2),
                                     fixed(emission.mean, 2),
                                     grouped(emission.sweeps)};
        if (hasBearing) {
            row.push_back(bearingText(emission));
        }
        if (hasPlace) {
            row.push_back(placeText(emission));
        }
        const Spectrum& spectrum = spectra[emission.spectrum];
        row.push_back(ofDevice(recordings.tracks()[spectrum.type.track].device, spectrum.keyword));
        table.add(std::move(row));
    }
    std::cout << counted(found.all.size(), "emission") << " in " << counted(found.sweeps, "sweep") << ", levels in "
              << oneLine(options.unit) << '\n';
    if (!found.all.empty()) {
        table.print();
    }
}

void printEmissionCsv(const EmissionsOptions& options, const Recordings& recordings,
                      const std::vector<Spectrum>& spectra, const FoundEmissions& found)
{
    const bool isOffset = options.time == "offset";
    std::cout << (isOffset ? "start_ms,stop_ms" : "start,stop")
              << ",duration_ms,centre_hz,bandwidth_hz,max,mean,sweeps,latitude_deg,longitude_deg,bearing_deg,"
                 "bearing_is_true,bearing_quality,bearings,device,keyword,first_file,first_position,last_file,"
                 "last_position\n";
    ClockText clock(timeFormOf(options.time), recordings.startMs());
    const auto time = [&](double ms) { return isOffset ? TerminalText::shortest(ms) : momentText(clock, ms); };
    const auto number = [](double value) { return std::isfinite(value) ? TerminalText::shortest(value) : ""; };
    for (const FoundEmission& emission : found.all) {
        const Spectrum& spectrum = spectra[emission.spectrum];
        const auto place = placeOf(emission);
        std::string line = time(emission.startMs) + ',' + time(emission.stopMs) + ',' +
                           number(emission.stopMs - emission.startMs) + ',' + number(thousandths(emission.centreHz())) +
                           ',' + number(thousandths(emission.band.width())) + ',' +
                           number(hundredths(emission.highest)) + ',' + number(hundredths(emission.mean)) + ',' +
                           std::to_string(emission.sweeps) + ',';
        line += place ? number(placeDegrees(place->latitudeDeg)) + ',' + number(placeDegrees(place->longitudeDeg)) + ','
                      : ",,";
        if (const auto& bearing = emission.bearing) {
            line += number(hundredths(bearing->azimuthDeg)) + (bearing->isTrue ? ",1," : ",0,") +
                    number(bearing->quality) + ',' + std::to_string(bearing->count) + ',';
        } else {
            line += ",,,0,";
        }
        line += csvText(recordings.tracks()[spectrum.type.track].device) + ',' + csvText(spectrum.keyword);
        for (const RecordName* record : {&emission.first, &emission.last}) {
            line += ',' + csvText(shownName(recordings.fileOf(record->part))) + ',' + std::to_string(record->position);
        }
        std::cout << line << '\n';
    }
}

Json recordNameJson(const Recordings& recordings, const RecordName& record)
{
    return {
        {"file", shownName(recordings.fileOf(record.part))}, {"position", record.position}, {"timeMs", record.timeMs}};
}

Json emissionBearingJson(const Recordings& recordings, const EmissionBearing& bearing)
{
    return {{"azimuthDeg", hundredths(bearing.azimuthDeg)},
            {"isTrue", bearing.isTrue},
            {"quality", bearing.quality},
            {"bearings", bearing.count},
            {"atMs", bearing.momentMs},
            {"record", recordNameJson(recordings, bearing.record)}};
}

Json emissionJson(const Recordings& recordings, const std::vector<Spectrum>& spectra, const FoundEmission& emission)
{
    const Spectrum& spectrum = spectra[emission.spectrum];
    Json json = {{"startMs", emission.startMs},
                 {"stopMs", emission.stopMs},
                 {"centreHz", thousandths(emission.centreHz())},
                 {"bandwidthHz", thousandths(emission.band.width())},
                 {"max", hundredths(emission.highest)},
                 {"maxMs", emission.highestMs},
                 {"mean", hundredths(emission.mean)},
                 {"sweeps", emission.sweeps},
                 {"device", recordings.tracks()[spectrum.type.track].device},
                 {"keyword", spectrum.keyword},
                 {"type", spectrum.type.code}};
    const auto place = placeOf(emission);
    json["latitudeDeg"] = place ? Json(placeDegrees(place->latitudeDeg)) : Json();
    json["longitudeDeg"] = place ? Json(placeDegrees(place->longitudeDeg)) : Json();
    json["bearing"] = emission.bearing ? emissionBearingJson(recordings, *emission.bearing) : Json();
    json["first"] = recordNameJson(recordings, emission.first);
    json["last"] = recordNameJson(recordings, emission.last);
    json["strongest"] = recordNameJson(recordings, emission.strongest);
    return json;
}

/// What the emissions were found in, and how.
Json aboutEmissions(const EmissionsOptions& options, const Recordings& recordings, const FoundEmissions& found)
{
    Json about = {
        {"files", shownNames(options.files)}, {"startMsSince1970", recordings.startMs()}, {"unit", options.unit}};
    const bool isFixed = !options.threshold.empty();
    about[isFixed ? "threshold" : "aboveNoise"] =
        isFixed ? Json(std::strtod(options.threshold.c_str(), nullptr)) : Json(options.aboveDb);
    about["sweeps"] = found.sweeps;
    return about;
}

}  // namespace

void printEmissions(const EmissionsOptions& options, const Recordings& recordings, const std::vector<Spectrum>& spectra,
                    const FoundEmissions& found)
{
    if (options.csv) {
        return printEmissionCsv(options, recordings, spectra, found);
    }
    if (!options.json) {
        return printEmissionTable(options, recordings, spectra, found);
    }
    writeEmissionsJson(options, recordings, spectra, found, std::cout);
}

void writeEmissionsJson(const EmissionsOptions& options, const Recordings& recordings,
                        const std::vector<Spectrum>& spectra, const FoundEmissions& found, std::ostream& out)
{
    std::string head = aboutEmissions(options, recordings, found).dump();
    head.pop_back();
    out << head << ",\"emissions\":[";
    const char* comma = "\n";
    for (const FoundEmission& emission : found.all) {
        out << comma << emissionJson(recordings, spectra, emission).dump();
        comma = ",\n";
    }
    out << "]}\n";
}

std::size_t writeEmissionFeatures(const EmissionsOptions& options, const Recordings& recordings,
                                  const std::vector<Spectrum>& spectra, const FoundEmissions& found,
                                  const std::function<void(const std::string&)>& write)
{
    std::string head = aboutEmissions(options, recordings, found).dump();
    head.front() = ',';
    head.pop_back();
    write("{\"type\":\"FeatureCollection\"" + head + ",\"features\":[");
    const char* comma = "\n";
    std::size_t left = 0;
    for (const FoundEmission& emission : found.all) {
        const auto place = placeOf(emission);
        if (!place) {
            ++left;
            continue;
        }
        const Json point = {
            {"type", "Point"},
            {"coordinates", Json::array({placeDegrees(place->longitudeDeg), placeDegrees(place->latitudeDeg)})}};
        const Json feature = {
            {"type", "Feature"}, {"geometry", point}, {"properties", emissionJson(recordings, spectra, emission)}};
        write(comma + feature.dump());
        comma = ",\n";
    }
    write("]}\n");
    return left;
}

}  // namespace RecTool
