// The journal of a recording that is being written, read while its recorder changes it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <system/nativefile.h>
#include "../../format/bytesource.h"
#include "../../format/journal.h"
#include "../inspection.h"
#include "recordwindow.h"

namespace Recording2::Inspection {

/// Entries are taken by their numbers, wherever they stand by now: in their slot, or among those that were handed over.
/// A slot in which another round's entry stands, or half of one, is none for the number that is looked for. A record's
/// bytes are those in the file in front of the tail's position and those in the tail; they count when they give the
/// entry's checksum.
class GrowingJournal final : private Format::ByteSource {
public:
    /// @param recording "NAME.tmp", open; must outlive this
    explicit GrowingJournal(const System::NativeFile& recording) : m_recording(recording) {}

    System::Error open(const std::filesystem::path& path) { return m_file.open(path, System::Access::Read); }
    /// Reads the state page. @return false when what stands there is no journal (yet)
    bool refresh();

    /// The next record. @param isLast nobody writes any more: what cannot be read now never can
    bool next(Record& record, bool isLast);
    /// Of the next record.
    [[nodiscard]] std::uint64_t number() const { return m_number; }
    void startAt(std::uint64_t number) { m_number = number; }

    [[nodiscard]] std::uint64_t unreadable() const { return m_unreadable; }
    [[nodiscard]] const Header& header() const { return m_header; }
    [[nodiscard]] const std::vector<TypeEntry>& types() const { return m_types; }

private:
    enum class Found : std::uint8_t { Entry, Nothing, Damage };

    void takeHeader();
    void takeTypes();
    Found find(std::uint64_t number, Format::Journal::Entry& entry);
    [[nodiscard]] bool isBuffered(std::uint64_t number) const;
    bool loadEntries(std::uint64_t number);
    bool readRecord(const Format::Journal::Entry& entry, Record& record);
    [[nodiscard]] bool isInFile(std::uint64_t number);
    void leaveOut();

    // The bytes of the recording, those of the tail behind those of the file.
    std::size_t readAt(std::int64_t offset, char* out, std::size_t size) override;
    [[nodiscard]] std::int64_t size() override;

    const System::NativeFile& m_recording;
    System::NativeFile m_file;
    Format::Journal::Identity m_identity;
    std::string m_page;
    std::uint64_t m_handed = 0;
    std::int64_t m_tailStart = 0;
    Header m_header;
    std::string m_headerText;
    std::vector<TypeEntry> m_types;

    std::uint64_t m_number = 0;
    std::uint64_t m_unreadable = 0;
    std::string m_entries;  // as they were when they were read
    std::uint64_t m_firstEntry = 0;
    std::size_t m_atOnce = 0;  // entries: more while there are many
    RecordWindow m_window;
};

}  // namespace Recording2::Inspection
