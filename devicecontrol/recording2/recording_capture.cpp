// The change notification: control values, and the capture of what is recorded.
#include <algorithm>
#include <initializer_list>
#include <utility>

#include <QDir>
#include <QScopeGuard>

#include "filenames.h"
#include "recording.h"
#include "recording_p.h"
#include "traces.h"

namespace Recording2 {

namespace {

bool isOneOf(std::int32_t key, std::initializer_list<std::int32_t> keys)
{
    return std::find(keys.begin(), keys.end(), key) != keys.end();
}

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
        // What a control value sets off may end with the value itself gone: only watched values are looked at after
        // it.
        const bool control = HandleControlValue(subject, code);
        Capture(subject, code, control);
    } catch (...) {
        RecordingErrors::rethrow(__LINE__);
    }
}

bool CRecording::HandleRemoval(const void* subject, TChangeCode code)
{
    return code == TChangeCode::Removed && m_values.forget(subject, code);
}

bool CRecording::HandleControlValue(const void* subject, TChangeCode code)
{
    const bool control = m_status.isControl(subject);
    if (m_status.isStatus(subject)) {
        HandleRecStatus(code);
    } else if (code == TChangeCode::ValueChanged && m_status.isFilePath(subject)) {
        m_configuration.recordingPath = m_status.filePath();
        if (m_configuration.recordingPath.isEmpty()) {
            m_configuration.recordingPath = QDir::currentPath();
        }
    } else if (code == TChangeCode::ValueChanged && m_status.isFileNameFormat83(subject)) {
        m_configuration.fileNameFormat83 = m_status.fileNameFormat83();
    }
    return control;
}

void CRecording::HandleRecStatus(TChangeCode code)
{
    const bool on = m_status.isOn();
    if (on && (code == TChangeCode::ValueChanged || code == TChangeCode::SelectedAgain)) {
        PublishFileName(StartRecording(false));  // ends a running recording first
    } else if (code == TChangeCode::ValueChanged) {
        // The next recording has its own time, however this one ends.
        const auto clock = qScopeGuard([] { CTimeStamp::SetCts(0); });
        StopRecording(false);
    }
}

void CRecording::Capture(void* subject, TChangeCode code, bool control)
{
    const ObservedValues::Observed* found = m_values.find(subject);
    if (found == nullptr) {
        if (!control) {  // the time of a map counts although nobody records it
            m_times.take(timedMap(static_cast<const values::ValueBase*>(subject)), m_file != nullptr);
        }
        return;
    }
    const ObservedValues::Observed change = *found;  // the list may change below
    const unsigned long long recordTime = m_times.take(change.timedMap, m_file != nullptr);
    if (m_file == nullptr) {
        return;
    }
    if (m_starting) {
        m_earlyChanges.push_back({change.value, code, change.typeId, recordTime, m_values.textOf(change)});
        return;
    }
    Follow(change.typeId, *change.value);
    WriteCapture(change.typeId, code, m_values.textOf(change), recordTime);
}

void CRecording::WriteCapture(std::int32_t typeId, TChangeCode code, const std::string& text,
                              unsigned long long recordTime)
{
    if (m_file == nullptr) {
        return;
    }
    m_record.set_cmd(typeId);
    m_record.set_str(text.c_str(), static_cast<std::int32_t>(text.size()));
    JournalHeaderIfChanged(recordTime);
    const CFileAccess::Appended appended = m_file->Append(m_record, m_times.elapsedMs(recordTime),
                                                          definesChannelRange(typeId, code, text), recordTime / 1000);
    if (appended.failed) {
        StopAfterFailure(m_file->WriteFailure());
        return;
    }
    m_times.written(recordTime);
    if (appended.fileBytes > m_fileSizeLimit) {
        StopRecording(true);
        PublishFileName(StartRecording(true));
    }
}

// The trackers as they change; the texts of the device, which nobody tells about, every second.
void CRecording::JournalHeaderIfChanged(unsigned long long recordTime)
{
    constexpr unsigned long long TextsInterval = 1'000'000;
    const JournalledFields& last = m_journalled;
    const bool same = last.range == m_tracker.range() && last.startTime == m_times.start().getTimeStamp();
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
    m_journalled = {m_tracker.range(), m_times.start().getTimeStamp(), m_journalled.madeAt};
    m_file->JournalHeader(FinalHeader());
}

// @return whether it did, or had before
bool CRecording::StopIfWritingFailed()
{
    if (m_file != nullptr && !m_file->WriteFailed()) {
        return false;
    }
    if (m_file != nullptr) {
        StopAfterFailure(m_file->WriteFailure());
    }
    return true;
}

// What was recorded is made readable. The status tells, so that a later "On" is a change; the station goes on.
void CRecording::StopAfterFailure(const QString& reason)
{
    Traces::tell(Traces::Recorder,
                 QStringLiteral("CRecording: recording stopped, writing %1 failed: %2")
                     .arg(FileNames::fromBytes(m_file->path()), reason),
                 __LINE__);
    try {
        StopRecording(false);
    } catch (...) {
        Traces::tell(Traces::Recorder, QString::fromStdString(Traces::textOfException()), __LINE__);
    }
    CTimeStamp::SetCts(0);  // as after every "Off"
    m_status.showOff();
}

void CRecording::WriteEarlyChanges()
{
    while (!m_earlyChanges.empty()) {
        const EarlyChange change = std::move(m_earlyChanges.front());
        m_earlyChanges.pop_front();
        if (const ObservedValues::Observed* observed = m_values.find(change.value)) {  // else it may be gone
            Follow(change.typeId, *observed->value);
        }
        WriteCapture(change.typeId, change.code, change.text, change.recordTime);
    }
}

// The sets of mode keys here, of the header's tracker and in ApplyModeKeywords differ, and are meant to.
bool CRecording::ShouldRecordType(std::int32_t typeId) const
{
    if (!isOneOf(typeId, {RfSpectrum, IfSpectrum, DfSpectrum}) || m_values.keywords().empty()) {
        return true;
    }
    bool spectrum = false;
    bool dfSpectrum = false;
    for (const auto& [keyword, entry] : m_values.keywords()) {
        const std::int32_t id = m_values.typeIdOf(keyword);
        spectrum = spectrum || id == RfSpectrum || id == IfSpectrum;
        dfSpectrum = dfSpectrum || id == DfSpectrum;
    }
    if (!spectrum || !dfSpectrum) {
        return true;
    }
    if (m_status.recDf()) {
        return typeId == DfSpectrum;
    }
    if (typeId == IfSpectrum) {
        return !ModeExcludesIfSpectrum(m_tracker.modeKey());
    }
    return typeId == RfSpectrum && !isOneOf(m_tracker.modeKey(), {3, 23, 42});
}

bool CRecording::ModeExcludesIfSpectrum(std::int32_t modeKey) const
{
    const IfMode mode = ifModeOf(modeKey);
    return mode == IfMode::No ||
           (mode == IfMode::DependsOnAntenna && m_antennaMode && m_antennaMode->GetText() == QLatin1String("DF"));
}

void CRecording::ApplyModeKeywords()
{
    const bool ifMode = isOneOf(m_tracker.modeKey(), {3, 23, 24, 42});
    m_values.drop(m_values.keywordOf(ifMode ? RfSpectrum : IfSpectrum));
    m_values.take(m_values.keywordOf(ifMode ? IfSpectrum : RfSpectrum), m_starting);  // at the start its state follows
}

void CRecording::Follow(std::int32_t typeId, const values::ValueBase& value)
{
    if (m_tracker.follow(typeId, value) && typeId == DrvCommands) {
        ApplyModeKeywords();
    }
}

}  // namespace Recording2
