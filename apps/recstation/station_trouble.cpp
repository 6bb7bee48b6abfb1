// What befalls a recorder while the run goes on: it cannot record, stops by itself, or loses its files.
#include <algorithm>
#include <stdexcept>

#include "station.h"

namespace recstation {

void Station::trySwitchOn(Recorder& recorder)
{
    try {
        recorder.switchOn();
    } catch (const std::exception& error) {
        refuse(recorder, QString::fromUtf8(error.what()));
    }
}

// The others go on.
void Station::refuse(const Recorder& recorder, const QString& problem)
{
    m_refusals.push_back({recorder.name(), problem});
    m_messages.message(recorder.name() + QStringLiteral(": ") + problem);
}

// Where none of them can record, the run does not begin.
void Station::startRecorders()
{
    for (Recorder* recorder : m_toStart) {
        try {
            recorder->switchOn();
        } catch (const std::exception& error) {
            m_refusals.push_back({recorder->name(), QString::fromUtf8(error.what())});
        }
    }
    if (m_refusals.size() == m_toStart.size() && !m_toStart.empty() && !m_switchedByFeed) {
        throw std::runtime_error(whyNoneRecorded().toStdString());
    }
    for (const Summary::Refusal& refusal : m_refusals) {
        m_messages.message(refusal.recorder + QStringLiteral(": ") + refusal.problem);
    }
}

void Station::checkNewFiles()
{
    for (const auto& recorder : m_recorders) {
        try {
            recorder->checkNewFiles();
        } catch (const std::exception& error) {
            refuse(*recorder, QString::fromUtf8(error.what()));
        }
    }
}

QString Station::whyNoneRecorded() const
{
    QStringList problems;
    for (const Summary::Refusal& refusal : m_refusals) {
        problems += refusal.problem;
    }
    problems.removeDuplicates();
    return problems.join(QStringLiteral("; "));
}

// Somebody else deleted, moved or cut what is being written.
void Station::rescueFiles()
{
    constexpr qint64 fileCheckMs = 250;
    if (m_sinceFileCheck.elapsed() < fileCheckMs) {
        return;
    }
    m_sinceFileCheck.restart();
    for (const auto& recorder : m_recorders) {
        try {
            if (rescueFilesOf(*recorder)) {
                recorder->switchOn();
            }
        } catch (const std::exception& error) {
            refuse(*recorder, QString::fromUtf8(error.what()));
        }
    }
}

// @return whether the recording under way had to be ended
bool Station::rescueFilesOf(Recorder& recorder)
{
    const Recorder::Rescues rescues = recorder.rescueFiles();
    for (const QString& sentence : rescues.told) {
        m_messages.message(recorder.name() + QStringLiteral(": ") + sentence);
    }
    return rescues.endedOne;
}

void Station::tellStops()
{
    for (const auto& recorder : m_recorders) {
        const QString warning = recorder->takeWarning();
        if (!warning.isEmpty()) {
            m_messages.message(QStringLiteral("warning: ") + warning);
        }
        if (recorder->stoppedItself()) {
            tellStop(*recorder);
        }
    }
}

void Station::tellStop(const Recorder& recorder)
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

// A run whose recorders have all stopped goes on only if somebody can switch one on again.
bool Station::canRecord() const
{
    return (m_stopped.isEmpty() && m_refusals.empty()) || m_switchedByFeed ||
           std::any_of(m_recorders.begin(), m_recorders.end(), [](const auto& recorder) { return recorder->isOn(); });
}

}  // namespace recstation
