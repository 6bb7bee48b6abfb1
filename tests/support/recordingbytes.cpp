// Header, types, records and tables as bytes, and files of them read and written.
#include "support/recordingbytes.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ostream>
#include <stdexcept>

#include <QFile>

namespace TestSupport {

void PrintTo(const HeaderFields& header, std::ostream* out)
{
    *out << header.bytes();
}

void PrintTo(const TypeFields& type, std::ostream* out)
{
    *out << typeTableBytes({type});
}

ByteBuilder& ByteBuilder::number(std::int64_t value)
{
    m_bytes += std::to_string(value) + '#';
    return *this;
}

ByteBuilder& ByteBuilder::real(float value)
{
    std::array<char, 32> text{};
    const int length = std::snprintf(text.data(), text.size(), "%g", static_cast<double>(value));
    m_bytes.append(text.data(), static_cast<std::size_t>(length));
    m_bytes += '#';
    return *this;
}

ByteBuilder& ByteBuilder::time(std::uint64_t milliseconds)
{
    for (unsigned shift = 0; shift < 64; shift += 8) {
        m_bytes += static_cast<char>((milliseconds >> shift) & 0xFFU);
    }
    m_bytes += '#';
    return *this;
}

ByteBuilder& ByteBuilder::text(const std::string& value)
{
    number(static_cast<std::int64_t>(value.size()));
    m_bytes += value;
    return *this;
}

ByteBuilder& ByteBuilder::headerText(const std::string& value)
{
    number(static_cast<std::int64_t>(value.size()));
    m_bytes += value.substr(0, value.find('\0'));
    return *this;
}

ByteBuilder& ByteBuilder::raw(const std::string& bytes)
{
    m_bytes += bytes;
    return *this;
}

ByteBuilder& ByteBuilder::overwrite(std::size_t offset, const std::string& bytes)
{
    m_bytes.replace(offset, bytes.size(), bytes);
    return *this;
}

std::string HeaderFields::bytes() const
{
    ByteBuilder header;
    header.number(majorVersion).number(minorVersion);
    header.real(startFrequency).real(stopFrequency).real(stepWidth);
    header.number(minLevel).number(maxLevel);
    header.time(startMs).time(stopMs);
    header.headerText(jobId).headerText(deviceName).headerText(deviceType);
    for (const std::int32_t position : {typeTable, firstRecord, timeTable, channelRangeTable, bookmarkTable}) {
        header.number(position);
    }
    header.number(automatic ? 1 : 0);
    return header.bytes();
}

std::string headerArea()
{
    return std::string(499, '0') + '#';
}

std::string typeTableBytes(const std::vector<TypeFields>& types)
{
    ByteBuilder table;
    table.number(static_cast<std::int64_t>(types.size()));
    for (const TypeFields& type : types) {
        table.number(type.typeNumber).number(type.valueType).text(type.keyword).text(type.valuePath);
    }
    return table.bytes();
}

std::string recordBytes(std::int32_t code, const std::string& data)
{
    return ByteBuilder().number(code).text(data).bytes();
}

ReferenceRecording::ReferenceRecording() : m_file(headerArea())
{
}

ReferenceRecording& ReferenceRecording::types(const std::vector<TypeFields>& entries)
{
    if (m_typeTable == 0) {
        m_typeTable = m_file.position();
    }
    m_file.raw(typeTableBytes(entries));
    return *this;
}

ReferenceRecording& ReferenceRecording::record(std::int32_t code, const std::string& data, std::uint64_t time,
                                               bool rangeDef)
{
    m_lastTime = std::max(time, m_lastTime);
    if (data.empty()) {
        return *this;
    }
    if (m_firstRecord == 0) {
        m_firstRecord = m_file.position();
    }
    while (m_times.contains(m_lastTime)) {
        ++m_lastTime;
    }
    m_times[m_lastTime] = m_file.position();
    if (rangeDef) {
        m_rangeDefs.insert(m_lastTime);
    }
    m_file.raw(recordBytes(code, data));
    return *this;
}

std::string ReferenceRecording::close(HeaderFields header) const
{
    ByteBuilder file = m_file;
    header.typeTable = m_typeTable;
    header.firstRecord = m_firstRecord;
    header.timeTable = m_times.empty() ? 0 : file.position();
    for (const auto& [time, position] : m_times) {
        file.time(time).number(position);
    }
    header.channelRangeTable = m_rangeDefs.empty() ? 0 : file.position();
    for (const std::uint64_t time : m_rangeDefs) {
        file.time(time);
    }
    return file.overwrite(0, header.bytes()).bytes();
}

std::string fileName8(const QString& name)
{
#ifdef _WIN32
    return name.toLatin1().toStdString();
#else
    return name.toUtf8().toStdString();
#endif
}

std::string readFile(const QString& name)
{
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly)) {
        throw std::runtime_error("cannot read " + name.toStdString());
    }
    return file.readAll().toStdString();
}

void writeFile(const QString& name, const std::string& bytes)
{
    QFile file(name);
    const auto size = static_cast<qint64>(bytes.size());
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes.data(), size) != size) {
        throw std::runtime_error("cannot write " + name.toStdString());
    }
}

}  // namespace TestSupport
