// All recorders of a run. What befalls one of them does not stop the others.
#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <QElapsedTimer>
#include <QHash>
#include <QString>
#include <QStringList>
#include <QtGlobal>

#include "configuration.h"
#include "progress.h"
#include "recorder.h"
#include "sources/offeredsource.h"
#include "summary.h"

namespace RecStation {

/// What the recorders trace, heard by the host: why one of them stopped is said nowhere else.
/// Switches the recorders' traces on and listens to them while it lives. One at a time, on the thread of the recorders.
class RecorderTraces {
public:
    /// @param show whether the traces go on to where Qt's logging goes
    /// @param warn called with a sentence that people should see although they do not want all traces; may be empty
    RecorderTraces(bool show, std::function<void(const QString&)> warn);
    RecorderTraces(const RecorderTraces&) = delete;
    RecorderTraces& operator=(const RecorderTraces&) = delete;
    ~RecorderTraces();

    /// Why the recording of a path was stopped by its recorder; empty when no trace told.
    [[nodiscard]] QString whyStopped(const QString& path) const;

private:
    static void handle(QtMsgType type, const QMessageLogContext& context, const QString& message);
    void hear(const QString& message);

    bool m_show;
    std::function<void(const QString&)> m_warn;
    QStringList m_stops;
    QtMessageHandler m_before;
};

class Recorders {
public:
    /// @param traces of these recorders
    Recorders(const Plugin& plugin, Messages& messages, const RecorderTraces& traces);

    /// Makes them.
    /// @param output directory that replaces the configured ones; empty keeps them
    /// @throws std::runtime_error when one cannot be set up, or there is no directory for any
    void add(const std::vector<Instance>& instances, const QString& output);
    /// Chooses those that start with the run: those named, else those of what the sources measure.
    /// @throws UsageError when there is none of a name
    void choose(const std::vector<std::string>& names, const ChosenSources& sources);
    [[nodiscard]] bool haveChosen() const { return !m_chosen.empty(); }
    [[nodiscard]] const std::vector<Recorder*>& chosen() const { return m_chosen; }

    /// @throws std::runtime_error that says why, when none of the chosen can record and no source switches one on
    void startChosen();
    /// @param name empty: the first
    /// @return null when there is none of that name; else it is on or, told, refused
    Recorder* switchOn(const QString& name);
    bool switchOff(const QString& name);  ///< false when there is none of that name (empty: the first)
    /// Ends what is being recorded. @return whose recordings those were, for switchOn
    [[nodiscard]] std::vector<Recorder*> pause();
    void resume(const std::vector<Recorder*>& paused);

    void tellTime(unsigned long long time);
    void checkNewFiles();  ///< that they are on the disk
    /// Tells of recordings that ended by themselves, and that the run ends where no recorder is left.
    void tellStops();
    /// Saves what somebody else deleted, moved or cut, a few times a second however often this is called.
    void rescueFiles();
    /// A run whose recorders have all stopped goes on only if somebody can switch one on again.
    [[nodiscard]] bool canRecord() const;

    /// Closes every recording, whatever happens to the others, and reports all that were made.
    void close(Summary& summary);

    [[nodiscard]] const std::vector<std::unique_ptr<Recorder>>& all() const { return m_all; }
    [[nodiscard]] QStringList directories() const;  ///< those that exist, each once
    [[nodiscard]] std::int64_t bytes();             ///< in the recordings by now

private:
    [[nodiscard]] Recorder* find(const QString& name) const;
    [[nodiscard]] std::string meant(const std::string& name) const;
    void trySwitchOn(Recorder& recorder);
    void refuse(const Recorder& recorder, const std::exception& error);
    [[nodiscard]] QString whyNoneRecorded() const;
    bool rescueFilesOf(Recorder& recorder);
    void tellStop(const Recorder& recorder);
    [[nodiscard]] FileReport examine(const Recorder& recorder, const QString& path) const;

    const Plugin& m_plugin;
    Messages& m_messages;
    const RecorderTraces& m_traces;
    std::vector<std::unique_ptr<Recorder>> m_all;
    std::vector<Recorder*> m_chosen;
    bool m_switchedBySource = false;  // so that one that stopped may record again
    std::vector<Summary::Refusal> m_refusals;
    QStringList m_stopped;                 // recordings that their recorders ended by themselves
    QHash<QString, std::int64_t> m_bytes;  // of each recording when it was last on the disk
    QElapsedTimer m_sinceFileCheck;
};

}  // namespace RecStation
