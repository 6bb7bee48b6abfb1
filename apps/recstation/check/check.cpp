// Putting a run together as the station does, but with its recorders off.
#include "check/check.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <mutex>
#include <set>
#include <stdexcept>

#include <QDir>
#include <QFileInfo>

#include <system/program.h>
#include <system/stopsignal.h>
#include <values/tree.h>

#include "check/checkreport.h"
#include "check/needs.h"
#include "check/probe.h"
#include "check/tryouts.h"
#include "clock.h"
#include "live/arrivalsource.h"
#include "progress.h"
#include "recorders.h"
#include "station.h"
#include "watch/spacewatch.h"

namespace RecStation {

namespace {

constexpr std::int64_t LittleSpace = 1'000'000'000;

class Check {
public:
    explicit Check(const Options& options);

    [[nodiscard]] Findings run();

private:
    void tryRecorders();
    void trySources();
    void prepare(std::size_t index);
    [[nodiscard]] StationHooks hooksOf(std::size_t index);
    [[nodiscard]] bool isEnough(std::size_t index, std::size_t steps) const;
    void noteSource(std::size_t index);
    [[nodiscard]] FoundRecorder noteRecorder(const Recorder& recorder, const Instance& instance) const;
    void noteDirectory(FoundRecorder& found) const;

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
    std::vector<QStringList> m_spectra;  // of each source
    std::set<QString> m_switched;        // recorders that a source switched on
    System::StopSignal m_stop;
    Tryouts m_tryouts;
    std::mutex m_remarksMutex;
    Findings m_findings;
};

Check::Check(const Options& options)
    : m_options(options),
      m_messages(false, true),
      m_traces(options.trace, [this](const QString& sentence) { m_messages.message(sentence); }),
      m_plugin(QString::fromStdString(options.plugin)),
      m_configuration(loadConfiguration(options)),
      m_live(isLiveRun(options)),
      m_recorders(m_plugin, m_messages, m_traces),
      m_tryouts({[this](std::size_t index) { m_probe.begin(index, m_clock.CurrentTime()); },
                 [this](std::size_t index, unsigned long long time) {
                     m_clock.set(std::max(time, m_clock.CurrentTime()));
                     m_probe.begin(index, time);
                 },
                 [this] { m_probe.follow(m_tree); },
                 [this](std::size_t index, std::size_t steps) { return isEnough(index, steps); }})
{
    for (const QString& warning : m_configuration.warnings) {
        m_messages.message(QStringLiteral("warning: ") + warning);
    }
    requireOneInput(options.sources);
}

StationHooks Check::hooksOf(std::size_t index)
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

// One that cannot even be opened is no reason not to look at the others.
void Check::prepare(std::size_t index)
{
    const auto& chosen = m_options.sources[index];
    const bool alone = m_options.sources.size() == 1;
    const bool positionElsewhere =
        std::any_of(m_options.sources.begin(), m_options.sources.end(),
                    [&chosen](const auto& other) { return other != chosen && other->traits().tellsPositions; });
    m_probe.begin(index, 0);
    try {
        auto source = chosen->make(
            {m_configuration, hooksOf(index), std::nullopt, alone, positionElsewhere, m_live, m_options.sourceTime});
        m_spectra[index] = source->spectra();
        for (std::size_t other = 0; other < index; ++other) {
            requireOwnSpectra(m_findings.sources[other].name, m_spectra[other], source->name(), m_spectra[index]);
        }
        source->prepare();
        if (m_live && !chosen->traits().live) {
            source = std::make_unique<ArrivalSource>(std::move(source), m_options.sourceTime);
        }
        m_tryouts.add(index, std::move(source), chosen->isLive());
    } catch (const UsageError&) {
        throw;
    } catch (const std::exception& error) {
        m_findings.sources[index].problem = QString::fromUtf8(error.what());
    }
    m_probe.follow(m_tree);
}

// A rate needs a few changes; a source without spectra may have slow values, which the first steps show.
bool Check::isEnough(std::size_t index, std::size_t steps) const
{
    constexpr std::uint64_t Spectra = 5;
    constexpr std::size_t Most = 5'000;
    const std::size_t some = m_live ? 5 : 100;  // live ones take their time
    const QStringList& spectra = m_spectra[index];
    const auto shown = std::count_if(spectra.begin(), spectra.end(), [this, index](const QString& path) {
        return m_probe.shown(index, path) >= Spectra;
    });
    const bool all = shown == spectra.size();  // of those that it may show, some never do
    return steps >= Most || ((all || shown > 0) && steps >= some) || (all && !spectra.isEmpty());
}

void Check::trySources()
{
    m_findings.sources.resize(m_options.sources.size());
    m_spectra.resize(m_options.sources.size());
    m_probe.leaveOut(m_tree);
    for (std::size_t i = 0; i < m_options.sources.size(); ++i) {
        m_findings.sources[i].name = QString::fromLatin1(m_options.sources[i]->traits().name);
        prepare(i);
    }
    constexpr double MillisecondsPerSecond = 1000;
    m_tryouts.run(std::chrono::milliseconds(static_cast<std::int64_t>(m_options.checkSeconds * MillisecondsPerSecond)));
    for (std::size_t i = 0; i < m_options.sources.size(); ++i) {
        noteSource(i);
    }
}

void Check::noteSource(std::size_t index)
{
    FoundSource& found = m_findings.sources[index];
    found.values = m_probe.valuesOf(index, m_tree);
    if (found.problem.isEmpty()) {
        found.problem = m_tryouts.problemOf(index);
    }
    const bool shows = m_probe.shown(index) > 0 || !m_switched.empty();
    if (found.problem.isEmpty() && !shows) {
        found.problem = !found.remarks.isEmpty() ? found.remarks.last()
                        : m_tryouts.ended(index)
                            ? QStringLiteral("its input ended without a measurement")
                            : QStringLiteral("it showed nothing within %1 s; --wait TIME gives it longer")
                                  .arg(m_options.checkSeconds);
        found.remarks.removeAll(found.problem);
    }
    for (const char* mark : {": ", " "}) {  // "nmea: ...", "rig 127.0.0.1:4532: ..."
        if (found.problem.startsWith(found.name + QLatin1String(mark))) {
            found.problem.remove(0, found.name.size() + static_cast<int>(qstrlen(mark)));
        }
    }
}

void Check::noteDirectory(FoundRecorder& found) const
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

FoundRecorder Check::noteRecorder(const Recorder& recorder, const Instance& instance) const
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

void Check::tryRecorders()
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

Findings Check::run()
{
    tryRecorders();
    trySources();
    for (std::size_t i = 0; i < m_configuration.instances.size(); ++i) {
        m_findings.recorders.push_back(noteRecorder(*m_recorders.all()[i], m_configuration.instances[i]));
    }
    return m_findings;
}

ExitCode writeFindings(const Findings& findings, bool json)
{
    const std::string text = json ? findingsJson(findings) : findingsText(findings);
    const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
    if (!written) {
        Messages(false, true).message(QStringLiteral("cannot write the findings to the standard output"));
    }
    return written ? exitCodeOf(findings) : ExitCode::CannotRun;
}

}  // namespace

ExitCode checkStation(const Options& options)
{
    try {
        auto check = std::make_unique<Check>(options);
        const ExitCode code = writeFindings(check->run(), options.json);
        if (Tryouts::leftThreadBehind()) {
            static_cast<void>(check.release());  // which that thread still uses
        }
        return code;
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
