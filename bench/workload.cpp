// Bare loops over a file, the same records through the library, and measures of memory.
#include "workload.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>

#include <fcntl.h>
#include <malloc.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QByteArray>

#include <recording2/fileaccess.h>

namespace Bench {

namespace {

constexpr std::size_t RawBufferBytes = std::size_t{1} << 20U;
constexpr std::size_t LibraryBufferBytes = std::size_t{256} * 1024;  // of a file being written
constexpr std::size_t ReadBufferBytes = std::size_t{256} * 1024;
constexpr std::size_t HeaderAreaBytes = 500;
constexpr std::int32_t Code = 7;

[[noreturn]] void fail(const std::string& what)
{
    throw std::runtime_error(what + ": " + std::generic_category().message(errno));
}

char* putDecimal(char* out, std::uint64_t value)
{
    out = std::to_chars(out, out + 20, value).ptr;
    *out++ = '#';
    return out;
}

/// A buffer that is written when it is full.
class BareOutput {
public:
    explicit BareOutput(const std::string& path) : m_file(Descriptor::create(path)), m_buffer(LibraryBufferBytes) {}
    char* room(std::size_t bytes)
    {
        if (bytes > m_buffer.size() - m_used) {
            flush();
        }
        return m_buffer.data() + m_used;
    }
    void commit(const char* end) { m_used = static_cast<std::size_t>(end - m_buffer.data()); }
    [[nodiscard]] std::int64_t position() const { return m_flushed + static_cast<std::int64_t>(m_used); }
    void flush()
    {
        m_file.writeAll(m_buffer.data(), m_used);
        m_flushed += static_cast<std::int64_t>(m_used);
        m_used = 0;
    }

private:
    Descriptor m_file;
    std::vector<char> m_buffer;
    std::size_t m_used = 0;
    std::int64_t m_flushed = 0;
};

}  // namespace

std::string file(const std::string& name)
{
    const QByteArray folder = qgetenv("RECORDING2_BENCH_DIR");
    return (folder.isEmpty() ? std::filesystem::temp_directory_path().string() : folder.toStdString()) + '/' + name;
}

void removeFile(const std::string& path)
{
    static_cast<void>(::unlink(path.c_str()));
}

std::int64_t fileSize(const std::string& path)
{
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        fail(path);
    }
    return status.st_size;
}

Descriptor Descriptor::opened(int descriptor, const std::string& path)
{
    if (descriptor < 0) {
        fail(path);
    }
    return Descriptor(descriptor);
}

Descriptor Descriptor::create(const std::string& path)
{
    return opened(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644), path);
}

Descriptor Descriptor::read(const std::string& path)
{
    return opened(::open(path.c_str(), O_RDONLY | O_CLOEXEC), path);
}

Descriptor::~Descriptor()
{
    ::close(m_descriptor);
}

void Descriptor::writeAll(const char* bytes, std::size_t size) const
{
    while (size > 0) {
        const ssize_t written = ::write(m_descriptor, bytes, size);
        if (written < 0) {
            fail("write");
        }
        bytes += written;
        size -= static_cast<std::size_t>(written);
    }
}

std::size_t Descriptor::readSome(char* bytes, std::size_t size) const
{
    const ssize_t count = ::read(m_descriptor, bytes, size);
    if (count < 0) {
        fail("read");
    }
    return static_cast<std::size_t>(count);
}

void writeRaw(const std::string& path, std::int64_t bytes)
{
    static const std::vector<char> buffer(RawBufferBytes, '7');
    const Descriptor output = Descriptor::create(path);
    for (std::int64_t left = bytes; left > 0;) {
        const auto part = static_cast<std::size_t>(std::min<std::int64_t>(left, std::int64_t{RawBufferBytes}));
        output.writeAll(buffer.data(), part);
        left -= static_cast<std::int64_t>(part);
    }
}

void writeBare(const std::string& path, std::int64_t records, std::size_t dataBytes)
{
    constexpr std::size_t LongestHead = 64;
    const std::string data = recordData(dataBytes);
    BareOutput output(path);
    char* out = output.room(HeaderAreaBytes);
    output.commit(std::fill_n(out, HeaderAreaBytes, '\0'));
    std::vector<std::int32_t> positions;
    for (std::int64_t i = 0; i < records; ++i) {
        out = output.room(LongestHead + dataBytes);
        positions.push_back(static_cast<std::int32_t>(output.position()));
        out = putDecimal(putDecimal(out, Code), dataBytes);
        std::memcpy(out, data.data(), dataBytes);
        output.commit(out + dataBytes);
    }
    std::uint64_t time = 0;
    for (const std::int32_t position : positions) {
        out = output.room(LongestHead);
        ++time;
        std::memcpy(out, &time, sizeof time);
        out[sizeof time] = '#';
        output.commit(putDecimal(out + sizeof time + 1, static_cast<std::uint64_t>(position)));
    }
    output.flush();
}

void writeRecording(const std::string& path, std::int64_t records, std::size_t dataBytes)
{
    using namespace Recording2;
    CFileAccess output(path.c_str(), QStringLiteral("/Bench"), nullptr, true, false, false, nullptr, nullptr);
    if (!output.IsValidFile()) {
        fail(path);
    }
    const std::string data = recordData(dataBytes);
    CVTCmdData record;
    record.set_cmd(Code);
    record.set_str(data.data(), static_cast<std::int32_t>(data.size()));
    for (std::int64_t i = 1; i <= records; ++i) {
        output.write(record, static_cast<unsigned long long>(i), false);
    }
    CHeaderData header;
    header.set_version(2, 0);
    output.CloseRecording(header, true);
}

std::int64_t passOver(const std::string& path)
{
    std::vector<char> buffer(ReadBufferBytes);
    const Descriptor input = Descriptor::read(path);
    std::int64_t separators = 0;
    while (const std::size_t count = input.readSome(buffer.data(), buffer.size())) {
        separators += std::count(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(count), '#');
    }
    return separators;
}

std::string recordData(std::size_t bytes)
{
    std::string data(bytes, '\0');
    for (std::size_t i = 0; i < bytes; ++i) {
        data[i] = static_cast<char>('<' + i * 7 % 64);
    }
    return data;
}

std::size_t heapBytes()
{
    const struct mallinfo2 info = ::mallinfo2();
    return info.uordblks + info.hblkhd;
}

std::size_t residentBytes()
{
    std::ifstream statm("/proc/self/statm");
    std::size_t total = 0;
    std::size_t resident = 0;
    statm >> total >> resident;
    return resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

}  // namespace Bench
