// Copying the fields of a header, each from one header to the other.
#include "headerconversion.h"

#include "../timestamp.h"

namespace Recording2 {

namespace {

CTimeStamp stampOf(std::uint64_t milliseconds)
{
    return CTimeStamp(static_cast<unsigned long long>(milliseconds) * 1000ULL);
}

}  // namespace

Format::HeaderRecord toRecord(const CHeaderData& header, const Format::Positions& positions)
{
    Format::HeaderRecord record;
    record.majorVersion = header.majorversion();
    record.minorVersion = header.minorversion();
    record.startFrequencyHz = header.startFreq();
    record.stopFrequencyHz = header.stopFreq();
    record.stepWidthHz = header.stepWidth();
    record.minLevel = header.minLevel();
    record.maxLevel = header.maxLevel();
    record.startMs = header.startTS().getMilliSecs();
    record.stopMs = header.stopTS().getMilliSecs();
    record.jobId.assign(header.getJobID(), header.JobIDLength());
    record.deviceName.assign(header.deviceName(), header.deviceNameLength());
    record.deviceType.assign(header.deviceType(), header.deviceTypeLength());
    record.positions = positions;
    record.automatic = header.isAutomaticRec();
    return record;
}

void fromRecord(const Format::HeaderRecord& record, CHeaderData& header)
{
    header.set_version(record.majorVersion, record.minorVersion);
    header.set_startFreq(record.startFrequencyHz);
    header.set_stopFreq(record.stopFrequencyHz);
    header.set_stepWidth(record.stepWidthHz);
    header.set_minLevel(record.minLevel);
    header.set_maxLevel(record.maxLevel);
    header.set_startTS(stampOf(record.startMs));
    header.set_stopTS(stampOf(record.stopMs));
    header.setJobID(record.jobId.c_str());
    std::string text = record.deviceName;
    header.set_deviceName(text);
    text = record.deviceType;
    header.set_deviceType(text);
    header.setAutomaticRec(record.automatic);
}

}  // namespace Recording2
