#include "savedfile.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <recording2/inspection/inspection.h>

#include "output.h"

namespace RecTool {

namespace {

/// By what it holds or, where its beginning is damaged, by its name.
bool isRecording(const QFileInfo& file, const std::string& path)
{
    using Recording2::Inspection::Readability;
    const Readability readability = Recording2::Inspection::inspect(path).readability;
    const QString suffix = QFileInfo(file.canonicalFilePath()).suffix().toLower();
    return readability == Readability::Ok || readability == Readability::OldFormat ||
           readability == Readability::NeverClosed || suffix == "rec";
}

}  // namespace

bool mayReplace(const std::string& path)
{
    const QFileInfo file(QFile::decodeName(path.c_str()));
    if (!file.exists()) {
        return true;
    }
    if (!file.isFile()) {
        complain(path, "It is no ordinary file and not replaced.");
        return false;
    }
    if (isRecording(file, path)) {
        complain(path, "It is a recording and not overwritten.");
        return false;
    }
    return true;
}

ExitCode saveFile(const std::string& path, const std::function<bool(QIODevice&)>& produce)
{
    QSaveFile file(QFile::decodeName(path.c_str()));
    file.setDirectWriteFallback(false);
    const bool stored = file.open(QIODevice::WriteOnly) && produce(file) && file.commit();
    if (!stored) {
        const bool ownError = file.error() != QFileDevice::NoError;
        const std::string why = ownError ? file.errorString().toStdString() : "what it should hold could not be made";
        complain(path, "It cannot be written: " + why + '.');
    }
    return stored ? ExitCode::Fine : ExitCode::CannotRead;
}

}  // namespace RecTool
