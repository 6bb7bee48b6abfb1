// Asking the archive what became of every recording of the run.
#include "watch/archivewatch.h"

#include <vector>

#include <system/stopsignal.h>

namespace RecStation {

namespace {

constexpr std::chrono::milliseconds LongestSetUp{3'000};

void note(const ArchivedFile& archived, FileReport& report, ArchiveSummary& result)
{
    if (!archived.moved) {
        ++result.waiting;
        if (result.problem.isEmpty()) {
            result.problem = archived.why;
        }
        if (report.state == FileReport::State::Missing) {
            report.problem =
                QStringLiteral("the file is not on the disk, and whether the archive has it could not be learned");
        }
        return;
    }
    ++result.moved;
    const bool seenBefore = report.state == FileReport::State::Finished && report.problem.isEmpty() && report.ownName;
    report.state = FileReport::State::Archived;
    if (!seenBefore) {  // it was moved before anyone could look at it
        examineArchived(report, archived.storedPath);
    }
}

}  // namespace

ArchiveWatch::ArchiveWatch(const QString& configurationFile, std::chrono::milliseconds wait)
    : m_service(makeArchiveService(configurationFile)), m_wait(wait)
{
}

void ArchiveWatch::begin(Messages& messages)
{
    const QString problem = m_service == nullptr ? QString() : m_service->waitUntilSetUp(LongestSetUp);
    if (!problem.isEmpty()) {
        messages.message(QStringLiteral("warning: archive: %1; recording goes on, and it is tried again").arg(problem));
    }
}

void ArchiveWatch::finish(Summary& summary)
{
    if (m_service == nullptr) {
        return;
    }
    QStringList addresses;
    std::vector<FileReport*> registered;
    for (Summary::File& file : summary.files) {
        if (!file.report.address.isEmpty()) {
            addresses += file.report.address;
            registered.push_back(&file.report);
        }
    }
    // A run that was broken off by a signal was to end soon; a second one ends the process at once.
    const bool brokenOff = System::StopSignal::requested();
    const ArchiveReport archive =
        m_service->finish(addresses, m_wait, [brokenOff] { return !brokenOff && System::StopSignal::requested(); });
    Summary::Archive& result = summary.archive.emplace();
    result.problem = archive.problem;
    result.unregistered = summary.files.size() - registered.size();
    for (std::size_t i = 0; i < registered.size(); ++i) {
        note(i < archive.files.size() ? archive.files[i] : ArchivedFile(), *registered[i], result);
    }
}

}  // namespace RecStation
