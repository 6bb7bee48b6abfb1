// The recorder plug-in, and one recorder of it with the status values through which the host works it.
#pragma once

#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include <QHash>
#include <QLibrary>
#include <QString>
#include <QStringList>

#include <startup/dllinstance.h>
#include <values/maps.h>
#include <values/selection.h>
#include <values/tree.h>

#include "configuration.h"
#include "recordedfiles.h"
#include "watch/recordingwatch.h"

namespace RecStation {

/// The recorder plug-in, loaded at run time. It stays in the process until the end, so objects that it made never lose
/// their code.
class Plugin {
public:
    struct Destroy {
        void (*destroy)(IDllInstance*) = nullptr;
        void operator()(IDllInstance* instance) const { destroy(instance); }
    };
    using Instance = std::unique_ptr<IDllInstance, Destroy>;

    /// @param path the library; empty looks in the places beside the program
    /// @throws std::runtime_error when it cannot be found, loaded, or is no recorder plug-in
    explicit Plugin(const QString& path);

    /// Makes the recorder of a configured instance.
    /// @throws std::runtime_error when the plug-in gives none, and what its set-up throws
    [[nodiscard]] Instance create(const QString& instanceName) const;

    /// Where the plug-in lies beside this program, in the build tree and installed; empty when it is nowhere.
    [[nodiscard]] static QString findBesideProgram();

private:
    QLibrary m_library;
    IDllInstance* (*m_create)(const wchar_t*) = nullptr;
    void (*m_destroy)(IDllInstance*) = nullptr;
};

/// Needs the value tree in force for its whole life.
class Recorder {
public:
    /// Makes the recorder and tells it where to record and whether to record direction finding. A directory that is
    /// missing stands in the way of switching on only.
    /// @param output directory that replaces the configured one; empty keeps it
    /// @throws std::runtime_error (also VKException) when the recorder cannot be set up
    Recorder(const Plugin& plugin, const Instance& instance, const QString& output);
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;
    ~Recorder() = default;

    [[nodiscard]] const QString& name() const { return m_instance.name; }
    [[nodiscard]] bool findsDirections() const { return m_instance.directionFinding; }
    [[nodiscard]] bool isOn() const;

    /// Starts a recording; while one runs, ends it and starts the next. After an error it is off.
    /// @throws std::runtime_error when the clock is wrong, or its directory is missing or cannot be written
    void switchOn();
    void switchOff();  ///< closes the recording, if one runs

    /// The recorder files plain values under the time of the spectrum or bearing before them, as on a station where
    /// one device measures all. Where that would be wrong, the time of each step is told to it.
    void tellTime(unsigned long long time);

    /// Makes sure that every recording opened since the last call is on the disk. One that is not is ended.
    /// @throws std::runtime_error that says why one could not be created
    void checkNewFiles();
    /// What became of recordings whose files were deleted, moved or cut since the last call.
    struct Rescues {
        QStringList told;       ///< a sentence each
        bool endedOne = false;  ///< the recording under way was closed, and what it held saved: a new one can begin
    };
    /// To be called several times a second.
    [[nodiscard]] Rescues rescueFiles();
    /// What is known of a recording that was rescued.
    [[nodiscard]] std::optional<RescuedRecording> rescued(const QString& temporaryPath) const;

    /// Once after names of finished recordings turned out to be shorter than those of open ones: a sentence about it.
    [[nodiscard]] QString takeWarning();
    /// Once after the recorder ended a recording by itself, because it could not be written.
    [[nodiscard]] bool stoppedItself();
    /// Where the next recording goes.
    [[nodiscard]] QString directory() const;
    [[nodiscard]] const QStringList& temporaryPaths() const { return m_files.temporaryPaths(); }
    [[nodiscard]] QString addressOf(const QString& temporaryPath) const { return m_files.addressOf(temporaryPath); }

private:
    void endWatch();
    void rescue(RecordingWatch& watch, FileHarm harm, Rescues& rescues);
    void noteShortName(const QString& path);

    Instance m_instance;
    Plugin::Instance m_plugged;
    values::ValuePtr<values::ValueSelection> m_status;
    values::ValuePtr<values::Value<QString>> m_directory;
    FileNameWatch m_files;
    std::unique_ptr<RecordingWatch> m_watch;                                     // of the recording under way
    std::vector<std::pair<std::unique_ptr<RecordingWatch>, FileHarm>> m_harmed;  // closed since the last look
    QHash<QString, RescuedRecording> m_rescued;                                  // by the name in m_files
    int m_checkedFiles = 0;
    bool m_toldShortNames = false;
    QString m_warning;
    bool m_switchedOn = false;
    IObserver* m_observer = nullptr;  // the recorder; null if it cannot be told
    // In no tree; a change of it is no record, but its time counts.
    values::FastValueMap<float, values::levelHandler> m_time;
};

/// Makes sure that there is such a directory.
/// @throws std::runtime_error with the reason
void requireDirectory(const QString& directory);

/// Makes sure that a file can be written in the directory.
/// @throws std::runtime_error with the reason
void requireWritableDirectory(const QString& directory);

}  // namespace RecStation
