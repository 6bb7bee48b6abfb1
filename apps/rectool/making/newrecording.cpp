// Writing under a temporary name, comparing what was stored, and taking the final name.
#include "newrecording.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <iostream>
#include <system_error>
#include <utility>

#include <QFile>

#include "printing/output.h"
#include "printing/progress.h"
#include "printing/text.h"
#include "samesummary.h"
#include "savedfile.h"
#include "system/filenames.h"

namespace RecTool {

namespace fs = std::filesystem;
namespace Inspection = Recording2::Inspection;

namespace {

// What the three texts of a header may have together, so that the header fits into its 500 bytes with the longest
// numbers in all of its other fields.
constexpr std::size_t HeaderTextBytes = 336;

/// Cuts texts at their first NUL, behind which none is written, and the longest until all of them fit.
void fitTexts(Inspection::Header& header)
{
    std::array<std::string*, 3> texts = {&header.jobId, &header.deviceName, &header.deviceType};
    for (std::string* text : texts) {
        text->resize(std::min(text->size(), text->find('\0')));
    }
    std::sort(texts.begin(), texts.end(),
              [](const std::string* a, const std::string* b) { return a->size() < b->size(); });
    std::size_t room = HeaderTextBytes;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        texts[i]->resize(std::min(texts[i]->size(), room / (texts.size() - i)));
        room -= texts[i]->size();
    }
}

Recording2::CTimeStamp stamp(std::uint64_t ms)
{
    return Recording2::CTimeStamp(static_cast<unsigned long long>(ms) * 1000ULL);
}

Recording2::CHeaderData toHeaderData(const Inspection::Header& header)
{
    std::string deviceName = header.deviceName;
    std::string deviceType = header.deviceType;
    Recording2::CHeaderData data;
    data.set_version(static_cast<std::int16_t>(header.majorVersion), static_cast<std::int16_t>(header.minorVersion));
    data.set_startFreq(header.startFrequencyHz);
    data.set_stopFreq(header.stopFrequencyHz);
    data.set_stepWidth(header.stepWidthHz);
    data.set_minLevel(header.minLevel);
    data.set_maxLevel(header.maxLevel);
    data.set_startTS(stamp(header.startMs));
    data.set_stopTS(stamp(header.stopMs));
    data.setJobID(header.jobId.c_str());
    data.set_deviceName(deviceName);
    data.set_deviceType(deviceType);
    data.setAutomaticRec(header.automatic);
    return data;
}

fs::path folderOf(const fs::path& path)
{
    const fs::path folder = path.parent_path();
    return folder.empty() ? fs::path(".") : folder;
}

/// A link, unlike a rename, never replaces. Where a file system has none, a look before the rename is all there is.
void renameWithoutReplacing(const fs::path& from, const fs::path& to, std::error_code& error)
{
    fs::create_hard_link(from, to, error);
    if (!error) {
        fs::remove(from, error);
    } else if (error != std::errc::file_exists) {
        if (fs::exists(fs::symlink_status(to, error))) {
            error = std::make_error_code(std::errc::file_exists);
        } else {
            fs::rename(from, to, error);
        }
    }
}

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

NewRecording::NewRecording(std::string path, bool replace) : m_path(std::move(path)), m_replace(replace)
{
}

NewRecording::~NewRecording()
{
    m_file.reset();
    if (!m_temporary.empty()) {
        std::error_code error;
        fs::remove(native(m_temporary), error);
        if (error) {
            complain(m_temporary, "The unfinished file could not be removed: " + error.message() + ".");
        }
    }
}

ExitCode NewRecording::fail(ExitCode code, const std::string& reason) const
{
    complain(m_path, reason + " Nothing was written.");
    return code;
}

ExitCode NewRecording::check(const std::vector<std::string>& inputs) const
{
    std::error_code error;
    const fs::path path = native(m_path);
    if (path.filename().empty() || fs::is_directory(path, error)) {
        return fail(ExitCode::Usage, "This is a directory, not the name of a file.");
    }
    for (const std::string& input : inputs) {
        if (fs::equivalent(native(input), path, error)) {
            return fail(ExitCode::Usage, "The result cannot take the place of " + input + ", from which it is made.");
        }
    }
    const fs::file_status there = fs::symlink_status(path, error);
    const fs::file_status behindLinks = fs::status(path, error);
    if (fs::exists(behindLinks) && !fs::is_regular_file(behindLinks)) {
        return fail(ExitCode::Usage, "This is not an ordinary file.");
    }
    if (fs::exists(there) && !m_replace) {
        return fail(ExitCode::Usage, "There is such a file already; --force replaces it.");
    }
    const std::string kept = whyKept();
    if (!kept.empty()) {
        return fail(ExitCode::Usage, kept);
    }
    if (!fs::is_directory(folderOf(path), error)) {
        return fail(ExitCode::CannotRead, "There is no directory " + fromNative(folderOf(path)) + '.');
    }
    return ExitCode::Fine;
}

/// Why not even --force replaces what is there; empty when it may be replaced.
std::string NewRecording::whyKept() const
{
    std::error_code error;
    const fs::file_status there = fs::symlink_status(native(m_path), error);
    if (!fs::exists(there)) {
        return "";
    }
    if (fs::is_symlink(there)) {
        return "This is a link, and not followed.";
    }
    if (holdsRecording(m_path)) {
        return "This is a recording, which --force does not replace either.";
    }
    return isUnderWay(m_path) ? "By its name this belongs to a recording that is under way; it is not replaced." : "";
}

// Without a suffix that the library knows, so that closing the file leaves its name alone.
bool NewRecording::reserveTemporaryName()
{
    constexpr int Attempts = 100;
    for (int i = 1; i <= Attempts; ++i) {
        const std::string name = m_path + (i == 1 ? std::string(".part") : ".part" + std::to_string(i));
        if (QFile(forQt(name)).open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
            m_temporary = name;
            return true;
        }
        std::error_code error;
        if (!fs::exists(fs::symlink_status(native(name), error))) {
            break;  // not taken: there can be no file
        }
    }
    return false;
}

ExitCode NewRecording::create(const std::vector<Inspection::TypeEntry>& types)
{
    for (const std::string& part : Inspection::removeLeftParts(m_path)) {
        complain(part, "This unfinished output of an earlier run was removed.");
    }
    if (!reserveTemporaryName()) {
        return fail(ExitCode::CannotRead, "No file can be made there.");
    }
    m_lock = std::make_unique<Inspection::PartLock>(m_temporary);
    m_file = std::make_unique<Recording2::CFileAccess>(forLibrary(m_temporary).c_str(), QString(), nullptr, true, false,
                                                       false, nullptr, nullptr);
    if (!m_file->IsValidFile()) {
        return fail(ExitCode::CannotRead, "The file cannot be opened for writing.");
    }
    Recording2::CVTTypesData table;
    for (const Inspection::TypeEntry& type : types) {
        const std::size_t before = table.get_vector().size();
        table.add_item({type.typeNumber, type.valueType, type.keyword, type.valuePath});
        if (table.get_vector().size() > before) {  // a number that stands there twice counts once
            m_types.push_back(type);
        }
    }
    m_file->write(table);
    return ExitCode::Fine;
}

void NewRecording::write(std::int32_t code, const std::string& data, std::uint64_t time, bool isChannelRange)
{
    Recording2::CVTCmdData record;
    record.set_cmd(code);
    record.set_str(data.data(), static_cast<std::int32_t>(data.size()));
    m_file->write(record, time, false);
    m_written.add(code, data, time);
    if (isChannelRange) {
        addChannelRange(time);
    }
}

void NewRecording::addChannelRange(std::uint64_t time)
{
    m_file->addChannelRangeDef(time);
    m_channelRanges.push_back(time);
}

void NewRecording::close(const Inspection::Header& header)
{
    m_result.header = header;
    fitTexts(m_result.header);
    Recording2::CHeaderData data = toHeaderData(m_result.header);
    m_file->CloseRecording(data, true);
    m_file.reset();
}

void NewRecording::storeBookmarks(const std::vector<Inspection::Bookmark>& bookmarks)
{
    if (bookmarks.empty()) {
        return;
    }
    m_lock.reset();  // the library takes the same lock for as long as it changes the file
    {
        Recording2::CFileAccess file(forLibrary(m_temporary).c_str(), QString(), nullptr, false, true, false, nullptr,
                                     nullptr);
        for (const Inspection::Bookmark& bookmark : bookmarks) {
            file.addBookmark(bookmark.timeMs, bookmark.text);
        }
        file.writeBookmarks();
    }
    m_lock = std::make_unique<Inspection::PartLock>(m_temporary);
}

/// What is wrong with the file that was written; empty when nothing is. The library tells nobody of failed writes.
std::string NewRecording::readBack(const std::vector<Inspection::Bookmark>& bookmarks)
{
    const Inspection::Summary found = Inspection::inspect(m_temporary);
    if (found.readability != Inspection::Readability::Ok) {
        return found.problem;
    }
    Digest read;
    Progress progress(m_path + ": reading back");
    std::vector<Inspection::Finding> findings = found.findings;
    const auto inRecords = Inspection::walkRecords(
        m_temporary, found,
        [&](const Inspection::Record& record) {
            read.add(record.code, record.data, record.timeMs);
            return !interrupted();
        },
        progress.callback());
    findings.insert(findings.end(), inRecords.begin(), inRecords.end());
    if (!findings.empty()) {
        return findings.front().text;
    }
    std::sort(m_channelRanges.begin(), m_channelRanges.end());
    m_channelRanges.erase(std::unique(m_channelRanges.begin(), m_channelRanges.end()), m_channelRanges.end());
    if (read.records() != m_written.records() || read.value() != m_written.value()) {
        return "The records are not those that were written.";
    }
    if (found.header.startMs != m_result.header.startMs || found.header.stopMs != m_result.header.stopMs) {
        return "The header cannot tell the start or the stop.";
    }
    if (!sameTable(found.types, m_types) || found.channelRangeTimes != m_channelRanges ||
        !sameTable(found.bookmarks, bookmarks)) {
        return "The tables are not those that were written.";
    }
    m_result.header = found.header;
    m_result.records = read.records();
    m_result.bytes = found.fileSize;
    m_result.bookmarks = found.bookmarks.size();
    m_result.channelRanges = found.channelRangeTimes.size();
    return "";
}

ExitCode NewRecording::takeName()
{
    std::error_code error;
    const std::string kept = m_replace ? whyKept() : "";  // something may have taken the name meanwhile
    if (!kept.empty()) {
        return fail(ExitCode::CannotRead, kept);
    }
    if (m_replace) {
        fs::rename(native(m_temporary), native(m_path), error);
    } else {
        renameWithoutReplacing(native(m_temporary), native(m_path), error);
    }
    if (error) {
        return fail(ExitCode::CannotRead, "The file cannot be given its name: " + error.message() + '.');
    }
    m_temporary.clear();
    return ExitCode::Fine;
}

ExitCode NewRecording::finish(const Inspection::Header& header, const std::vector<Inspection::Bookmark>& bookmarks)
{
    if (!interrupted()) {
        close(header);
        storeBookmarks(bookmarks);
    }
    const std::string problem = interrupted() ? "" : readBack(bookmarks);
    if (interrupted()) {
        return fail(ExitCode::CannotRead, "Interrupted.");
    }
    if (!problem.empty()) {
        return fail(ExitCode::CannotRead,
                    "The file could not be written; is the disk full? Reading it back: " + problem);
    }
    return takeName();
}

}  // namespace RecTool
