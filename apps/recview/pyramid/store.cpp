// Columns in chunks of one file, an index and checksums behind them.
#include "store.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <utility>

#include <recording2/format/checksum.h>
#include <recording2/inspection/filename.h>

namespace RecView {

namespace {

constexpr System::FileMode OnlyUser = 0600;
constexpr std::size_t ChunkBytes = std::size_t{64} << 10U;
constexpr std::size_t MostBuffered = std::size_t{16} << 20U;
constexpr std::uint64_t FileMagic = 0x31'44'49'4D'41'52'59'50U;   // "PYRAMID1" as little machines write it
constexpr std::uint64_t IndexMagic = 0x31'58'45'44'4E'49'59'50U;  // "PYINDEX1"

struct StoreHead {
    std::uint64_t magic = FileMagic;
    std::uint64_t layout = 1;  // counted up when what the pyramid keeps changes
};

struct StoreTrailer {
    std::uint64_t indexBegin = 0;
    std::uint64_t indexBytes = 0;
    std::uint64_t indexChecksum = 0;
    std::uint64_t dataChecksum = 0;
    std::uint64_t magic = IndexMagic;
};

struct IndexedColumn {
    ColumnKey key;
    std::uint64_t bytes = 0;
    std::uint64_t chunks = 0;
};

template <typename Entry>
void put(std::string& out, const Entry& entry)
{
    out.append(reinterpret_cast<const char*>(&entry), sizeof entry);
}

template <typename Entry>
bool take(std::string_view& bytes, Entry& entry)
{
    if (bytes.size() < sizeof entry) {
        return false;
    }
    std::memcpy(&entry, bytes.data(), sizeof entry);
    bytes.remove_prefix(sizeof entry);
    return true;
}

template <typename Entry>
bool readEntry(const System::NativeFile& file, std::uint64_t offset, Entry& entry)
{
    return file.readAt(static_cast<std::int64_t>(offset), reinterpret_cast<char*>(&entry), sizeof entry) ==
           sizeof entry;
}

}  // namespace

bool Column::appendBytes(std::span<const std::byte> bytes)
{
    if (m_store.failed() || !m_store.m_writable) {
        return false;
    }
    m_tail.insert(m_tail.end(), bytes.begin(), bytes.end());
    m_store.tookBytes(bytes.size());
    if (m_tail.size() >= ChunkBytes) {
        flush();
    }
    return !m_store.failed();
}

void Column::flush()
{
    if (m_tail.empty() || m_store.failed()) {
        return;
    }
    std::size_t written = 0;
    m_store.m_error = m_store.m_file.writeAt(static_cast<std::int64_t>(m_store.m_end),
                                             reinterpret_cast<const char*>(m_tail.data()), m_tail.size(), written);
    if (m_store.failed()) {
        return;
    }
    const bool goesOn =
        !m_chunks.empty() && m_chunks.back().offset + (m_flushed - m_chunks.back().begin) == m_store.m_end;
    if (!goesOn) {
        m_chunks.push_back({m_flushed, m_store.m_end});
    }
    m_store.m_end += m_tail.size();
    m_store.m_bufferBytes -= m_tail.size();
    m_flushed += m_tail.size();
    std::vector<std::byte>().swap(m_tail);
}

bool Column::readBytes(std::uint64_t offset, std::span<std::byte> out) const
{
    if (offset > bytes() || out.size() > bytes() - offset) {
        return false;
    }
    auto chunk = std::upper_bound(m_chunks.begin(), m_chunks.end(), offset,
                                  [](std::uint64_t place, const Chunk& c) { return place < c.begin; });
    while (!out.empty() && offset < m_flushed) {
        const std::uint64_t end = chunk == m_chunks.end() ? m_flushed : chunk->begin;
        const Chunk& from = *(chunk - 1);
        const std::size_t size = static_cast<std::size_t>(std::min<std::uint64_t>(out.size(), end - offset));
        const std::uint64_t place = from.offset + (offset - from.begin);
        if (m_store.m_file.readAt(static_cast<std::int64_t>(place), reinterpret_cast<char*>(out.data()), size) !=
            size) {
            return false;
        }
        out = out.subspan(size);
        offset += size;
        ++chunk;
    }
    if (!out.empty()) {
        std::memcpy(out.data(), m_tail.data() + (offset - m_flushed), out.size());
    }
    return true;
}

std::unique_ptr<Store> Store::create(const std::filesystem::path& path)
{
    std::unique_ptr<Store> store(new Store(path));
    System::Error error = store->m_file.open(path, System::Access::New, OnlyUser);
    if (error == 0) {
        store->m_temporary = true;
        static_cast<void>(store->m_file.lock());  // tells others that it is in use
        const StoreHead head;
        std::size_t written = 0;
        error = store->m_file.writeAt(0, reinterpret_cast<const char*>(&head), sizeof head, written);
    }
    if (error != 0) {
        throw std::runtime_error(Recording2::Inspection::utf8(path) + ": " + System::errorText(error) + ".");
    }
    store->m_writable = true;
    store->m_end = sizeof(StoreHead);
    return store;
}

std::unique_ptr<Store> Store::open(const std::filesystem::path& path)
{
    std::unique_ptr<Store> store(new Store(path));
    StoreHead head;
    StoreTrailer trailer;
    if (store->m_file.open(path, System::Access::ReadItself) != 0) {
        return nullptr;
    }
    const auto size = static_cast<std::uint64_t>(std::max<std::int64_t>(store->m_file.size(), 0));
    const StoreHead wanted;
    const bool isOurs = size >= sizeof head + sizeof trailer && readEntry(store->m_file, 0, head) &&
                        head.magic == wanted.magic && head.layout == wanted.layout &&
                        readEntry(store->m_file, size - sizeof trailer, trailer) && trailer.magic == IndexMagic;
    const std::uint64_t indexEnd = size - sizeof trailer;
    if (!isOurs || trailer.indexBegin < sizeof head || trailer.indexBegin > indexEnd ||
        trailer.indexBytes != indexEnd - trailer.indexBegin) {
        return nullptr;
    }
    std::string index(static_cast<std::size_t>(trailer.indexBytes), '\0');
    const bool isSound = store->m_file.readAt(static_cast<std::int64_t>(trailer.indexBegin), index.data(),
                                              index.size()) == index.size() &&
                         Recording2::Format::checksum(trailer.indexBegin, index) == trailer.indexChecksum &&
                         store->checksumOfData(trailer.indexBegin) == trailer.dataChecksum &&
                         store->readIndex(index, trailer.indexBegin);
    return isSound ? std::move(store) : nullptr;
}

Store::~Store()
{
    if (m_temporary) {
        m_file.close();
        System::removeFile(m_path);
    }
}

Column& Store::column(const ColumnKey& key)
{
    std::unique_ptr<Column>& column = m_columns[key];
    if (column == nullptr) {
        column.reset(new Column(*this));
    }
    return *column;
}

const Column* Store::find(const ColumnKey& key) const
{
    const auto found = m_columns.find(key);
    return found == m_columns.end() ? nullptr : found->second.get();
}

void Store::tookBytes(std::size_t bytes)
{
    m_bytes += bytes;
    m_bufferBytes += bytes;
    if (m_bufferBytes > MostBuffered) {
        flushAll();
    }
}

void Store::flushAll()
{
    for (const auto& [key, column] : m_columns) {
        column->flush();
    }
}

bool Store::keep(const std::filesystem::path& path)
{
    flushAll();
    if (failed() || !m_writable) {
        return false;
    }
    const std::string entries = index();
    const StoreTrailer trailer{m_end, entries.size(), Recording2::Format::checksum(m_end, entries),
                               checksumOfData(m_end), IndexMagic};
    std::string end = entries;
    put(end, trailer);
    std::size_t written = 0;
    m_error = m_file.writeAt(static_cast<std::int64_t>(m_end), end.data(), end.size(), written);
    m_writable = false;
    if (failed() || System::renameReplacing(m_path, path) != 0) {
        return false;
    }
    m_path = path;
    m_temporary = false;
    return true;
}

std::string Store::index() const
{
    std::string index;
    put(index, std::uint64_t{m_columns.size()});
    for (const auto& [key, column] : m_columns) {
        put(index, IndexedColumn{key, column->m_flushed, column->m_chunks.size()});
        for (const Column::Chunk& chunk : column->m_chunks) {
            put(index, chunk);
        }
    }
    return index;
}

bool Store::readIndex(const std::string& index, std::uint64_t dataEnd)
{
    std::string_view bytes = index;
    std::uint64_t columns = 0;
    IndexedColumn indexed;
    if (!take(bytes, columns)) {
        return false;
    }
    for (; columns > 0; --columns) {
        if (!take(bytes, indexed) || indexed.chunks > bytes.size() / sizeof(Column::Chunk)) {
            return false;
        }
        Column& read = column(indexed.key);
        read.m_flushed = indexed.bytes;
        read.m_chunks.resize(static_cast<std::size_t>(indexed.chunks));
        std::uint64_t before = 0;
        for (Column::Chunk& chunk : read.m_chunks) {
            static_cast<void>(take(bytes, chunk));
            const bool isFirst = &chunk == &read.m_chunks.front();
            if ((isFirst ? chunk.begin != 0 : chunk.begin <= before) || chunk.begin >= indexed.bytes ||
                chunk.offset >= dataEnd) {
                return false;
            }
            before = chunk.begin;
        }
        if (read.m_chunks.empty() && indexed.bytes != 0) {
            return false;
        }
        m_bytes += indexed.bytes;
    }
    return bytes.empty();
}

std::uint64_t Store::checksumOfData(std::uint64_t end) const
{
    constexpr std::size_t PieceBytes = std::size_t{1} << 20U;
    std::string piece(PieceBytes, '\0');
    std::uint64_t sum = end;
    for (std::uint64_t at = 0; at < end; at += PieceBytes) {
        const auto size = static_cast<std::size_t>(std::min<std::uint64_t>(PieceBytes, end - at));
        if (m_file.readAt(static_cast<std::int64_t>(at), piece.data(), size) != size) {
            return 0;
        }
        sum = Recording2::Format::checksum(sum, std::string_view(piece).substr(0, size));
    }
    return sum;
}

}  // namespace RecView
