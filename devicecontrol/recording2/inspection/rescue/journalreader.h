// The journal beside a recording that was not closed, as it was left.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "../../format/bytesource.h"
#include "../../format/journal.h"
#include "../../format/layout.h"

namespace Recording2::Inspection {

/// What a journal says. Everything in it was checked; what was damaged is absent.
struct JournalContent {
    Format::Journal::Identity identity;
    std::optional<Format::HeaderRecord> header;
    std::optional<Format::Journal::Types> types;
    /// By number. The last one is sound. 24 bytes each.
    std::vector<Format::Journal::Entry> entries;
    std::optional<std::uint64_t> stopMs;  ///< since 1970 UTC, when the last entry was accepted
    bool complete = false;                ///< the entries end where the recorder's ended, and all are sound
    std::optional<std::int64_t> tailStart;
    std::string tail;  ///< the bytes of the recording from tailStart on; after the last record they mean nothing
};

/// Reads the journal at a path. @return nothing when there is none, or nothing in it can be believed
std::optional<JournalContent> readJournal(const std::string& path);

/// How far a recording has come whose journal lies at a path: the position of its last record. Reads a few pages
/// however long the recording is. @return nothing when there is no journal, or no record
std::optional<std::int64_t> lastPosition(const std::string& path);

/// The bytes of the recording: those of the file, and after them those in the journal.
class UnclosedBytes final : public Format::ByteSource {
public:
    /// Both must outlive this.
    UnclosedBytes(Format::ByteSource& file, const JournalContent& journal);
    std::size_t readAt(std::int64_t offset, char* out, std::size_t size) override;
    [[nodiscard]] std::int64_t size() override { return m_size; }

private:
    Format::ByteSource& m_file;
    const JournalContent& m_journal;
    std::int64_t m_tailStart;
    std::int64_t m_size;
};

}  // namespace Recording2::Inspection
