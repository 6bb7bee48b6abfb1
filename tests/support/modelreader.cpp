// Steps through recordings field by field with a standard stream.
#include "support/modelreader.h"

#include <iterator>
#include <locale>

namespace TestSupport {

namespace {

enum Block : std::size_t { TypeTable, FirstRecord, TimeTable, RangeTable, BookmarkTable };
constexpr std::int64_t NoBound = 2'147'483'647;

}  // namespace

ModelReader::ModelReader(const std::string& path, bool withTables) : m_in(path, std::ios::in | std::ios::binary)
{
    m_in.imbue(std::locale::classic());
    m_in.seekg(0, std::ios::end);
    m_size = m_in.tellg();
    m_in.seekg(0);
    ModelHeader header;
    m_valid = m_in.good() && readHeader(header) == 1;
    if (m_valid && withTables) {
        readTimeTable();
    }
}

template <typename T>
void ModelReader::number(T& target)
{
    T value{};
    if (m_in >> value) {
        target = value;
    }
    m_in.clear();
    m_in.ignore(1);
}

void ModelReader::time(std::uint64_t& target)
{
    std::array<char, 8> raw{};
    m_in.read(raw.data(), raw.size());
    if (m_in.gcount() == 8) {
        target = 0;
        for (std::size_t i = 8; i-- > 0;) {
            target = (target << 8U) | static_cast<unsigned char>(raw.at(i));
        }
    }
    m_in.clear();
    m_in.ignore(1);
}

bool ModelReader::text(std::int32_t length, std::string& target)
{
    const std::int64_t here = m_in.good() ? static_cast<std::int64_t>(m_in.tellg()) : m_size;
    if (length > m_size - here) {
        m_in.ignore(m_size);
        m_in.setstate(std::ios::failbit | std::ios::eofbit);
        return false;
    }
    target.resize(static_cast<std::size_t>(length));
    m_in.read(target.data(), length);
    return true;
}

void ModelReader::headerText(std::optional<std::string>& target)
{
    std::int32_t length = 0;
    number(length);
    if (length < 1) {
        return;
    }
    std::string value;
    target = text(length, value) ? std::optional(value) : std::nullopt;
}

void ModelReader::typeText(std::string& target)
{
    std::int32_t length = 0;
    number(length);
    if (length >= 1 && !text(length, target)) {
        throw Undefined{};
    }
}

void ModelReader::seek(std::int64_t position)
{
    if (position < 0) {
        throw Undefined{};
    }
    m_in.seekg(position);
}

std::uint64_t ModelReader::timeHere()
{
    if (!m_in.good()) {
        return 0;  // a stream at its end has no position
    }
    const auto found = m_positions.find(static_cast<std::int32_t>(m_in.tellg()));
    return found == m_positions.end() ? 0 : found->second;
}

std::uint64_t ModelReader::readHeader(ModelHeader& header)
{
    if (!m_in.good()) {
        return 0;
    }
    const auto before = m_in.tellg();
    seek(0);
    std::int16_t majorVersion = 0;
    std::int16_t minorVersion = 0;
    number(majorVersion);
    number(minorVersion);
    if (majorVersion < 2) {
        return 0;
    }
    header.majorVersion = majorVersion;
    header.minorVersion = minorVersion;
    for (float& frequency : header.frequencies) {
        number(frequency);
    }
    for (std::int32_t& level : header.levels) {
        number(level);
    }
    for (std::uint64_t& stamp : header.timesMs) {
        time(stamp);
    }
    for (auto& value : header.texts) {
        headerText(value);
    }
    for (std::int32_t& block : m_blocks) {
        number(block);
    }
    std::int32_t automatic = header.automatic ? 1 : 0;
    number(automatic);
    header.automatic = automatic >= 1;
    m_in.seekg(before);
    return 1;
}

std::uint64_t ModelReader::readTypes(std::vector<TypeFields>& types)
{
    if (!m_in.good()) {
        return 0;
    }
    seek(m_blocks[TypeTable]);
    std::int32_t count = 0;
    number(count);
    for (std::int32_t i = 0; i < count; ++i) {
        TypeFields type;
        if (!m_in.good()) {
            throw Undefined{};  // the file ended before the count was reached: what such entries hold is open
        }
        number(type.typeNumber);
        number(type.valueType);
        typeText(type.keyword);
        typeText(type.valuePath);
        bool known = false;
        for (const TypeFields& other : types) {
            known = known || other.typeNumber == type.typeNumber;
        }
        if (!known) {
            types.push_back(type);
        }
    }
    return 1;
}

void ModelReader::readTables()
{
    ModelHeader header;
    if (readHeader(header) == 1) {
        readTimeTable();
    }
}

void ModelReader::readTimeTable()
{
    if (m_blocks[TimeTable] == 0 && (m_blocks[RangeTable] != 0 || m_blocks[BookmarkTable] != 0)) {
        throw Undefined{};  // whether the other tables move the stream depends on what they hold
    }
    if (!m_in.good() || m_blocks[TimeTable] == 0) {
        return;
    }
    if (m_blocks[TimeTable] >= m_size) {
        throw Undefined{};  // not one pair to be read
    }
    seek(m_blocks[TimeTable]);
    const std::int64_t bound = m_blocks[RangeTable] == 0 ? NoBound : m_blocks[RangeTable];
    std::uint64_t stamp = 0;
    std::int32_t position = 0;
    bool first = true;
    while (!m_in.eof() && m_in.tellg() < bound) {
        if (first && m_size - m_in.tellg() < 8) {
            throw Undefined{};
        }
        first = false;
        time(stamp);
        number(position);
        m_times.insert({stamp, position});
        m_positions.insert({position, stamp});
    }
    m_in.clear();
    seek(m_blocks[FirstRecord]);
}

std::uint64_t ModelReader::read(ModelRecord& record)
{
    if (!m_in.good()) {
        return 0;
    }
    ModelRecord next;
    std::int32_t length = 0;
    number(next.code);
    number(length);
    if (length != 0) {
        if (length < 0 || !text(length, next.data)) {
            throw Undefined{};
        }
        record = next;
    }
    return timeHere();
}

std::uint64_t ModelReader::readAndReturnTimeOfCurrentCmd(ModelRecord& record)
{
    if (!m_in.good()) {
        return 0;
    }
    const std::uint64_t time = timeHere();
    read(record);
    return time;
}

std::uint64_t ModelReader::read(ModelRecord& record, std::uint64_t time)
{
    if (!m_in.good()) {
        return 0;
    }
    if (time != 0 && !m_times.empty()) {
        const auto found = m_times.lower_bound(time);
        seek(found != m_times.end() ? found->second : m_times.rbegin()->second);
    }
    if (m_in.tellg() >= m_blocks[TimeTable]) {
        return 0;
    }
    ModelRecord next;
    std::int32_t length = 0;
    number(next.code);
    number(length);
    if (length < 1) {
        return 0;
    }
    if (!text(length, next.data)) {
        throw Undefined{};
    }
    record = next;
    return timeHere();
}

std::uint64_t ModelReader::readfirst(ModelRecord& record)
{
    if (!m_in.good()) {
        return 0;
    }
    const auto first = m_positions.find(m_blocks[FirstRecord]);
    return first == m_positions.end() ? 0 : read(record, first->second);
}

std::uint64_t ModelReader::readnext(ModelRecord& record)
{
    return read(record, 0);
}

std::uint64_t ModelReader::readfirst(ModelRecord& record, std::int32_t code)
{
    if (!m_in.good()) {
        return 0;
    }
    std::uint64_t last = 0;
    for (auto entry = m_positions.find(m_blocks[FirstRecord]); entry != m_positions.end(); ++entry) {
        if (last >= 100) {
            return 0;
        }
        last = read(record, entry->second);
        if (code == 0 || record.code == code) {
            const auto found = m_times.find(last);
            if (found != m_times.end() && found != m_times.begin()) {
                return std::prev(found)->first;
            }
        }
    }
    return 0;
}

std::uint64_t ModelReader::readnext(ModelRecord& record, std::int32_t code)
{
    while (true) {
        const std::uint64_t time = read(record, 0);
        if (record.code == code) {
            const auto found = m_times.find(time);
            if (found != m_times.end() && found != m_times.begin()) {
                return std::prev(found)->first;
            }
        }
        if (time == 0) {
            return 0;
        }
    }
}

std::uint64_t ModelReader::readprev(ModelRecord& record, std::uint64_t time)
{
    if (!m_in.good()) {
        return 0;
    }
    const auto found = m_times.find(time);
    if (found == m_times.end() || found == m_times.begin()) {
        return 0;
    }
    const std::uint64_t before = std::prev(found)->first;
    read(record, before);
    return before;
}

}  // namespace TestSupport
