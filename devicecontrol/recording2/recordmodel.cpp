// Texts and lengths of headers and records, and looking up a type's number.
#include "recordmodel.h"

#include <algorithm>
#include <utility>

namespace Recording2 {

namespace {

std::uint32_t length32(const std::string& text)
{
    return static_cast<std::uint32_t>(text.size());
}

}  // namespace

const CHeaderData& CHeaderData::operator=(const CHeaderData& other)
{
    if (this == &other) {
        return *this;
    }
    m_major = other.m_major;
    m_minor = other.m_minor;
    m_startFreq = other.m_startFreq;
    m_stopFreq = other.m_stopFreq;
    m_stepWidth = other.m_stepWidth;
    m_minLevel = other.m_minLevel;
    m_maxLevel = other.m_maxLevel;
    m_deviceType = other.m_deviceType;
    m_deviceName = other.m_deviceName;
    m_start = other.m_start;
    m_stop = other.m_stop;
    m_jobId = other.m_jobId;
    m_automatic = other.m_automatic;
    return *this;
}

Long CHeaderData::version() const
{
    const auto upper = static_cast<std::uint32_t>(std::int32_t{m_major}) << 16U;
    return static_cast<std::int32_t>(upper | static_cast<std::uint32_t>(std::int32_t{m_minor}));
}

void CHeaderData::set_version(std::int16_t major, std::int16_t minor)
{
    m_major = major;
    m_minor = minor;
}

std::uint32_t CHeaderData::deviceTypeLength() const
{
    return length32(m_deviceType);
}

void CHeaderData::set_deviceType(std::string& text)
{
    m_deviceType = text;
}

void CHeaderData::set_deviceType(const char* text)
{
    m_deviceType = text;
}

std::uint32_t CHeaderData::deviceNameLength() const
{
    return length32(m_deviceName);
}

void CHeaderData::set_deviceName(std::string& text)
{
    m_deviceName = text;
}

void CHeaderData::set_deviceName(const char* text)
{
    m_deviceName = text;
}

std::uint32_t CHeaderData::JobIDLength() const
{
    return length32(m_jobId);
}

void CHeaderData::setJobID(const char* text)
{
    m_jobId = text;
}

// By value, as the interface has it.
void CHeaderData::set_startTS(CTimeStamp time)  // NOLINT(performance-unnecessary-value-param)
{
    m_start = time;
}

void CHeaderData::set_stopTS(CTimeStamp time)  // NOLINT(performance-unnecessary-value-param)
{
    m_stop = time;
}

std::uint32_t CVTCmdData::strDataLen() const
{
    return length32(m_data);
}

void CVTCmdData::set_str(std::string& s, std::int32_t len)
{
    if (len < 1) {
        m_data = s;
    } else {
        m_data.assign(s.data(), static_cast<std::size_t>(len));
    }
}

void CVTCmdData::set_str(const char* p, std::int32_t len)
{
    if (len > 0) {
        m_data.assign(p, static_cast<std::size_t>(len));
    } else {
        m_data.assign(p);
    }
}

void CVTTypesData::add_item(S_TYPES item)
{
    const bool isTaken = std::any_of(m_types.begin(), m_types.end(),
                                     [&](const S_TYPES& type) { return type.typeNumber == item.typeNumber; });
    if (!isTaken) {
        m_types.push_back(std::move(item));
    }
}

S_TYPES CVTTypesData::find_type(Long typeNumber)
{
    S_TYPES found;
    find_type(typeNumber, found);
    return found;
}

bool CVTTypesData::find_type(Long typeNumber, S_TYPES& out)
{
    const auto entry = std::find_if(m_types.begin(), m_types.end(),
                                    [&](const S_TYPES& type) { return type.typeNumber == typeNumber; });
    if (entry == m_types.end()) {
        return false;
    }
    out = *entry;
    return true;
}

}  // namespace Recording2
