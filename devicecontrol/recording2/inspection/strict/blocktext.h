// Blocks of a recording that stand somewhere else than in its file.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "../../format/layout.h"

namespace Recording2::Inspection {

/// @return nothing for what is no header record, or more than fits into its area
[[nodiscard]] std::optional<Format::HeaderRecord> parseHeader(const std::string& text);

/// A type table and how many bytes it has; 0 where one of them is damaged or missing.
struct TypesText {
    std::vector<Format::TypeEntryRecord> entries;
    std::size_t bytes = 0;
};
/// The type table that a text begins with.
[[nodiscard]] TypesText parseTypes(const std::string& text);

}  // namespace Recording2::Inspection
