// Starting, switching, watching and closing recorders, and picking warnings and stops out of what they trace.
#include "recorders.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include <QFileInfo>
#include <QLatin1String>

#include <terminaltext/nearestword.h>
#include <vkbase/trace.h>

#include "input/badlines.h"

namespace RecStation {

namespace {

bool any(const ChosenSources& sources, bool SourceTraits::*trait)
{
    return std::any_of(sources.begin(), sources.end(), [trait](const auto& source) { return source->traits().*trait; });
}

RecorderTraces* active = nullptr;  // Qt's handler takes no object

bool isOfRecorders(const char* category)
{
    const QLatin1String name(category);
    return name.startsWith(QLatin1String("devicecontrol\\recording2\\")) || name == QLatin1String("trace");
}

}  // namespace

RecorderTraces::RecorderTraces(bool show, std::function<void(const QString&)> warn)
    : m_show(show), m_warn(std::move(warn)), m_before(qInstallMessageHandler(&RecorderTraces::handle))
{
    active = this;
    ErrorHandler::Instance().SetTraceMask(ErrorHandler::Instance().TraceMask() | ErrorHandler::RecordingTraces);
}

RecorderTraces::~RecorderTraces()
{
    ErrorHandler::Instance().SetTraceMask(ErrorHandler::Instance().TraceMask() & ~ErrorHandler::RecordingTraces);
    qInstallMessageHandler(m_before);
    active = nullptr;
}

void RecorderTraces::handle(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    const bool ofRecorders = isOfRecorders(context.category);
    if (ofRecorders) {
        active->hear(message);
    }
    if (!ofRecorders || active->m_show) {
        active->m_before(type, context, message);
    }
}

void RecorderTraces::hear(const QString& message)
{
    if (message.contains(QLatin1String("recording stopped, writing "))) {
        m_stops += message;
    } else if (m_warn && message.contains(QLatin1String("recording goes on without a "))) {
        m_warn(message.mid(message.indexOf(QLatin1String(": ")) + 2));
    }
}

QString RecorderTraces::whyStopped(const QString& path) const
{
    const QString beginning = QStringLiteral("writing %1 failed: ").arg(path);
    for (const QString& stop : m_stops) {
        const int at = stop.indexOf(beginning);
        if (at >= 0) {
            return stop.mid(at + beginning.size());
        }
    }
    return {};
}

Recorders::Recorders(const Plugin& plugin, Messages& messages, const RecorderTraces& traces)
    : m_plugin(plugin), m_messages(messages), m_traces(traces)
{
    m_sinceFileCheck.start();
}

void Recorders::add(const std::vector<Instance>& instances, const QString& output)
{
    for (const Instance& instance : instances) {
        m_all.push_back(std::make_unique<Recorder>(m_plugin, instance, output));
    }
    const bool anyDirectory = std::any_of(
        m_all.begin(), m_all.end(), [](const auto& recorder) { return QFileInfo(recorder->directory()).isDir(); });
    if (!anyDirectory) {
        requireDirectory(output.isEmpty() ? m_all.front()->directory() : output);
    }
}

void Recorders::choose(const std::vector<std::string>& names, const ChosenSources& sources)
{
    m_switchedBySource = any(sources, &SourceTraits::switchesRecorders);
    for (const std::string& name : names) {
        Recorder* recorder = find(QString::fromStdString(name));
        if (recorder == nullptr) {
            throw UsageError("--record " + name + ": no recorder of that name is configured" + meant(name));
        }
        m_chosen.push_back(recorder);
    }
    if (!m_chosen.empty() || (m_switchedBySource && sources.size() == 1)) {
        return;
    }
    const bool findsDirections = any(sources, &SourceTraits::findsDirections);
    const bool receives =
        any(sources, &SourceTraits::receives) || (any(sources, &SourceTraits::tellsPositions) && !findsDirections);
    for (const auto& recorder : m_all) {
        if (recorder->findsDirections() ? findsDirections : receives) {
            m_chosen.push_back(recorder.get());
        }
    }
}

Recorder* Recorders::find(const QString& name) const
{
    const auto found =
        std::find_if(m_all.begin(), m_all.end(), [&name](const auto& recorder) { return recorder->name() == name; });
    return found == m_all.end() ? nullptr : found->get();
}

std::string Recorders::meant(const std::string& name) const
{
    std::vector<std::string> names;
    for (const auto& recorder : m_all) {
        names.push_back(recorder->name().toStdString());
    }
    return TerminalText::didYouMean(name, names);
}

void Recorders::startChosen()
{
    for (Recorder* recorder : m_chosen) {
        try {
            recorder->switchOn();
        } catch (const std::exception& error) {
            m_refusals.push_back({recorder->name(), QString::fromUtf8(error.what())});
        }
    }
    if (m_refusals.size() == m_chosen.size() && !m_chosen.empty() && !m_switchedBySource) {
        throw std::runtime_error(whyNoneRecorded().toStdString());
    }
    for (const Summary::Refusal& refusal : m_refusals) {
        m_messages.message(refusal.recorder + QStringLiteral(": ") + refusal.problem);
    }
}

QString Recorders::whyNoneRecorded() const
{
    QStringList problems;
    for (const Summary::Refusal& refusal : m_refusals) {
        problems += refusal.problem;
    }
    problems.removeDuplicates();
    return problems.join(QStringLiteral("; "));
}

Recorder* Recorders::switchOn(const QString& name)
{
    Recorder* recorder = name.isEmpty() ? m_all.front().get() : find(name);
    if (recorder != nullptr) {
        trySwitchOn(*recorder);
    }
    return recorder;
}

bool Recorders::switchOff(const QString& name)
{
    Recorder* recorder = name.isEmpty() ? m_all.front().get() : find(name);
    if (recorder != nullptr) {
        recorder->switchOff();
    }
    return recorder != nullptr;
}

std::vector<Recorder*> Recorders::pause()
{
    std::vector<Recorder*> running;
    for (const auto& recorder : m_all) {
        if (recorder->isOn()) {
            recorder->switchOff();
            running.push_back(recorder.get());
        }
    }
    return running;
}

void Recorders::resume(const std::vector<Recorder*>& paused)
{
    for (Recorder* recorder : paused) {
        trySwitchOn(*recorder);
    }
}

void Recorders::trySwitchOn(Recorder& recorder)
{
    try {
        recorder.switchOn();
    } catch (const std::exception& error) {
        refuse(recorder, error);
    }
}

void Recorders::refuse(const Recorder& recorder, const std::exception& error)
{
    const QString problem = QString::fromUtf8(error.what());
    m_refusals.push_back({recorder.name(), problem});
    m_messages.message(recorder.name() + QStringLiteral(": ") + problem);
}

void Recorders::tellTime(unsigned long long time)
{
    for (const auto& recorder : m_all) {
        recorder->tellTime(time);
    }
}

void Recorders::checkNewFiles()
{
    for (const auto& recorder : m_all) {
        try {
            recorder->checkNewFiles();
        } catch (const std::exception& error) {
            refuse(*recorder, error);
        }
    }
}

void Recorders::rescueFiles()
{
    constexpr qint64 FileCheckMs = 250;
    if (m_sinceFileCheck.elapsed() < FileCheckMs) {
        return;
    }
    m_sinceFileCheck.restart();
    for (const auto& recorder : m_all) {
        try {
            if (rescueFilesOf(*recorder)) {
                recorder->switchOn();
            }
        } catch (const std::exception& error) {
            refuse(*recorder, error);
        }
    }
}

// @return whether the recording under way had to be ended
bool Recorders::rescueFilesOf(Recorder& recorder)
{
    const Recorder::Rescues rescues = recorder.rescueFiles();
    for (const QString& sentence : rescues.told) {
        m_messages.message(recorder.name() + QStringLiteral(": ") + sentence);
    }
    return rescues.endedOne;
}

void Recorders::tellStops()
{
    for (const auto& recorder : m_all) {
        const QString warning = recorder->takeWarning();
        if (!warning.isEmpty()) {
            m_messages.message(QStringLiteral("warning: ") + warning);
        }
        if (recorder->stoppedItself()) {
            tellStop(*recorder);
        }
    }
}

void Recorders::tellStop(const Recorder& recorder)
{
    const QString path = recorder.temporaryPaths().isEmpty() ? QString() : recorder.temporaryPaths().last();
    m_stopped += path;
    const QString reason = m_traces.whyStopped(path);
    m_messages.message(QStringLiteral("%1: recording stopped, %2 cannot be written%3")
                           .arg(recorder.name(), path, reason.isEmpty() ? QString() : QStringLiteral(": ") + reason));
    if (!canRecord()) {
        m_messages.message(QStringLiteral("the run ends: no recorder is left"));
    }
}

bool Recorders::canRecord() const
{
    return (m_stopped.isEmpty() && m_refusals.empty()) || m_switchedBySource ||
           std::any_of(m_all.begin(), m_all.end(), [](const auto& recorder) { return recorder->isOn(); });
}

void Recorders::close(Summary& summary)
{
    tellStops();
    for (const auto& recorder : m_all) {
        try {
            rescueFilesOf(*recorder);
            recorder->switchOff();
            rescueFilesOf(*recorder);
        } catch (const std::exception& error) {
            summary.failure += QStringLiteral("%1%2: cannot close the recording: %3")
                                   .arg(summary.failure.isEmpty() ? QString() : QStringLiteral("; "), recorder->name(),
                                        QString::fromUtf8(error.what()));
        }
        for (const QString& path : recorder->temporaryPaths()) {
            FileReport report = examine(*recorder, path);
            report.address = recorder->addressOf(path);
            summary.files.push_back({recorder->name(), report});
        }
    }
    summary.refusals = m_refusals;
    if (summary.failure.isEmpty() && summary.files.empty() && !m_refusals.empty()) {
        summary.failure = QStringLiteral("nothing could be recorded");
    }
}

FileReport Recorders::examine(const Recorder& recorder, const QString& path) const
{
    if (const auto rescued = recorder.rescued(path)) {
        FileReport report = examineElsewhere(rescued->path);
        report.path = rescued->path.isEmpty() ? path : rescued->path;
        report.problem = rescued->what;
        return report;
    }
    FileReport report = examineRecording(path);
    if (m_stopped.contains(path)) {
        const QString reason = m_traces.whyStopped(path);
        report.problem = QStringLiteral("stopped before the end, it could not be written%1%2")
                             .arg(reason.isEmpty() ? QString() : QStringLiteral(": ") + reason,
                                  report.problem.isEmpty() ? QString() : QStringLiteral("; ") + report.problem);
    }
    return report;
}

QStringList Recorders::directories() const
{
    QStringList directories;
    for (const auto& recorder : m_all) {
        directories += QFileInfo(recorder->directory()).canonicalFilePath();
    }
    directories.removeAll(QString());
    directories.removeDuplicates();
    return directories;
}

std::int64_t Recorders::bytes()
{
    std::int64_t sum = 0;
    for (const auto& recorder : m_all) {
        for (const QString& path : recorder->temporaryPaths()) {
            const std::int64_t bytes = bytesRecorded(path);
            if (bytes > 0) {  // else the archive has moved it
                m_bytes[path] = bytes;
            }
            sum += m_bytes.value(path);
        }
    }
    return sum;
}

}  // namespace RecStation
