// Builds recording files byte by byte, without the library under test.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <QString>

namespace TestSupport {

/// Appends fields as they stand in a recording file.
class ByteBuilder {
public:
    ByteBuilder() = default;
    explicit ByteBuilder(std::string bytes) : m_bytes(std::move(bytes)) {}

    ByteBuilder& number(std::int64_t value);            ///< decimal, "#"
    ByteBuilder& real(float value);                     ///< six significant digits, "#"
    ByteBuilder& time(std::uint64_t milliseconds);      ///< 8 bytes, least significant first, "#"
    ByteBuilder& text(const std::string& value);        ///< length, "#", the bytes
    ByteBuilder& headerText(const std::string& value);  ///< full length, "#", the bytes up to the first NUL
    ByteBuilder& raw(const std::string& bytes);
    /// Puts bytes over the ones at the offset; extends the file where they reach past its end.
    ByteBuilder& overwrite(std::size_t offset, const std::string& bytes);

    [[nodiscard]] std::int32_t position() const { return static_cast<std::int32_t>(m_bytes.size()); }
    [[nodiscard]] const std::string& bytes() const { return m_bytes; }

private:
    std::string m_bytes;
};

/// The header record with its positions; the defaults are those of a sound file.
struct HeaderFields {
    std::int16_t majorVersion = 2;
    std::int16_t minorVersion = 0;
    float startFrequency = 20;
    float stopFrequency = 3000;
    float stepWidth = 0.025F;
    std::int32_t minLevel = -30;
    std::int32_t maxLevel = 100;
    std::uint64_t startMs = 1'500'000'000'123;
    std::uint64_t stopMs = 1'500'000'060'456;
    std::string jobId = "A1B2";
    std::string deviceName = "Receiver 1";
    std::string deviceType = "RX";
    std::int32_t typeTable = 0;
    std::int32_t firstRecord = 0;
    std::int32_t timeTable = 0;
    std::int32_t channelRangeTable = 0;
    std::int32_t bookmarkTable = 0;
    bool automatic = false;

    [[nodiscard]] std::string bytes() const;
    bool operator==(const HeaderFields&) const = default;
};
void PrintTo(const HeaderFields& header, std::ostream* out);

struct TypeFields {
    std::int32_t typeNumber = 0;
    std::int32_t valueType = 0;
    std::string keyword;
    std::string valuePath;

    bool operator==(const TypeFields&) const = default;
};
void PrintTo(const TypeFields& type, std::ostream* out);

/// The 500 bytes that a new file begins with.
std::string headerArea();
std::string typeTableBytes(const std::vector<TypeFields>& types);
std::string recordBytes(std::int32_t code, const std::string& data);

/// Collects what a recording is made of and gives the bytes of the closed file.
class ReferenceRecording {
public:
    ReferenceRecording();

    ReferenceRecording& types(const std::vector<TypeFields>& entries);
    ReferenceRecording& record(std::int32_t code, const std::string& data, std::uint64_t time, bool rangeDef = false);
    /// The bytes of the closed file; the positions in the header are the recording's own.
    [[nodiscard]] std::string close(HeaderFields header = {}) const;

    [[nodiscard]] const std::map<std::uint64_t, std::int32_t>& times() const { return m_times; }

private:
    ByteBuilder m_file;
    std::map<std::uint64_t, std::int32_t> m_times;
    std::set<std::uint64_t> m_rangeDefs;
    std::int32_t m_typeTable = 0;
    std::int32_t m_firstRecord = 0;
    std::uint64_t m_lastTime = 0;
};

/// A file name as the library takes it: in the encoding of the platform's file names.
std::string fileName8(const QString& name);
std::string readFile(const QString& name);
void writeFile(const QString& name, const std::string& bytes);

}  // namespace TestSupport
