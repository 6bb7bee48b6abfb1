// The "rig" source: a receiver behind Hamlib's rigctld.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include <QString>

#include "live/address.h"
#include "sources/offeredsource.h"
#include "sources/source.h"

namespace RecStation {

constexpr std::uint16_t RigPort = 4532;

/// What the command line says.
struct RigOptions {
    Address address{"localhost", RigPort};  ///< of rigctld
    double intervalSeconds = 0.5;           ///< from an answer to the next question
    std::optional<double> s9Dbm;            ///< what S9 is in dBm; nothing: levels are dB over S9
    std::string multicast;                  ///< group and port of rigctld's packets; empty: none are listened to
};

/// Publishes /FREQUENCY (Hz), Mon/DEMODULATION, Mon/BANDWIDTH (Hz) and /LEVEL of the receiver of the configuration;
/// with multicast also Scn/RfSpectrum and its limits.
[[nodiscard]] std::unique_ptr<Source> makeRigSource(RigOptions options, const SourceRun& run);

}  // namespace RecStation
