#include "savedfile.h"

#include <QFileInfo>
#include <QSaveFile>

#include <recording2/inspection/inspection.h>

#include "output.h"
#include "system/filenames.h"
#include "system/interrupt.h"

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

/// Windows ends its reasons with a full stop.
std::string reasonOf(const QFileDevice& file)
{
    const QString reason = file.errorString();
    return (reason.endsWith('.') ? reason.chopped(1) : reason).toStdString();
}

}  // namespace

bool mayReplace(const std::string& path)
{
    const QFileInfo file(forQt(path));
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
    const Interrupt interrupt;  // outlives the file, whose end may write too
    QSaveFile file(forQt(path));
    file.setDirectWriteFallback(false);
    if (!file.open(QIODevice::WriteOnly)) {
        complain(path, "It cannot be written: " + reasonOf(file) + '.');
        return ExitCode::CannotRead;
    }
    const bool stored = produce(file) && !Interrupt::requested() && file.commit();
    if (!stored) {
        complain(path, Interrupt::requested() ? "Interrupted; it was not written."
                                              : "It could not be written to its end; is the disk full?");
    }
    return stored ? ExitCode::Fine : ExitCode::CannotRead;
}

}  // namespace RecTool
