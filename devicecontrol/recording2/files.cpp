#include "files.h"

#include <cstring>

#include "filenames.h"

namespace Recording2 {

namespace {

constexpr std::size_t BufferBytes = std::size_t{256} * 1024;

}  // namespace

OutputFile::OutputFile(const std::string& path, OpenMode mode) : m_buffer(BufferBytes)
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

void OutputFile::append(std::span<const char> bytes)
{
    if (bytes.size() > m_buffer.size() - m_used) {
        flush();
    }
    if (!m_good) {
        return;
    }
    if (bytes.size() < m_buffer.size()) {
        std::memcpy(m_buffer.data() + m_used, bytes.data(), bytes.size());
        m_used += bytes.size();
        return;
    }
    m_stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    m_flushed += static_cast<std::int64_t>(bytes.size());
    m_good = m_stream.good();
}

char* OutputFile::reserve(std::size_t size)
{
    if (size > m_buffer.size() - m_used) {
        flush();
    }
    return m_buffer.data() + m_used;
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
    if (m_good && m_used > 0) {
        m_stream.write(m_buffer.data(), static_cast<std::streamsize>(m_used));
        m_good = m_stream.good();
    }
    // After a failure the position still counts what was handed over, and the buffer is free for what will not be
    // written either.
    m_flushed += static_cast<std::int64_t>(m_used);
    m_used = 0;
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
