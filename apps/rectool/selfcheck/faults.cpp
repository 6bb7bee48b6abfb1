// Killing recording processes, cutting files, limiting their size, and judging what was recovered.
#include "faults.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include <recording2/inspection/rescue/recovery.h>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include "recordingrun.h"

namespace RecTool::SelfCheck {

namespace Inspection = Recording2::Inspection;
using Inspection::Recovery;
using Inspection::RecoveryOutcome;

namespace {

constexpr int PatienceMs = 60'000;

std::string native(const QString& path)
{
    return QFile::encodeName(path).toStdString();
}

/// The only file of a folder that a pattern fits; empty when there is none.
QString only(const QString& folder, const char* pattern)
{
    const QStringList names = QDir(folder).entryList({QString::fromLatin1(pattern)}, QDir::Files);
    return names.size() == 1 ? QDir(folder).filePath(names.first()) : QString();
}

QString journalOf(const QString& recording)
{
    return QFile::decodeName(QByteArray::fromStdString(Inspection::journalOf(native(recording))));
}

[[noreturn]] void fail(const QString& sentence)
{
    throw std::runtime_error(sentence.toStdString());
}

void waitForEnd(QProcess& process)
{
    if (!process.waitForFinished(PatienceMs)) {
        process.kill();
        process.waitForFinished(PatienceMs);
        fail(QStringLiteral("the process that records did not end"));
    }
}

// Looks every millisecond; recording goes on meanwhile, so that the moment is any within a write.
void waitForRecords(QProcess& process, const Ledger& ledger, std::uint64_t steps)
{
    QElapsedTimer patience;
    patience.start();
    while (ledger.accepted() < steps) {
        if (process.waitForFinished(1)) {
            fail(QStringLiteral("the process that records ended early, with exit code %1").arg(process.exitCode()));
        }
        if (patience.elapsed() > PatienceMs) {
            fail(QStringLiteral("the process that records makes no progress"));
        }
    }
}

void cutAt(const QString& path, std::uint64_t size)
{
    if (!QFile::resize(path, static_cast<qint64>(size))) {
        fail(QStringLiteral("%1 cannot be cut").arg(path));
    }
}

Recovery recover(const QString& recording, const QString& output)
{
    return Inspection::recover(native(recording), {native(output), 0, {}, {}});
}

bool isWritten(const Recovery& recovery)
{
    return recovery.outcome == RecoveryOutcome::Whole || recovery.outcome == RecoveryOutcome::SomethingLost;
}

}  // namespace

Reference Reference::read(const std::string& path, std::uint64_t steps)
{
    Reference reference;
    const Inspection::Summary summary = Inspection::inspect(path);
    if (summary.readability != Inspection::Readability::Ok || !summary.findings.empty()) {
        reference.problem = summary.findings.empty() ? summary.problem : summary.findings.front().text;
        return reference;
    }
    reference.header = summary.header;
    Inspection::RecordReader reader(path, summary);
    for (Inspection::Record record; reader.next(record);) {
        reference.records.push_back(record);
    }
    if (reference.records.size() <= steps) {
        reference.problem = "It holds " + std::to_string(reference.records.size()) + " records of " +
                            std::to_string(steps) + " changes.";
        return reference;
    }
    reference.states = reference.records.size() - steps;
    return reference;
}

std::uint64_t Reference::timeOf(std::uint64_t count) const
{
    return count == 0 || records.empty() ? 0 : records[std::min<std::uint64_t>(count, records.size()) - 1].timeMs;
}

Comparison compare(const std::string& path, const Reference& reference)
{
    Comparison comparison;
    const Inspection::Summary summary = Inspection::inspect(path);
    if (summary.readability != Inspection::Readability::Ok || !summary.findings.empty()) {
        comparison.problem = summary.findings.empty() ? summary.problem : summary.findings.front().text;
        return comparison;
    }
    Inspection::RecordReader reader(path, summary);
    std::uint64_t next = 0;  // of the reference's records
    for (Inspection::Record record; reader.next(record); ++next) {
        const auto isSame = [&record](const Inspection::Record& known) {
            return known.code == record.code && known.data == record.data;
        };
        const auto from = reference.records.begin() +
                          static_cast<std::ptrdiff_t>(std::min<std::uint64_t>(next, reference.records.size()));
        const auto found = std::find_if(from, reference.records.end(), isSame);
        if (found == reference.records.end()) {
            comparison.problem = "The record at " + std::to_string(record.position) + " was never recorded.";
            return comparison;
        }
        next = static_cast<std::uint64_t>(found - reference.records.begin());
        ++comparison.records;
        comparison.exactTimes += found->timeMs == record.timeMs ? 1U : 0U;
    }
    comparison.isBeginning = next == comparison.records && comparison.exactTimes == comparison.records;
    if (!reader.findings().empty()) {
        comparison.problem = reader.findings().front().text;
    }
    return comparison;
}

/// What is left when the process has ended.
struct Faults::Left {
    QString folder;
    QString recording;           // a .tmp or a .rec; empty when there is none
    std::uint64_t accepted = 0;  // steps
    bool stopped = false;        // by the recorder itself
};

Faults::Faults(QString folder, QString program) : m_folder(std::move(folder)), m_program(std::move(program))
{
}

std::uint64_t Faults::between(std::uint64_t least, std::uint64_t most)
{
    return std::uniform_int_distribution<std::uint64_t>(least, most)(m_chance);
}

QString Faults::freshFolder()
{
    QString folder = QDir(m_folder).filePath(QStringLiteral("run%1").arg(++m_runs));
    if (!QDir().mkpath(folder)) {
        fail(QStringLiteral("%1 cannot be made").arg(folder));
    }
    return folder;
}

/// @param killAt when so many steps were accepted; 0: the process is let go on to its end
Faults::Left Faults::record(std::uint64_t killAt, std::uint64_t limitBytes)
{
    Left left;
    left.folder = freshFolder();
    const Ledger ledger(QDir(left.folder).filePath(QString::fromLatin1(LedgerName)));
    if (!ledger.isOpen()) {
        fail(QStringLiteral("%1: %2").arg(left.folder, ledger.problem()));
    }
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(m_program, {QStringLiteral("selfcheck"), left.folder, QStringLiteral("--child"),
                              QStringLiteral("--limit"), QString::number(limitBytes)});
    if (!process.waitForStarted(PatienceMs)) {
        fail(QStringLiteral("%1 cannot be started: %2").arg(m_program, process.errorString()));
    }
    if (killAt > 0) {
        waitForRecords(process, ledger, killAt);
        process.kill();
    } else {
        process.closeWriteChannel();
    }
    waitForEnd(process);
    if (killAt == 0 && (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)) {
        fail(QStringLiteral("the process that records failed, with exit code %1").arg(process.exitCode()));
    }
    left.accepted = ledger.accepted();
    left.stopped = ledger.stopped();
    const QString open = only(left.folder, "*.tmp");
    left.recording = open.isEmpty() ? only(left.folder, "*.rec") : open;
    return left;
}

std::string Faults::makeReference()
{
    const Left left = record(0, 0);
    if (!left.recording.endsWith(QStringLiteral(".rec")) || left.accepted != Steps) {
        return "A recording that nothing disturbs was not finished.";
    }
    m_reference = Reference::read(native(left.recording), Steps);
    return m_reference.problem;
}

void Faults::judge(const Left& left, const std::string& recovered, bool nothingMayBeLost, FaultReport& report) const
{
    const Comparison comparison = compare(recovered, m_reference);
    const std::uint64_t accepted = m_reference.states + left.accepted;
    const auto broken = [&](const std::string& sentence) {
        report.broken.push_back(left.folder.toStdString() + ": " + sentence);
    };
    if (!comparison.problem.empty()) {
        broken(comparison.problem);
        return;
    }
    if (comparison.records < accepted) {
        const std::uint64_t lost = accepted - comparison.records;
        report.worstLostRecords = std::max(report.worstLostRecords, lost);
        report.worstLostMs =
            std::max(report.worstLostMs, m_reference.timeOf(accepted) - m_reference.timeOf(comparison.records));
        if (nothingMayBeLost) {
            broken(std::to_string(lost) + " of " + std::to_string(accepted) + " accepted records are missing.");
        }
    }
    // One may have been accepted that the process could not acknowledge any more.
    if (comparison.records > accepted + 1) {
        broken("There are " + std::to_string(comparison.records) + " records of " + std::to_string(accepted) +
               " that were accepted.");
    }
    if (nothingMayBeLost && !comparison.isBeginning) {
        broken("Records or times are not those that were recorded.");
    }
}

void Faults::kill(FaultReport& killed, FaultReport& cut)
{
    const Left left = record(between(1, Steps - Steps / 20), 0);
    ++killed.runs;
    if (!left.recording.endsWith(QStringLiteral(".tmp"))) {
        killed.broken.push_back(left.folder.toStdString() + ": There is no recording to recover.");
        return;
    }
    const QString output = QDir(left.folder).filePath(QStringLiteral("recovered.rec"));
    const Recovery recovery = recover(left.recording, output);
    if (isWritten(recovery)) {
        judge(left, native(output), true, killed);
    } else {
        killed.broken.push_back(left.folder.toStdString() + ": " + recovery.problem);
    }
    cutAndRecover(left, cut);
    if (killed.broken.empty() && cut.broken.empty()) {
        QDir(left.folder).removeRecursively();  // what went wrong is kept for whoever looks, the rest takes much space
    }
}

void Faults::cutAndRecover(const Left& left, FaultReport& report)
{
    const QString recording = QDir(left.folder).filePath(QStringLiteral("cut.tmp"));
    const QString journal = journalOf(recording);
    const bool hasJournal = QFileInfo::exists(journalOf(left.recording));
    if (!QFile::copy(left.recording, recording) || (hasJournal && !QFile::copy(journalOf(left.recording), journal))) {
        fail(QStringLiteral("%1 cannot be written").arg(recording));
    }
    const std::uint64_t what = hasJournal ? report.runs % 3 : 0;  // the recording, the journal, both
    ++report.runs;
    if (what != 1) {
        cutAt(recording, between(0, static_cast<std::uint64_t>(QFileInfo(recording).size())));
    }
    if (what != 0) {
        cutAt(journal, between(0, static_cast<std::uint64_t>(QFileInfo(journal).size())));
    }
    const QString output = QDir(left.folder).filePath(QStringLiteral("cut.rec"));
    const Recovery recovery = recover(recording, output);
    if (isWritten(recovery)) {
        judge(left, native(output), false, report);
        const Comparison comparison = compare(native(output), m_reference);
        if (comparison.exactTimes < recovery.times.kept) {
            report.broken.push_back(left.folder.toStdString() + ": Times are said to be kept and are not.");
        }
    } else if (recovery.outcome == RecoveryOutcome::Nothing) {
        const std::uint64_t accepted = m_reference.states + left.accepted;
        report.worstLostRecords = std::max(report.worstLostRecords, accepted);
        report.worstLostMs = std::max(report.worstLostMs, m_reference.timeOf(accepted));
    } else {
        report.broken.push_back(left.folder.toStdString() + ": " + recovery.problem);
    }
}

void Faults::fill(FaultReport& filled)
{
    constexpr std::uint64_t LeastBytes = 1'500'000;  // a journal is about 1 MB large
    constexpr std::uint64_t MostBytes = 8'000'000;
    const Left left = record(0, between(LeastBytes, MostBytes));
    ++filled.runs;
    const auto broken = [&](const std::string& sentence) {
        filled.broken.push_back(left.folder.toStdString() + ": " + sentence);
    };
    if (left.recording.isEmpty() || !left.stopped) {
        broken(left.stopped ? "There is no recording." : "The recorder did not stop.");
        return;
    }
    const bool closed =
        left.recording.endsWith(QStringLiteral(".rec")) && !QFileInfo::exists(journalOf(left.recording));
    QString readable = left.recording;
    if (!closed) {  // closing it failed as well, for no file can grow: the journal has it
        readable = QDir(left.folder).filePath(QStringLiteral("recovered.rec"));
        const Recovery recovery = recover(left.recording, readable);
        if (!isWritten(recovery)) {
            broken(recovery.problem);
            return;
        }
    }
    judge(left, native(readable), true, filled);
    if (filled.broken.empty()) {
        QDir(left.folder).removeRecursively();
    }
}

}  // namespace RecTool::SelfCheck
