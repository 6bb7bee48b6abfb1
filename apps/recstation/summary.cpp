// The summary of a run as JSON, lines of files, remarks and exit code.
#include "summary.h"

#include <algorithm>
#include <array>

#include "jsontext.h"
#include "progress.h"

namespace RecStation {

namespace {

const char* stateName(FileReport::State state)
{
    constexpr std::array Names = {"finished", "temporary", "archived", "missing"};
    return Names.at(static_cast<std::size_t>(state));
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
             byteText(file.report.bytes), QString::number(file.report.records));
}

}  // namespace

// The JSON library finds these by their name.

static void to_json(OrderedJson& object, const Summary::File& file)
{
    object = {{"recorder", file.recorder}, {"path", file.report.path}, {"state", stateName(file.report.state)}};
    addIfTold(object, "address", file.report.address);
    object["bytes"] = file.report.bytes;
    object["records"] = file.report.records;
    addIfTold(object, "problem", file.report.problem);
}

static void to_json(OrderedJson& object, const Summary::Refusal& refusal)
{
    object = {{"recorder", refusal.recorder}, {"problem", refusal.problem}};
}

static void to_json(OrderedJson& object, const Lag& lag)
{
    constexpr double UsPerMs = 1000;
    object = {{"middle", static_cast<double>(lag.middleUs) / UsPerMs},
              {"most", static_cast<double>(lag.mostUs) / UsPerMs}};
}

static void to_json(OrderedJson& object, const Summary::SourceResult& source)
{
    const SourceReport& report = source.report;
    object = {{"name", source.name}, {"used", report.used}, {"skipped", report.skipped}, {"bad", report.bad}};
    if (report.live) {
        object["lost"] = report.lost;
        object["reconnects"] = report.reconnects;
    }
    addIfTold(object, "missing", QString::fromStdString(report.missing));
    addIfTold(object, "failure", source.failure);
    if (report.lag) {
        object["lagMs"] = *report.lag;
    }
}

static void to_json(OrderedJson& object, const Summary::Archive& archive)
{
    object = {{"moved", archive.moved}, {"waiting", archive.waiting}, {"unregistered", archive.unregistered}};
    addIfTold(object, "problem", archive.problem);
}

static void to_json(OrderedJson& object, const UnfinishedRecording& unfinished)
{
    object["path"] = unfinished.path;
    if (!unfinished.recovered.isEmpty()) {
        object["recovered"] = unfinished.recovered;
        object["whole"] = unfinished.whole;
        object["byJournal"] = unfinished.byJournal;
        object["records"] = unfinished.records;
        object["bytes"] = unfinished.bytes;
        object["lost"] = unfinished.lost;
    }
    addIfTold(object, "movedTo", unfinished.movedTo);
    addIfTold(object, "problem", unfinished.problem);
}

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
        return source.report.bad == 0 && source.failure.isEmpty() && source.report.missing.empty();
    });
    const bool complete = allFiles && allInput && !files.empty() && refusals.empty();
    return complete ? ExitCode::Success : ExitCode::Incomplete;
}

std::string Summary::json() const
{
    OrderedJson object;
    if (!recovered.empty()) {
        object["recovered"] = recovered;
    }
    object["files"] = files;
    if (!refusals.empty()) {
        object["notRecorded"] = refusals;
    }
    object["sources"] = sources;
    if (archive) {
        object["archive"] = *archive;
    }
    object["recordedMs"] = recordedMs;
    object["changes"] = changes;
    addIfTold(object, "failure", failure);
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
