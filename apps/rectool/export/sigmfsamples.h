// A file of IQ samples, as its SigMF metadata or options describe it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "export.h"
#include "printing/jsonvalue.h"

namespace RecTool {

struct IqSamples {
    std::string file;
    std::string metadataFile;  ///< that stands beside them; empty without
    std::string dataType;      ///< "ci16_le"
    double rateHz = 0;
    std::uint64_t count = 0;
    std::optional<std::int64_t> firstUs;  ///< time of the first one, since 1970 UTC
    Json metadata;                        ///< all that the file beside them says; null without
};

/// Finds the samples and what is known of them. @return nothing, told, where that is not enough
[[nodiscard]] std::optional<IqSamples> findSamples(const SigMfExportOptions& options);

}  // namespace RecTool
