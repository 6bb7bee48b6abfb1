// The checks of a file, each a file of its own, and the remarks that they make.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "../../file/files.h"
#include "verification.h"

namespace Recording2::Inspection {

/// Remarks in the order in which they are made.
class Remarks {
public:
    explicit Remarks(std::vector<Remark>& all) : m_all(all) {}

    void damage(std::int64_t offset, std::string text) { m_all.push_back({offset, Severity::Damage, std::move(text)}); }
    void note(std::int64_t offset, std::string text) { m_all.push_back({offset, Severity::Note, std::move(text)}); }
    void damage(const std::vector<Finding>& findings)
    {
        for (const Finding& finding : findings) {
            damage(finding.offset, finding.text);
        }
    }

private:
    std::vector<Remark>& m_all;
};

/// "1 byte follows", "2 bytes follow"
inline std::string numbered(std::uint64_t number, const char* one, const char* many)
{
    return std::to_string(number) + ' ' + (number == 1 ? one : many);
}

/// Whether what the fields of the header say can be, and whether the area after its record is as it was reserved.
void checkHeader(InputFile& source, const Summary& summary, Remarks& remarks);
/// Whether the blocks stand one after the other, and what stands where no block is.
void checkGaps(InputFile& source, const Summary& summary, Remarks& remarks);

}  // namespace Recording2::Inspection
