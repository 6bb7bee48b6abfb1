// Finding and loading the recorder plug-in; switching a recorder on and off, checking its directory and files, rescuing
// harmed ones.
#include "recorder.h"

#include <stdexcept>
#include <string>
#include <utility>

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryFile>

#include "clock.h"

namespace RecStation {

namespace {

[[noreturn]] void failRecorder(const QString& sentence)
{
    throw std::runtime_error(sentence.toStdString());
}

// Names and headers of recordings tell the time as a date of four digits; 0 is no time.
void requireUsableClock()
{
    const QDateTime now = QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(stationTimeUs() / 1000), Qt::UTC);
    if (now < QDateTime(QDate(1970, 1, 1), QTime(0, 0, 1), Qt::UTC) || now.date().year() > 2500) {
        failRecorder(
            QStringLiteral("cannot record: the clock shows %1, and recordings begin from 1970-01-01T00:00:01Z to the "
                           "end of 2500")
                .arg(now.toString(Qt::ISODate)));
    }
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

#if defined(_WIN32)
constexpr auto FileName = "Recording2.dll";
#else
constexpr auto FileName = "Recording2.so";
#endif

QStringList placesBesideProgram()
{
    const QDir program(QCoreApplication::applicationDirPath());
    const QString name = QLatin1String(FileName);
    return {program.filePath(QStringLiteral("../lib/") + name),
            program.filePath(QStringLiteral(RECSTATION_PLUGIN_FOLDER "/") + name), program.filePath(name)};
}

template <typename Function>
Function resolve(QLibrary& library, const char* symbol)
{
    const QFunctionPointer found = library.resolve(symbol);
    if (found == nullptr) {
        throw std::runtime_error(library.fileName().toStdString() + " is no recorder plug-in: it lacks " + symbol);
    }
    return reinterpret_cast<Function>(found);
}

}  // namespace

QString Plugin::findBesideProgram()
{
    for (const QString& place : placesBesideProgram()) {
        if (QFileInfo::exists(place)) {
            return QDir::cleanPath(place);
        }
    }
    return {};
}

Plugin::Plugin(const QString& path)
{
    const QString file = path.isEmpty() ? findBesideProgram() : path;
    if (file.isEmpty()) {
        throw std::runtime_error(std::string("cannot find the recorder plug-in ") + FileName +
                                 " beside this program; name it with --plugin");
    }
    if (!QFileInfo::exists(file)) {
        throw std::runtime_error("cannot load the recorder plug-in: " + file.toStdString() + " does not exist");
    }
    m_library.setFileName(QFileInfo(file).absoluteFilePath());
    if (!m_library.load()) {
        throw std::runtime_error("cannot load the recorder plug-in: " + m_library.errorString().toStdString());
    }
    m_create = resolve<decltype(m_create)>(m_library, "VKCreate");
    m_destroy = resolve<decltype(m_destroy)>(m_library, "VKDestroy");
}

Plugin::Instance Plugin::create(const QString& instanceName) const
{
    Instance instance(m_create(instanceName.toStdWString().c_str()), Destroy{m_destroy});
    if (instance == nullptr) {
        throw std::runtime_error("the plug-in gave no recorder for \"" + instanceName.toStdString() + "\"");
    }
    return instance;
}

void requireDirectory(const QString& directory)
{
    const QFileInfo info(directory);
    if (!info.exists()) {
        failRecorder(
            QStringLiteral(
                "cannot record: the directory %1 does not exist; --make-output makes it where --output names it")
                .arg(directory));
    }
    if (!info.isDir()) {
        failRecorder(QStringLiteral("cannot record: %1 is no directory").arg(directory));
    }
}

void requireWritableDirectory(const QString& directory)
{
    requireDirectory(directory);
    QTemporaryFile probe(QDir(directory).filePath(QStringLiteral("recstation-XXXXXX.probe")));
    if (!probe.open()) {
        failRecorder(QStringLiteral("cannot record: the directory %1 cannot be written: %2")
                         .arg(directory, probe.errorString()));
    }
    constexpr int HeaderArea = 500;
    if (probe.write(QByteArray(HeaderArea, '0')) != HeaderArea || !probe.flush()) {
        failRecorder(QStringLiteral("cannot record in %1: %2").arg(directory, probe.errorString()));
    }
}

Recorder::Recorder(const Plugin& plugin, const Instance& instance, const QString& output)
    : m_instance(instance), m_plugged(plugin.create(instance.name)), m_files(instance.statusValuePath)
{
    m_status.Attach(instance.valuePath + QStringLiteral("/REC_STATUS"));
    m_directory.Attach(instance.statusValuePath + QStringLiteral("/REC_FILEPATH"));
    if (!output.isEmpty()) {
        m_directory->SetValue(QFileInfo(output).absoluteFilePath());
    } else {
        m_directory->SetValue(instance.recordingPath);  // where there is none, the recorder took another quietly
    }
    m_files.follow([this](const QString& path) { m_watch = std::make_unique<RecordingWatch>(path); },
                   [this] { endWatch(); });
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
    try {
        requireUsableClock();
        requireWritableDirectory(directory());
        m_switchedOn = true;
        m_status->Select(QStringLiteral("On"));
        checkNewFiles();
    } catch (...) {
        switchOff();
        throw;
    }
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

// At the moment of closing: whoever takes a finished recording away may do so.
void Recorder::endWatch()
{
    std::unique_ptr<RecordingWatch> watch = std::move(m_watch);
    if (watch == nullptr) {
        return;
    }
    watch->forgetJournal();
    const bool archived = !addressOf(watch->path()).isEmpty();  // and moved, perhaps
    if (const auto harm = archived ? std::nullopt : watch->harmWhenClosed()) {
        m_harmed.emplace_back(std::move(watch), *harm);
    }
}

Recorder::Rescues Recorder::rescueFiles()
{
    Rescues rescues;
    if (const auto harm = m_watch != nullptr && isOn() ? m_watch->harm() : std::nullopt) {
        m_harmed.emplace_back(std::move(m_watch), *harm);
        switchOff();
        rescues.endedOne = true;
    }
    for (const auto& [watch, harm] : std::exchange(m_harmed, {})) {
        watch->forgetJournal();
        rescue(*watch, harm, rescues);
    }
    return rescues;
}

void Recorder::rescue(RecordingWatch& watch, FileHarm harm, Rescues& rescues)
{
    const RescuedRecording rescued = watch.rescue(harm);
    QString name = watch.path();
    if (!rescued.path.isEmpty() && rescued.path != finishedPath(name)) {
        m_files.rename(name, rescued.path);
        name = rescued.path;
    }
    m_rescued[name] = rescued;
    rescues.told += rescued.what;
}

std::optional<RescuedRecording> Recorder::rescued(const QString& temporaryPath) const
{
    const auto found = m_rescued.find(temporaryPath);
    return found == m_rescued.end() ? std::nullopt : std::optional(*found);
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
            const QString missing = path;
            m_files.forget(missing);
            --m_checkedFiles;
            switchOff();
            failRecorder(QStringLiteral("cannot record: the file %1 could not be created: %2")
                             .arg(missing, whyNotCreated(missing)));
        }
        noteShortName(path);
    }
}

void Recorder::noteShortName(const QString& path)
{
    const QFileInfo open(path);
    if (m_toldShortNames || open.baseName() == open.completeBaseName()) {
        return;
    }
    m_toldShortNames = true;
    m_warning =
        QStringLiteral(
            "%1: a dot in the device's caption or name shortens the names of its finished recordings to %2: the "
            "first to be closed gets that name, the others keep theirs, which end in .tmp")
            .arg(name(), QFileInfo(finishedPath(path)).fileName());
}

QString Recorder::takeWarning()
{
    return std::exchange(m_warning, {});
}

}  // namespace RecStation
