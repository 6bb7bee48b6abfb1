// CRecording: turns the changes of a station's values into recordings.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>

#include <QString>

#include <startup/dllinstance.h>
#include <values/selection.h>
#include <values/tree.h>
#include <values/value.h>
#include <vkbase/observer.h>
#include <zelvo/zelvo.h>

#include "fileaccess.h"
#include "format/layout.h"
#include "record/headertracker.h"
#include "record/observedvalues.h"
#include "record/recorderconfiguration.h"
#include "record/recorderfiles.h"
#include "record/recordtimes.h"
#include "record/recordtypetable.h"
#include "record/statusvalues.h"
#include "recordmodel.h"

namespace Recording2 {

/// One recorder. Made by VKCreate, controlled through its status value REC_STATUS, fed by the notifications of the
/// values that its record type table names. Everything runs on the thread that changes the values.
class CRecording : public IObserver, public IDllInstance {
public:
    explicit CRecording(const QString& instanceName);
    ~CRecording() override;

    void Update(void* subject, TChangeCode code) override;
    /// Reads the configuration and publishes the status values.
    virtual bool Init();
    /// Takes the header fields over from the tree and observes the values to be recorded.
    virtual void AttachRecordedValues();
    virtual void DetachAllValues();
    /// Writes the state of every observed value as the first records. Throws VKException.
    virtual void WriteInitialStates();
    virtual void WriteTypeTable(CFileAccess* file);  ///< null: the table is made and dropped
    virtual bool IsRecorder();                       ///< true

    /// Starts a recording after stopping the one that runs. Throws VKException.
    /// @param splitting the new file continues the one before
    /// @return path of the open file
    QString StartRecording(bool splitting);
    void StopRecording(bool splitting);  ///< Does nothing while idle. Throws VKException.

private:
    friend class CFileAccess;
    friend class RecordingTestPeer;

    /// A change that came while the start sequence ran; it is written after the initial states.
    struct EarlyChange {
        const void* value;  // which may have been removed meanwhile
        TChangeCode code;
        std::int32_t typeId;
        unsigned long long recordTime;
        std::string text;
    };

    /// What the journal's header was made of, and when.
    struct JournalledFields {
        HeaderRange range;
        unsigned long long startTime = 0;
        unsigned long long madeAt = 0;  // record time, microseconds
    };

    void ReadConfiguration();

    [[nodiscard]] bool ShouldRecordType(std::int32_t typeId) const;
    [[nodiscard]] bool ModeExcludesIfSpectrum(std::int32_t modeKey) const;

    void RunStartSequence();
    void CloseFile(bool splitting);
    [[nodiscard]] Format::HeaderRecord FinalHeader() const;
    [[nodiscard]] QString DeviceName() const;
    [[nodiscard]] QString DeviceType() const;
    [[nodiscard]] QString JobId() const;
    [[nodiscard]] QString DeviceCaptionPrefix() const;
    [[nodiscard]] bool UseLocalTimeInName() const;

    void ApplyModeKeywords();

    bool HandleRemoval(const void* subject, TChangeCode code);
    bool HandleControlValue(const void* subject, TChangeCode code);
    void HandleRecStatus(TChangeCode code);
    void PublishFileName(const QString& path) { m_status.showFileName(path, nullptr); }
    void Capture(void* subject, TChangeCode code, bool control);
    void WriteCapture(std::int32_t typeId, TChangeCode code, const std::string& text, unsigned long long recordTime);
    void WriteEarlyChanges();
    [[nodiscard]] bool StopIfWritingFailed();
    void StopAfterFailure(const QString& reason);
    void JournalHeader();
    void JournalHeaderIfChanged(unsigned long long recordTime);

    void Follow(std::int32_t typeId, const values::ValueBase& value);
    void LetScanRangeFollow();
    void SetTreeNumber(std::int32_t typeId, double value);

    static constexpr std::int64_t MaxFileBytes = 500'000'000;

    QString m_configurationName;
    RecorderConfiguration m_configuration;  // the recording path follows REC_FILEPATH
    QString m_currentFileName;
    HeaderTracker m_tracker;  // kept over the recording
    std::unique_ptr<CFileAccess> m_file;
    RecorderFiles m_files;
    RecordTimes m_times;
    JournalledFields m_journalled;
    StatusValues m_status;
    bool m_starting = false;     // the start sequence runs
    std::uint32_t m_starts = 0;  // files opened so far
    ObservedValues m_values;
    values::ValuePtr<values::ValueSelection> m_antennaMode;
    std::unique_ptr<Zelvo::ZelvoClient> m_archive;

    std::deque<EarlyChange> m_earlyChanges;
    CVTCmdData m_record;  // reused for every record
    std::int64_t m_fileSizeLimit = MaxFileBytes;
};

}  // namespace Recording2
