// Telling what harm came to a recording's file or journal, and how it is rescued.
#include "recordingwatch.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <recording2/inspection/inspection.h>
#include <recording2/inspection/rescue/recovery.h>
#include <recording2/inspection/verify/verification.h>

#include "recordedfiles.h"
#include "unfinished.h"

namespace RecStation {

namespace {

namespace Inspection = Recording2::Inspection;

QString journalPath(const QString& temporary)
{
    return temporary + QStringLiteral(".journal");
}

// The directory may have gone with the file: recording goes on in a new one. Only its last part is made.
void makeDirectoryOf(const QString& path)
{
    const QString directory = QFileInfo(path).absolutePath();
    if (!QFileInfo::exists(directory)) {
        static_cast<void>(QDir().mkdir(directory));
    }
}

// @return why it failed, empty when it did not
QString copyToNew(const QString& from, const QString& to)
{
    QFile source(from);
    QFile target(to);
    if (!source.open(QIODevice::ReadOnly)) {
        return source.errorString();
    }
    if (!target.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
        return target.errorString();
    }
    static_cast<void>(target.setPermissions(source.permissions()));  // no more people may read it than before
    constexpr qint64 PieceBytes = 1'048'576;
    while (!source.atEnd()) {
        const QByteArray piece = source.read(PieceBytes);
        if (piece.isEmpty() || target.write(piece) != piece.size()) {
            break;
        }
    }
    if (!source.atEnd() || !target.flush()) {
        target.remove();
        return target.error() == QFileDevice::NoError ? source.errorString() : target.errorString();
    }
    return {};
}

}  // namespace

RecordingWatch::RecordingWatch(const QString& temporary)
    : m_path(temporary),
      m_file(temporary),
      m_journal(journalPath(temporary)),
      m_guard(std::make_unique<JournalGuard>(journalPath(temporary)))
{
}

std::optional<FileHarm> RecordingWatch::harm()
{
    if (!m_file.isHeld()) {
        return std::nullopt;
    }
    if (m_guard != nullptr && m_guard->isCut()) {
        return FileHarm::JournalCut;
    }
    if (!m_file.isAt(m_path)) {
        return FileHarm::Gone;
    }
    if (m_file.isCut()) {
        return FileHarm::Cut;
    }
    if (m_journal.isHeld() && !m_journal.isAt(journalPath(m_path))) {
        return FileHarm::JournalGone;
    }
    return std::nullopt;
}

QString RecordingWatch::closedPath() const
{
    const QString finished = finishedPath(m_path);
    return m_file.isAt(finished) ? finished : m_file.isAt(m_path) ? m_path : QString();
}

// What was renamed within the directory is the recorder's own doing.
std::optional<FileHarm> RecordingWatch::harmWhenClosed()
{
    if (!m_file.isHeld()) {
        return std::nullopt;
    }
    const bool isThere =
        !closedPath().isEmpty() || QFileInfo(m_file.pathNow()).absolutePath() == QFileInfo(m_path).absolutePath();
    if (!isThere) {
        return FileHarm::Gone;
    }
    return m_file.isCut() ? std::optional(FileHarm::Cut) : std::nullopt;
}

RescuedRecording RecordingWatch::rescue(FileHarm harm)
{
    switch (harm) {
        case FileHarm::Gone:
            return rescueGone();
        case FileHarm::Cut:
            return rescueCut(QStringLiteral("%1 was cut while it was recorded").arg(m_path));
        case FileHarm::JournalCut:
            return rescueCut(QStringLiteral("the journal of %1 was cut while it was recorded").arg(m_path));
        case FileHarm::JournalGone:
            break;
    }
    return {closedPath(),
            QStringLiteral("the journal of %1 was taken away while it was recorded; nothing was lost").arg(m_path)};
}

// The recorder finished the file that has no name any more; it can still be read.
RescuedRecording RecordingWatch::rescueGone() const
{
    makeDirectoryOf(m_path);
    const QString moved = m_file.isDeleted() ? QString() : m_file.pathNow();
    if (!moved.isEmpty()) {
        return {moved, QStringLiteral("%1 was moved to %2 while it was recorded; it is complete there, and only lacks "
                                      "the name that ends with .rec")
                           .arg(m_path, moved)};
    }
    const QString what = QStringLiteral("%1 was deleted while it was recorded").arg(m_path);
    const QString saved = QFile::decodeName(Inspection::recoveredName(QFile::encodeName(m_path).toStdString()).c_str());
    const QString problem = copyToNew(m_file.readablePath(), saved);
    if (problem.isEmpty()) {
        return {saved, QStringLiteral("%1; it was saved as %2, nothing was lost").arg(what, saved)};
    }
    const std::size_t records = Inspection::inspect(m_file.readablePath().toStdString()).times.size();
    return {QString(), QStringLiteral("%1; %2 records are lost, they could not be saved as %3: %4")
                           .arg(what, QString::number(records), saved, problem)};
}

RescuedRecording RecordingWatch::rescueCut(const QString& what) const
{
    const QString closed = closedPath();
    if (closed.isEmpty()) {
        return rescueGone();
    }
    const Inspection::Verification found = Inspection::verify(QFile::encodeName(closed).toStdString());
    if (found.readability == Inspection::Readability::Ok && found.count(Inspection::Severity::Damage) == 0) {
        return {closed, QStringLiteral("%1; nothing was lost").arg(what)};
    }
    const UnfinishedRecording saved = saveDamaged(closed);
    if (saved.recovered.isEmpty()) {
        return {
            closed,
            QStringLiteral("%1; its %2 records are lost: %3")
                .arg(what, QString::number(Inspection::inspect(QFile::encodeName(closed).toStdString()).times.size()),
                     saved.problem)};
    }
    return {saved.recovered,
            QStringLiteral("%1; %2 records were saved, lost: %3; %4")
                .arg(what, QString::number(saved.records),
                     saved.lost.isEmpty() ? QStringLiteral("nothing") : saved.lost.join(QStringLiteral(", ")),
                     saved.movedTo.isEmpty() ? saved.problem : QStringLiteral("the original is now ") + saved.movedTo)};
}

}  // namespace RecStation
