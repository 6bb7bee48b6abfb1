// Putting a run together from the options, running it, and closing all recordings.
#include "station.h"

#include <algorithm>
#include <map>
#include <stdexcept>
#include <utility>

#include <QDir>
#include <QFileInfo>

#include <recording2/inspection/rescue/leftparts.h>
#include <terminaltext/nearestword.h>

#include "input/isotime.h"
#include "input/timeorder.h"
#include "overlap.h"
#include "sources/bearings/bearingssource.h"
#include "sources/feed/feedsource.h"
#include "sources/nmea/nmeasource.h"
#include "sources/sim/simsource.h"
#include "sources/sweep/sweepsource.h"
#include "system/stopnotifier.h"
#include "watch/unfinished.h"

#include <recording2/inspection/rescue/journalreader.h>

namespace recstation {

namespace {

constexpr std::chrono::milliseconds longestSetUp{3'000};

Configuration loadConfiguration(const Options& options)
{
    if (!options.config.empty()) {
        return loadConfigurationFile(QString::fromStdString(options.config));
    }
    const QString journal =
        options.journal.empty() ? QStringLiteral("process") : QString::fromStdString(options.journal);
    return loadConfigurationText(defaultConfigurationText(QDir::currentPath(), journal),
                                 QStringLiteral("the built-in configuration"));
}

// The instance that spectra belong to: the first that is no direction finder.
const Instance& receiverOf(const Configuration& configuration)
{
    const auto found = std::find_if(configuration.instances.begin(), configuration.instances.end(),
                                    [](const Instance& instance) { return !instance.directionFinding; });
    return found == configuration.instances.end() ? configuration.instances.front() : *found;
}

// The instance that a log of bearings belongs to: the first direction finder. Where there is none, one is made of the
// first instance.
const Instance& finderOf(Configuration& configuration)
{
    const auto found = std::find_if(configuration.instances.begin(), configuration.instances.end(),
                                    [](const Instance& instance) { return instance.directionFinding; });
    Instance& finder = found == configuration.instances.end() ? configuration.instances.front() : *found;
    finder.directionFinding = true;
    return finder;
}

bool findsDirections(const Options& options)
{
    return options.sim || options.bearings;
}

// Whether a source measures what recorders of a receiver write. Positions go with whatever is recorded; alone, they are
// recorded there.
bool hasReceiver(const Options& options)
{
    bool receives = options.sim || options.sweep;
#if defined(RECSTATION_HAS_IQ)
    receives = receives || options.iq.has_value();
#endif
    return receives || (options.nmea && !findsDirections(options));
}

// Standard input has one reader.
void requireOneInput(const Options& options)
{
    std::vector<std::string> readers;
    const auto note = [&readers](const char* name, const auto& source) {
        if (source && source->file == "-") {
            readers.emplace_back(name);
        }
    };
#if defined(RECSTATION_HAS_IQ)
    note("iq", options.iq);
#endif
    note("sweep", options.sweep);
    note("bearings", options.bearings);
    note("nmea", options.nmea);
    note("feed", options.feed);
    if (readers.size() > 1) {
        throw UsageError(readers[0] + " and " + readers[1] +
                         " cannot both read the standard input: name a file for one of them");
    }
}

// Two sources would tear each other's spectrum down with every change.
void requireOwnSpectra(const std::vector<std::unique_ptr<Source>>& sources)
{
    for (std::size_t i = 0; i < sources.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            for (const QString& path : sources[i]->spectra()) {
                if (sources[j]->spectra().contains(path)) {
                    throw UsageError(sources[j]->name().toStdString() + " and " + sources[i]->name().toStdString() +
                                     " both show the spectrum " + path.toStdString() +
                                     ": run them one after the other");
                }
            }
        }
    }
}

// Of an input that plays alone: others could not go back with it.
std::optional<unsigned long long> inputGap(const Options& options)
{
    int sources = 0;
#if defined(RECSTATION_HAS_IQ)
    sources += options.iq ? 1 : 0;
#endif
    sources += (options.sim ? 1 : 0) + (options.sweep ? 1 : 0) + (options.bearings ? 1 : 0) + (options.nmea ? 1 : 0) +
               (options.feed ? 1 : 0);
    return sources == 1 ? options.splitGapUs : std::nullopt;
}

void makeDirectory(const QString& directory)
{
    if (!QDir().mkpath(directory)) {
        throw std::runtime_error("cannot make the directory " + directory.toStdString());
    }
}

// Of one that is being written, what waits in its journal counts too.
std::int64_t bytesRecorded(const QString& temporaryPath)
{
    const QFileInfo temporary(temporaryPath);
    const auto recorded = Recording2::Inspection::lastPosition(temporaryPath.toStdString() + ".journal");
    if (recorded && temporary.exists()) {
        return std::max<std::int64_t>(*recorded, temporary.size());
    }
    return temporary.exists() ? temporary.size() : QFileInfo(finishedPath(temporaryPath)).size();
}

}  // namespace

Station::Station(const Options& options, Messages& messages, FreeSpace freeSpace)
    : m_messages(messages),
      m_traces(options.trace,
               [this](const QString& sentence) { m_messages.message(QStringLiteral("warning: ") + sentence); }),
      m_plugin(QString::fromStdString(options.plugin)),
      m_configuration(loadConfiguration(options)),
      m_archive(makeArchiveService(m_configuration.archiveFile)),
      m_archiveWait(static_cast<std::int64_t>(options.archiveWaitSeconds * 1'000)),
      m_scheduler(m_clock, [this](unsigned long long time) { beforeStep(time); }),
      m_runner(m_scheduler, options.speed,
               {[this] { afterStep(); }, [this] { return System::StopSignal::requested() || !canRecord(); },
                [this] { rescueFiles(); }}),
      m_space(std::move(freeSpace)),
      m_allowGap(options.allowGap || options.splitGapUs),
      m_recover(options.recover),
      m_switchedByFeed(options.feed.has_value())
{
    for (const QString& warning : m_configuration.warnings) {
        m_messages.message(QStringLiteral("warning: ") + warning);
    }
    requireOneInput(options);
    if (options.makeOutput) {
        makeDirectory(QString::fromStdString(options.output));
    }
    addSources(options);
    requireOwnSpectra(m_scheduler.sources());
    if (options.splitGapUs) {
        m_scheduler.tellGaps(*options.splitGapUs, [this](unsigned long long time) { beginAnew(time); });
    }
    m_scheduler.prepare();
    if (m_archive != nullptr) {
        const QString problem = m_archive->waitUntilSetUp(longestSetUp);
        if (!problem.isEmpty()) {
            m_messages.message(
                QStringLiteral("warning: archive: %1; recording goes on, and it is tried again").arg(problem));
        }
    }
    addRecorders(options);
    m_toStart = recordersToStart(options);
}

void Station::addSources(const Options& options)
{
    if (options.sim) {
        m_scheduler.add(makeSimSource(*options.sim, m_configuration.instances));
    }
#if defined(RECSTATION_HAS_IQ)
    if (options.iq) {
        IqOptions iq = *options.iq;
        iq.valuePath = receiverOf(m_configuration).valuePath;
        m_scheduler.add(makeIqSource(
            iq, [this](const QString& sentence) { m_messages.message(QStringLiteral("iq: ") + sentence); }));
    }
#endif
    if (options.sweep) {
        SweepOptions sweep = *options.sweep;
        sweep.splitGapUs = inputGap(options);
        sweep.valuePath = receiverOf(m_configuration).valuePath;
        m_scheduler.add(makeSweepSource(sweep, [this](const QString& sentence) { m_messages.message(sentence); }));
    }
    if (options.bearings) {
        BearingsOptions bearings = *options.bearings;
        bearings.splitGapUs = inputGap(options);
        bearings.valuePath = finderOf(m_configuration).valuePath;
        bearings.positionElsewhere = options.nmea.has_value();
        m_scheduler.add(
            makeBearingsSource(bearings, [this](const QString& sentence) { m_messages.message(sentence); }));
    }
    // Behind the bearings, whose heading is only the first.
    if (options.nmea) {
        NmeaOptions nmea = *options.nmea;
        nmea.splitGapUs = inputGap(options);
        // Other sources name their devices themselves.
        nmea.valuePath =
            m_scheduler.sources().empty() && !options.feed ? receiverOf(m_configuration).valuePath : QString();
        m_scheduler.add(makeNmeaSource(nmea, [this](const QString& sentence) { m_messages.message(sentence); }));
    }
    if (options.feed) {
        FeedHost host;
        host.switchRecorder = [this](const QString& name, bool on) { return switchRecorder(name, on); };
        host.created = [this](const QString& path) { m_counter.follow(m_tree, path); };
        host.toldTime = [this] { return m_toldTime; };
        host.recorded = [this](const QString& path) { return isRecorded(path); };
        host.report = [this](const QString& sentence) { m_messages.message(sentence); };
        FeedOptions feed = *options.feed;
        feed.keepAt = feed.keepAt || !m_scheduler.sources().empty();  // with others, every change has its own time
        m_scheduler.add(makeFeedSource(feed, std::move(host)));
    }
}

void Station::addRecorders(const Options& options)
{
    const QString output = QString::fromStdString(options.output);
    for (const Instance& instance : m_configuration.instances) {
        m_recorders.push_back(std::make_unique<Recorder>(m_plugin, instance, output));
    }
    const bool anyDirectory = std::any_of(m_recorders.begin(), m_recorders.end(), [](const auto& recorder) {
        return QFileInfo(recorder->directory()).isDir();
    });
    if (!anyDirectory) {
        requireDirectory(output.isEmpty() ? m_recorders.front()->directory() : output);
    }
}

// A feed switches its recorders itself; the others start the recorders of what they measure.
std::vector<Recorder*> Station::recordersToStart(const Options& options) const
{
    std::vector<Recorder*> chosen;
    for (const std::string& name : options.recorders) {
        Recorder* recorder = findRecorder(QString::fromStdString(name));
        if (recorder == nullptr) {
            throw UsageError("--record " + name + ": no recorder of that name is configured" +
                             recorderMeant(name).toStdString());
        }
        chosen.push_back(recorder);
    }
    const bool onlyFeed = options.feed && m_scheduler.sources().size() == 1;
    if (!chosen.empty() || onlyFeed) {
        return chosen;
    }
    for (std::size_t i = 0; i < m_recorders.size(); ++i) {
        if (m_configuration.instances[i].directionFinding ? findsDirections(options) : hasReceiver(options)) {
            chosen.push_back(m_recorders[i].get());
        }
    }
    return chosen;
}

Recorder* Station::findRecorder(const QString& name) const
{
    const auto found = std::find_if(m_recorders.begin(), m_recorders.end(),
                                    [&name](const auto& recorder) { return recorder->name() == name; });
    return found == m_recorders.end() ? nullptr : found->get();
}

// Besides the counter only recorders that are on observe the values of devices.
bool Station::isRecorded(const QString& path) const
{
    const values::ValueBase* value = m_tree.Find(path);
    return value != nullptr && value->ObserverCount() > 1 && !path.contains(QStringLiteral("/REC_"));
}

QString Station::recorderMeant(const std::string& name) const
{
    std::vector<std::string> names;
    for (const auto& recorder : m_recorders) {
        names.push_back(recorder->name().toStdString());
    }
    const auto near = TerminalText::nearestWord(name, names);
    return near ? QStringLiteral(": did you mean %1?").arg(QString::fromStdString(*near)) : QString();
}

bool Station::switchRecorder(const QString& name, bool on)
{
    Recorder* recorder = name.isEmpty() ? m_recorders.front().get() : findRecorder(name);
    if (recorder == nullptr) {
        return false;
    }
    if (on) {
        trySwitchOn(*recorder);
        if (tellsTimes()) {
            recorder->tellTime(m_clock.CurrentTime());
        }
    } else {
        recorder->switchOff();
    }
    return true;
}

Summary Station::run()
{
    // Until the last file is closed.
    const StopNotifier stopNotifier([this] { m_runner.wake(); });
    Summary summary;
    try {
        recoverEarlier(summary);
        record();
    } catch (const std::exception& error) {
        summary.failure = QString::fromUtf8(error.what());
    }
    closeRecordings(summary);
    summary.refusals = m_refusals;
    if (summary.failure.isEmpty() && summary.files.empty() && !m_refusals.empty()) {
        summary.failure = QStringLiteral("nothing could be recorded");
    }
    m_messages.finish(progressNumbers());
    finishArchive(summary);
    for (const auto& source : m_scheduler.sources()) {
        summary.sources.push_back({source->name(), source->report()});
    }
    summary.recordedMs = recordedMs();
    summary.changes = m_counter.changes();
    return summary;
}

// Before the names of new recordings are chosen. What goes wrong here is told, and recording begins nevertheless.
void Station::recoverEarlier(Summary& summary)
{
    if (!m_recover) {
        return;
    }
    UnfinishedHooks hooks;
    hooks.report = [this](const UnfinishedRecording& unfinished) { m_messages.message(unfinished.sentence()); };
    hooks.interrupted = [] { return System::StopSignal::requested(); };
    QStringList directories;
    for (const auto& recorder : m_recorders) {
        const QString directory = QFileInfo(recorder->directory()).canonicalFilePath();
        if (!directory.isEmpty() && !directories.contains(directory)) {
            directories += directory;
            for (const std::string& part : Recording2::Inspection::removeLeftPartsIn(directory.toStdString())) {
                m_messages.message(
                    QStringLiteral("removed %1, which an interrupted copy or recovery had left unfinished")
                        .arg(QString::fromStdString(part)));
            }
            const std::vector<UnfinishedRecording> done = recoverUnfinished(directory, hooks);
            summary.recovered.insert(summary.recovered.end(), done.begin(), done.end());
        }
    }
}

void Station::record()
{
    m_sinceStart.start();
    m_sinceSpaceCheck.start();
    m_sinceFileCheck.start();
    const System::IdleWork idle([this] { rescueFiles(); });
    if (!m_allowGap && m_scheduler.sources().size() > 1) {
        requireOverlap(m_scheduler.sources(), defaultGapUs);
    }
    if (!m_toStart.empty()) {
        auto first = m_scheduler.nextTime();
        if (!first && System::StopSignal::requested()) {
            first = m_scheduler.unfinishedTime();
        }
        m_clock.set(first.value_or(m_clock.CurrentTime()));
        m_firstTime = m_clock.CurrentTime();
    }
    startRecorders();
    tellStops();
    m_counter.follow(m_tree);
    m_runner.run();
    while (System::StopSignal::requested() && m_scheduler.unfinishedTime()) {
        m_scheduler.stepUnfinished();
        afterStep();
    }
}

bool Station::tellsTimes() const
{
    const auto& sources = m_scheduler.sources();
    return sources.size() > 1 || sources.front()->plainValuesComeFirst();
}

// Behind a gap, with a clock that may go back between two recordings.
void Station::beginAnew(unsigned long long time)
{
    m_messages.message(
        QStringLiteral("the time leaps from %1 to %2: a new recording begins")
            .arg(QString::fromStdString(utcText(m_clock.CurrentTime())), QString::fromStdString(utcText(time))));
    std::vector<Recorder*> running;
    for (const auto& recorder : m_recorders) {
        if (recorder->isOn()) {
            recorder->switchOff();
            running.push_back(recorder.get());
        }
    }
    m_earlierUs += m_clock.CurrentTime() - m_firstTime.value_or(m_clock.CurrentTime());
    m_firstTime = time;
    m_clock.set(time);
    for (Recorder* recorder : running) {
        trySwitchOn(*recorder);
    }
}

void Station::beforeStep(unsigned long long time)
{
    if (tellsTimes()) {
        for (const auto& recorder : m_recorders) {
            recorder->tellTime(time);
        }
        m_toldTime = time;
    }
}

void Station::afterStep()
{
    constexpr qint64 spaceCheckMs = 1'000;
    if (!m_firstTime) {
        m_firstTime = m_clock.CurrentTime();
    }
    m_counter.follow(m_tree);
    checkNewFiles();
    tellStops();
    rescueFiles();
    if (m_sinceSpaceCheck.elapsed() >= spaceCheckMs) {
        m_sinceSpaceCheck.restart();
        checkSpace();
    }
    if (m_messages.progressDue()) {
        m_messages.progress(progressNumbers());
    }
}

void Station::checkSpace()
{
    std::map<QString, std::int64_t> written;
    for (const auto& recorder : m_recorders) {
        if (recorder->isOn()) {
            written[recorder->directory()];
        }
        for (const QString& path : recorder->temporaryPaths()) {
            const auto found = written.find(recorder->directory());
            if (found != written.end()) {
                found->second += bytesRecorded(path);
            }
        }
    }
    for (const auto& [directory, bytes] : written) {
        const QString warning = m_space.check(directory, bytes, m_sinceStart.elapsed());
        if (!warning.isEmpty()) {
            m_messages.message(warning);
        }
    }
}

FileReport Station::examine(const Recorder& recorder, const QString& path) const
{
    if (const auto rescued = recorder.rescued(path)) {
        FileReport report = examineElsewhere(rescued->path);
        report.path = rescued->path.isEmpty() ? path : rescued->path;
        report.problem = rescued->what;
        return report;
    }
    FileReport report = examineRecording(path);
    if (m_stopped.contains(path)) {
        const QString reason = m_traces.whyStopped(path);
        report.problem = QStringLiteral("stopped before the end, it could not be written%1%2")
                             .arg(reason.isEmpty() ? QString() : QStringLiteral(": ") + reason,
                                  report.problem.isEmpty() ? QString() : QStringLiteral("; ") + report.problem);
    }
    return report;
}

// Every recorder is closed, whatever happens to the others.
void Station::closeRecordings(Summary& summary)
{
    tellStops();
    for (const auto& recorder : m_recorders) {
        try {
            rescueFilesOf(*recorder);
            recorder->switchOff();
            rescueFilesOf(*recorder);
        } catch (const std::exception& error) {
            summary.failure += QStringLiteral("%1%2: cannot close the recording: %3")
                                   .arg(summary.failure.isEmpty() ? QString() : QStringLiteral("; "), recorder->name(),
                                        QString::fromUtf8(error.what()));
        }
        for (const QString& path : recorder->temporaryPaths()) {
            FileReport report = examine(*recorder, path);
            report.address = recorder->addressOf(path);
            summary.files.push_back({recorder->name(), report});
        }
    }
}

void Station::finishArchive(Summary& summary)
{
    if (m_archive == nullptr) {
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
    const ArchiveReport archive = m_archive->finish(
        addresses, m_archiveWait, [brokenOff] { return !brokenOff && System::StopSignal::requested(); });
    Summary::Archive& result = summary.archive.emplace();
    result.problem = archive.problem;
    result.unregistered = summary.files.size() - registered.size();
    for (std::size_t i = 0; i < registered.size(); ++i) {
        if (i >= archive.files.size() || !archive.files[i].moved) {
            ++result.waiting;
            if (result.problem.isEmpty() && i < archive.files.size()) {
                result.problem = archive.files[i].why;
            }
            if (registered[i]->state == FileReport::State::Missing) {
                registered[i]->problem =
                    QStringLiteral("the file is not on the disk, and whether the archive has it could not be learned");
            }
            continue;
        }
        ++result.moved;
        const bool seenBefore = registered[i]->state == FileReport::State::Finished &&
                                registered[i]->problem.isEmpty() && registered[i]->ownName;
        registered[i]->state = FileReport::State::Archived;
        if (!seenBefore) {  // it was moved before anyone could look at it
            examineArchived(*registered[i], archive.files[i].storedPath);
        }
    }
}

unsigned long long Station::recordedMs() const
{
    constexpr unsigned long long microsecondsPerMillisecond = 1000;
    const unsigned long long behindGap = m_firstTime ? m_clock.CurrentTime() - *m_firstTime : 0;
    return (m_earlierUs + behindGap) / microsecondsPerMillisecond;
}

ProgressNumbers Station::progressNumbers()
{
    ProgressNumbers numbers;
    numbers.recordedMs = recordedMs();
    numbers.records = m_counter.records();
    for (const auto& recorder : m_recorders) {
        for (const QString& path : recorder->temporaryPaths()) {
            const std::int64_t bytes = bytesRecorded(path);
            if (bytes > 0) {  // else the archive has moved it
                m_bytes[path] = bytes;
            }
            numbers.bytes += m_bytes.value(path);
        }
    }
    return numbers;
}

}  // namespace recstation
