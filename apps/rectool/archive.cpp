// The verbs "archive status", "groups", "show", "fetch", "verify" and "retry".
#include "archive.h"

#include <algorithm>
#include <functional>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <vector>

#include <QDir>
#include <QFile>
#include <QString>

#include <zelvo/archive.h>

#include "archivedfiles.h"
#include "json.h"
#include "output.h"
#include "progress.h"
#include "table.h"
#include "text.h"

namespace RecTool {

namespace {

using Zelvo::FileInfo;
using Zelvo::FileState;
using Zelvo::GroupInfo;
using Zelvo::GroupState;
using Zelvo::StorageProblem;

const std::string AddressScheme = "zelvo:///";

// Texts of the registry come from anywhere.
std::string plain(const QString& text)
{
    return oneLine(text.toStdString());
}

std::string orDash(const std::string& text)
{
    return text.empty() ? "-" : text;
}

std::string count(std::int64_t number)
{
    return grouped(static_cast<std::uint64_t>(std::max<std::int64_t>(number, 0)));
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
    switch (state) {
        case FileState::Waiting:
            return "waiting";
        case FileState::Stored:
            return "stored";
        case FileState::Moved:
            return "moved";
        case FileState::Edited:
            return "edited";
        case FileState::Removed:
            return "removed";
        case FileState::Same:
            return "same";
    }
    return "unknown";
}

const char* nameOf(GroupState state)
{
    switch (state) {
        case GroupState::Open:
            return "open";
        case GroupState::Asked:
            return "asked";
        case GroupState::Abandoned:
            return "abandoned";
        case GroupState::Superseded:
            return "superseded";
    }
    return "unknown";
}

const char* nameOf(StorageProblem::Kind kind)
{
    switch (kind) {
        case StorageProblem::Kind::Missing:
            return "missing";
        case StorageProblem::Kind::Altered:
            return "altered";
        case StorageProblem::Kind::Unreadable:
            return "unreadable";
    }
    return "unknown";
}

Zelvo::ArchiveConfiguration configuration()
{
    const std::optional<Zelvo::ArchiveConfiguration> found = Zelvo::ProcessArchive();
    if (!found) {
        throw std::runtime_error("there is no archive: name its configuration with --archive-config or ZELVO_CONFIG");
    }
    return *found;
}

ExitCode resultOf(std::int64_t failed)
{
    return finish(failed == 0 ? ExitCode::Fine : ExitCode::Damaged);
}

bool hasFailed(const FileInfo& file)
{
    return file.attempts > 0;
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
        text = AddressScheme + plain(file.sameGuid) + '/' + std::to_string(file.sameId);
    }
    return orDash(text);
}

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
        json["same"] = AddressScheme + file.sameGuid.toStdString() + '/' + std::to_string(file.sameId);
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

template <typename Item>
Json archiveJson(const std::vector<Item>& items)
{
    Json list = Json::array();
    for (const Item& item : items) {
        list.push_back(archiveJson(item));
    }
    return list;
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

void printStations(const std::vector<Zelvo::StationInfo>& stations)
{
    Table table({Table::Align::Left, Table::Align::Left, Table::Align::Left});
    table.add({"Station", "Mover last ran", "Storage"});
    for (const Zelvo::StationInfo& station : stations) {
        const std::string storage =
            station.storageError.isEmpty()
                ? "usable"
                : plain(station.storageError) + " (looks again: " + time(station.nextTryMs) + ")";
        table.add({plain(station.name), station.lastRunMs <= 0 ? "never" : time(station.lastRunMs), storage});
    }
    table.print(std::cout, "");
}

void printFiles(const std::vector<FileInfo>& files)
{
    Table table({Table::Align::Left, Table::Align::Left, Table::Align::Right, Table::Align::Left, Table::Align::Left,
                 Table::Align::Left});
    table.add({"Address", "State", "Bytes", "Station", "Name", "Why"});
    for (const FileInfo& file : files) {
        table.add({plain(file.address()), nameOf(file.state), bytes(file.bytes), plain(file.station), plain(file.name),
                   why(file)});
    }
    table.print(std::cout, "");
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

ExitCode showFile(Zelvo::Archive& archive, const ArchiveShowOptions& options)
{
    const std::optional<FileInfo> file = archive.file(Zelvo::ZelvoUrl(QString::fromStdString(options.what)));
    if (!file) {
        complain(options.what, "The archive does not know this address.");
        return ExitCode::CannotRead;
    }
    if (options.json) {
        std::cout << dump(archiveJson(*file), 2) << '\n';
    } else {
        printFile(*file);
    }
    return resultOf(hasFailed(*file) ? 1 : 0);
}

ExitCode showGroup(Zelvo::Archive& archive, const std::string& name, bool json)
{
    const QString guid = QString::fromStdString(name);
    const std::optional<GroupInfo> group = archive.group(guid);
    if (!group) {
        complain(name, "The archive has no such group.");
        return ExitCode::CannotRead;
    }
    const std::vector<FileInfo> files = archive.files(guid);
    if (json) {
        Json all = archiveJson(*group);
        all["members"] = archiveJson(files);
        std::cout << dump(all, 2) << '\n';
    } else {
        printGroup(*group);
        std::cout << '\n';
        printFiles(files);
    }
    return resultOf(group->failed);
}

// A group is named as it stands or as the beginning of an address.
std::string groupOf(const std::string& name)
{
    return name.starts_with(AddressScheme) ? name.substr(AddressScheme.size()) : name;
}

/// @return false, told, when a group is named that is not there
bool knowsGroup(Zelvo::Archive& archive, const std::string& group)
{
    if (group.empty() || archive.group(QString::fromStdString(group))) {
        return true;
    }
    complain(group, "The archive has no such group.");
    return false;
}

std::int64_t bytesToRead(Zelvo::Archive& archive, const QString& group)
{
    if (group.isEmpty()) {
        return archive.status().bytesMoved;
    }
    std::int64_t sum = 0;
    for (const FileInfo& file : archive.files(group)) {
        sum += std::max<std::int64_t>(file.bytes, 0);
    }
    return sum;
}

/// Told of every file before it is read, it shows how far the reading is. Empty when nobody watches.
std::function<void(const FileInfo&)> showing(Progress& progress, std::int64_t all)
{
    auto show = progress.callback();
    if (!show) {
        return {};
    }
    return [show, all, done = std::int64_t{0}](const FileInfo& file) mutable {
        show(std::min(done, all), all);
        done += std::max<std::int64_t>(file.bytes, 0);
    };
}

/// Empty when the file has no name to be taken: a shared registry is written by others too, and its names must not
/// lead out of this folder.
QString targetOf(const ArchiveFetchOptions& options, const FileInfo& file)
{
    if (!options.output.empty()) {
        return QFile::decodeName(QByteArray::fromStdString(options.output));
    }
    const bool isName =
        !file.name.startsWith(QLatin1Char('.')) && !QDir::fromNativeSeparators(file.name).contains(QLatin1Char('/'));
    return isName ? file.name : QString();
}

}  // namespace

void useArchive(const std::string& configurationFile)
{
    if (!configurationFile.empty()) {
        Zelvo::SetProcessArchive(
            Zelvo::LoadArchiveConfiguration(QFile::decodeName(QByteArray::fromStdString(configurationFile))));
    }
}

ExitCode archiveStatus(const ArchiveStatusOptions& options)
{
    const Zelvo::ArchiveStatus status = Zelvo::Archive(configuration()).status();
    if (options.json) {
        std::cout << dump(archiveJson(status), 2) << '\n';
    } else {
        printStatus(status);
    }
    return resultOf(status.failed + (status.storageUsable ? 0 : 1));
}

ExitCode archiveGroups(const ArchiveGroupsOptions& options)
{
    const std::vector<GroupInfo> groups = Zelvo::Archive(configuration()).groups(options.limit);
    std::int64_t failed = 0;
    for (const GroupInfo& group : groups) {
        failed += group.failed;
    }
    if (options.json) {
        std::cout << dump({{"groups", archiveJson(groups)}}, 2) << '\n';
        return resultOf(failed);
    }
    Table table({Table::Align::Left, Table::Align::Left, Table::Align::Right, Table::Align::Right, Table::Align::Right,
                 Table::Align::Left, Table::Align::Left, Table::Align::Left});
    table.add({"Group", "State", "Files", "Moved", "Failed", "Created", "Station", "Title"});
    for (const GroupInfo& group : groups) {
        table.add({plain(group.data.guid), nameOf(group.state), count(group.files), count(group.moved),
                   count(group.failed), time(group.createdMs), plain(group.station), plain(group.title)});
    }
    table.print(std::cout, "");
    return resultOf(failed);
}

ExitCode archiveShow(const ArchiveShowOptions& options)
{
    Zelvo::Archive archive(configuration());
    if (Zelvo::ZelvoUrl(QString::fromStdString(options.what)).isZelvoUrl()) {
        return showFile(archive, options);
    }
    return showGroup(archive, groupOf(options.what), options.json);
}

ExitCode archiveFetch(const ArchiveFetchOptions& options)
{
    Zelvo::Archive archive(configuration());
    const Zelvo::ZelvoUrl url(QString::fromStdString(options.address));
    const std::optional<FileInfo> file = archive.file(url);
    if (!file) {
        complain(options.address, "The archive does not know this address.");
        return ExitCode::CannotRead;
    }
    const QString path = targetOf(options, *file);
    if (path.isEmpty()) {
        complain(options.address, "The registry's name for it is no file name; give it one with -o.");
        return ExitCode::CannotRead;
    }
    if (QFile::exists(path)) {
        complain(path.toStdString(), "The file exists already; nothing was fetched.");
        return ExitCode::CannotRead;
    }
    try {
        archive.fetch(url, path);
    } catch (const Zelvo::ArchiveError& error) {
        complain(options.address, error.what());
        return error.code() == Zelvo::ZelvoError::Damaged ? ExitCode::Damaged : ExitCode::CannotRead;
    }
    if (options.json) {
        std::cout << dump({{"address", options.address}, {"file", path.toStdString()}}, 2) << '\n';
    } else {
        std::cout << plain(path) << '\n';
    }
    return finish(ExitCode::Fine);
}

ExitCode archiveVerify(const ArchiveVerifyOptions& options)
{
    Zelvo::Archive archive(configuration());
    const std::string group = groupOf(options.group);
    if (!knowsGroup(archive, group)) {
        return ExitCode::CannotRead;
    }
    std::vector<StorageProblem> problems;
    Progress progress("storage");
    const std::int64_t good = archive.verify(
        [&](const StorageProblem& problem) {
            problems.push_back(problem);
            progress.clear();
            complain(problem.file.address().toStdString(), plain(problem.sentence));
            return options.all;
        },
        showing(progress, bytesToRead(archive, QString::fromStdString(group))), QString::fromStdString(group));
    progress.clear();
    if (options.json) {
        Json list = Json::array();
        for (const StorageProblem& problem : problems) {
            list.push_back({{"address", problem.file.address().toStdString()},
                            {"problem", nameOf(problem.kind)},
                            {"text", problem.sentence.toStdString()}});
        }
        std::cout << dump({{"good", good}, {"problems", std::move(list)}}, 2) << '\n';
    } else {
        std::cout << count(good) << (good == 1 ? " file" : " files") << " of the storage " << (good == 1 ? "is" : "are")
                  << " as stored"
                  << (problems.empty() || options.all ? "" : "; the check ended at the first that is not") << '\n';
    }
    return resultOf(static_cast<std::int64_t>(problems.size()));
}

ExitCode archiveRetry(const ArchiveRetryOptions& options)
{
    Zelvo::Archive archive(configuration());
    const std::string group = groupOf(options.group);
    if (!knowsGroup(archive, group)) {
        return ExitCode::CannotRead;
    }
    const std::int64_t files = archive.retry(QString::fromStdString(group));
    if (options.json) {
        std::cout << dump({{"files", files}}, 2) << '\n';
    } else {
        std::cout << "Failed moves that the next run of the mover tries again: " << count(files) << '\n';
    }
    return finish(ExitCode::Fine);
}

}  // namespace RecTool
