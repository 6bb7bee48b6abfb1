#include "recorder.h"

#include <stdexcept>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryFile>

namespace recstation {

namespace {

[[noreturn]] void fail(const QString& sentence)
{
    throw std::runtime_error(sentence.toStdString());
}

// The recorder would quietly record elsewhere, so a missing directory is refused before it is told of it.
void requireDirectory(const QString& directory)
{
    const QFileInfo info(directory);
    if (!info.exists()) {
        fail(QStringLiteral("cannot record: the directory %1 does not exist").arg(directory));
    }
    if (!info.isDir()) {
        fail(QStringLiteral("cannot record: %1 is no directory").arg(directory));
    }
}

const Instance& withExistingDirectory(const Instance& instance, const QString& output)
{
    const QString& directory = output.isEmpty() ? instance.recordingPath : output;
    if (!directory.isEmpty()) {
        requireDirectory(directory);
    }
    return instance;
}

// Asks the file system itself why the recorder could not create the file.
QString whyNotCreated(const QString& path)
{
    QFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
        file.remove();
        return QStringLiteral("the recorder did not open it");
    }
    return file.errorString();
}

}  // namespace

void requireWritableDirectory(const QString& directory)
{
    requireDirectory(directory);
    QTemporaryFile probe(QDir(directory).filePath(QStringLiteral("recstation-XXXXXX.probe")));
    if (!probe.open()) {
        fail(QStringLiteral("cannot record: the directory %1 cannot be written: %2")
                 .arg(directory, probe.errorString()));
    }
    constexpr int headerArea = 500;
    if (probe.write(QByteArray(headerArea, '0')) != headerArea || !probe.flush()) {
        fail(QStringLiteral("cannot record in %1: %2").arg(directory, probe.errorString()));
    }
}

Recorder::Recorder(const Plugin& plugin, const Instance& instance, const QString& output)
    : m_instance(withExistingDirectory(instance, output)),
      m_plugged(plugin.create(instance.name)),
      m_files(instance.statusValuePath)
{
    m_status.Attach(instance.valuePath + QStringLiteral("/REC_STATUS"));
    m_directory.Attach(instance.statusValuePath + QStringLiteral("/REC_FILEPATH"));
    if (!output.isEmpty()) {
        m_directory->SetValue(QFileInfo(output).absoluteFilePath());
    }
    m_observer = dynamic_cast<IObserver*>(m_plugged.get());
    values::ValuePtr<values::Value<bool>> directionFinding;
    directionFinding.Attach(instance.statusValuePath + QStringLiteral("/REC_DF"));
    directionFinding->SetValue(instance.directionFinding);
}

QString Recorder::directory() const
{
    const QString directory = m_directory->GetValue();
    return directory.isEmpty() ? QDir::currentPath() : directory;
}

bool Recorder::isOn() const
{
    return m_status && m_status->GetCurrentKey() == 1;
}

void Recorder::switchOn()
{
    requireWritableDirectory(directory());
    m_switchedOn = true;
    m_status->Select(QStringLiteral("On"));
    checkNewFiles();
}

void Recorder::switchOff()
{
    m_switchedOn = false;
    if (isOn()) {
        m_status->Select(QStringLiteral("Off"));
    }
}

bool Recorder::stoppedItself()
{
    const bool stopped = m_switchedOn && !isOn();
    m_switchedOn = m_switchedOn && !stopped;
    return stopped;
}

void Recorder::tellTime(unsigned long long time)
{
    if (m_observer != nullptr && isOn()) {
        m_time.SetCells(0, {}, time);
        m_observer->Update(static_cast<values::ValueBase*>(&m_time), TChangeCode::ValueChanged);
    }
}

void Recorder::checkNewFiles()
{
    const QStringList& paths = m_files.temporaryPaths();
    while (m_checkedFiles < paths.size()) {
        const QString& path = paths.at(m_checkedFiles++);
        // A recording that ended within one step already has its final name, or has been moved to the archive, with
        // which only files that exist are registered.
        if (addressOf(path).isEmpty() && !QFileInfo::exists(path) && !QFileInfo::exists(finishedPath(path))) {
            fail(QStringLiteral("cannot record: the file %1 could not be created: %2").arg(path, whyNotCreated(path)));
        }
    }
}

}  // namespace recstation
