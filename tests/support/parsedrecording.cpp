// Parses sound recordings whole.
#include <stdexcept>

#include "support/modelreader.h"

namespace TestSupport {

namespace {

/// Reads sound files from memory.
class StrictCursor {
public:
    explicit StrictCursor(const std::string& bytes) : m_bytes(bytes) {}

    void seek(std::int64_t position) { m_position = static_cast<std::size_t>(position); }
    [[nodiscard]] std::int32_t position() const { return static_cast<std::int32_t>(m_position); }
    [[nodiscard]] bool atEnd() const { return m_position >= m_bytes.size(); }

    std::string field()
    {
        const std::size_t end = m_bytes.find('#', m_position);
        if (end == std::string::npos || end == m_position) {
            throw std::runtime_error("no field at " + std::to_string(m_position));
        }
        std::string text = m_bytes.substr(m_position, end - m_position);
        m_position = end + 1;
        return text;
    }

    template <typename T = std::int32_t>
    T number()
    {
        const std::string text = field();
        std::size_t used = 0;
        const std::int64_t value = std::stoll(text, &used);
        if (used != text.size() || std::to_string(value) != text) {
            throw std::runtime_error("not a plain number: " + text);
        }
        return static_cast<T>(value);
    }

    float real() { return std::stof(field()); }

    std::string bytes(std::size_t count)
    {
        if (count > m_bytes.size() - m_position) {
            throw std::runtime_error("the file ends within a text");
        }
        m_position += count;
        return m_bytes.substr(m_position - count, count);
    }

    std::string text() { return bytes(number<std::uint32_t>()); }

    std::uint64_t time()
    {
        const std::string raw = bytes(9);
        std::uint64_t value = 0;
        for (std::size_t i = 8; i-- > 0;) {
            value = value * 256 + static_cast<unsigned char>(raw[i]);
        }
        if (raw[8] != '#') {
            throw std::runtime_error("no separator behind a time");
        }
        return value;
    }

private:
    const std::string& m_bytes;
    std::size_t m_position = 0;
};

HeaderFields parseHeader(StrictCursor& in)
{
    HeaderFields header;
    header.majorVersion = in.number<std::int16_t>();
    header.minorVersion = in.number<std::int16_t>();
    header.startFrequency = in.real();
    header.stopFrequency = in.real();
    header.stepWidth = in.real();
    header.minLevel = in.number();
    header.maxLevel = in.number();
    header.startMs = in.time();
    header.stopMs = in.time();
    header.jobId = in.text();
    header.deviceName = in.text();
    header.deviceType = in.text();
    header.typeTable = in.number();
    header.firstRecord = in.number();
    header.timeTable = in.number();
    header.channelRangeTable = in.number();
    header.bookmarkTable = in.number();
    header.automatic = in.number() == 1;
    return header;
}

std::vector<TypeFields> parseTypes(StrictCursor& in)
{
    std::vector<TypeFields> types(in.number<std::uint32_t>());
    for (TypeFields& type : types) {
        type.typeNumber = in.number();
        type.valueType = in.number();
        type.keyword = in.text();
        type.valuePath = in.text();
    }
    return types;
}

}  // namespace

ParsedRecording parseRecording(const std::string& bytes)
{
    ParsedRecording recording;
    StrictCursor in(bytes);
    recording.header = parseHeader(in);
    const HeaderFields& header = recording.header;
    if (header.typeTable != 0) {
        in.seek(header.typeTable);
        recording.types = parseTypes(in);
    }
    std::map<std::int32_t, std::uint64_t> times;
    if (header.timeTable != 0) {
        in.seek(header.timeTable);
        const std::int32_t end =
            header.channelRangeTable != 0 ? header.channelRangeTable : static_cast<std::int32_t>(bytes.size());
        while (in.position() < end) {
            const std::uint64_t time = in.time();
            times[in.number()] = time;
        }
        in.seek(header.firstRecord);
        while (in.position() < header.timeTable) {
            const std::int32_t position = in.position();
            const auto code = in.number();
            recording.records.push_back({times.at(position), position, code, in.text()});
        }
        if (times.size() != recording.records.size()) {
            throw std::runtime_error("the time table names a record that is not there");
        }
    }
    if (header.channelRangeTable != 0) {
        in.seek(header.channelRangeTable);
        while (!in.atEnd()) {
            recording.rangeDefs.push_back(in.time());
        }
    }
    return recording;
}

}  // namespace TestSupport
