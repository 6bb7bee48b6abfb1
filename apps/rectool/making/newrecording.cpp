// Writing under a temporary name, comparing what was stored, and taking the final name.
#include "newrecording.h"

#include <algorithm>
#include <iostream>
#include <limits>
#include <utility>

#include <recording2/inspection/rescue/leftparts.h>

#include "printing/output.h"
#include "printing/text.h"
#include "system/filenames.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;

namespace {

constexpr System::FileMode EverybodyByUmask = 0666;

}  // namespace

void print(const std::string& path, const NewRecordingResult& result)
{
    const Inspection::Header& header = result.header;
    std::cout << oneLine(path) << '\n'
              << "  Started         " << utc(header.startMs) << '\n'
              << "  Stopped         " << utc(header.stopMs) << '\n'
              << "  Duration        " << duration(header.stopMs - header.startMs) << '\n'
              << "  Size            " << grouped(static_cast<std::uint64_t>(result.bytes)) << " bytes\n"
              << "  Records         " << grouped(result.records) << '\n'
              << "  Channel ranges  " << grouped(result.channelRanges) << '\n'
              << "  Bookmarks       " << grouped(result.bookmarks) << '\n';
}

Json toJson(const std::string& path, const NewRecordingResult& result)
{
    return {{"output", path},
            {"startMs", result.header.startMs},
            {"stopMs", result.header.stopMs},
            {"bytes", result.bytes},
            {"records", result.records},
            {"channelRanges", result.channelRanges},
            {"bookmarks", result.bookmarks}};
}

void NewRecording::Digest::add(std::int32_t code, const std::string& data, std::uint64_t time)
{
    const std::string head =
        std::to_string(code) + ' ' + std::to_string(time) + ' ' + std::to_string(data.size()) + ' ';
    m_hash.addData(head.data(), static_cast<int>(head.size()));
    m_hash.addData(data.data(), static_cast<int>(data.size()));
    ++m_records;
}

NewRecording::NewRecording(std::string path, bool replace)
    : m_name(std::move(path), replace), m_file(native(m_name.path()), EverybodyByUmask)
{
}

NewRecording::~NewRecording()
{
    if (const System::Error error = m_file.discard()) {
        complain(utf8(m_file.part()), "The unfinished file could not be removed: " + System::errorText(error) + ".");
    }
}

ExitCode NewRecording::create(const std::vector<Inspection::TypeEntry>& types)
{
    for (const std::string& part : Inspection::removeLeftParts(m_name.path())) {
        complain(part, "This unfinished output of an earlier run was removed.");
    }
    for (const Inspection::TypeEntry& type : types) {
        const bool again = std::any_of(m_types.begin(), m_types.end(),
                                       [&](const auto& other) { return other.typeNumber == type.typeNumber; });
        if (!again) {  // a number that stands there twice counts once
            m_types.push_back(type);
        }
    }
    return m_file.begin(Recording2::Format::typeTable(m_types)) == 0
               ? ExitCode::Fine
               : m_name.fail(ExitCode::CannotRead, "No file can be made there.");
}

void NewRecording::write(std::int32_t code, const std::string& data, std::uint64_t time, bool isChannelRange)
{
    m_file.add(code, data);
    m_times.push_back(m_times.empty() ? time : std::max(time, m_times.back() + 1));
    m_written.add(code, data, time);
    if (isChannelRange) {
        addChannelRange(time);
    }
}

/// What went wrong in writing, at once or long before; empty when nothing did.
std::string NewRecording::close(const Inspection::Header& header, const std::map<std::uint64_t, std::string>& bookmarks)
{
    m_result.header = header;
    Recording2::Format::fitTexts(m_result.header);
    std::sort(m_channelRanges.begin(), m_channelRanges.end());
    m_channelRanges.erase(std::unique(m_channelRanges.begin(), m_channelRanges.end()), m_channelRanges.end());
    m_file.end(m_result.header, {m_times, m_channelRanges, bookmarks});
    const System::Error error = m_file.close(false);
    return error == 0 ? "" : System::errorText(error) + '.';
}

/// What is wrong with the file that was written; empty when nothing is.
std::string NewRecording::readBack(const std::map<std::uint64_t, std::string>& bookmarks)
{
    constexpr std::uint64_t Latest = std::numeric_limits<std::uint64_t>::max() / 1000;  // in a time stamp
    const std::string part = utf8(m_file.part());
    const Inspection::Summary found = Inspection::inspect(part);
    if (found.readability != Inspection::Readability::Ok) {
        return found.problem;
    }
    Digest read;
    Progress progress(m_name.path() + ": reading back");
    std::vector<Inspection::Finding> findings = found.findings;
    const auto inRecords = Inspection::walkRecords(
        part, found,
        [&](const Inspection::Record& record) {
            read.add(record.code, record.data, record.timeMs);
            return !Interrupt::requested();
        },
        progress.callback());
    findings.insert(findings.end(), inRecords.begin(), inRecords.end());
    if (!findings.empty()) {
        return findings.front().text;
    }
    if (read.records() != m_written.records() || read.value() != m_written.value()) {
        return "The records are not those that were written.";
    }
    if (std::max(found.header.startMs, found.header.stopMs) > Latest) {
        return "The header cannot tell the start or the stop.";
    }
    const bool sameBookmarks = std::equal(
        found.bookmarks.begin(), found.bookmarks.end(), bookmarks.begin(), bookmarks.end(),
        [](const auto& one, const auto& other) { return one.timeMs == other.first && one.text == other.second; });
    if (found.types != m_types || found.channelRangeTimes != m_channelRanges || !sameBookmarks) {
        return "The tables are not those that were written.";
    }
    m_result.header = found.header;
    m_result.records = read.records();
    m_result.bytes = found.fileSize;
    m_result.bookmarks = found.bookmarks.size();
    m_result.channelRanges = found.channelRangeTimes.size();
    return "";
}

ExitCode NewRecording::finish(const Inspection::Header& header, const std::map<std::uint64_t, std::string>& bookmarks)
{
    std::string problem = Interrupt::requested() ? "" : close(header, bookmarks);
    if (problem.empty() && !Interrupt::requested()) {
        problem = readBack(bookmarks);
        problem = problem.empty() ? "" : "Reading it back: " + problem;
    }
    return m_name.finish(problem, [this](bool replace) { return m_file.takeName(replace); });
}

}  // namespace RecTool
