// The summary of a run as JSON, lines of files, remarks and exit code.
#include "summary.h"

#include <algorithm>

#include <nlohmann/json.hpp>

#include "progress.h"

namespace RecStation {

namespace {

constexpr double LagUnitUs = 1000;  // they are told in milliseconds

const char* stateName(FileReport::State state)
{
    switch (state) {
        case FileReport::State::Finished:
            return "finished";
        case FileReport::State::Temporary:
            return "temporary";
        case FileReport::State::Archived:
            return "archived";
        case FileReport::State::Missing:
            break;
    }
    return "missing";
}

nlohmann::ordered_json toJson(const Summary::File& file)
{
    nlohmann::ordered_json object;
    object["recorder"] = file.recorder.toStdString();
    object["path"] = file.report.path.toStdString();
    object["state"] = stateName(file.report.state);
    if (!file.report.address.isEmpty()) {
        object["address"] = file.report.address.toStdString();
    }
    object["bytes"] = file.report.bytes;
    object["records"] = file.report.records;
    if (!file.report.problem.isEmpty()) {
        object["problem"] = file.report.problem.toStdString();
    }
    return object;
}

nlohmann::ordered_json toJson(const Summary::SourceResult& source)
{
    nlohmann::ordered_json object;
    object["name"] = source.name.toStdString();
    object["used"] = source.report.used;
    object["skipped"] = source.report.skipped;
    object["bad"] = source.report.bad;
    if (source.report.live) {
        object["lost"] = source.report.lost;
        object["reconnects"] = source.report.reconnects;
    }
    if (!source.report.missing.empty()) {
        object["missing"] = source.report.missing;
    }
    if (!source.failure.isEmpty()) {
        object["failure"] = source.failure.toStdString();
    }
    if (source.report.lag) {
        object["lagMs"] = {{"middle", static_cast<double>(source.report.lag->middleUs) / LagUnitUs},
                           {"most", static_cast<double>(source.report.lag->mostUs) / LagUnitUs}};
    }
    return object;
}

nlohmann::ordered_json toJson(const Summary::Archive& archive)
{
    nlohmann::ordered_json object;
    object["moved"] = archive.moved;
    object["waiting"] = archive.waiting;
    object["unregistered"] = archive.unregistered;
    if (!archive.problem.isEmpty()) {
        object["problem"] = archive.problem.toStdString();
    }
    return object;
}

nlohmann::ordered_json toJson(const UnfinishedRecording& unfinished)
{
    nlohmann::ordered_json object;
    object["path"] = unfinished.path.toStdString();
    if (!unfinished.recovered.isEmpty()) {
        object["recovered"] = unfinished.recovered.toStdString();
        object["whole"] = unfinished.whole;
        object["byJournal"] = unfinished.byJournal;
        object["records"] = unfinished.records;
        object["bytes"] = unfinished.bytes;
        object["lost"] = nlohmann::ordered_json::array();
        for (const QString& clause : unfinished.lost) {
            object["lost"].push_back(clause.toStdString());
        }
    }
    if (!unfinished.movedTo.isEmpty()) {
        object["movedTo"] = unfinished.movedTo.toStdString();
    }
    if (!unfinished.problem.isEmpty()) {
        object["problem"] = unfinished.problem.toStdString();
    }
    return object;
}

QString recordings(std::size_t count)
{
    return count == 1 ? QStringLiteral("1 recording") : QStringLiteral("%1 recordings").arg(count);
}

// Whatever is said of the archive, the recordings are safe.
QStringList remarksOn(const Summary::Archive& archive)
{
    QStringList sentences;
    const QString why = archive.problem.isEmpty() ? QString() : QStringLiteral(": ") + archive.problem;
    if (archive.waiting > 0) {
        sentences += QStringLiteral("archive: %1 not moved yet%2").arg(recordings(archive.waiting), why);
    }
    if (archive.unregistered > 0) {
        sentences += QStringLiteral("archive: %1 not registered, and not going to be moved%2")
                         .arg(recordings(archive.unregistered), archive.waiting > 0 ? QString() : why);
    }
    return sentences;
}

QString counted(const Summary::SourceResult& source)
{
    const SourceReport& report = source.report;
    QString sentence = QStringLiteral("%1: %2 used, %3 skipped, %4 bad")
                           .arg(source.name)
                           .arg(report.used)
                           .arg(report.skipped)
                           .arg(report.bad);
    if (report.live) {
        sentence += QStringLiteral(", %1 lost, %2")
                        .arg(report.lost)
                        .arg(report.reconnects == 1 ? QStringLiteral("1 reconnect")
                                                    : QStringLiteral("%1 reconnects").arg(report.reconnects));
    }
    if (report.lag && report.lag->middleUs < 0) {
        sentence += QStringLiteral("; its clock is %1 ahead of this one").arg(lagText(-report.lag->middleUs));
    } else if (report.lag) {
        sentence += QStringLiteral("; %1 behind its own clock, at most %2")
                        .arg(lagText(report.lag->middleUs), lagText(report.lag->mostUs));
    }
    return sentence;
}

QString fileLine(const Summary::File& file)
{
    const bool archived = file.report.state == FileReport::State::Archived;
    return QStringLiteral("%1: %2 (%3, %4 records)\n")
        .arg(printable(file.recorder), printable(archived ? file.report.address : file.report.path),
             byteText(file.report.bytes))
        .arg(file.report.records);
}

}  // namespace

bool Summary::areAllSilent() const
{
    return std::all_of(sources.begin(), sources.end(), [](const SourceResult& source) { return source.report.silent; });
}

ExitCode Summary::exitCode() const
{
    if (!failure.isEmpty()) {
        return ExitCode::CannotRun;
    }
    const bool allFiles =
        std::all_of(files.begin(), files.end(), [](const File& file) { return file.report.problem.isEmpty(); });
    const bool allInput = std::all_of(sources.begin(), sources.end(), [](const SourceResult& source) {
        return source.report.bad == 0 && source.failure.isEmpty();
    });
    const bool allCame = std::all_of(sources.begin(), sources.end(),
                                     [](const SourceResult& source) { return source.report.missing.empty(); });
    const bool complete = allFiles && allInput && allCame && !files.empty() && refusals.empty();
    return complete ? ExitCode::Success : ExitCode::Incomplete;
}

std::string Summary::json() const
{
    nlohmann::ordered_json object;
    if (!recovered.empty()) {
        object["recovered"] = nlohmann::ordered_json::array();
        for (const UnfinishedRecording& unfinished : recovered) {
            object["recovered"].push_back(toJson(unfinished));
        }
    }
    object["files"] = nlohmann::ordered_json::array();
    for (const File& file : files) {
        object["files"].push_back(toJson(file));
    }
    if (!refusals.empty()) {
        object["notRecorded"] = nlohmann::ordered_json::array();
        for (const Refusal& refusal : refusals) {
            object["notRecorded"].push_back(
                {{"recorder", refusal.recorder.toStdString()}, {"problem", refusal.problem.toStdString()}});
        }
    }
    object["sources"] = nlohmann::ordered_json::array();
    for (const SourceResult& source : sources) {
        object["sources"].push_back(toJson(source));
    }
    if (archive) {
        object["archive"] = toJson(*archive);
    }
    object["recordedMs"] = recordedMs;
    object["changes"] = changes;
    if (!failure.isEmpty()) {
        object["failure"] = failure.toStdString();
    }
    object["exitCode"] = static_cast<int>(exitCode());
    return object.dump(2) + "\n";
}

QString Summary::fileLines() const
{
    QString lines;
    for (const File& file : files) {
        if (file.report.state != FileReport::State::Missing) {
            lines += fileLine(file);
        }
    }
    return lines;
}

QStringList Summary::remarks(bool counts) const
{
    QStringList sentences;
    for (const SourceResult& source : sources) {
        const SourceReport& report = source.report;
        if (report.bad > 0 || report.lost > 0 || (counts && (report.lines || report.live))) {
            sentences += counted(source);
        }
        if (!report.missing.empty()) {
            sentences += QStringLiteral("%1: nothing ever came from %2")
                             .arg(source.name, QString::fromStdString(report.missing));
        }
    }
    for (const File& file : files) {
        if (!file.report.problem.isEmpty()) {
            sentences += QStringLiteral("%1: %2").arg(file.report.path, file.report.problem);
        }
    }
    if (archive) {
        sentences += remarksOn(*archive);
    }
    if (!failure.isEmpty()) {
        sentences += failure;
    } else if (files.empty()) {
        sentences += QStringLiteral("nothing was recorded: no recorder was switched on");
    }
    return sentences;
}

}  // namespace RecStation
