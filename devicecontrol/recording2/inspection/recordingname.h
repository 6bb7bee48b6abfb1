// What the name of a recording tells.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Recording2::Inspection {

/// When the recording began, milliseconds since 1970 UTC, by "...__YYYY-MM-DD__hh-mm-ss_UTC...".
[[nodiscard]] std::optional<std::uint64_t> startInName(const std::string& path);

/// The journal that belongs to a recording: "NAME.tmp.journal" for NAME.tmp and for NAME.rec.
[[nodiscard]] std::string journalOf(const std::string& recording);

}  // namespace Recording2::Inspection
