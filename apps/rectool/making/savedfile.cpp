// Refusing to replace recordings, and storing a file whole or not at all.
#include "savedfile.h"

#include <iostream>

#include <QFileInfo>
#include <QSaveFile>

#include <recording2/inspection/inspection.h>

#include "printing/output.h"
#include "system/filenames.h"
#include "system/interrupt.h"

namespace RecTool {

namespace {

/// Of the file behind all links.
QString suffixOf(const QFileInfo& file)
{
    return QFileInfo(file.canonicalFilePath()).suffix().toLower();
}

/// Windows ends its reasons with a full stop.
std::string reasonOf(const QFileDevice& file)
{
    const QString reason = file.errorString();
    return (reason.endsWith('.') ? reason.chopped(1) : reason).toStdString();
}

}  // namespace

bool holdsRecording(const std::string& path)
{
    using Recording2::Inspection::Readability;
    const Readability readability = Recording2::Inspection::inspect(path).readability;
    return readability == Readability::Ok || readability == Readability::OldFormat ||
           readability == Readability::NeverClosed;
}

bool isUnderWay(const std::string& path)
{
    const QString suffix = suffixOf(QFileInfo(forQt(path)));
    return suffix == "tmp" || suffix == "journal";
}

bool mayReplace(const std::string& path)
{
    const QFileInfo file(forQt(path));
    if (!file.exists()) {
        if (file.isSymLink()) {
            complain(path, "It is a link that leads nowhere, and it is not followed.");
            return false;
        }
        return true;
    }
    if (!file.isFile()) {
        complain(path, "It is no ordinary file and not replaced.");
        return false;
    }
    if (holdsRecording(path) || suffixOf(file) == "rec") {  // the beginning may be damaged
        complain(path, "It is a recording and not overwritten.");
        return false;
    }
    if (isUnderWay(path)) {
        complain(path, "By its name it belongs to a recording that is under way, and it is not overwritten.");
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
    const bool produced = produce(file) && !Interrupt::requested();
    if (produced && !mayReplace(path)) {  // something else has taken the name meanwhile
        return ExitCode::CannotRead;
    }
    const bool stored = produced && file.commit();
    if (!stored) {
        complain(path, Interrupt::requested() ? "Interrupted; it was not written."
                                              : "It could not be written to its end; is the disk full?");
    }
    return stored ? ExitCode::Fine : ExitCode::CannotRead;
}

ExitCode saveText(const std::string& path, const std::function<void(const TextSink&)>& produce)
{
    if (path.empty()) {
        produce([](const std::string& text) {
            std::cout << text;
            static_cast<void>(canPrint());  // notes why not
        });
        return ExitCode::Fine;
    }
    return saveFile(path, [&](QIODevice& file) {
        bool good = true;
        produce([&](const std::string& text) {
            const auto size = static_cast<qint64>(text.size());
            good = good && file.write(text.data(), size) == size;
        });
        return good;
    });
}

}  // namespace RecTool
