// Putting a run together from the options, and running it.
#include "station.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

#include <QDir>

#include "input/timeorder.h"
#include "input/timetext.h"
#include "live/livescheduler.h"
#include "watch/unfinished.h"

namespace RecStation {

Configuration loadConfiguration(const Options& options)
{
    const GivenFile& file = options.file;
    const QString path = QString::fromStdString(file.path);
    if (!file.problem.empty()) {
        throw std::runtime_error(file.problem);
    }
    if (file.path.empty() || file.builtIn) {
        Configuration configuration =
            loadConfigurationText(builtInRecorders(options.journal), QStringLiteral("the built-in configuration"));
        configuration.archiveFile = file.hasArchive ? path : QString();
        return configuration;
    }
    if (!file.content) {
        return loadConfigurationFile(path);  // which tells why it cannot be read
    }
    Configuration configuration = loadConfigurationText(QString::fromStdString(*file.content), path, file.lines);
    if (!file.tables.empty()) {  // now that all was checked where it stands
        static_cast<void>(loadConfigurationText(QString::fromStdString(file.tables), path));
    }
    return configuration;
}

namespace {

void requireApart(const std::vector<std::unique_ptr<Source>>& sources)
{
    for (std::size_t i = 0; i < sources.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            requireOwnSpectra(sources[j]->name(), sources[j]->spectra(), sources[i]->name(), sources[i]->spectra());
        }
    }
}

void makeDirectory(const QString& directory)
{
    if (!QDir().mkpath(directory)) {
        throw std::runtime_error("cannot make the directory " + directory.toStdString());
    }
}

}  // namespace

Station::Station(const Options& options, Messages& messages)
    : m_options(options),
      m_messages(messages),
      m_traces(options.trace,
               [this](const QString& sentence) { m_messages.message(QStringLiteral("warning: ") + sentence); }),
      m_plugin(QString::fromStdString(options.plugin)),
      m_configuration(loadConfiguration(options)),
      m_archive(m_configuration.archiveFile,
                std::chrono::milliseconds(static_cast<std::int64_t>(options.archiveWaitSeconds * 1'000))),
      m_live(isLiveRun(options)),
      m_bySystemTime(!options.sourceTime),
      m_scheduler(makeScheduler()),
      m_runner(*m_scheduler, options.speed,
               {[this] { afterStep(); }, [this] { return System::StopSignal::requested() || !m_recorders.canRecord(); },
                [this] {
                    m_recorders.rescueFiles();
                    tellNews();
                }}),
      m_recorders(m_plugin, m_messages, m_traces),
      m_disks(m_recorders, m_messages)
{
    for (const QString& warning : m_configuration.warnings) {
        m_messages.message(QStringLiteral("warning: ") + warning);
    }
    requireOneInput(options.sources);
    if (options.makeOutput) {
        makeDirectory(QString::fromStdString(options.output));
    }
    const auto splitGapUs = options.sources.size() == 1 ? options.splitGapUs : std::nullopt;
    for (const auto& chosen : options.sources) {
        m_scheduler->add(
            makeSource(options, *chosen,
                       {.configuration = m_configuration, .hooks = hooks(), .splitGapUs = splitGapUs, .live = m_live}));
    }
    requireApart(m_scheduler->sources());
    if (options.splitGapUs) {
        m_scheduler->tellGaps(*options.splitGapUs, [this](unsigned long long time) { beginAnew(time); });
    }
    m_scheduler->prepare();
    m_archive.begin(m_messages);
    m_recorders.add(m_configuration.instances, QString::fromStdString(options.output));
    m_recorders.choose(options.recorders, options.sources);
}

StationHooks Station::hooks()
{
    return {[this](const QString& name, bool on) { return switchRecorder(name, on); },
            [this](const QString& path) { m_counter.follow(m_tree, path); }, [this] { return m_toldTime; },
            [this](const QString& path) { return isRecorded(path); },
            [this](const QString& sentence) { m_messages.message(sentence); }};
}

// Besides the counter only recorders that are on observe the values of devices.
bool Station::isRecorded(const QString& path) const
{
    const values::ValueBase* value = m_tree.Find(path);
    return value != nullptr && value->ObserverCount() > 1 && !path.contains(QStringLiteral("/REC_"));
}

bool Station::switchRecorder(const QString& name, bool on)
{
    if (!on) {
        return m_recorders.switchOff(name);
    }
    Recorder* recorder = m_recorders.switchOn(name);
    if (recorder != nullptr && tellsTimes()) {
        recorder->tellTime(m_clock.CurrentTime());
    }
    return recorder != nullptr;
}

std::unique_ptr<Scheduler> Station::makeScheduler()
{
    const auto before = [this](unsigned long long time) { beforeStep(time); };
    if (m_live) {
        const auto tell = [this](const Source& source, const QString& clause) {
            m_messages.message(source.name() + QStringLiteral(": ") + clause);
        };
        const auto tellFailure = [this](const Source& source, const std::string& sentence) {
            m_failures[&source] = QString::fromStdString(sentence);
            m_messages.message(m_failures[&source] + QStringLiteral("; the other sources go on"));
        };
        return std::make_unique<LiveScheduler>(
            m_clock, before,
            LiveScheduler::Hooks{[this] { m_runner.wakeFromAnyThread(); }, tell, tellFailure,
                                 [this] { return m_counter.records(); }});
    }
    return std::make_unique<Scheduler>(m_clock, before);
}

Summary Station::run()
{
    // Until the last file is closed.
    const StopNotifier stopNotifier([this] { m_runner.wake(); });
    Summary summary;
    try {
        if (m_options.recover) {  // before the names of new recordings are chosen
            summary.recovered = recoverEarlier(m_recorders.directories(), m_messages);
        }
        if (m_options.view) {
            m_viewer.emplace(m_recorders.directories(), m_options.viewPort);
        }
        record();
    } catch (const std::exception& error) {
        summary.failure = QString::fromUtf8(error.what());
    }
    m_scheduler->finish();
    m_recorders.close(summary);
    tellNews();
    m_viewer.reset();
    m_messages.finish(progressNumbers());
    m_archive.finish(summary);
    for (std::size_t i = 0; i < m_scheduler->sources().size(); ++i) {
        const Source& source = *m_scheduler->sources()[i];
        if (m_scheduler->hangs(i)) {
            m_failures[&source] = source.name() + QStringLiteral(": it hangs, so that nobody knows what it counted");
            m_messages.message(m_failures[&source]);
        }
        summary.sources.push_back(
            {source.name(), m_scheduler->hangs(i) ? SourceReport() : source.report(), m_failures[&source]});
    }
    if (m_live && summary.failure.isEmpty() && summary.areAllSilent()) {
        summary.failure = QStringLiteral("nothing was measured: no source gave anything");
    }
    summary.recordedMs = recordedMs();
    summary.changes = m_counter.changes();
    return summary;
}

void Station::record()
{
    m_disks.start();
    std::optional<System::IdleWork> idle;
    if (!m_live) {  // there other threads wait for input
        idle.emplace([this] {
            m_recorders.rescueFiles();
            tellNews();
        });
    }
    if (!m_live && !m_options.allowGap && !m_options.splitGapUs && m_scheduler->sources().size() > 1) {
        requireOverlap(m_scheduler->sources(), DefaultGapUs);
    }
    endAfterDuration();
    if (m_recorders.haveChosen()) {
        m_clock.set(firstTime().value_or(m_clock.CurrentTime()));
        m_firstTime = m_clock.CurrentTime();
    }
    m_recorders.startChosen();
    if (m_live) {  // the recordings begin now, and not with what comes first
        m_recorders.tellTime(m_clock.CurrentTime());
    }
    m_recorders.tellStops();
    m_counter.follow(m_tree);
    m_runner.run();
    m_scheduler->finish();
    if (m_live && m_bySystemTime) {  // it lasted until now, although nothing may have come
        m_clock.set(std::max(m_clock.CurrentTime(), systemTimeUs()));
    }
    while (System::StopSignal::requested() && m_scheduler->unfinishedTime()) {
        m_scheduler->stepUnfinished();
        afterStep();
    }
}

// When the recordings begin: at the first change; of live sources at once, so that what is not there yet shows as
// unknown. Only their own times are awaited, for a while.
std::optional<unsigned long long> Station::firstTime()
{
    if (!m_live) {
        return firstTimeOfSources();
    }
    const unsigned long long begin = systemTimeUs();
    if (m_bySystemTime) {
        return begin;
    }
    constexpr std::chrono::seconds Patience{10};
    m_runner.awaitStep(Patience);
    if (const auto first = firstTimeOfSources()) {
        return first;
    }
    m_bySystemTime = true;
    m_messages.message(QStringLiteral("no source has told a time yet: the recordings begin with that of this machine"));
    return begin;
}

std::optional<unsigned long long> Station::firstTimeOfSources()
{
    auto first = m_scheduler->nextTime();
    if (!first && System::StopSignal::requested()) {
        first = m_scheduler->unfinishedTime();
    }
    return first;
}

void Station::endAfterDuration()
{
    if (m_options.durationSeconds) {
        constexpr double MillisecondsPerSecond = 1000;
        m_duration.setSingleShot(true);
        QObject::connect(&m_duration, &QTimer::timeout, &m_duration, [this] {
            System::StopSignal::request();
            m_runner.wake();
        });
        m_duration.start(
            std::chrono::milliseconds(static_cast<std::int64_t>(*m_options.durationSeconds * MillisecondsPerSecond)));
    }
}

void Station::tellNews()
{
    if (m_viewer) {
        if (const auto news = m_viewer->news()) {
            m_messages.message(*news);
        }
    }
}

bool Station::tellsTimes() const
{
    const auto& sources = m_scheduler->sources();
    return m_live || sources.size() > 1 || sources.front()->plainValuesComeFirst();
}

// After a gap, with a clock that may go back between two recordings.
void Station::beginAnew(unsigned long long time)
{
    m_messages.message(
        QStringLiteral("the time leaps from %1 to %2: a new recording begins")
            .arg(QString::fromStdString(utcText(m_clock.CurrentTime())), QString::fromStdString(utcText(time))));
    const std::vector<Recorder*> running = m_recorders.pause();
    m_earlierUs += m_clock.CurrentTime() - m_firstTime.value_or(m_clock.CurrentTime());
    m_firstTime = time;
    m_clock.set(time);
    m_recorders.resume(running);
}

void Station::beforeStep(unsigned long long time)
{
    if (tellsTimes()) {
        m_recorders.tellTime(time);
        m_toldTime = time;
    }
}

void Station::afterStep()
{
    if (!m_firstTime) {
        m_firstTime = m_clock.CurrentTime();
    }
    m_counter.follow(m_tree);
    m_recorders.checkNewFiles();
    m_recorders.tellStops();
    m_recorders.rescueFiles();
    m_disks.check();
    tellNews();
    if (m_messages.progressDue()) {
        m_messages.progress(progressNumbers());
    }
}

unsigned long long Station::recordedMs() const
{
    constexpr unsigned long long MicrosecondsPerMillisecond = 1000;
    const unsigned long long behindGap = m_firstTime ? m_clock.CurrentTime() - *m_firstTime : 0;
    return (m_earlierUs + behindGap) / MicrosecondsPerMillisecond;
}

ProgressNumbers Station::progressNumbers()
{
    return {recordedMs(), m_counter.records(), m_recorders.bytes()};
}

}  // namespace RecStation
