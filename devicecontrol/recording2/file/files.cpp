// The buffer of a file being appended to: filled, handed over, kept in the journal.
#include "files.h"

#include <algorithm>
#include <cstring>

namespace Recording2 {

OutputFile::OutputFile(const std::filesystem::path& path, OpenMode mode, System::FileMode fileMode)
    : m_ownBuffer(std::make_unique_for_overwrite<CacheLine[]>((LargePieceBytes + SmallBytes) / sizeof(CacheLine))),
      m_buffer(m_ownBuffer[0].bytes)
{
    if (mode == OpenMode::Update) {
        m_rewriting = std::make_unique<Rewriting>();
        m_error = m_rewriting->begin(path);
    } else {
        m_error = m_file.open(path, mode == OpenMode::New ? System::Access::New : System::Access::Create, fileMode);
    }
}

OutputFile::~OutputFile()
{
    m_rewriting.reset();
    close();
}

void OutputFile::keepTailIn(Journal* journal)
{
    static_assert(Format::Journal::TailBytes >= PieceBytes + SmallBytes);
    m_journal = journal;
    if (journal != nullptr) {
        m_buffer = journal->tail();
        m_ownBuffer.reset();
    }
}

// At least as much as the buffer has room for. After a failure what is in the buffer stays, for somebody may resume.
void OutputFile::appendPast(std::span<const char> bytes)
{
    while (good() && bytes.size() >= m_end - m_used) {
        const std::size_t part = m_end - m_used;
        if (m_used == 0) {  // no need to copy it first
            write(bytes.data(), part);
        } else {
            std::memcpy(m_buffer + m_used, bytes.data(), part);
            m_used += part;
            flush();
        }
        bytes = bytes.subspan(part);
    }
    if (good()) {
        append(bytes);
    }
}

// What was reserved may have run past the end.
void OutputFile::writeFullBuffer()
{
    const std::size_t past = m_used - m_end;
    const char* const rest = m_buffer + m_end;
    m_used = m_end;
    flush();
    if (good()) {
        std::memmove(m_buffer, rest, past);
        m_used = past;
    }
}

// What stands in the buffer from now on is not the file's tail any more.
void OutputFile::seek(std::int64_t position)
{
    flush();
    m_journal = nullptr;
    if (position < 0) {
        fail(System::InvalidPosition);
    }
    if (good()) {
        m_flushed = position;
        startBuffer();
    }
}

void OutputFile::seekToEnd()
{
    flush();
    seek(m_rewriting != nullptr ? m_rewriting->state()->size() : m_file.size());
}

bool OutputFile::store()
{
    flush();
    if (good() && m_rewriting != nullptr) {
        fail(m_rewriting->store());
    }
    return good();
}

bool OutputFile::close()
{
    if (m_rewriting != nullptr) {
        store();
        m_rewriting.reset();
        return good();
    }
    if (!m_file.isOpen()) {
        return good();
    }
    flush();
    if (m_allocatedEnd > 0) {
        m_file.giveBackAhead();
    }
    fail(m_file.close());
    return good();
}

void OutputFile::flush()
{
    write(m_buffer, m_used);
    if (good()) {
        m_used = 0;
        startBuffer();
    }
}

void OutputFile::fsync()
{
    flush();
    if (good()) {
        fail(m_file.fsync());
    }
}

// The buffer still holds what could not be handed over.
void OutputFile::resumeAt(std::int64_t position)
{
    m_error = 0;
    if (position >= m_flushed) {
        m_used = static_cast<std::size_t>(position - m_flushed);
    } else {
        m_used = 0;
        m_flushed = position;
        startBuffer();
    }
}

void OutputFile::endHere()
{
    flush();
    if (good()) {
        fail(m_file.setSize(m_flushed));
    }
}

void OutputFile::write(const char* bytes, std::size_t size)
{
    if (!good() || size == 0) {
        return;
    }
    if (m_rewriting != nullptr) {
        m_rewriting->state()->put(m_flushed, {bytes, size});
    } else {
        std::size_t written = 0;
        allocateFor(m_flushed + static_cast<std::int64_t>(size));
        fail(m_file.writeAt(m_flushed, bytes, size, written));
    }
    if (good()) {
        m_flushed += static_cast<std::int64_t>(size);
        startBuffer();
        if (m_journal != nullptr) {
            m_journal->tailStartsAt(m_flushed);
        }
    }
}

// As much as the file has already, within bounds: a file that is left unclosed keeps it until it is removed.
void OutputFile::allocateFor(std::int64_t end)
{
    if (end > m_allocatedEnd && m_flushed >= std::int64_t{PieceBytes}) {
        const std::int64_t begin = std::max(m_flushed, m_allocatedEnd);
        const std::int64_t bytes = std::clamp(m_flushed, LeastAhead, MostAhead);
        m_file.allocateAhead(begin, bytes);
        m_allocatedEnd = begin + bytes;
    }
}

void OutputFile::startBuffer()
{
    const std::size_t piece = m_ownBuffer != nullptr && m_flushed >= LargePiecesFrom ? LargePieceBytes : PieceBytes;
    m_end = piece - static_cast<std::size_t>(m_flushed) % piece;
}

InputFile::InputFile(const std::filesystem::path& path, Size size) : m_error(m_file.open(path, System::Access::Read))
{
    if (good()) {
        m_file.identity(m_atFirst);
        m_error = findEarlierState(path, m_file, m_overlay);
    }
    if (size == Size::AtOpening) {
        m_keptSize = good() ? sizeNow() : 0;
    }
}

std::size_t InputFile::readAt(std::int64_t offset, char* out, std::size_t size)
{
    const std::size_t read =
        m_overlay == nullptr ? m_file.readAt(offset, out, size) : m_overlay->readAt(m_file, offset, out, size);
    m_readFailed = m_readFailed || (read < size && offset + static_cast<std::int64_t>(read) < sizeNow());
    return read;
}

}  // namespace Recording2
