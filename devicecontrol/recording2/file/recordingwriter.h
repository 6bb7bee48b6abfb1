// A new recording that is made of others, or of what is left of one: beside its name until it is whole.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <system/nativefile.h>

#include "../format/layout.h"
#include "files.h"

namespace Recording2 {

/// What stands after the records, in milliseconds since the start.
struct ClosingTables {
    std::span<const std::uint64_t> times;   ///< of each record; ascending
    std::span<const std::uint64_t> ranges;  ///< of the channel range table; ascending, each once
    std::map<std::uint64_t, std::string> bookmarks;
};

/// The steps are called in their order; after a failure the later ones do nothing. The file is "NAME.part" until it is
/// given its name, and removed where it is not. Other processes find it locked and leave it alone.
class RecordingWriter {
public:
    /// @param mode who may read the file
    RecordingWriter(std::filesystem::path output, System::FileMode mode);
    RecordingWriter(const RecordingWriter&) = delete;
    RecordingWriter& operator=(const RecordingWriter&) = delete;
    ~RecordingWriter() { static_cast<void>(discard()); }

    /// Makes the file. @param types the block of the type table, may be empty
    System::Error begin(const std::string& types);
    /// Appends a record; past the last position that the format can name, it fails. @param data not empty
    void add(std::int32_t code, std::string_view data);
    [[nodiscard]] std::size_t records() const { return m_starts.size(); }
    /// Writes the tables, and the header with their positions. @param header receives the positions
    void end(Format::HeaderRecord& header, const ClosingTables& tables);
    /// What was written is with the system then, or on the device. @return the first error of all steps
    System::Error close(bool fsync);
    /// Once what was written is as it should be. @param replace a file that has the name may go
    System::Error takeName(bool replace);
    /// Removes the file unless it has its name.
    System::Error discard();

    [[nodiscard]] bool good() const { return m_file->good(); }
    [[nodiscard]] const std::filesystem::path& part() const { return m_part; }
    [[nodiscard]] std::int64_t bytes() const { return m_bytes; }  ///< of the file, once it has ended

private:
    friend class FileAccessTestPeer;

    std::filesystem::path m_output;
    std::filesystem::path m_part;
    System::FileMode m_mode;
    bool m_made = false;
    std::unique_ptr<OutputFile> m_file;
    System::NativeFile m_lock;  // of the same file, for longer than it is written
    Format::Positions m_positions;
    std::vector<std::int32_t> m_starts;
    std::int64_t m_bytes = 0;
};

}  // namespace Recording2
