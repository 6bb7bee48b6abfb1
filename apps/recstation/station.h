// One run of the host: value tree, clock, recorders and sources together.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

#include <QElapsedTimer>
#include <QHash>
#include <QString>

#include <values/tree.h>

#include "archive/archiveservice.h"
#include "changecounter.h"
#include "clock.h"
#include "commandline.h"
#include "configuration.h"
#include "plugin.h"
#include "progress.h"
#include "recorder.h"
#include "recordertraces.h"
#include "runner.h"
#include "scheduler.h"
#include "summary.h"
#include "watch/spacewatch.h"

namespace recstation {

/// At most one at a time: it puts the value tree and the clock of the process in force.
class Station {
public:
    /// Loads plug-in and configuration, prepares the sources and sets up the recorders.
    /// @throws std::runtime_error when the run cannot begin
    /// @param freeSpace tells the room for recordings
    Station(const Options& options, Messages& messages, FreeSpace freeSpace = freeSpaceOf);
    Station(const Station&) = delete;
    Station& operator=(const Station&) = delete;
    ~Station() = default;

    /// Records until the sources end or the process is asked to stop, and closes the recordings.
    [[nodiscard]] Summary run();

private:
    void addSources(const Options& options);
    void addRecorders(const Options& options);
    [[nodiscard]] std::vector<Recorder*> recordersToStart(const Options& options) const;
    [[nodiscard]] Recorder* findRecorder(const QString& name) const;
    [[nodiscard]] QString recorderMeant(const std::string& name) const;
    [[nodiscard]] bool isRecorded(const QString& path) const;
    bool switchRecorder(const QString& name, bool on);
    void trySwitchOn(Recorder& recorder);
    void refuse(const Recorder& recorder, const QString& problem);
    void startRecorders();
    void checkNewFiles();
    [[nodiscard]] QString whyNoneRecorded() const;
    void record();
    [[nodiscard]] bool tellsTimes() const;
    void beginAnew(unsigned long long time);
    void beforeStep(unsigned long long time);
    void afterStep();
    void recoverEarlier(Summary& summary);
    void tellStops();
    void tellStop(const Recorder& recorder);
    void checkSpace();
    void rescueFiles();
    bool rescueFilesOf(Recorder& recorder);
    [[nodiscard]] bool canRecord() const;
    void closeRecordings(Summary& summary);
    void finishArchive(Summary& summary);
    [[nodiscard]] FileReport examine(const Recorder& recorder, const QString& path) const;
    [[nodiscard]] ProgressNumbers progressNumbers();
    [[nodiscard]] unsigned long long recordedMs() const;

    Messages& m_messages;
    RecorderTraces m_traces;
    SimulatedClock m_clock;
    ChangeCounter m_counter;
    values::Tree m_tree;
    Plugin m_plugin;
    Configuration m_configuration;
    std::unique_ptr<ArchiveService> m_archive;  // null without one
    std::chrono::milliseconds m_archiveWait;
    Scheduler m_scheduler;
    Runner m_runner;
    std::vector<std::unique_ptr<Recorder>> m_recorders;
    std::vector<Recorder*> m_toStart;
    std::optional<unsigned long long> m_firstTime;
    unsigned long long m_toldTime = 0;  // to the recorders, before a step
    SpaceWatch m_space;
    QElapsedTimer m_sinceSpaceCheck;
    QElapsedTimer m_sinceFileCheck;
    QHash<QString, std::int64_t> m_bytes;  // of each recording when it was last on the disk
    QElapsedTimer m_sinceStart;
    QStringList m_stopped;  // recordings that their recorders ended by themselves
    std::vector<Summary::Refusal> m_refusals;
    unsigned long long m_earlierUs = 0;  // recorded time in front of the last gap
    bool m_allowGap;
    bool m_recover;
    bool m_switchedByFeed;  // so that a recorder that stopped may record again
};

}  // namespace recstation
