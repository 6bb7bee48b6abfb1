// The objects of the library's interface, made of the fields that tests write recordings of, and taken apart again.
#pragma once

#include <recording2/fileaccess.h>

#include "support/recordingbytes.h"

namespace TestSupport {

using Recording2::CHeaderData;
using Recording2::CTimeStamp;
using Recording2::CVTCmdData;
using Recording2::CVTTypesData;
using Recording2::S_TYPES;

inline CVTCmdData makeRecord(std::int32_t code, const std::string& data)
{
    CVTCmdData record;
    record.set_cmd(code);
    record.set_str(data.data(), static_cast<std::int32_t>(data.size()));
    return record;
}

inline std::string dataOf(const CVTCmdData& record)
{
    return {record.strData(), record.strDataLen()};
}

inline CHeaderData makeHeader(const HeaderFields& fields)
{
    CHeaderData header;
    header.set_version(fields.majorVersion, fields.minorVersion);
    header.set_startFreq(fields.startFrequency);
    header.set_stopFreq(fields.stopFrequency);
    header.set_stepWidth(fields.stepWidth);
    header.set_minLevel(fields.minLevel);
    header.set_maxLevel(fields.maxLevel);
    header.set_startTS(CTimeStamp(static_cast<unsigned long long>(fields.startMs * 1'000)));
    header.set_stopTS(CTimeStamp(static_cast<unsigned long long>(fields.stopMs * 1'000)));
    header.setJobID(fields.jobId.c_str());
    std::string text = fields.deviceName;
    header.set_deviceName(text);
    text = fields.deviceType;
    header.set_deviceType(text);
    header.setAutomaticRec(fields.automatic);
    return header;
}

inline CVTTypesData makeTypes(const std::vector<TypeFields>& fields)
{
    CVTTypesData types;
    for (const TypeFields& field : fields) {
        types.get_vector().push_back({field.typeNumber, field.valueType, field.keyword, field.valuePath});
    }
    return types;
}

/// Its positions are not the object's to tell.
inline HeaderFields fieldsOf(const CHeaderData& header)
{
    return {.majorVersion = header.majorversion(),
            .minorVersion = header.minorversion(),
            .startFrequency = header.startFreq(),
            .stopFrequency = header.stopFreq(),
            .stepWidth = header.stepWidth(),
            .minLevel = header.minLevel(),
            .maxLevel = header.maxLevel(),
            .startMs = header.startTS().getMilliSecs(),
            .stopMs = header.stopTS().getMilliSecs(),
            .jobId = {header.getJobID(), header.JobIDLength()},
            .deviceName = {header.deviceName(), header.deviceNameLength()},
            .deviceType = {header.deviceType(), header.deviceTypeLength()},
            .automatic = header.isAutomaticRec()};
}

inline TypeFields fieldsOf(const S_TYPES& type)
{
    return {type.typeNumber, type.valueType, type.keyword, type.valuePath};
}

inline std::vector<TypeFields> fieldsOf(CVTTypesData& types)
{
    std::vector<TypeFields> fields;
    for (const S_TYPES& type : types.get_vector()) {
        fields.push_back(fieldsOf(type));
    }
    return fields;
}

}  // namespace TestSupport
