// Start and stop of recordings.
#include <QScopeGuard>

#include <startup/cfgcenter.h>
#include <vkbase/quonos.h>

#include "filenames.h"
#include "format/layout.h"
#include "record/recordingname.h"
#include "recording.h"
#include "recording_p.h"

namespace Recording2 {

namespace {

constexpr float DefaultStepWidth = 100'000;

// Header texts are Latin-1.
std::string headerText(const QString& text)
{
    return text.toLatin1().toStdString();
}

QDateTime utcNow()
{
    return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(QuonOS::Create()->CurrentTime() / 1000), Qt::UTC);
}

}  // namespace

QString CRecording::StartRecording(bool splitting)
{
    try {
        StopRecording(false);
        m_times.begin();
        const std::string directory = FileNames::toBytes(m_configuration.recordingPath + FileNames::separator());
        const QString name = RecordingFileName(DeviceCaptionPrefix(), DeviceName(), utcNow(), UseLocalTimeInName());
        m_file = std::make_unique<CFileAccess>(directory.c_str(), m_configuration.statusValuePath,
                                               FileNames::toBytes(name).c_str(), true, true, splitting, this,
                                               m_archive.get());
        m_currentFileName = FileNames::fromBytes(m_file->path());
        JournalHeader();
        m_file->JournalStopTime(m_times.last().getMilliSecs());
        const std::uint32_t thisStart = ++m_starts;
        m_status.showFileName(m_currentFileName, this);
        if (m_starts == thisStart) {  // an observer of the name may have started the next one
            RunStartSequence();
        }
        return m_currentFileName;
    } catch (...) {
        RecordingErrors::rethrow(RecordingErrors::Start);
    }
}

// Observing the values may make a device change some: those changes wait after the initial states.
void CRecording::RunStartSequence()
{
    const std::uint32_t thisStart = m_starts;
    m_starting = true;
    try {
        AttachRecordedValues();
        if (m_starts == thisStart) {  // else the next file was started meanwhile, and has its own beginning
            ApplyModeKeywords();
            JournalHeader();
            WriteTypeTable(m_file.get());
            WriteInitialStates();
        }
    } catch (...) {
        m_starting = false;
        WriteEarlyChanges();
        throw;
    }
    m_starting = false;
    if (m_starts != thisStart || !StopIfWritingFailed()) {
        WriteEarlyChanges();
    }
    if (m_file == nullptr) {  // it was stopped meanwhile
        DetachAllValues();
    }
}

void CRecording::StopRecording(bool splitting)
{
    if (m_file == nullptr) {
        return;
    }
    try {
        CloseFile(splitting);
    } catch (...) {
        m_file.reset();
        m_earlyChanges.clear();
        RecordingErrors::rethrow(RecordingErrors::Stop);
    }
}

void CRecording::CloseFile(bool splitting)
{
    // The destructor closes too, and means this class's own.
    DetachAllValues();  // NOLINT(clang-analyzer-optin.cplusplus.VirtualCall)
    const std::string path = m_file->path();
    m_file->Close(FinalHeader(), splitting);
    m_file.reset();
    m_times.end();
    if (!splitting) {
        m_earlyChanges.clear();  // of a recording that was stopped while it started
    }
    const QString open = QStringLiteral(".tmp");
    if (path.find(".tmp") != std::string::npos) {  // the last one is the file's: directories may be called so too
        m_currentFileName.replace(m_currentFileName.lastIndexOf(open), open.size(), QStringLiteral(".rec"));
        PublishFileName(m_currentFileName);
    }
    m_status.clearPaths();
}

void CRecording::DetachAllValues()
{
    m_values.stopAll(false);  // the file is to be closed whatever a value does
}

QString CRecording::DeviceName() const
{
    const values::ValueBase* value = m_values.valueOf(QStringLiteral("DEVICENAME"), QStringLiteral("Adm/DRIVERNAME"));
    return value == nullptr ? QStringLiteral("UNKNOWN") : value->GetText();
}

QString CRecording::DeviceType() const
{
    const values::ValueBase* value = m_values.valueOf(QStringLiteral("DEVICETYPE"), QStringLiteral("Adm/DEVICE_TYPE"));
    return value == nullptr ? QStringLiteral("UNKNOWN") : value->GetText();
}

QString CRecording::JobId() const
{
    const values::Tree* tree = values::Tree::Instance();
    const auto* value =
        tree == nullptr
            ? nullptr
            : dynamic_cast<const values::Value<QString>*>(tree->Find(QStringLiteral("/KDXServer/Dcd/DcdAttr/DcdID")));
    return value == nullptr ? QStringLiteral("Not available") : value->GetValue();
}

Format::HeaderRecord CRecording::FinalHeader() const
{
    Format::HeaderRecord header;
    header.majorVersion = 2;
    header.stepWidthHz = DefaultStepWidth;
    header.startMs = m_times.start().getMilliSecs();
    header.stopMs = m_times.last().getMilliSecs();
    header.jobId = headerText(JobId());
    header.deviceName = headerText(DeviceName());
    header.deviceType = headerText(DeviceType());
    Format::fitTexts(header);
    m_tracker.range().putInto(header);
    return header;
}

QString CRecording::DeviceCaptionPrefix() const
{
    const QString keyword = QStringLiteral("DEVICE_CAPTION");
    const values::ValueBase* value = m_values.keywords().contains(keyword) ? m_values.valueOf(keyword) : nullptr;
    return value == nullptr ? QString() : value->GetText() + QStringLiteral("__");
}

bool CRecording::UseLocalTimeInName() const
{
    const std::unique_ptr<ICfg> cfg(CfgCenter::CreateCfg(m_configurationName, CfgCenter::View::Instance, QString()));
    return cfg != nullptr && cfg->ReadBoolean(QStringLiteral("RecordingNameLocalTime"), false);
}

void CRecording::AttachRecordedValues()
{
    if (values::Tree::Instance() == nullptr) {
        return;
    }
    for (auto& [keyword, entry] : m_values.keywords()) {
        values::ValueBase* value = isHeaderText(keyword) ? nullptr : m_values.valueOf(keyword);
        if (value == nullptr) {
            continue;
        }
        const std::int32_t typeId = m_values.typeIdOf(keyword);
        if (m_tracker.assign(typeId, *value) && typeId == IfSpan) {
            LetScanRangeFollow();
        }
        // Setting STARTFREQ and STOPFREQ there may have removed it.
        if (m_values.valueOf(keyword) == value && ShouldRecordType(typeId)) {
            m_values.observe(entry, *value);
        }
    }
}

// The device's scan range follows the IF span.
void CRecording::LetScanRangeFollow()
{
    const HeaderRange range = m_tracker.range();
    SetTreeNumber(StartFreq, static_cast<double>(*range.startFreq));
    SetTreeNumber(StopFreq, static_cast<double>(*range.stopFreq));
}

void CRecording::SetTreeNumber(std::int32_t typeId, double value)
{
    if (auto* number = dynamic_cast<values::ValueNumeric<double>*>(m_values.valueOf(m_values.keywordOf(typeId)))) {
        number->SetValue(value, this);
    }
}

void CRecording::WriteTypeTable(CFileAccess* file)
{
    CVTTypesData types;
    for (const auto& [keyword, entry] : m_values.keywords()) {
        const std::int32_t typeId = m_values.typeIdOf(keyword);
        const values::ValueBase* value =
            isHeaderText(keyword) || typeId == UnknownType ? nullptr : m_values.valueOf(keyword);
        if (value != nullptr && ShouldRecordType(typeId)) {
            types.add_item({typeId, static_cast<std::int32_t>(value->GetType()), keyword.toLatin1().toStdString(),
                            m_values.pathOf(keyword).toLatin1().toStdString()});
        }
    }
    if (file != nullptr) {
        file->write(types);
    }
}

void CRecording::WriteInitialStates()
{
    try {
        const auto compression = qScopeGuard([before = values::HandlerBase::GetDataCompressMode()] {
            values::HandlerBase::SetDataCompressMode(before);
        });
        values::HandlerBase::SetDataCompressMode(false);
        for (const auto& [keyword, entry] : m_values.keywords()) {
            const values::ValueBase* value = entry.observed;
            const std::int32_t typeId = m_values.typeIdOf(keyword);
            if (value == nullptr || m_file == nullptr || !ShouldRecordType(typeId)) {
                continue;
            }
            const std::string state = value->GetObjectStateStringForRecording();
            m_record.set_cmd(typeId);
            m_record.set_str(state.c_str(), static_cast<std::int32_t>(state.size()));
            m_file->write(m_record, RecordTimes::InitialStateMs,
                          dynamic_cast<const values::MappingBase*>(value) != nullptr);
        }
    } catch (...) {
        RecordingErrors::rethrow(RecordingErrors::InitialStates);
    }
}

}  // namespace Recording2
