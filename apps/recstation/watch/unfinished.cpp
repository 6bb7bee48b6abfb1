// Finding .tmp files and journals, recovering each, and putting originals into the folder "recovered".
#include "unfinished.h"

#include <algorithm>
#include <exception>
#include <functional>
#include <string>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <recording2/inspection/inspection.h>
#include <recording2/inspection/rescue/leftparts.h>
#include <recording2/inspection/rescue/recovery.h>
#include <system/stopsignal.h>

#include "progress.h"
#include "recordedfiles.h"

namespace RecStation {

namespace {

namespace Inspection = Recording2::Inspection;
using Inspection::Readability;
using Inspection::Recovery;
using Inspection::RecoveryOptions;
using Inspection::RecoveryOutcome;

const QString JournalEnding = QStringLiteral(".journal");

std::string native(const QString& path)
{
    return QFile::encodeName(path).toStdString();
}

QString fromNative(const std::string& path)
{
    return QFile::decodeName(QByteArray::fromStdString(path));
}

// Other programs have .tmp files too.
bool isRecording(const QString& temporary)
{
    if (QFileInfo::exists(temporary + JournalEnding)) {
        return true;
    }
    const Readability readability = Inspection::inspect(native(temporary)).readability;
    return readability == Readability::Ok || readability == Readability::NeverClosed;
}

bool isThere(const QString& path)
{
    const QFileInfo info(path);
    return info.isSymLink() || info.exists();
}

/// What stands where a file is expected; empty when it is one. Nothing else is opened.
QString whyNoFile(const QString& path)
{
    const QFileInfo info(path);
    if (info.isSymLink()) {
        return QStringLiteral("%1 is a link").arg(info.fileName());
    }
    if (info.isDir()) {
        return QStringLiteral("%1 is a directory").arg(info.fileName());
    }
    return !info.exists() || info.isFile() ? QString() : QStringLiteral("%1 is no ordinary file").arg(info.fileName());
}

/// The same of a recording and its journal.
QString whyNoRecording(const QString& path)
{
    const QString problem = whyNoFile(path);
    return problem.isEmpty() ? whyNoFile(fromNative(Inspection::journalOf(native(path)))) : problem;
}

/// The paths to look at; of a journal without its .tmp the recording that was closed, or the journal itself.
QStringList candidates(const QString& directory)
{
    const QDir folder(directory);
    constexpr auto Everything = QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot;
    QStringList found;
    for (const QString& name : folder.entryList({QStringLiteral("*.tmp")}, Everything, QDir::Name)) {
        const QString path = folder.absoluteFilePath(name);
        if (!whyNoRecording(path).isEmpty() || isRecording(path)) {
            found += path;
        }
    }
    for (const QString& name : folder.entryList({QStringLiteral("*.tmp.journal")}, Everything, QDir::Name)) {
        const QString journal = folder.absoluteFilePath(name);
        const QString temporary = journal.chopped(JournalEnding.size());
        if (!isThere(temporary)) {
            const QString closed = temporary.chopped(4) + QStringLiteral(".rec");
            found += isThere(closed) ? closed : journal;
        }
    }
    return found;
}

bool haveSameBytes(const QString& one, const QString& other)
{
    QFile a(one);
    QFile b(other);
    if (!a.open(QIODevice::ReadOnly) || !b.open(QIODevice::ReadOnly) || a.size() != b.size()) {
        return false;
    }
    constexpr qint64 PieceBytes = 262'144;
    while (!a.atEnd()) {
        const QByteArray piece = a.read(PieceBytes);
        if (piece.isEmpty() || piece != b.read(PieceBytes)) {
            return false;
        }
    }
    return true;
}

/// The folder for originals.
class Attic {
public:
    explicit Attic(const QString& directory) : m_folder(QDir(directory).absoluteFilePath(QStringLiteral("recovered")))
    {
    }
    /// Before a recovery: one whose original cannot be put away would be done again at every start.
    /// @return why originals cannot be put there; empty when they can
    [[nodiscard]] QString prepare() const
    {
        QFileInfo info(m_folder.absolutePath());
        if (info.isSymLink() || (info.exists() && !info.isDir())) {
            return QStringLiteral("%1, where its original is to go, is no directory").arg(path());
        }
        const bool made = info.isDir() || QDir().mkdir(m_folder.absolutePath());
        info.refresh();
        return made && info.isWritable()
                   ? QString()
                   : QStringLiteral("the folder %1 for its original cannot be written").arg(path());
    }
    [[nodiscard]] QString path() const { return m_folder.absolutePath(); }
    /// An empty folder is of no use.
    void tidy() const { static_cast<void>(QDir().rmdir(m_folder.absolutePath())); }

    /// The journal stays beside the file that it belongs to, so the file goes first: a journal that is left alone does
    /// no harm. @return where the file is now; empty when it could not be moved
    /// @param between done while the journal still tells that the recording needs it; false undoes the move
    [[nodiscard]] QString put(
        const QString& path, const QString& journal, const std::function<bool()>& between = [] { return true; }) const
    {
        const QString ending = QLatin1Char('.') + QFileInfo(path).suffix();
        const QString stem = QFileInfo(path).fileName().chopped(ending.size());
        QString name = stem;
        for (int number = 2; isTaken(name); ++number) {
            name = stem + QLatin1Char('_') + QString::number(number);
        }
        QString moved = m_folder.absoluteFilePath(name + ending);
        if (!QFile::rename(path, moved)) {
            return {};
        }
        if (!between()) {
            static_cast<void>(QFile::rename(moved, path));  // as it was, so that the next start finds it again
            return {};
        }
        if (journal != path && isThere(journal) &&
            !QFile::rename(journal, m_folder.absoluteFilePath(name + QStringLiteral(".tmp") + JournalEnding))) {
            return {};
        }
        return moved;
    }

private:
    [[nodiscard]] bool isTaken(const QString& name) const
    {
        const QStringList endings = {QStringLiteral(".tmp"), QStringLiteral(".rec"), QStringLiteral(".tmp.journal"),
                                     JournalEnding};
        return std::any_of(endings.begin(), endings.end(),
                           [&](const QString& ending) { return isThere(m_folder.absoluteFilePath(name + ending)); });
    }
    QDir m_folder;
};

QString notMoved(const Attic& attic)
{
    return QStringLiteral("the original could not be moved to %1: move it away, or it is recovered again")
        .arg(attic.path());
}

void takeReport(UnfinishedRecording& unfinished, const Recovery& recovery, const QString& output)
{
    unfinished.recovered = output;
    unfinished.whole = recovery.outcome == RecoveryOutcome::Whole;
    unfinished.byJournal = !recovery.journal.empty();
    unfinished.records = recovery.records;
    unfinished.bytes = recovery.bytes;
    for (const std::string& clause : recovery.lost) {
        unfinished.lost += QString::fromStdString(clause);
    }
}

/// A journal beside a recording that is as the journal has it: only removing the journal had failed.
UnfinishedRecording putJournalAway(UnfinishedRecording unfinished, const QString& journal, const Attic& attic)
{
    QFile::remove(unfinished.recovered);  // the same bytes once more
    unfinished.recovered = unfinished.path;
    unfinished.path = journal;
    unfinished.movedTo = attic.put(journal, journal);
    unfinished.problem = unfinished.movedTo.isEmpty() ? notMoved(attic) : QString();
    return unfinished;
}

/// What was recovered of a ".rec" takes its name: an archive waits for a file of that name.
QString putClosedAway(UnfinishedRecording& unfinished, const QString& journal, const Attic& attic)
{
    return attic.put(unfinished.path, journal, [&unfinished] {
        if (!QFile::rename(unfinished.recovered, unfinished.path)) {
            return false;
        }
        unfinished.recovered = unfinished.path;
        return true;
    });
}

UnfinishedRecording recoverOne(const QString& path, const UnfinishedHooks& hooks, const Attic& attic)
{
    UnfinishedRecording unfinished;
    unfinished.path = path;
    unfinished.problem = whyNoRecording(path);
    if (!unfinished.problem.isEmpty()) {
        return unfinished;
    }
    if (path.endsWith(JournalEnding)) {
        unfinished.problem = QStringLiteral("the recording that this journal belongs to is not there");
        return unfinished;
    }
    unfinished.problem = attic.prepare();
    if (!unfinished.problem.isEmpty()) {
        return unfinished;
    }
    const std::string recording = native(path);
    const std::string output = Inspection::recoveredName(recording);
    const Recovery recovery = Inspection::recover(recording, {output, 0, {}, hooks.interrupted});
    if (recovery.outcome != RecoveryOutcome::Whole && recovery.outcome != RecoveryOutcome::SomethingLost) {
        unfinished.problem = QString::fromStdString(recovery.problem);
        if (recovery.outcome == RecoveryOutcome::NotWritten) {
            unfinished.problem.prepend(QStringLiteral("%1 could not be written: ").arg(fromNative(output)));
        }
        return unfinished;
    }
    takeReport(unfinished, recovery, fromNative(output));
    const QString journal = fromNative(Inspection::journalOf(recording));
    const bool closed = path.endsWith(QStringLiteral(".rec"));
    if (unfinished.whole && closed && haveSameBytes(path, unfinished.recovered)) {
        return putJournalAway(unfinished, journal, attic);
    }
    unfinished.movedTo = closed ? putClosedAway(unfinished, journal, attic) : attic.put(path, journal);
    unfinished.problem = unfinished.movedTo.isEmpty() ? notMoved(attic) : QString();
    return unfinished;
}

QString withoutStop(const QString& sentence)
{
    return sentence.endsWith(QLatin1Char('.')) ? sentence.chopped(1) : sentence;
}

}  // namespace

QString UnfinishedRecording::sentence() const
{
    if (recovered.isEmpty()) {
        return QStringLiteral("%1 of an earlier run was not recovered: %2; it was left where it is")
            .arg(path, withoutStop(problem));
    }
    const QString kept = QStringLiteral("%1 (%2 records)").arg(recovered, QString::number(records));
    if (path.endsWith(JournalEnding)) {
        return QStringLiteral("%1 of an earlier run is whole; its journal %2")
            .arg(kept, movedTo.isEmpty() ? QStringLiteral("could not be moved away")
                                         : QStringLiteral("was moved to ") + movedTo);
    }
    return QStringLiteral("recovered %1 from %2 of an earlier run: %3; %4")
        .arg(kept, QFileInfo(path).fileName(),
             whole ? QStringLiteral("nothing was lost") : QStringLiteral("lost: ") + lost.join(QStringLiteral(", ")),
             movedTo.isEmpty() ? problem : QStringLiteral("the original is now ") + movedTo);
}

std::vector<UnfinishedRecording> recoverUnfinished(const QString& directory, const UnfinishedHooks& hooks)
{
    std::vector<UnfinishedRecording> done;
    const Attic attic(directory);
    for (const QString& path : candidates(directory)) {
        if (hooks.interrupted && hooks.interrupted()) {
            break;
        }
        UnfinishedRecording unfinished;
        try {
            unfinished = recoverOne(path, hooks, attic);
        } catch (const std::exception& error) {
            unfinished.path = path;
            unfinished.problem = QString::fromUtf8(error.what());
        }
        if (unfinished.recovered.isEmpty() && !isThere(path)) {
            continue;  // another program was faster
        }
        if (hooks.report) {
            hooks.report(unfinished);
        }
        done.push_back(unfinished);
    }
    attic.tidy();
    return done;
}

UnfinishedRecording saveDamaged(const QString& closed)
{
    UnfinishedRecording saved;
    saved.path = closed;
    try {
        const Attic attic(QFileInfo(closed).absolutePath());
        const std::string recording = native(closed);
        const std::uint64_t before = Inspection::inspect(recording).times.size();
        RecoveryOptions options;
        options.output = Inspection::recoveredName(recording);
        options.closed = true;
        options.withoutLocks = true;  // it was written here
        const Recovery recovery = Inspection::recover(recording, options);
        if (recovery.outcome != RecoveryOutcome::Whole && recovery.outcome != RecoveryOutcome::SomethingLost) {
            saved.problem = QString::fromStdString(recovery.problem);
            return saved;
        }
        takeReport(saved, recovery, fromNative(options.output));
        if (before > saved.records) {
            saved.lost.prepend(QStringLiteral("%1 records").arg(before - saved.records));
        }
        saved.movedTo = attic.prepare().isEmpty() ? putClosedAway(saved, QString(), attic) : QString();
        saved.problem = saved.movedTo.isEmpty() ? notMoved(attic) : QString();
    } catch (const std::exception& error) {
        saved.problem = QString::fromUtf8(error.what());
    }
    return saved;
}

std::vector<UnfinishedRecording> recoverEarlier(const QStringList& directories, Messages& messages)
{
    UnfinishedHooks hooks;
    hooks.report = [&messages](const UnfinishedRecording& unfinished) { messages.message(unfinished.sentence()); };
    hooks.interrupted = [] { return System::StopSignal::requested(); };
    std::vector<UnfinishedRecording> recovered;
    for (const QString& directory : directories) {
        for (const std::string& part : Recording2::Inspection::removeLeftPartsIn(directory.toStdString())) {
            messages.message(QStringLiteral("removed %1, which an interrupted copy or recovery had left unfinished")
                                 .arg(QString::fromStdString(part)));
        }
        const std::vector<UnfinishedRecording> done = recoverUnfinished(directory, hooks);
        recovered.insert(recovered.end(), done.begin(), done.end());
    }
    return recovered;
}

}  // namespace RecStation
