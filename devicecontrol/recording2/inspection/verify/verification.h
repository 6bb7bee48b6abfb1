// Every check that the format allows, for the tools of this project.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "../inspection.h"

namespace Recording2::Inspection {

/// Damage: no recorder and no rewriting leaves this behind. Note: odd, but a file may hold it.
enum class Severity : std::uint8_t { Damage, Note };

struct Remark {
    std::int64_t offset = 0;  ///< where in the file
    Severity severity = Severity::Damage;
    std::string text;  ///< one sentence in English
};

struct Verification {
    Readability readability = Readability::Ok;
    std::string problem;  ///< one sentence when the file cannot be read; there are no remarks then
    std::int64_t fileSize = 0;
    std::uint64_t records = 0;
    std::vector<Remark> remarks;  ///< by offset

    [[nodiscard]] std::size_t count(Severity severity) const;
};

/// Reads the whole file and checks it. What the findings of inspect and walkRecords tell is among the damage.
Verification verify(const std::string& path, const Progress& progress = {});

}  // namespace Recording2::Inspection
