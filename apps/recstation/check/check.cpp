// Putting a run together as the station does, but with its recorders off.
#include "check/findings.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <mutex>
#include <set>
#include <stdexcept>

#include <QDir>
#include <QFileInfo>

#include <system/program.h>
#include <system/stopsignal.h>
#include <values/tree.h>

#include "check/probe.h"
#include "clock.h"
#include "live/sourcethreads.h"
#include "progress.h"
#include "recorders.h"
#include "station.h"
#include "watch/spacewatch.h"

namespace RecStation {

namespace {

constexpr std::int64_t LittleSpace = 1'000'000'000;

struct Trial {
    QStringList spectra;
    std::size_t steps = 0;
    bool goesOn = false;
    bool ended = false;  // its input came to its end
};

class Check {
public:
    explicit Check(const Options& options)
        : m_options(options),
          m_messages(false, true),
          m_traces(options.trace, [this](const QString& sentence) { m_messages.message(sentence); }),
          m_plugin(QString::fromStdString(options.plugin)),
          m_configuration(loadConfiguration(options)),
          m_live(isLiveRun(options)),
          m_recorders(m_plugin, m_messages, m_traces)
    {
        for (const QString& warning : m_configuration.warnings) {
            m_messages.message(QStringLiteral("warning: ") + warning);
        }
        requireOneInput(options.sources);
    }

    [[nodiscard]] Findings run()
    {
        tryRecorders();
        prepareAll();
        trySources();
        for (std::size_t i = 0; i < m_options.sources.size(); ++i) {
            noteSource(i);
        }
        for (std::size_t i = 0; i < m_configuration.instances.size(); ++i) {
            m_findings.recorders.push_back(noteRecorder(*m_recorders.all()[i], m_configuration.instances[i]));
        }
        return m_findings;
    }

private:
    void tryRecorders()
    {
        try {
            m_recorders.add(m_configuration.instances, QString::fromStdString(m_options.output));
        } catch (const std::exception&) {
            if (m_recorders.all().size() < m_configuration.instances.size()) {
                throw;
            }
            // There is no directory for any of them, which is told of each.
        }
        m_recorders.choose(m_options.recorders, m_options.sources);
    }

    // Until all have shown enough or ended, the time is over, or the process is asked to stop.
    void trySources()
    {
        using SteadyClock = std::chrono::steady_clock;
        using namespace std::chrono_literals;
        const auto deadline = SteadyClock::now() + std::chrono::duration_cast<SteadyClock::duration>(
                                                       std::chrono::duration<double>(m_options.checkSeconds));
        for (std::size_t i = 0; i < m_sources.size(); ++i) {
            if (m_sources[i] && m_options.sources[i]->isLive()) {
                m_threads.add(i, *m_sources[i]);
            }
        }
        const auto goesOn = [](const Trial& trial) { return trial.goesOn; };
        while (std::any_of(m_trials.begin(), m_trials.end(), goesOn) && SteadyClock::now() < deadline &&
               !System::StopSignal::requested()) {
            const auto glance = readFiles() ? 0ms : 100ms;  // a signal wakes nobody here
            if (const auto arrival = m_threads.firstUntil(std::min(deadline, SteadyClock::now() + glance))) {
                m_threads.takeFirst();
                take(*arrival);
            }
        }
        m_threads.finish(2s);
        while (const auto arrival = m_threads.first()) {
            m_threads.takeFirst();
            noteEnd(*arrival);
        }
    }
    void prepareAll()
    {
        m_findings.sources.resize(m_options.sources.size());
        m_trials.resize(m_options.sources.size());
        m_sources.resize(m_options.sources.size());
        m_probe.leaveOut(m_tree);
        for (std::size_t i = 0; i < m_options.sources.size(); ++i) {
            m_findings.sources[i].name = QString::fromLatin1(m_options.sources[i]->traits().name);
            prepare(i);
        }
    }

    // One that cannot even be opened is no reason not to look at the others.
    void prepare(std::size_t index)
    {
        m_probe.begin(index, 0);
        try {
            auto source = makeSource(m_options, *m_options.sources[index],
                                     {.configuration = m_configuration, .hooks = hooksOf(index), .live = m_live});
            m_trials[index].spectra = source->spectra();
            for (std::size_t other = 0; other < index; ++other) {
                requireOwnSpectra(m_findings.sources[other].name, m_trials[other].spectra, source->name(),
                                  m_trials[index].spectra);
            }
            source->prepare();
            m_sources[index] = std::move(source);
            m_trials[index].goesOn = true;
        } catch (const UsageError&) {
            throw;
        } catch (const std::exception& error) {
            m_findings.sources[index].problem = QString::fromUtf8(error.what());
        }
        m_probe.follow(m_tree);
    }

    // What is never waited for; false when there is none any more.
    [[nodiscard]] bool readFiles()
    {
        bool any = false;
        for (std::size_t i = 0; i < m_sources.size(); ++i) {
            if (m_trials[i].goesOn && !m_options.sources[i]->isLive()) {
                m_probe.begin(i, m_clock.CurrentTime());
                take(SourceThreads::ask(i, *m_sources[i]));
                any = true;
            }
        }
        return any;
    }

    // What fails in one source ends that one.
    void take(const SourceThreads::Arrival& arrival)
    {
        const std::size_t index = arrival.source;
        noteEnd(arrival);
        try {
            if (arrival.time) {
                step(index, *arrival.time);
            }
            m_trials[index].goesOn = arrival.time && !isEnough(index);
        } catch (const std::exception& error) {
            m_findings.sources[index].problem = QString::fromUtf8(error.what());
            m_trials[index].goesOn = false;
        }
        if (m_trials[index].goesOn && m_options.sources[index]->isLive()) {
            m_threads.giveTurn(index);
        }
    }
    void noteEnd(const SourceThreads::Arrival& arrival)
    {
        m_trials[arrival.source].ended = !arrival.time && !arrival.failure && !System::StopSignal::requested();
        try {
            if (arrival.failure) {
                std::rethrow_exception(arrival.failure);
            }
        } catch (const std::exception& error) {
            m_findings.sources[arrival.source].problem = QString::fromUtf8(error.what());
        }
    }
    void step(std::size_t index, unsigned long long time)
    {
        m_clock.set(std::max(time, m_clock.CurrentTime()));
        m_probe.begin(index, time);
        m_sources[index]->step();
        m_probe.follow(m_tree);
        ++m_trials[index].steps;
    }
    [[nodiscard]] StationHooks hooksOf(std::size_t index)
    {
        StationHooks hooks;
        hooks.switchRecorder = [this](const QString& name, bool) {
            const auto& all = m_recorders.all();
            const auto named = std::find_if(all.begin(), all.end(), [&name](const auto& recorder) {
                return name.isEmpty() || recorder->name() == name;
            });
            if (named != all.end()) {
                m_switched.insert((*named)->name());
            }
            return named != all.end();
        };
        hooks.created = [](const QString&) {};
        hooks.toldTime = [] { return 0ULL; };
        hooks.recorded = [](const QString&) { return true; };
        hooks.report = [this, index](const QString& sentence) {
            constexpr int MostRemarks = 5;
            const std::lock_guard<std::mutex> lock(m_remarksMutex);  // live sources report from their threads
            QStringList& remarks = m_findings.sources[index].remarks;
            if (remarks.size() < MostRemarks && !remarks.contains(sentence)) {
                remarks += sentence;
            }
        };
        return hooks;
    }

    // A rate needs a few changes; a source without spectra may have slow values, which the first steps show.
    [[nodiscard]] bool isEnough(std::size_t index) const
    {
        constexpr std::uint64_t Spectra = 5;
        constexpr std::size_t Most = 5'000;
        const std::size_t some = m_live ? 5 : 100;  // live ones take their time
        const QStringList& spectra = m_trials[index].spectra;
        const std::size_t steps = m_trials[index].steps;
        const auto shown = std::count_if(spectra.begin(), spectra.end(), [this, index](const QString& path) {
            return m_probe.shown(index, path) >= Spectra;
        });
        const bool all = shown == spectra.size();  // of those that it may show, some never do
        return steps >= Most || ((all || shown > 0) && steps >= some) || (all && !spectra.isEmpty());
    }
    void noteSource(std::size_t index)
    {
        FoundSource& found = m_findings.sources[index];
        found.values = m_probe.valuesOf(index, m_tree);
        const bool shows = m_probe.shown(index) > 0 || !m_switched.empty();
        if (found.problem.isEmpty() && !shows) {
            found.problem = !found.remarks.isEmpty() ? found.remarks.last()
                            : m_trials[index].ended
                                ? QStringLiteral("its input ended without a measurement")
                                : QStringLiteral("it showed nothing within %1 s; --wait TIME gives it longer")
                                      .arg(m_options.checkSeconds);
            found.remarks.removeAll(found.problem);
        }
        if (m_sources[index] && !SourceThreads::leftThreadBehind()) {
            const SourceReport report = m_sources[index]->report();
            found.reached = report.live && !report.silent;
        }
        if (const QString again = QStringLiteral("; trying again"); found.problem.endsWith(again)) {
            found.problem.chop(again.size());  // not in a check, which is over
        }
        for (const char* mark : {": ", " "}) {  // "nmea: ...", "rig 127.0.0.1:4532: ..."
            if (found.problem.startsWith(found.name + QLatin1String(mark))) {
                found.problem.remove(0, found.name.size() + static_cast<int>(qstrlen(mark)));
            }
        }
    }
    [[nodiscard]] FoundRecorder noteRecorder(const Recorder& recorder, const Instance& instance) const
    {
        const auto& chosen = m_recorders.chosen();
        FoundRecorder found;
        found.name = recorder.name();
        found.directory = recorder.directory();
        found.on =
            std::find(chosen.begin(), chosen.end(), &recorder) != chosen.end() || m_switched.contains(recorder.name());
        if (found.on) {
            const bool receives = std::any_of(m_options.sources.begin(), m_options.sources.end(),
                                              [](const auto& source) { return source->traits().receives; });
            findKeywords(found, instance, receives);
            noteDirectory(found);
        }
        return found;
    }
    void noteDirectory(FoundRecorder& found) const
    {
        QString directory = found.directory;
        found.isMade = m_options.makeOutput && !QFileInfo::exists(directory);
        try {
            if (found.isMade) {
                while (!QFileInfo::exists(directory)) {
                    directory = QFileInfo(directory).absolutePath();
                }
            }
            requireWritableDirectory(directory);
            found.freeBytes = freeSpaceOf(directory);
            if (found.freeBytes.value_or(LittleSpace) < LittleSpace) {
                found.problem = QStringLiteral("only %1 are left in %2").arg(byteText(*found.freeBytes), directory);
            }
        } catch (const std::exception& error) {
            found.problem = QString::fromUtf8(error.what());
        }
    }

    const Options& m_options;
    Messages m_messages;
    RecorderTraces m_traces;
    SimulatedClock m_clock;
    Probe m_probe;
    values::Tree m_tree;
    Plugin m_plugin;
    Configuration m_configuration;
    bool m_live;
    Recorders m_recorders;
    std::set<QString> m_switched;  // recorders that a source switched on
    std::mutex m_remarksMutex;
    Findings m_findings;
    System::StopSignal m_stop;
    std::vector<Trial> m_trials;                     // of each source
    std::vector<std::unique_ptr<Source>> m_sources;  // null: it could not be prepared
    SourceThreads m_threads;
};

ExitCode writeFindings(const Findings& findings, bool json)
{
    const bool written = writeToStandardOutput(json ? findingsJson(findings) : findingsText(findings));
    if (!written) {
        Messages(false, true).message(QStringLiteral("cannot write the findings to the standard output"));
    }
    return written ? exitCodeOf(findings) : ExitCode::CannotRun;
}

}  // namespace

ExitCode checkStation(const Options& options)
{
    try {
        const std::unique_ptr<Check, DeleteUnlessUsed> check(new Check(options));
        return writeFindings(check->run(), options.json);
    } catch (const std::exception& error) {
        Findings findings;
        findings.failure = QString::fromUtf8(error.what());
        Messages(false, true).message(findings.failure);
        if (options.json) {
            static_cast<void>(writeFindings(findings, true));
        }
        return dynamic_cast<const UsageError*>(&error) != nullptr ? ExitCode::Usage : ExitCode::CannotRun;
    }
}

}  // namespace RecStation
