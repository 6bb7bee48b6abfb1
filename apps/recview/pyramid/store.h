// A file of columns: what was found out about a recording, appended while it is read and looked up for pictures.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include <system/nativefile.h>

namespace RecView {

class Store;

/// A sequence of equal entries that only grows. Entries are plain structures, kept as this machine has them in memory.
/// What was appended can be read at once. A column belongs to its store and is good as long as that is.
class Column {
public:
    Column(const Column&) = delete;
    Column& operator=(const Column&) = delete;
    ~Column() = default;

    [[nodiscard]] std::uint64_t bytes() const { return m_flushed + m_tail.size(); }
    /// @return false when the store failed (see there); nothing was appended then
    bool appendBytes(std::span<const std::byte> bytes);
    /// Copies bytes from an offset on. @return false when there are not as many, or the file does not give them
    [[nodiscard]] bool readBytes(std::uint64_t offset, std::span<std::byte> out) const;

    template <typename Entry>
    bool append(const Entry& entry)
    {
        static_assert(std::is_trivially_copyable_v<Entry>);
        return appendBytes(std::as_bytes(std::span(&entry, 1)));
    }
    template <typename Entry>
    bool append(std::span<const Entry> entries)
    {
        static_assert(std::is_trivially_copyable_v<Entry>);
        return appendBytes(std::as_bytes(entries));
    }
    /// How many entries of a kind there are.
    template <typename Entry>
    [[nodiscard]] std::uint64_t count() const
    {
        return bytes() / sizeof(Entry);
    }
    /// Reads entries from one on, as many as fit. @return false when there are not as many, or they cannot be read
    template <typename Entry>
    [[nodiscard]] bool read(std::uint64_t first, std::span<Entry> out) const
    {
        static_assert(std::is_trivially_copyable_v<Entry>);
        return readBytes(first * sizeof(Entry), std::as_writable_bytes(out));
    }
    /// One entry, or as it was made where there is none.
    template <typename Entry>
    [[nodiscard]] Entry at(std::uint64_t index) const
    {
        Entry entry{};
        static_cast<void>(read(index, std::span(&entry, 1)));
        return entry;
    }
    /// The number of the first entry that is not so; all that are so stand before the others.
    template <typename Entry, typename Predicate>
    [[nodiscard]] std::uint64_t partitionPoint(const Predicate& isSo) const
    {
        std::uint64_t low = 0;
        std::uint64_t high = count<Entry>();
        while (low < high) {
            const std::uint64_t middle = (low + high) / 2;
            isSo(at<Entry>(middle)) ? low = middle + 1 : high = middle;
        }
        return low;
    }

private:
    friend class Store;
    explicit Column(Store& store) : m_store(store) {}
    void flush();

    struct Chunk {
        std::uint64_t begin = 0;   ///< in the column
        std::uint64_t offset = 0;  ///< in the file
    };
    Store& m_store;
    std::vector<Chunk> m_chunks;  // ascending
    std::uint64_t m_flushed = 0;  // bytes of all chunks
    std::vector<std::byte> m_tail;
};

/// What a column holds: whose it is and what (kind), of which type number, which series of it, which level of detail.
struct ColumnKey {
    std::uint32_t kind = 0;
    std::int32_t code = 0;
    std::uint32_t series = 0;
    std::uint32_t level = 0;

    bool operator==(const ColumnKey&) const = default;
    bool operator<(const ColumnKey& other) const
    {
        return std::tie(kind, code, series, level) < std::tie(other.kind, other.code, other.series, other.level);
    }
};

/// Kinds below this are the pyramid's own; whoever else keeps columns takes kinds from here on.
constexpr std::uint32_t FirstForeignKind = 1000;

/// Columns in one file. Memory: 16 MiB at most for what is not yet in the file, and 16 bytes for every 64 KiB that are.
/// Nothing is mapped: a file that somebody cuts off is one that cannot be read, no more.
///
/// One thread at a time; several may read (find, readBytes) while none appends. Where an Overview is made, its lock is
/// what keeps them apart.
///
/// When writing fails (no space) the store stays failed: nothing more is appended, what is in it can be read.
class Store {
public:
    /// A new file that only the user may read, open for appending. It has no name that anybody else looks for, and is
    /// removed with the object unless keep was called.
    /// @throws std::runtime_error with a sentence when it cannot be made
    static std::unique_ptr<Store> create(const std::filesystem::path& path);
    /// A file that keep wrote, all of it checked.
    /// @return null for anything else: another version, damaged, cut off, not readable, missing
    static std::unique_ptr<Store> open(const std::filesystem::path& path);
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;
    ~Store();

    /// The column of a key, made where there is none. Only for a store that was created.
    Column& column(const ColumnKey& key);
    [[nodiscard]] const Column* find(const ColumnKey& key) const;  ///< null when there is none
    /// Bytes of all columns.
    [[nodiscard]] std::uint64_t bytes() const { return m_bytes; }

    /// Ends the file with its index and checksums and gives it a name for later, in the place of what has it. What was
    /// appended can still be read; nothing more can be appended. @return false when that failed: the store goes on as
    /// a file without a name
    bool keep(const std::filesystem::path& path);
    [[nodiscard]] bool failed() const { return m_error != 0; }
    [[nodiscard]] System::Error error() const { return m_error; }

private:
    friend class Column;
    explicit Store(std::filesystem::path path) : m_path(std::move(path)) {}
    void tookBytes(std::size_t bytes);
    void flushAll();
    [[nodiscard]] std::string index() const;
    bool readIndex(const std::string& index, std::uint64_t dataEnd);
    [[nodiscard]] std::uint64_t checksumOfData(std::uint64_t end) const;

    std::filesystem::path m_path;
    System::NativeFile m_file;
    std::map<ColumnKey, std::unique_ptr<Column>> m_columns;
    std::uint64_t m_end = 0;        // of the file
    std::uint64_t m_bytes = 0;      // of the columns
    std::size_t m_bufferBytes = 0;  // not yet in the file
    System::Error m_error = 0;
    bool m_writable = false;
    bool m_temporary = false;
};

}  // namespace RecView
