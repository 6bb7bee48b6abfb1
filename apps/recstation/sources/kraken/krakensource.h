// The source "kraken": bearings of a KrakenSDR direction finder as they come, over HTTP.
#pragma once

#include <memory>
#include <optional>

#include <QString>

#include "sources/bearings/krakenrow.h"
#include "sources/kraken/httpfetch.h"
#include "sources/offeredsource.h"

namespace RecStation {

/// What the command line says.
struct KrakenOptions {
    HttpUrl url;
    double intervalSeconds = 0.5;      ///< from asking to asking
    std::optional<double> headingDeg;  ///< true heading of azimuth 0; nothing: as the finder tells
    Mirror mirror = Mirror::Auto;
    bool noPosition = false;  ///< leave positions and headings out
    QString valuePath = "/Devices/Df1";
};

/// Publishes what "bearings" does (BearingsValues), bearing by bearing: each that has another time than the one before
/// of its frequency. Where the finder is away, the map is empty, and position and heading are unknown.
[[nodiscard]] std::unique_ptr<Source> makeKrakenSource(const KrakenOptions& options, const SourceRun& run);

}  // namespace RecStation
