// The two streams of CFileAccess: a file that is appended to, and a file that is read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <utility>

#include <system/lockfile.h>
#include <system/nativefile.h>
#include "../format/bytesource.h"
#include "journal.h"
#include "rewriting.h"

namespace Recording2 {

/// Create replaces an existing file, New fails where the name is taken. Update changes one in place, all at once when
/// the change is stored, and makes none; it waits until no other process changes the file.
enum class OpenMode : std::uint8_t { Create, New, Update };

/// A file being written through a buffer of its own or of a journal. After a failure it stays failed and writes nothing
/// more, unless it is resumed.
class OutputFile {
public:
    OutputFile(const std::filesystem::path& path, OpenMode mode, System::FileMode fileMode = System::DefaultFileMode);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile();  ///< Closes; a change that was not stored is none.

    /// Keeps what is not yet handed over in the journal's buffer, before anything was appended. Until the first seek,
    /// or null.
    void keepTailIn(Journal* journal);
    [[nodiscard]] System::Error lock()
    {
        return System::lockPatiently(m_file);
    }  ///< against other processes, until it is closed
    /// Whether a name is still that of this file, and whether it leads to it, while it is open.
    [[nodiscard]] bool isAt(const std::filesystem::path& path) const { return m_file.isAt(path); }
    [[nodiscard]] bool isReachedBy(const std::filesystem::path& path) const { return m_file.isReachedBy(path); }

    [[nodiscard]] bool good() const { return m_error == 0; }
    [[nodiscard]] System::Error error() const { return m_error; }  ///< the first one
    [[nodiscard]] std::int64_t position() const { return m_flushed + static_cast<std::int64_t>(m_used); }
    void append(std::span<const char> bytes)
    {
        if (bytes.size() < m_end - m_used) {
            std::memcpy(m_buffer + m_used, bytes.data(), bytes.size());
            m_used += bytes.size();
        } else {
            appendPast(bytes);
        }
    }
    /// Room for SmallBytes to be written in place; commit says how many were.
    [[nodiscard]] char* reserve() { return m_buffer + m_used; }
    void commit(const char* end)
    {
        m_used = static_cast<std::size_t>(end - m_buffer);
        if (m_used >= m_end) {
            writeFullBuffer();
        }
    }
    void fail(System::Error error) { m_error = m_error == 0 ? error : m_error; }  ///< as if writing had failed
    void seek(std::int64_t position);                                             ///< A negative position is a failure.
    void seekToEnd();
    void flush();                          ///< Hands what is buffered to the system.
    void fsync();                          ///< Flushes, and makes the device keep it.
    void resumeAt(std::int64_t position);  ///< Forgets a failure and what was appended after a position.
    void endHere();                        ///< Flushes, and ends the file at the position.
    bool store();  ///< Flushes, and changes the file of Update so far, or leaves it as it is. @return good()
    bool close();  ///< false when what was written did not reach the system; once
    /// The file of Update with the change, as far as it was flushed; null for Create.
    [[nodiscard]] std::shared_ptr<const Overlay> changed() const
    {
        return m_rewriting ? m_rewriting->state() : nullptr;
    }

    static constexpr std::size_t SmallBytes = 256;

private:
    static constexpr std::size_t PieceBytes = std::size_t{256} * 1024;
    static constexpr std::size_t LargePieceBytes = 4 * PieceBytes;
    static constexpr std::int64_t LargePiecesFrom = std::int64_t{8} * LargePieceBytes;
    static constexpr std::int64_t LeastAhead = LargePieceBytes;
    static constexpr std::int64_t MostAhead = std::int64_t{16} * LargePieceBytes;

    /// Memory that begins with one is copied a fifth faster by the system.
    struct alignas(64) CacheLine {
        char bytes[64];
    };

    void appendPast(std::span<const char> bytes);
    void writeFullBuffer();
    void write(const char* bytes, std::size_t size);
    void startBuffer();
    void allocateFor(std::int64_t end);

    // The buffer is handed over where the position is a multiple of a piece: file systems take pieces that begin and
    // end at such places much faster, and large ones faster still. What is not in a journal is lost with the process,
    // so pieces are large where the file is much larger. After that end there is room for what reserve gave.
    System::NativeFile m_file;
    std::unique_ptr<Rewriting> m_rewriting;    // instead of the file
    std::unique_ptr<CacheLine[]> m_ownBuffer;  // null while that of a journal is used
    char* m_buffer = nullptr;
    std::size_t m_used = 0;
    std::size_t m_end = PieceBytes;
    std::int64_t m_flushed = 0;       // position of the buffer's first byte
    std::int64_t m_allocatedEnd = 0;  // of the space in front of what was written
    System::Error m_error = 0;
    Journal* m_journal = nullptr;
};

/// A file being read: as it was before a change that is not finished.
class InputFile final : public Format::ByteSource {
public:
    /// What the file's size is while others append to it.
    enum class Size : std::uint8_t { Now, AtOpening };
    explicit InputFile(const std::filesystem::path& path, Size size = Size::Now);

    [[nodiscard]] bool good() const { return m_error == 0; }
    [[nodiscard]] System::Error error() const { return m_error; }  ///< of opening it
    std::size_t readAt(std::int64_t offset, char* out, std::size_t size) override;
    [[nodiscard]] std::int64_t size() override { return m_keptSize.has_value() ? *m_keptSize : sizeNow(); }
    /// Whether bytes that the file has were not given, so that what was read seemed to end early.
    [[nodiscard]] bool readFailed() const { return m_readFailed; }
    /// Reads the file with a change; null: as it is.
    void show(std::shared_ptr<const Overlay> overlay) { m_overlay = std::move(overlay); }
    /// Whether nobody wrote into the file since it was opened: what was read of it belongs together.
    [[nodiscard]] bool isUnchanged() const
    {
        System::FileIdentity now;
        return m_file.identity(now) == 0 && now.bytes == m_atFirst.bytes && now.changedNs == m_atFirst.changedNs;
    }

private:
    [[nodiscard]] std::int64_t sizeNow() const { return m_overlay == nullptr ? m_file.size() : m_overlay->size(); }

    System::NativeFile m_file;
    System::Error m_error = 0;
    std::optional<std::int64_t> m_keptSize;
    bool m_readFailed = false;
    System::FileIdentity m_atFirst;
    std::shared_ptr<const Overlay> m_overlay;
};

}  // namespace Recording2
