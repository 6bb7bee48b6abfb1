// The "gpsd" source: where the station is and how it lies, from a running gpsd.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "live/address.h"
#include "sources/offeredsource.h"
#include "sources/source.h"

namespace RecStation {

/// What the command line says.
struct GpsdOptions {
    Address address;
    std::string device;                  ///< as gpsd names it; empty: the first that tells something
    std::optional<double> variationDeg;  ///< of compasses; east is positive
    QString valuePath;                   ///< of a device to be named after the peer; empty: none
};

/// Publishes what the source "nmea" does. It lives until the process is asked to stop.
std::unique_ptr<Source> makeGpsdSource(const GpsdOptions& options, const SourceRun& run);

}  // namespace RecStation
