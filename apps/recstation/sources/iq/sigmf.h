// Metadata of IQ recordings in the SigMF format.
#pragma once

#include <optional>
#include <string>

#include <QString>

namespace RecStation {

/// What a metadata file says; everything but the data type may be missing.
struct SigMfMetadata {
    std::string dataType;          ///< as written, "ci16_le"
    std::optional<double> rateHz;  ///< positive
    std::optional<double> centreHz;
    std::optional<unsigned long long> startTime;  ///< microseconds since 1970 UTC
};

/// Reads FILE.sigmf-meta of a recording with one channel and one capture.
/// @throws std::runtime_error with what is wrong with the file
SigMfMetadata readSigMf(const QString& file);

}  // namespace RecStation
