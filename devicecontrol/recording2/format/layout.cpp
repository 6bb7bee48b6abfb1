// The fields of the header record and of a type entry, in their order.
#include "layout.h"

#include <algorithm>
#include <array>

namespace Recording2::Format {

namespace {

// Room for the three header texts: the header area less the longest form of every other field.
constexpr std::size_t HeaderTextBytes = [] {
    constexpr std::size_t Versions = std::size_t{2} * 7;      // "-32768#"
    constexpr std::size_t Frequencies = std::size_t{3} * 13;  // "-3.40282e+38#"
    constexpr std::size_t Levels = std::size_t{2} * 12;       // "-2147483648#"
    constexpr std::size_t Times = 2 * TimeBytes;
    constexpr std::size_t TextLengths = std::size_t{3} * 4;      // "499#"
    constexpr std::size_t BlockPositions = std::size_t{5} * 11;  // "2147483647#"
    constexpr std::size_t Flag = 2;
    return std::size_t{HeaderAreaBytes} - Versions - Frequencies - Levels - Times - TextLengths - BlockPositions - Flag;
}();

void appendHeaderText(std::string& out, const std::string& text)
{
    appendString(out, static_cast<std::uint32_t>(text.size()), std::string_view(text.c_str()));
}

void readText(Cursor& cursor, std::string& target)
{
    std::int32_t length = 0;
    cursor.readNumber(length);
    if (length > 0) {
        cursor.readBytes(target, length);
    }
}

}  // namespace

std::string headerArea()
{
    std::string area(HeaderAreaBytes - 1, '0');
    area.push_back(Separator);
    return area;
}

std::string headerArea(const HeaderRecord& header)
{
    std::string record;
    appendHeader(record, header);
    std::string area = headerArea();
    return area.replace(0, record.size(), record);
}

void endTextsAtNul(HeaderRecord& header)
{
    for (std::string* text : {&header.jobId, &header.deviceName, &header.deviceType}) {
        text->resize(std::min(text->size(), text->find('\0')));
    }
}

void fitTexts(HeaderRecord& header)
{
    endTextsAtNul(header);
    std::array<std::string*, 3> texts = {&header.jobId, &header.deviceName, &header.deviceType};
    std::sort(texts.begin(), texts.end(),
              [](const std::string* a, const std::string* b) { return a->size() < b->size(); });
    std::size_t room = HeaderTextBytes;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        texts[i]->resize(std::min(texts[i]->size(), room / (texts.size() - i)));
        room -= texts[i]->size();
    }
}

void appendHeader(std::string& out, const HeaderRecord& header)
{
    appendNumber(out, header.majorVersion);
    appendNumber(out, header.minorVersion);
    appendFloat(out, header.startFrequencyHz);
    appendFloat(out, header.stopFrequencyHz);
    appendFloat(out, header.stepWidthHz);
    appendNumber(out, header.minLevel);
    appendNumber(out, header.maxLevel);
    appendTime(out, header.startMs);
    appendTime(out, header.stopMs);
    appendHeaderText(out, header.jobId);
    appendHeaderText(out, header.deviceName);
    appendHeaderText(out, header.deviceType);
    appendNumber(out, header.positions.typeTable);
    appendNumber(out, header.positions.firstRecord);
    appendNumber(out, header.positions.timeTable);
    appendNumber(out, header.positions.channelRangeTable);
    appendNumber(out, header.positions.bookmarkTable);
    appendNumber(out, std::int32_t{header.automatic ? 1 : 0});
}

HeaderStatus readHeader(Cursor& cursor, HeaderRecord& target)
{
    cursor.readNumber(target.majorVersion);
    cursor.readNumber(target.minorVersion);
    if (target.majorVersion < OldestMajorVersion) {
        return HeaderStatus::OldFormat;
    }
    cursor.readNumber(target.startFrequencyHz);
    cursor.readNumber(target.stopFrequencyHz);
    cursor.readNumber(target.stepWidthHz);
    cursor.readNumber(target.minLevel);
    cursor.readNumber(target.maxLevel);
    cursor.readTime(target.startMs);
    cursor.readTime(target.stopMs);
    readText(cursor, target.jobId);
    readText(cursor, target.deviceName);
    readText(cursor, target.deviceType);
    cursor.readNumber(target.positions.typeTable);
    cursor.readNumber(target.positions.firstRecord);
    cursor.readNumber(target.positions.timeTable);
    cursor.readNumber(target.positions.channelRangeTable);
    cursor.readNumber(target.positions.bookmarkTable);
    std::int32_t automatic = target.automatic ? 1 : 0;
    cursor.readNumber(automatic);
    target.automatic = automatic >= 1;
    return HeaderStatus::Ok;
}

void appendTypeEntry(std::string& out, std::int32_t typeNumber, std::int32_t valueType, std::string_view keyword,
                     std::string_view valuePath)
{
    appendNumber(out, typeNumber);
    appendNumber(out, valueType);
    appendString(out, keyword.size(), keyword);
    appendString(out, valuePath.size(), valuePath);
}

void readTypeEntry(Cursor& cursor, TypeEntryRecord& target)
{
    cursor.readNumber(target.typeNumber);
    cursor.readNumber(target.valueType);
    readText(cursor, target.keyword);
    readText(cursor, target.valuePath);
}

}  // namespace Recording2::Format
