// Replays the bearings of a time span into a map, first the channel range.
#include "mappinggenerator.h"

#include <new>
#include <string>

#include "fileaccess.h"
#include "record/recordtypetable.h"
#include "recordmodel.h"

namespace Recording2 {

namespace {

unsigned long long offsetMs(const CTimeStamp& start, long long time)
{
    return start.msecsTo(CTimeStamp(static_cast<unsigned long long>(time)));
}

// The text of the last definition at or before an offset; empty when there is none.
std::string channelRangeAt(CFileAccess& file, unsigned long long offset)
{
    std::string text;
    CVTCmdData record;
    file.CRDTableToBegin();
    for (bool more = true; more;) {
        unsigned long long time = 0;
        more = file.readNextChannelRangeDef(record, time);
        if (time > offset) {
            break;
        }
        text = record.str();
    }
    return text;
}

void apply(const CVTCmdData& record, MappingGenerator::BearingMap& map)
{
    if (record.cmd() != DfSpectrum) {
        return;
    }
    try {
        map.ApplyRecordedState(std::string(record.strData(), record.strDataLen()), 0, true);
    } catch (...) {  // the walk goes on with the next record, as callers expect, whatever an observer of the map threw
        return;
    }
}

}  // namespace

bool MappingGenerator::LoadRecording(long long& startTime, long long& stopTime, const char* file, const char* second)
{
    m_file.reset();
    try {
        m_file = std::make_shared<CFileAccess>(file, QString::fromUtf8(second), nullptr, false, true, false, nullptr,
                                               nullptr);
    } catch (const std::bad_alloc&) {
        return false;
    }
    if (!m_file->IsValidFile()) {
        return false;
    }
    CHeaderData header;
    m_file->read(header);
    startTime = static_cast<long long>(header.startTS().getMicroSecs());
    stopTime = static_cast<long long>(header.stopTS().getMicroSecs());
    return true;
}

void MappingGenerator::RequestMapping(BearingMap& map, long long startTime, long long stopTime)
{
    if (m_file == nullptr) {
        return;
    }
    m_file->readTables();
    if (!m_file->channelRangeDefAvailable()) {
        return;
    }
    CHeaderData header;
    m_file->read(header);
    const CTimeStamp start = header.startTS();
    const unsigned long long startOffset = offsetMs(start, startTime);
    const unsigned long long stopOffset = offsetMs(start, stopTime);
    map.ApplyRecordedState(channelRangeAt(*m_file, startOffset), 0, true);
    if (startOffset > stopOffset) {
        return;
    }
    // Records that were stored at one moment have moved to the next free milliseconds, the last ones after the end.
    const bool toTheEnd = stopOffset == offsetMs(start, static_cast<long long>(header.stopTS().getMicroSecs()));
    if (startOffset == 0) {
        m_file->GoToFirstRecord();  // no record stands at 0, which reads the one here
    }
    // Each read tells the time of the record that follows. 0 is no end by itself (the index may lack a record); the
    // walk is over when the records are.
    CVTCmdData record;
    unsigned long long following = m_file->read(record, startOffset);
    apply(record, map);
    while ((toTheEnd || following <= stopOffset) && !m_file->AtEndOfRecords()) {
        following = m_file->readnext(record);
        apply(record, map);
    }
}

}  // namespace Recording2
