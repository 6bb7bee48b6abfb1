// The recorder instances that the host runs, and the check of their configuration.
#pragma once

#include <vector>

#include <QString>
#include <QStringList>

#include "stationfile.h"

namespace RecStation {

/// One recorder instance as the plug-in will read it.
struct Instance {
    QString name;
    QString valuePath;        ///< as it will be in force, after the recorder's fallbacks
    QString statusValuePath;  ///< likewise; may be empty
    QString recordingPath;    ///< as configured; empty when it is not
    bool directionFinding = false;
};

struct Configuration {
    std::vector<Instance> instances;
    QString archiveFile;   ///< the configuration file if it has a table [archive], which is no recorder; else empty
    QStringList warnings;  ///< one sentence each
};

/// The configuration without a file: "receiver" at /Devices/Rx1 and "df", a direction finder, at /Devices/Df1.
/// @param journal "process", "power" or "off"
[[nodiscard]] QString defaultConfigurationText(const QString& recordingPath,
                                               const QString& journal = QStringLiteral("process"));

/// That for the current directory.
/// @param journal empty: "process"
[[nodiscard]] QString builtInRecorders(const std::string& journal);

/// Loads the file into the configuration centre and checks every instance.
/// @throws std::runtime_error with file, line and key where known
[[nodiscard]] Configuration loadConfigurationFile(const QString& path);
/// The same from text; fileName is used in messages only.
/// @param lines of the keys, for warnings
[[nodiscard]] Configuration loadConfigurationText(const QString& text, const QString& fileName,
                                                  const KeyLines& lines = {});

/// The instance that spectra belong to: the first that is no direction finder, else the first.
[[nodiscard]] const Instance& receiverOf(const Configuration& configuration);
/// The instance that a log of bearings belongs to: the first direction finder. Where there is none, one is made of the
/// first instance.
[[nodiscard]] const Instance& finderOf(Configuration& configuration);

}  // namespace RecStation
