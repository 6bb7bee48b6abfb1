// The change notification: control values, and the capture of what is recorded.
#include <algorithm>
#include <exception>

#include <QDir>
#include <QScopeGuard>

#include "filenames.h"
#include "recording.h"
#include "recording_p.h"

namespace Recording2 {

namespace {

constexpr std::int32_t KeyOn = 1;
constexpr unsigned long long FirstCaptureTime = 11;  // behind the initial states

// Whether a change tells the channel range: its text has command 34, channels at a step, or 134, a list of them, which
// ends alike (doc/recording-text.md).
bool definesChannelRange(std::int32_t typeId, TChangeCode code, const std::string& text)
{
    if (code != TChangeCode::CommandsPending) {
        return false;
    }
    const bool candidate =
        typeId == RfSpectrum || typeId == IfSpectrum || typeId == IfSpan || typeId == DfSpectrumSample;
    return candidate && text.find("34;") != std::string::npos;
}

}  // namespace

void CRecording::Update(void* subject, TChangeCode code)
{
    try {
        if (HandleRemoval(subject, code)) {
            return;
        }
        // What a control value sets off may end with the value itself gone: only watched values are looked at behind
        // it.
        const bool control = HandleControlValue(subject, code);
        Capture(subject, code, control);
    } catch (const std::exception& exception) {
        RecordingErrors::rethrow(exception, __LINE__);
    }
}

bool CRecording::HandleRemoval(const void* subject, TChangeCode code)
{
    if (code != TChangeCode::Removed) {
        return false;
    }
    bool watched = false;
    for (const auto& [keyword, entry] : m_keywords) {
        values::ValueBase* value = entry->observed;
        if (value == nullptr || value != subject) {
            continue;
        }
        watched = true;
        if (value->QueryChange(code) == 1) {
            value->RemoveObserver(this);
            entry->observed = nullptr;
            entry->switchedOn = false;
        }
    }
    if (!watched) {
        return false;
    }
    RefreshObserved();
    for (EarlyChange& change : m_earlyChanges) {
        if (change.value == subject) {
            change.value = nullptr;
        }
    }
    return true;
}

bool CRecording::HandleControlValue(const void* subject, TChangeCode code)
{
    const bool control = subject == m_recStatus.get() || subject == m_recFilePath.get() ||
                         subject == m_recFileNameFormat83.get() || subject == m_recLoaded.get() ||
                         subject == m_recHeader.get();
    if (subject == m_recStatus.get()) {
        HandleRecStatus(code);
    } else if (code == TChangeCode::ValueChanged && subject == m_recFilePath.get()) {
        m_recordingPath = m_recFilePath->GetValue();
        if (m_recordingPath.isEmpty()) {
            m_recordingPath = QDir::currentPath();
        }
    } else if (code == TChangeCode::ValueChanged && subject == m_recFileNameFormat83.get()) {
        m_fileNameFormat83 = m_recFileNameFormat83->GetValue();
    }
    return control;
}

void CRecording::HandleRecStatus(TChangeCode code)
{
    const bool on = m_recStatus->GetCurrentKey() == KeyOn;
    if (on && (code == TChangeCode::ValueChanged || code == TChangeCode::SelectedAgain)) {
        PublishFileName(StartRecording(false));  // ends a running recording first
    } else if (code == TChangeCode::ValueChanged) {
        // The next recording has its own time, however this one ends.
        const auto clock = qScopeGuard([] { CTimeStamp::SetCts(0); });
        StopRecording(false);
    }
}

void CRecording::PublishFileName(const QString& path)
{
    if (m_recFileName) {
        m_recFileName->SetValue(path, nullptr);
    }
}

void CRecording::Capture(void* subject, TChangeCode code, bool control)
{
    const auto found = std::find_if(m_observed.begin(), m_observed.end(),
                                    [&](const Observed& observed) { return observed.value == subject; });
    if (found == m_observed.end()) {
        if (!control) {  // the time of a map counts although nobody records it
            static_cast<void>(TakeRecordTime(TimedMap(static_cast<const values::ValueBase*>(subject))));
        }
        return;
    }
    const Observed change = *found;  // the list may change below
    const unsigned long long recordTime = TakeRecordTime(change.timedMap);
    if (m_file == nullptr) {
        return;
    }
    if (m_starting) {
        m_earlyChanges.push_back({change.value, code, change.typeId, recordTime, TextOf(change)});
        return;
    }
    TrackFields(change.typeId, *change.value);
    WriteCapture(change.typeId, code, TextOf(change), recordTime);
}

// A value that another recorder records already gives a keyword that is taken in the middle of a recording no complete
// first text.
const std::string& CRecording::TextOf(const Observed& change)
{
    if (!change.joined) {
        return change.value->GetStringForRecording(true);
    }
    for (const auto& [keyword, entry] : m_keywords) {
        entry->joined = entry->joined && entry->observed != change.value;
    }
    RefreshObserved();
    static_cast<void>(change.value->GetStringForRecording(true));  // which counts as given
    return change.value->GetStringForRecording(false);
}

// The own time of a map becomes the current time of the process, so that the records around it agree with it.
unsigned long long CRecording::TakeRecordTime(const values::MappingBase* timedMap)
{
    const unsigned long long own = timedMap == nullptr ? 0 : timedMap->GetTimeStamp();
    if (own == 0) {
        return CTimeStamp::ctsMicroSecs();
    }
    CTimeStamp::SetCts(own);
    if (!m_startTimeMoved && m_file != nullptr) {
        m_startTime.setTime_ts(own);
        m_startTimeMoved = true;
    }
    return own;
}

void CRecording::WriteCapture(std::int32_t typeId, TChangeCode code, const std::string& text,
                              unsigned long long recordTime)
{
    if (m_file == nullptr) {
        return;
    }
    const unsigned long long start = m_startTime.getTimeStamp();
    const unsigned long long elapsed = (recordTime > start ? recordTime - start : start - recordTime) / 1000;
    m_record.set_cmd(typeId);
    m_record.set_str(text.c_str(), static_cast<std::int32_t>(text.size()));
    JournalHeaderIfChanged(recordTime);
    m_file->JournalStopTime(recordTime / 1000);
    m_file->write(m_record, std::max(elapsed, FirstCaptureTime), definesChannelRange(typeId, code, text));
    if (StopIfWritingFailed()) {
        return;
    }
    m_lastRecordTime.setTime_ts(recordTime);
    SplitIfTooLarge();
}

// The trackers as they change; the texts of the device, which nobody tells about, every second.
void CRecording::JournalHeaderIfChanged(unsigned long long recordTime)
{
    constexpr unsigned long long TextsInterval = 1'000'000;
    const JournalledFields& last = m_journalled;
    const bool same = last.startFreq == m_startFreq && last.stopFreq == m_stopFreq && last.minLevel == m_minLevel &&
                      last.maxLevel == m_maxLevel && last.startTime == m_startTime.getTimeStamp();
    if (!same || recordTime - last.madeAt >= TextsInterval) {
        m_journalled.madeAt = recordTime;
        JournalHeader();
    }
}

void CRecording::JournalHeader()
{
    if (m_file == nullptr) {
        return;
    }
    m_journalled = {m_startFreq, m_stopFreq, m_minLevel, m_maxLevel, m_startTime.getTimeStamp(), m_journalled.madeAt};
    m_file->JournalHeader(FinalHeader());
}

// @return whether it did, or had before
bool CRecording::StopIfWritingFailed()
{
    if (m_file == nullptr) {
        return true;
    }
    if (!m_file->WriteFailed() || !m_file->IsValidFile()) {  // one that could not be made is recorded into nothing
        return false;
    }
    StopAfterFailure(m_file->WriteFailure());
    return true;
}

// What was recorded is made readable. The status tells, so that a later "On" is a change; the station goes on.
void CRecording::StopAfterFailure(const QString& reason)
{
    RecordingErrors::trace(QStringLiteral("CRecording: recording stopped, writing %1 failed: %2")
                               .arg(FileNames::fromBytes(m_file->path()), reason),
                           __LINE__);
    try {
        StopRecording(false);
    } catch (const std::exception& exception) {
        RecordingErrors::trace(QString::fromUtf8(exception.what()), __LINE__);
    }
    CTimeStamp::SetCts(0);  // as after every "Off"
    if (m_recStatus) {
        m_recStatus->Select(QStringLiteral("Off"), this);
    }
}

void CRecording::WriteEarlyChanges()
{
    while (!m_earlyChanges.empty()) {
        std::vector<EarlyChange> changes;
        changes.swap(m_earlyChanges);
        for (const EarlyChange& change : changes) {
            if (change.value != nullptr) {
                TrackFields(change.typeId, *change.value);
            }
            WriteCapture(change.typeId, change.code, change.text, change.recordTime);
        }
    }
}

void CRecording::SplitIfTooLarge()
{
    if (m_file->fileSize() > m_fileSizeLimit) {
        StopRecording(true);
        PublishFileName(StartRecording(true));
    }
}

}  // namespace Recording2
