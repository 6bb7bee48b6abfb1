// One recorder of the plug-in and the status values through which the host works it.
#pragma once

#include <QString>
#include <QStringList>

#include <values/maps.h>
#include <values/selection.h>
#include <values/tree.h>

#include "configuration.h"
#include "plugin.h"
#include "recordedfiles.h"

namespace recstation {

/// Needs the value tree in force for its whole life.
class Recorder {
public:
    /// Makes the recorder and tells it where to record and whether to record direction finding.
    /// @param output directory that replaces the configured one; empty keeps it
    /// @throws std::runtime_error (also VKException) when the recorder cannot be set up
    Recorder(const Plugin& plugin, const Instance& instance, const QString& output);
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;
    ~Recorder() = default;

    [[nodiscard]] const QString& name() const { return m_instance.name; }
    [[nodiscard]] bool isOn() const;

    /// Starts a recording; while one runs, ends it and starts the next.
    /// @throws std::runtime_error when its directory is missing or cannot be written
    void switchOn();
    void switchOff();  ///< closes the recording, if one runs

    /// The recorder files plain values under the time of the spectrum or bearing before them, as on a station where
    /// one device measures all. Where that would be wrong, the time of each step is told to it.
    void tellTime(unsigned long long time);

    /// Makes sure that every recording opened since the last call is on the disk.
    /// @throws std::runtime_error that says why one could not be created
    void checkNewFiles();
    /// Once after the recorder ended a recording by itself, because it could not be written.
    [[nodiscard]] bool stoppedItself();
    /// Where the next recording goes.
    [[nodiscard]] QString directory() const;
    [[nodiscard]] const QStringList& temporaryPaths() const { return m_files.temporaryPaths(); }
    [[nodiscard]] QString addressOf(const QString& temporaryPath) const { return m_files.addressOf(temporaryPath); }

private:
    Instance m_instance;
    Plugin::Instance m_plugged;
    values::ValuePtr<values::ValueSelection> m_status;
    values::ValuePtr<values::Value<QString>> m_directory;
    FileNameWatch m_files;
    int m_checkedFiles = 0;
    bool m_switchedOn = false;
    IObserver* m_observer = nullptr;  // the recorder; null if it cannot be told
    // In no tree; a change of it is no record, but its time counts.
    values::FastValueMap<float, values::levelHandler> m_time;
};

/// Makes sure that a file can be written in the directory.
/// @throws std::runtime_error with the reason
void requireWritableDirectory(const QString& directory);

}  // namespace recstation
