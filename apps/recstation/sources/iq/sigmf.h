// Metadata of IQ recordings in the SigMF format.
#pragma once

#include <QString>

#include "sources/iq/knownsamples.h"

namespace RecStation {

/// Reads FILE.sigmf-meta of a recording with one channel. The format is given as it is written there.
/// @throws std::runtime_error with what is wrong with the file
KnownSamples readSigMf(const QString& file);

}  // namespace RecStation
