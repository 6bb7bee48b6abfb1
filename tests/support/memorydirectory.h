// Directories for tests that make many files and force them to the device.
#pragma once

#include <QDir>
#include <QFileInfo>
#include <QString>

namespace TestSupport {

/// For QTemporaryDir: a directory in memory where the system has one.
[[nodiscard]] inline QString directoryTemplate()
{
    const QString memory = "/dev/shm";
    const bool usable = QFileInfo(memory).isWritable();
    return (usable ? memory : QDir::tempPath()) + "/recording-XXXXXX";
}

}  // namespace TestSupport
