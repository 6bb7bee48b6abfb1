// What receivers' programs tell in the names that they give their files.
#pragma once

#include <QString>

#include "sources/iq/knownsamples.h"

namespace RecStation {

/// Understands these forms, with anything around the parts:
/// - ..._20200102_030405Z_7100kHz_...  (day and time in UTC, also without Z; Hz, kHz, MHz or GHz)
/// - gqrx_20200102_030405_7100000_1800000_fc  (centre and rate in Hz, samples as cf32_le)
/// - ..._433.92M_250k  (centre and rate)
/// - 20200102T030405Z_7100000_..._iq  (time in UTC, centre in Hz)
/// - ..._7100000Hz_03-04-05_02-01-2020  (local time and day)
/// - ...-20200102_030405-433_92MHz-1MSps-...  (local time, centre and rate)
/// @param name of a file, without folder and suffix
[[nodiscard]] KnownSamples knownByName(const QString& name);

}  // namespace RecStation
