// The file that is made of what is left of a recording.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <system/nativefile.h>
#include "../../file/files.h"
#include "../../format/layout.h"
#include "../inspection.h"
#include "repairedtimes.h"

namespace Recording2::Inspection {

/// What goes into the new file, beside the records.
struct Found {
    Format::HeaderRecord header;
    std::string types;  // the block as it stands in the file
    bool stopKnown = false;
    std::uint64_t lengthMs = 0;  // of the recording, 0 when it is not known
};

/// Takes records as they are found, and then writes what closing writes. Until it is finished it stands beside its
/// name, "NAME.part"; a file that is not finished is removed.
class RecoveredFile {
public:
    /// @param mode the original's: whoever may read it may read what is made of it
    RecoveredFile(const std::string& output, System::FileMode mode);
    RecoveredFile(const RecoveredFile&) = delete;
    RecoveredFile& operator=(const RecoveredFile&) = delete;
    ~RecoveredFile();

    void begin(const std::string& types);
    void add(const Record& record, std::optional<std::uint64_t> time, bool channelRange);
    [[nodiscard]] std::size_t records() const { return m_starts.size(); }
    /// What closing writes. @return the times that the records got
    RepairedTimes end(Found& found, std::uint64_t periodMs);
    /// Reads the file back and gives it its name.
    /// @return why the file could not be written or given its name; empty when it was
    std::string finish();
    [[nodiscard]] std::int64_t bytes() const { return m_bytes; }
    [[nodiscard]] bool good() const { return m_file->good(); }

private:
    static constexpr System::FileMode OwnerReadsAndWrites = 0600;

    void makePart();
    [[nodiscard]] std::int32_t here() const;
    void writeTables(const std::vector<std::uint64_t>& times);

    std::string m_output;
    std::string m_part;
    System::FileMode m_mode;
    bool m_made = false;
    std::unique_ptr<OutputFile> m_file;
    Format::Positions m_positions;
    std::vector<std::int32_t> m_starts;
    std::vector<std::optional<std::uint64_t>> m_times;
    std::vector<bool> m_ranges;
    std::int64_t m_bytes = 0;
};

}  // namespace Recording2::Inspection
