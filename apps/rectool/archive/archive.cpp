// The archive that the program asks, and the verbs "archive status", "groups", "show", "fetch", "verify" and "retry".
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
#include "archiveprinting.h"
#include "printing/json.h"
#include "printing/output.h"
#include "printing/text.h"

namespace RecTool {

namespace {

using Zelvo::FileInfo;
using Zelvo::GroupInfo;
using Zelvo::StorageProblem;

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

ExitCode showFile(Zelvo::Archive& archive, const ArchiveOptions& options)
{
    const std::optional<FileInfo> file = archive.file(Zelvo::ZelvoUrl(QString::fromStdString(options.what)));
    if (!file) {
        complain(options.what, "The archive does not know this address.");
        return ExitCode::CannotRead;
    }
    if (options.json) {
        printJson(archiveJson(*file));
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
        printJson(all);
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

/// Told of every file before it is read, it shows how far the reading is.
std::function<void(const FileInfo&)> showing(Progress& progress, std::int64_t all)
{
    return [&progress, all, done = std::int64_t{0}](const FileInfo& file) mutable {
        progress.show(std::min(done, all), all);
        done += std::max<std::int64_t>(file.bytes, 0);
    };
}

/// Empty when the file has no name to be taken: a shared registry is written by others too, and its names must not
/// lead out of this folder.
QString targetOf(const ArchiveOptions& options, const FileInfo& file)
{
    if (!options.output.empty()) {
        return QFile::decodeName(QByteArray::fromStdString(options.output));
    }
    const bool isName =
        !file.name.startsWith(QLatin1Char('.')) && !QDir::fromNativeSeparators(file.name).contains(QLatin1Char('/'));
    return isName ? file.name : QString();
}

ExitCode archiveStatus(const ArchiveOptions& options)
{
    const Zelvo::ArchiveStatus status = Zelvo::Archive(configuration()).status();
    if (options.json) {
        printJson(archiveJson(status));
    } else {
        printStatus(status);
    }
    return resultOf(status.failed + (status.storageUsable ? 0 : 1));
}

ExitCode archiveGroups(const ArchiveOptions& options)
{
    const std::vector<GroupInfo> groups = Zelvo::Archive(configuration()).groups(options.limit);
    std::int64_t failed = 0;
    for (const GroupInfo& group : groups) {
        failed += group.failed;
    }
    if (options.json) {
        printJson({{"groups", archiveJson(groups)}});
        return resultOf(failed);
    }
    printGroups(groups);
    return resultOf(failed);
}

ExitCode archiveShow(const ArchiveOptions& options)
{
    Zelvo::Archive archive(configuration());
    if (Zelvo::ZelvoUrl(QString::fromStdString(options.what)).isZelvoUrl()) {
        return showFile(archive, options);
    }
    return showGroup(archive, groupOf(options.what), options.json);
}

ExitCode archiveFetch(const ArchiveOptions& options)
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
        printJson({{"address", options.address}, {"file", path.toStdString()}});
    } else {
        std::cout << plain(path) << '\n';
    }
    return finish(ExitCode::Fine);
}

ExitCode archiveVerify(const ArchiveOptions& options)
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
        const auto json = [](const StorageProblem& problem) -> Json {
            return {{"address", problem.file.address().toStdString()},
                    {"problem", nameOf(problem.kind)},
                    {"text", problem.sentence.toStdString()}};
        };
        printJson({{"good", good}, {"problems", Json::arrayOf(problems, json)}});
    } else {
        std::cout << count(good) << (good == 1 ? " file" : " files") << " of the storage " << (good == 1 ? "is" : "are")
                  << " as stored"
                  << (problems.empty() || options.all ? "" : "; the check ended at the first that is not") << '\n';
    }
    return resultOf(static_cast<std::int64_t>(problems.size()));
}

ExitCode archiveRetry(const ArchiveOptions& options)
{
    Zelvo::Archive archive(configuration());
    const std::string group = groupOf(options.group);
    if (!knowsGroup(archive, group)) {
        return ExitCode::CannotRead;
    }
    const std::int64_t files = archive.retry(QString::fromStdString(group));
    if (options.json) {
        printJson({{"files", files}});
    } else {
        std::cout << "Failed moves that the next run of the mover tries again: " << count(files) << '\n';
    }
    return finish(ExitCode::Fine);
}

}  // namespace

void useArchive(const std::string& configurationFile)
{
    if (!configurationFile.empty()) {
        Zelvo::SetProcessArchive(
            Zelvo::LoadArchiveConfiguration(QFile::decodeName(QByteArray::fromStdString(configurationFile))));
    }
}

const ArchiveWork ArchiveVerbs{archiveStatus, archiveGroups, archiveShow, archiveFetch, archiveVerify, archiveRetry};

}  // namespace RecTool
