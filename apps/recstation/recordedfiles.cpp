// Watching file names and archive addresses, and inspecting what is on the disk.
#include "recordedfiles.h"

#include <algorithm>

#include <QDir>
#include <QFileInfo>

#include <recording2/inspection/inspection.h>
#include <recording2/inspection/rescue/journalreader.h>
#include <zelvo/zelvo.h>

namespace RecStation {

namespace {

namespace Inspection = Recording2::Inspection;

// Where the bytes end or how they are wrong; empty for a sound file.
QString damageOf(const Inspection::Summary& summary)
{
    if (summary.readability != Inspection::Readability::Ok) {
        return QString::fromStdString(summary.problem);
    }
    return summary.findings.empty() ? QString() : QString::fromStdString(summary.findings.front().text);
}

// Counts what is in a file. @return its damage, empty for a sound one
QString examineBytes(FileReport& report, const QString& path)
{
    const Inspection::Summary summary = Inspection::inspect(path.toStdString());
    report.bytes = QFileInfo(path).size();
    report.records = summary.times.size();
    return damageOf(summary);
}

// An empty file beside the finished one is another process's, which finds the name taken and gives it up; and a
// recording is no link.
FileReport::State stateOnDisk(const QString& temporary, const QString& finished)
{
    const QFileInfo open(temporary);
    const QFileInfo named(finished);
    const bool isFinished = named.exists() && !named.isSymLink();
    if (open.exists() && !open.isSymLink() && (open.size() > 0 || !isFinished)) {
        return FileReport::State::Temporary;
    }
    return isFinished ? FileReport::State::Finished : FileReport::State::Missing;
}

}  // namespace

void examineArchived(FileReport& report, const QString& storedPath)
{
    report.state = FileReport::State::Archived;
    report.problem = examineBytes(report, storedPath);
}

FileReport examineElsewhere(const QString& path)
{
    FileReport report;
    report.path = path;
    if (QFileInfo::exists(path)) {
        report.state =
            path.endsWith(QStringLiteral(".rec")) ? FileReport::State::Finished : FileReport::State::Temporary;
        report.problem = examineBytes(report, path);
    }
    return report;
}

QString finishedPath(const QString& temporaryPath)
{
    const QFileInfo info(temporaryPath);
    return info.absolutePath() + QLatin1Char('/') + info.baseName() + QStringLiteral(".rec");
}

FileReport examineRecording(const QString& temporaryPath)
{
    const QString finished = finishedPath(temporaryPath);
    FileReport report;
    report.state = stateOnDisk(temporaryPath, finished);
    report.ownName = QFileInfo(finished).completeBaseName() == QFileInfo(temporaryPath).completeBaseName();
    report.path = report.state == FileReport::State::Temporary ? temporaryPath : finished;
    if (report.state == FileReport::State::Missing) {
        report.problem = QStringLiteral("the file is not on the disk");
        return report;
    }
    const QString damage = examineBytes(report, report.path);
    if (!damage.isEmpty()) {
        report.problem = QStringLiteral("not completely written, perhaps because the disk is full: ") + damage;
    } else if (report.state == FileReport::State::Temporary) {
        report.problem = QFileInfo::exists(finished) ? QStringLiteral("not renamed: %1 exists already").arg(finished)
                                                     : QStringLiteral("not renamed to %1").arg(finished);
    }
    return report;
}

std::int64_t bytesRecorded(const QString& temporaryPath)
{
    const QFileInfo temporary(temporaryPath);
    const auto recorded = Recording2::Inspection::lastPosition(temporaryPath.toStdString() + ".journal");
    if (recorded && temporary.exists()) {
        return std::max<std::int64_t>(*recorded, temporary.size());
    }
    return temporary.exists() ? temporary.size() : QFileInfo(finishedPath(temporaryPath)).size();
}

FileNameWatch::FileNameWatch(const QString& statusPath) : m_fileName(this)
{
    m_address.Attach(statusPath + QStringLiteral("/REC_ZELVOFILEPATH"));
    m_fileName.Attach(statusPath + QStringLiteral("/REC_FILENAME"));
}

void FileNameWatch::Update(void* /*subject*/, TChangeCode code)
{
    if (code != TChangeCode::ValueChanged || !m_fileName) {
        return;
    }
    const QString path = m_fileName->GetValue();
    if (path.endsWith(QStringLiteral(".tmp")) && !m_paths.contains(path)) {
        m_paths += path;
        // Without the number of the file it is the address of a group that did not take it.
        if (m_address && Zelvo::ZelvoUrl(m_address->GetValue()).isZelvoUrl()) {
            m_addresses[path] = m_address->GetValue();
        }
        if (m_opened) {
            m_opened(path);
        }
    } else if (m_closed && path.endsWith(QStringLiteral(".rec"))) {
        m_closed();
    }
}

}  // namespace RecStation
