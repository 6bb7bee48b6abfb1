// Metadata of IQ recordings in the SigMF format.
#pragma once

#include <string>

#include <QString>

#include "sources/iq/knownsamples.h"

namespace RecStation {

/// The file of samples that FILE.sigmf-meta describes: the one that it names ("core:dataset"), else FILE.sigmf-data.
/// @throws std::runtime_error also where it says that there are none
[[nodiscard]] QString samplesOfSigMf(const QString& file);

/// Reads FILE.sigmf-meta of a recording with one channel. The format is given as it is written there.
/// @param format of the samples, by its name, where that is known better; else empty
/// @throws std::runtime_error with what is wrong with the file
[[nodiscard]] KnownSamples readSigMf(const QString& file, const std::string& format = "");

}  // namespace RecStation
