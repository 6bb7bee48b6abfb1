#include "files.h"

#include <cstring>

#include "filenames.h"

namespace Recording2 {

OutputFile::OutputFile(const std::string& path, OpenMode mode) : m_buffer(BufferBytes + SmallBytes)
{
    m_stream.rdbuf()->pubsetbuf(nullptr, 0);  // the buffer is ours
    m_stream.open(FileNames::native(path),
                  std::ios::binary | std::ios::out | (mode == OpenMode::Create ? std::ios::trunc : std::ios::in));
    m_good = m_stream.good();
}

OutputFile::~OutputFile()
{
    close();
}

// At least as much as the buffer has room for.
void OutputFile::appendPast(std::span<const char> bytes)
{
    while (bytes.size() >= m_end - m_used) {
        const std::size_t part = m_end - m_used;
        if (m_used == 0) {  // no need to copy it first
            write(bytes.data(), part);
            startBuffer();
        } else {
            std::memcpy(m_buffer.data() + m_used, bytes.data(), part);
            m_used += part;
            flush();
        }
        bytes = bytes.subspan(part);
    }
    append(bytes);
}

// What was reserved may have run past the end.
void OutputFile::writeFullBuffer()
{
    const std::size_t past = m_used - m_end;
    const char* const rest = m_buffer.data() + m_end;
    m_used = m_end;
    flush();
    std::memmove(m_buffer.data(), rest, past);
    m_used = past;
}

void OutputFile::seek(std::int64_t position)
{
    seek(position, std::ios::beg);
}

void OutputFile::seekToEnd()
{
    seek(0, std::ios::end);
}

void OutputFile::seek(std::streamoff offset, std::ios::seekdir from)
{
    flush();
    m_stream.seekp(offset, from);
    m_good = m_good && m_stream.good();
    if (m_good) {
        m_flushed = m_stream.tellp();
        startBuffer();
    }
}

bool OutputFile::close()
{
    if (!m_stream.is_open()) {
        return m_good;
    }
    flush();
    m_stream.close();
    m_good = m_good && m_stream.good();
    return m_good;
}

void OutputFile::flush()
{
    write(m_buffer.data(), m_used);
    m_used = 0;
    startBuffer();
}

// After a failure the position still counts what was handed over, and the buffer is free for what will not be written
// either.
void OutputFile::write(const char* bytes, std::size_t size)
{
    if (m_good && size > 0) {
        m_stream.write(bytes, static_cast<std::streamsize>(size));
        m_good = m_stream.good();
    }
    m_flushed += static_cast<std::int64_t>(size);
}

void OutputFile::startBuffer()
{
    m_end = BufferBytes - static_cast<std::size_t>(m_flushed % std::int64_t{BufferBytes});
}

InputFile::InputFile(const std::string& path)
{
    m_stream.rdbuf()->pubsetbuf(nullptr, 0);  // the cursor buffers
    m_stream.open(FileNames::native(path), std::ios::binary | std::ios::in);
    m_open = m_stream.good();
}

std::size_t InputFile::readAt(std::int64_t offset, char* out, std::size_t size)
{
    m_stream.clear();
    m_stream.seekg(offset);
    m_stream.read(out, static_cast<std::streamsize>(size));
    return static_cast<std::size_t>(m_stream.gcount());
}

std::int64_t InputFile::size()
{
    m_stream.clear();
    m_stream.seekg(0, std::ios::end);
    const std::streamoff end = m_stream.tellg();
    return end < 0 ? 0 : end;
}

}  // namespace Recording2
