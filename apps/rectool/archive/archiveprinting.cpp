// Groups, files and stations of the archive as tables and as JSON.
#include "archiveprinting.h"

#include <array>
#include <iostream>

#include "archive.h"
#include "printing/output.h"
#include "printing/text.h"

namespace RecTool {

using Zelvo::FileInfo;
using Zelvo::FileState;
using Zelvo::GroupInfo;
using Zelvo::GroupState;
using Zelvo::StorageProblem;

namespace {

/// One of the words of an enumeration, as they are declared; a shared registry may hold what is not known here.
template <typename Enumeration, std::size_t Count>
const char* wordOf(Enumeration value, const std::array<const char*, Count>& words)
{
    const auto place = static_cast<std::size_t>(value);
    return place < Count ? words[place] : "unknown";
}

}  // namespace

std::string plain(const QString& text)
{
    return oneLine(text.toStdString());
}

std::string count(std::int64_t number)
{
    return grouped(static_cast<std::uint64_t>(std::max<std::int64_t>(number, 0)));
}

const char* nameOf(StorageProblem::Kind kind)
{
    return wordOf(kind, std::array{"missing", "altered", "unreadable"});
}

bool hasFailed(const FileInfo& file)
{
    return file.attempts > 0;
}

namespace {

std::string orDash(const std::string& text)
{
    return text.empty() ? "-" : text;
}

std::string bytes(std::int64_t number)
{
    return number < 0 ? "-" : count(number);
}

std::string time(std::int64_t ms)
{
    return ms <= 0 ? "-" : utc(static_cast<std::uint64_t>(ms));
}

Json timeJson(std::int64_t ms)
{
    return ms <= 0 ? Json() : Json(ms);
}

const char* nameOf(FileState state)
{
    return wordOf(state, std::array{"waiting", "stored", "moved", "edited", "removed", "same"});
}

const char* nameOf(GroupState state)
{
    return wordOf(state, std::array{"open", "asked", "abandoned", "superseded"});
}

std::string why(const FileInfo& file)
{
    std::string text = plain(file.error);
    if (text.empty() && file.state == FileState::Edited) {
        text = "changed, waits for the mover";
    }
    if (hasFailed(file)) {
        text += " (attempts: " + count(file.attempts) + ", next: " + time(file.nextTryMs) + ")";
    }
    if (file.state == FileState::Same) {
        text = std::string(AddressScheme) + plain(file.sameGuid) + '/' + std::to_string(file.sameId);
    }
    return orDash(text);
}

void printStations(const std::vector<Zelvo::StationInfo>& stations)
{
    Table table("lll", {"Station", "Mover last ran", "Storage"});
    for (const Zelvo::StationInfo& station : stations) {
        const std::string storage =
            station.storageError.isEmpty()
                ? "usable"
                : plain(station.storageError) + " (looks again: " + time(station.nextTryMs) + ")";
        table.add({plain(station.name), station.lastRunMs <= 0 ? "never" : time(station.lastRunMs), storage});
    }
    table.print();
}

}  // namespace

Json archiveJson(const FileInfo& file)
{
    Json json = {{"address", file.address().toStdString()},
                 {"name", file.name.toStdString()},
                 {"station", file.station.toStdString()},
                 {"state", nameOf(file.state)},
                 {"localPath", file.localPath.toStdString()},
                 {"storedPath", file.storedPath.toStdString()},
                 {"version", file.version},
                 {"bytes", file.bytes < 0 ? Json() : Json(file.bytes)},
                 {"sha256", file.sha256.toStdString()},
                 {"attempts", file.attempts},
                 {"error", file.error.toStdString()},
                 {"nextTryMs", timeJson(file.nextTryMs)},
                 {"movedMs", timeJson(file.movedMs)}};
    if (file.state == FileState::Same) {
        json["same"] = std::string(AddressScheme) + file.sameGuid.toStdString() + '/' + std::to_string(file.sameId);
    }
    return json;
}

Json archiveJson(const GroupInfo& group)
{
    return {{"group", group.data.guid.toStdString()},
            {"state", nameOf(group.state)},
            {"station", group.station.toStdString()},
            {"directory", group.directory.toStdString()},
            {"title", group.title.toStdString()},
            {"description", group.data.description.toStdString()},
            {"startText", group.startText.toStdString()},
            {"version", group.version.toStdString()},
            {"user", group.data.user.toStdString()},
            {"type", static_cast<int>(group.data.type)},
            {"maxBytes", group.data.maxBytes},
            {"createdMs", timeJson(group.createdMs)},
            {"expiresMs", timeJson(group.data.expires.isValid() ? group.data.expires.toMSecsSinceEpoch() : 0)},
            {"files", group.files},
            {"moved", group.moved},
            {"failed", group.failed}};
}

Json archiveJson(const Zelvo::StationInfo& station)
{
    return {{"name", station.name.toStdString()},
            {"lastRunMs", timeJson(station.lastRunMs)},
            {"storageError", station.storageError.toStdString()},
            {"nextTryMs", timeJson(station.nextTryMs)}};
}

Json archiveJson(const Zelvo::ArchiveStatus& status)
{
    return {{"registry", status.registry.toStdString()},
            {"storage", status.storage.toStdString()},
            {"storageUsable", status.storageUsable},
            {"storageError", status.storageError.toStdString()},
            {"groups", status.groups},
            {"waiting", status.waiting},
            {"failed", status.failed},
            {"moved", status.moved},
            {"removed", status.removed},
            {"bytesMoved", status.bytesMoved},
            {"unpublished", status.unpublished},
            {"stations", archiveJson(status.stations)},
            {"notMoved", archiveJson(status.notMoved)}};
}

void printFiles(const std::vector<FileInfo>& files)
{
    Table table("llrlll", {"Address", "State", "Bytes", "Station", "Name", "Why"});
    for (const FileInfo& file : files) {
        table.add({plain(file.address()), nameOf(file.state), bytes(file.bytes), plain(file.station), plain(file.name),
                   why(file)});
    }
    table.print();
}

void printStatus(const Zelvo::ArchiveStatus& status)
{
    std::cout << "Registry     " << plain(status.registry) << '\n'
              << "Storage      " << plain(status.storage)
              << (status.storageUsable ? "" : ", cannot be used: " + plain(status.storageError)) << '\n'
              << "Groups       " << count(status.groups) << '\n'
              << "Moved        " << count(status.moved) << " files, " << count(status.bytesMoved) << " bytes\n"
              << "Waiting      " << count(status.waiting)
              << " files, of which the last attempt failed: " << count(status.failed) << '\n'
              << "Removed      " << count(status.removed) << " files\n";
    if (status.unpublished > 0) {
        std::cout << "Unpublished  " << count(status.unpublished)
                  << " requests that the registry has not heard of yet\n";
    }
    if (!status.stations.empty()) {
        std::cout << '\n';
        printStations(status.stations);
    }
    if (!status.notMoved.empty()) {
        std::cout << '\n';
        printFiles(status.notMoved);
    }
    const auto shown = static_cast<std::int64_t>(status.notMoved.size());
    if (status.waiting > shown) {
        std::cout << "and " << count(status.waiting - shown) << " more\n";
    }
}

void printFile(const FileInfo& file)
{
    std::cout << "Address   " << plain(file.address()) << '\n'
              << "Name      " << plain(file.name) << '\n'
              << "State     " << nameOf(file.state) << '\n'
              << "Station   " << plain(file.station) << '\n'
              << "Recorded  " << orDash(plain(file.localPath)) << '\n'
              << "Stored    " << orDash(plain(file.storedPath)) << '\n'
              << "Version   " << file.version << '\n'
              << "Bytes     " << bytes(file.bytes) << '\n'
              << "SHA-256   " << orDash(plain(file.sha256)) << '\n'
              << "Moved     " << time(file.movedMs) << '\n'
              << "Why       " << why(file) << '\n';
}

void printGroup(const GroupInfo& group)
{
    const std::int64_t expires = group.data.expires.isValid() ? group.data.expires.toMSecsSinceEpoch() : 0;
    std::cout << "Group        " << plain(group.data.guid) << '\n'
              << "State        " << nameOf(group.state) << '\n'
              << "Title        " << plain(group.title) << '\n'
              << "Description  " << plain(group.data.description) << '\n'
              << "Start        " << plain(group.startText) << '\n'
              << "User         " << plain(group.data.user) << '\n'
              << "Station      " << plain(group.station) << '\n'
              << "Directory    " << plain(group.directory) << '\n'
              << "Created      " << time(group.createdMs) << '\n'
              << "Expires      " << time(expires) << '\n'
              << "Files        " << count(group.files) << ", moved: " << count(group.moved)
              << ", failed: " << count(group.failed) << '\n';
}

void printGroups(const std::vector<GroupInfo>& groups)
{
    Table table("llrrrlll", {"Group", "State", "Files", "Moved", "Failed", "Created", "Station", "Title"});
    for (const GroupInfo& group : groups) {
        table.add({plain(group.data.guid), nameOf(group.state), count(group.files), count(group.moved),
                   count(group.failed), time(group.createdMs), plain(group.station), plain(group.title)});
    }
    table.print();
}

}  // namespace RecTool
