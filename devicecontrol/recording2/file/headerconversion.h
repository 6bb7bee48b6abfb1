// Between the header of the interface and that of the file.
#pragma once

#include "../format/layout.h"
#include "../recordmodel.h"

namespace Recording2 {

/// Times are cut to milliseconds.
[[nodiscard]] Format::HeaderRecord toRecord(const CHeaderData& header, const Format::Positions& positions);
void fromRecord(const Format::HeaderRecord& record, CHeaderData& header);

}  // namespace Recording2
