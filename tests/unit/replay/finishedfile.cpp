// Stores bookmarks and channel ranges in bytes, and reads both as replay does.
#include "finishedfile.h"

#include <cstddef>
#include <locale>
#include <sstream>

#include "support/modelreader.h"

namespace ReplayTests {

namespace {

constexpr std::size_t HeaderArea = 500;

/// Reads 8 bytes and the separator; false when the bytes are not there.
bool readTime(std::istream& in, std::uint64_t& time)
{
    std::array<char, 8> raw{};
    in.read(raw.data(), raw.size());
    const bool complete = in.gcount() == static_cast<std::streamsize>(raw.size());
    in.clear();
    in.ignore(1);
    time = 0;
    for (std::size_t i = raw.size(); complete && i-- > 0;) {
        time = time << 8U | static_cast<unsigned char>(raw.at(i));
    }
    return complete;
}

}  // namespace

std::string bookmarkTable(const Bookmarks& bookmarks)
{
    TestSupport::ByteBuilder table;
    for (const auto& [time, text] : bookmarks) {
        table.time(time).text(text);
    }
    return table.bytes();
}

std::string rangeTable(const Times& times)
{
    TestSupport::ByteBuilder table;
    for (const std::uint64_t time : times) {
        table.time(time);
    }
    return table.bytes();
}

FinishedFile::FinishedFile(const std::string& closed)
    : m_bytes(closed), m_header(TestSupport::parseRecording(closed).header)
{
}

void FinishedFile::storeBookmarks(const Bookmarks& bookmarks)
{
    const auto end = static_cast<std::int32_t>(m_bytes.size());
    const std::int32_t begin = m_header.bookmarkTable != 0 ? m_header.bookmarkTable : end;
    if (begin < end) {
        overwrite(begin, std::string(static_cast<std::size_t>(end - begin), '0'));
    }
    if (!bookmarks.empty()) {
        m_header.bookmarkTable = begin;
        overwrite(begin, bookmarkTable(bookmarks));
    }
    rewriteHeader();
}

void FinishedFile::clearRanges()
{
    const auto end = m_header.bookmarkTable != 0 ? m_header.bookmarkTable : static_cast<std::int32_t>(m_bytes.size());
    for (std::int32_t position = m_header.channelRangeTable; position < end; position += 8) {
        overwrite(position, std::string(8, '\0'));
    }
}

void FinishedFile::rebuildRanges(const Times& times)
{
    if (!times.empty()) {
        if (m_header.channelRangeTable == 0) {
            m_header.channelRangeTable = static_cast<std::int32_t>(m_bytes.size());
        }
        overwrite(m_header.channelRangeTable, rangeTable(times));
    }
    rewriteHeader();
}

Bookmarks FinishedFile::bookmarksRead() const
{
    Bookmarks bookmarks;
    if (m_header.bookmarkTable == 0) {
        return bookmarks;
    }
    std::istringstream in(m_bytes);
    in.imbue(std::locale::classic());
    in.seekg(m_header.bookmarkTable);
    while (!in.eof()) {
        std::uint64_t time = 0;
        readTime(in, time);
        std::int64_t length = 0;
        in >> length;
        in.clear();
        in.ignore(1);
        if (length > 0) {
            std::string text(static_cast<std::size_t>(length), '\0');
            in.read(text.data(), length);
            bookmarks.emplace(time, text);
        }
    }
    return bookmarks;
}

Times FinishedFile::rangesRead() const
{
    Times times;
    if (m_header.channelRangeTable == 0) {
        return times;
    }
    std::istringstream in(m_bytes);
    in.seekg(m_header.channelRangeTable);
    const std::int64_t bound = m_header.bookmarkTable != 0 ? m_header.bookmarkTable : 2'147'483'647;
    while (!in.eof() && in.tellg() < bound) {
        std::uint64_t time = 0;
        readTime(in, time);
        if (static_cast<std::int64_t>(time) <= 0) {
            break;
        }
        times.insert(time);
    }
    return times;
}

void FinishedFile::markHeaderArea()
{
    overwrite(static_cast<std::int32_t>(HeaderArea) - 8, "unused");
}

void FinishedFile::overwrite(std::int32_t position, const std::string& bytes)
{
    m_bytes.replace(static_cast<std::size_t>(position), bytes.size(), bytes);
}

void FinishedFile::rewriteHeader()
{
    overwrite(0, TestSupport::headerArea());
    overwrite(0, m_header.bytes());
}

}  // namespace ReplayTests
