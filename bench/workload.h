// What the benchmarks share: a place for their files, and the bare loops that the library is measured against.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Bench {

/// A path in the folder RECORDING2_BENCH_DIR (that of the system for temporary files where it is not set).
[[nodiscard]] std::string file(const std::string& name);
void removeFile(const std::string& path);
[[nodiscard]] std::int64_t fileSize(const std::string& path);  ///< bytes; throws std::runtime_error without the file

/// A file descriptor that closes itself. Throws std::runtime_error when the file cannot be opened.
class Descriptor {
public:
    static Descriptor create(const std::string& path);
    static Descriptor read(const std::string& path);
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor();

    void writeAll(const char* bytes, std::size_t size) const;                 ///< throws std::runtime_error
    [[nodiscard]] std::size_t readSome(char* bytes, std::size_t size) const;  ///< 0 at the end; throws

private:
    explicit Descriptor(int descriptor) : m_descriptor(descriptor) {}
    static Descriptor opened(int descriptor, const std::string& path);
    int m_descriptor;
};

/// Writes that many bytes with a plain loop over the system call and a buffer of 1 MiB.
void writeRaw(const std::string& path, std::int64_t bytes);

/// Formats what a recording with such records holds (header area, records, time table) into a buffer as large as the
/// library's and writes it. No time is checked, nothing is remembered but the positions for the table.
void writeBare(const std::string& path, std::int64_t records, std::size_t dataBytes);

/// Writes the same through CFileAccess, from opening to closing.
void writeRecording(const std::string& path, std::int64_t records, std::size_t dataBytes);

/// Reads the whole file in pieces of the library's size and looks at every byte.
/// @return the number of separators, so that nothing of it can be left out
std::int64_t passOver(const std::string& path);

/// Data of a record: printable, the same in every run.
[[nodiscard]] std::string recordData(std::size_t bytes);

[[nodiscard]] std::size_t heapBytes();      ///< in use
[[nodiscard]] std::size_t residentBytes();  ///< memory of the process that is in use now
}  // namespace Bench
