// One run of the host: value tree, clock, recorders and sources together.
#pragma once

#include <map>
#include <memory>
#include <optional>

#include <QTimer>

#include <values/tree.h>

#include "changecounter.h"
#include "clock.h"
#include "configuration.h"
#include "options.h"
#include "progress.h"
#include "recorders.h"
#include "runner.h"
#include "runsources.h"
#include "scheduler.h"
#include "summary.h"
#include "viewer.h"
#include "watch/archivewatch.h"
#include "watch/spacewatch.h"

namespace RecStation {

/// The recorders that the options ask for, loaded into the configuration centre.
/// @throws std::runtime_error with file, line and key where known
[[nodiscard]] Configuration loadConfiguration(const Options& options);

/// At most one at a time: it puts the value tree and the clock of the process in force.
class Station {
public:
    /// Loads plug-in and configuration, prepares the sources and sets up the recorders.
    /// @throws std::runtime_error when the run cannot begin
    /// @param options must outlive this object
    Station(const Options& options, Messages& messages);
    Station(const Station&) = delete;
    Station& operator=(const Station&) = delete;
    ~Station() = default;

    /// Records until the sources end or the process is asked to stop, and closes the recordings.
    [[nodiscard]] Summary run();

private:
    [[nodiscard]] StationHooks hooks();
    [[nodiscard]] bool isRecorded(const QString& path) const;
    bool switchRecorder(const QString& name, bool on);
    [[nodiscard]] std::unique_ptr<Scheduler> makeScheduler();
    void record();
    [[nodiscard]] std::optional<unsigned long long> firstTime();
    [[nodiscard]] std::optional<unsigned long long> firstTimeOfSources();
    void endAfterDuration();
    void tellNews();
    [[nodiscard]] bool tellsTimes() const;
    void beginAnew(unsigned long long time);
    void beforeStep(unsigned long long time);
    void afterStep();
    [[nodiscard]] ProgressNumbers progressNumbers();
    [[nodiscard]] unsigned long long recordedMs() const;

    const Options& m_options;
    Messages& m_messages;
    RecorderTraces m_traces;
    SimulatedClock m_clock;
    ChangeCounter m_counter;
    values::Tree m_tree;
    Plugin m_plugin;
    Configuration m_configuration;
    ArchiveWatch m_archive;
    bool m_live;
    bool m_bySystemTime;  // a live run begins and ends by it
    std::unique_ptr<Scheduler> m_scheduler;
    std::map<const Source*, QString> m_failures;  // of sources that broke off while others went on
    Runner m_runner;
    Recorders m_recorders;
    DiskWatch m_disks;
    QTimer m_duration;
    std::optional<unsigned long long> m_firstTime;
    unsigned long long m_toldTime = 0;   // to the recorders, before a step
    unsigned long long m_earlierUs = 0;  // recorded time before the last gap
    std::optional<Viewer> m_viewer;
};

}  // namespace RecStation
