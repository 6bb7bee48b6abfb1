// Headers, findings, bookmarks, records, bearings and values as JSON objects.
#include "json.h"

#include <array>
#include <charconv>
#include <iostream>

#include <QByteArray>

#include <recording2/inspection/rescue/repairedtimes.h>

#include "recordjson.h"
#include "text.h"

namespace RecTool {

using Recording2::Inspection::Bookmark;
using Recording2::Inspection::Finding;
using Recording2::Inspection::Header;
using Recording2::Inspection::Readability;
using Recording2::Inspection::Record;
using values::Bearing;
using values::ValueBase;

namespace {

// The shortest decimal that gives the float again, not the digits that it gets as a double.
Json shortest(float value)
{
    std::array<char, 64> buffer{};
    char* end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
    double number = 0;
    std::from_chars(buffer.data(), end, number);
    return number;
}

}  // namespace

Json toJson(const Header& header)
{
    return {{"version", {{"major", header.majorVersion}, {"minor", header.minorVersion}}},
            {"startFrequencyHz", shortest(header.startFrequencyHz)},
            {"stopFrequencyHz", shortest(header.stopFrequencyHz)},
            {"stepWidthHz", shortest(header.stepWidthHz)},
            {"minLevel", header.minLevel},
            {"maxLevel", header.maxLevel},
            {"startMs", header.startMs},
            {"stopMs", header.stopMs},
            {"jobId", fromLatin1(header.jobId)},
            {"deviceName", fromLatin1(header.deviceName)},
            {"deviceType", fromLatin1(header.deviceType)},
            {"automatic", header.automatic}};
}

Json toJson(const Finding& finding)
{
    return {{"offset", finding.offset}, {"text", finding.text}};
}

Json toJson(const Bookmark& bookmark)
{
    return {{"timeMs", bookmark.timeMs}, {"data", dataToJson(bookmark.text)}};
}

Json toJson(const Record& record, const ValueBase* value, const TypeNames& names)
{
    std::string text;
    RecordJson(names).append(text, record, value);
    return Json::parse(text);
}

Json toJson(const values::ChannelRange& channels)
{
    if (channels.isList()) {
        return {{"channelsHz", channels.channelsHz}};
    }
    return {{"startHz", channels.startHz}, {"stepHz", channels.stepHz}, {"count", channels.count}};
}

// What was not measured is NaN, which JSON has as null.
Json toJson(const Bearing& bearing)
{
    return {{"azimuthDeg", bearing.azimuthDeg},
            {"elevationDeg", bearing.elevationDeg},
            {"levelDb", bearing.levelDb},
            {"quality", bearing.quality}};
}

Json toJson(const Recording2::Inspection::RepairedTimes& times)
{
    return {{"kept", times.kept},     {"between", times.between}, {"inFront", times.inFront},
            {"behind", times.behind}, {"stepMs", times.stepMs},   {"moved", times.moved}};
}

Json toJson(const ValueBase& value)
{
    std::string text;
    appendJson(text, value);
    return Json::parse(text);
}

const char* name(Readability readability)
{
    constexpr std::array Names{"ok",         "missing",      "unreadable", "empty",
                               "old-format", "no-recording", "truncated",  "never-closed"};  // as they are declared
    return Names.at(static_cast<std::size_t>(readability));
}

Json dataToJson(const std::string& bytes)
{
    if (isAscii(bytes)) {
        return {{"text", bytes}};
    }
    return {{"base64", QByteArray::fromStdString(bytes).toBase64().toStdString()}};
}

void printJson(const Json& json)
{
    std::cout << json.dump(2) << '\n';
}

}  // namespace RecTool
