// The two streams of CFileAccess: a file that is appended to, and a file that is read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <span>
#include <vector>

#include "format/bytesource.h"
#include "journal.h"
#include "system/nativefile.h"

namespace Recording2 {

/// Create replaces an existing file, Update changes one in place and makes none.
enum class OpenMode : std::uint8_t { Create, Update };

/// A file being written through a buffer of its own or of a journal. After a failure it stays failed and writes nothing
/// more, unless it is resumed.
class OutputFile {
public:
    OutputFile(const std::filesystem::path& path, OpenMode mode);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile();  ///< closes

    /// Keeps what is not yet handed over in the journal's buffer, before anything was appended. Until the first seek,
    /// or null.
    void keepTailIn(Journal* journal);
    [[nodiscard]] bool lock() { return m_file.lock(); }  ///< against other processes, until it is closed

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
    void force();                          ///< Flushes, and forces the file to the device.
    void resumeAt(std::int64_t position);  ///< Forgets a failure and what was appended behind a position.
    void endHere();                        ///< Flushes, and ends the file at the position.
    bool close();                          ///< false when what was written did not reach the system; once

    static constexpr std::size_t SmallBytes = 256;

private:
    static constexpr std::size_t BufferBytes = std::size_t{256} * 1024;

    void appendPast(std::span<const char> bytes);
    void writeFullBuffer();
    void write(const char* bytes, std::size_t size);
    void startBuffer();

    // The buffer is handed over where the position is a multiple of its size: file systems take pieces that begin and
    // end at such places much faster. Behind that end there is room for what reserve gave.
    System::NativeFile m_file;
    std::vector<char> m_ownBuffer;
    char* m_buffer = nullptr;
    std::size_t m_used = 0;
    std::size_t m_end = BufferBytes;
    std::int64_t m_flushed = 0;  // position of the buffer's first byte
    System::Error m_error = 0;
    Journal* m_journal = nullptr;
};

/// A file being read.
class InputFile final : public Format::ByteSource {
public:
    explicit InputFile(const std::filesystem::path& path);

    [[nodiscard]] bool good() const { return m_file.isOpen(); }
    std::size_t readAt(std::int64_t offset, char* out, std::size_t size) override
    {
        return m_file.readAt(offset, out, size);
    }
    [[nodiscard]] std::int64_t size() override { return m_file.size(); }

private:
    System::NativeFile m_file;
};

}  // namespace Recording2
