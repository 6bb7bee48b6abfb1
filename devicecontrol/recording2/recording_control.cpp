// Start and stop of recordings.
#include <algorithm>
#include <array>
#include <exception>

#include <startup/cfgcenter.h>
#include <vkbase/quonos.h>

#include "filenames.h"
#include "format/layout.h"
#include "recording.h"
#include "recording_p.h"

namespace Recording2 {

namespace {

constexpr float DefaultStepWidth = 100'000;
constexpr unsigned long long InitialStateTime = 10;

// Room for the three header texts: the header area less the longest form of every other field.
constexpr std::size_t HeaderTextBytes = [] {
    constexpr std::size_t Versions = std::size_t{2} * 7;      // "-32768#"
    constexpr std::size_t Frequencies = std::size_t{3} * 13;  // "-3.40282e+38#"
    constexpr std::size_t Levels = std::size_t{2} * 12;       // "-2147483648#"
    constexpr std::size_t Times = std::size_t{2} * 9;
    constexpr std::size_t TextLengths = std::size_t{3} * 4;      // "499#"
    constexpr std::size_t BlockPositions = std::size_t{5} * 11;  // "2147483647#"
    constexpr std::size_t Flag = 2;
    return std::size_t{Format::HeaderAreaBytes} - Versions - Frequencies - Levels - Times - TextLengths -
           BlockPositions - Flag;
}();

// Cuts the longest texts until all three fit into the header area together.
void cutToHeaderArea(std::array<std::string*, 3> texts)
{
    const auto bySize = [](const std::string* a, const std::string* b) { return a->size() < b->size(); };
    std::sort(texts.begin(), texts.end(), bySize);
    std::size_t room = HeaderTextBytes;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        texts[i]->resize(std::min(texts[i]->size(), room / (texts.size() - i)));
        room -= texts[i]->size();
    }
}

// Header texts are Latin-1 and end at a NUL.
std::string headerText(const QString& text)
{
    return text.toLatin1().constData();
}

QDateTime utcNow()
{
    return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(QuonOS::Create()->CurrentTime() / 1000), Qt::UTC);
}

// Switches the data compression of map texts off while whole states are written.
class WithoutCompression {
public:
    WithoutCompression() { values::HandlerBase::SetDataCompressMode(false); }
    WithoutCompression(const WithoutCompression&) = delete;
    WithoutCompression& operator=(const WithoutCompression&) = delete;
    ~WithoutCompression() { values::HandlerBase::SetDataCompressMode(m_before); }

private:
    bool m_before = values::HandlerBase::GetDataCompressMode();
};

}  // namespace

QString CRecording::StartRecording(bool splitting)
{
    try {
        StopRecording(false);
        m_startTime = CTimeStamp::cts();
        m_lastRecordTime = m_startTime;
        m_startTimeMoved = false;
        const std::string directory = FileNames::toBytes(m_recordingPath + FileNames::separator());
        const QString name = RecordingFileName(DeviceCaptionPrefix(), DeviceName(), utcNow(), UseLocalTimeInName());
        m_file = std::make_unique<CFileAccess>(directory.c_str(), m_statusValuePath, FileNames::toBytes(name).c_str(),
                                               true, true, splitting, this, m_archive.get());
        m_currentFileName = FileNames::fromBytes(m_file->path());
        JournalHeader();
        m_file->JournalStopTime(m_lastRecordTime.getMilliSecs());
        const std::uint32_t thisStart = ++m_starts;
        if (m_recFileName) {
            m_recFileName->SetValue(m_currentFileName, this);
        }
        if (m_starts == thisStart) {  // an observer of the name may have started the next one
            RunStartSequence();
        }
        return m_currentFileName;
    } catch (const std::exception& exception) {
        RecordingErrors::rethrow(exception, RecordingErrors::Start);
    }
}

// Observing the values may make a device change some: those changes wait behind the initial states.
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
    if (m_file == nullptr) {  // one of those changes stopped the recording
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
    } catch (const std::exception& exception) {
        m_file.reset();
        RecordingErrors::rethrow(exception, RecordingErrors::Stop);
    }
}

void CRecording::CloseFile(bool splitting)
{
    // The destructor closes too, and means this class's own.
    DetachAllValues();  // NOLINT(clang-analyzer-optin.cplusplus.VirtualCall)
    const std::string path = m_file->path();
    CHeaderData header = FinalHeader();
    m_file->CloseRecording(header, splitting);
    m_file.reset();
    m_startTimeMoved = false;
    if (path.find(".tmp") != std::string::npos) {
        m_currentFileName.replace(QStringLiteral(".tmp"), QStringLiteral(".rec"));
        if (m_recFileName) {
            m_recFileName->SetValue(m_currentFileName, nullptr);
        }
    }
    const values::VtTransaction transaction(false);
    for (auto* pointer : {&m_recUncFilePath, &m_recZelvoFilePath}) {
        if (*pointer) {
            (*pointer)->SetValue(QString(), nullptr);
        }
    }
}

void CRecording::DetachAllValues()
{
    try {
        for (const auto& [keyword, entry] : m_keywords) {
            StopObserving(*entry);
        }
    } catch (const std::exception& exception) {  // the file is to be closed whatever a value does
        RecordingErrors::trace(QString::fromUtf8(exception.what()), __LINE__);
    }
    RefreshObserved();
}

void CRecording::ForgetObservedValues() noexcept
{
    for (const auto& [keyword, entry] : m_keywords) {
        try {
            StopObserving(*entry);
        } catch (const std::exception& exception) {
            RecordingErrors::trace(QString::fromUtf8(exception.what()), __LINE__);
        }
    }
}

QString CRecording::DeviceName() const
{
    const values::ValueBase* value = ValueOf(QStringLiteral("DEVICENAME"), QStringLiteral("Adm/DRIVERNAME"));
    return value == nullptr ? QStringLiteral("UNKNOWN") : value->GetText();
}

QString CRecording::DeviceType() const
{
    const values::ValueBase* value = ValueOf(QStringLiteral("DEVICETYPE"), QStringLiteral("Adm/DEVICE_TYPE"));
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

CHeaderData CRecording::FinalHeader() const
{
    std::string deviceName = headerText(DeviceName());
    std::string deviceType = headerText(DeviceType());
    std::string jobId = headerText(JobId());
    cutToHeaderArea({&deviceName, &deviceType, &jobId});
    CHeaderData header;
    header.set_version(2, 0);
    header.set_deviceName(deviceName);
    header.set_deviceType(deviceType);
    header.setJobID(jobId.c_str());
    header.set_startTS(m_startTime);
    header.set_stopTS(m_lastRecordTime);
    header.set_stepWidth(DefaultStepWidth);
    header.set_startFreq(m_startFreq);
    header.set_stopFreq(m_stopFreq);
    header.set_minLevel(m_minLevel);
    header.set_maxLevel(m_maxLevel);
    header.setAutomaticRec(false);
    return header;
}

QString CRecording::DeviceCaptionPrefix() const
{
    const QString keyword = QStringLiteral("DEVICE_CAPTION");
    const values::ValueBase* value = m_keywords.Find(keyword) == nullptr ? nullptr : ValueOf(keyword);
    return value == nullptr ? QString() : value->GetText() + QStringLiteral("__");
}

bool CRecording::UseLocalTimeInName() const
{
    const std::unique_ptr<ICfg> cfg(CfgCenter::CreateCfg(m_configurationName, CfgCenter::View::Instance, QString()));
    return cfg != nullptr && cfg->ReadBoolean(QStringLiteral("RecordingNameLocalTime"), false);
}

void CRecording::WriteTypeTable(CFileAccess* file)
{
    CVTTypesData types;
    for (const auto& [keyword, entry] : m_keywords) {
        const std::int32_t typeId = TypeIdOf(keyword);
        const values::ValueBase* value = IsHeaderText(keyword) || typeId == UnknownType ? nullptr : ValueOf(keyword);
        if (value != nullptr && ShouldRecordType(typeId)) {
            types.add_item({typeId, static_cast<std::int32_t>(value->GetType()), keyword.toLatin1().toStdString(),
                            ResolveValuePath(keyword, QString()).toLatin1().toStdString()});
        }
    }
    if (file != nullptr) {
        file->write(types);
    }
}

void CRecording::WriteInitialStates()
{
    try {
        const WithoutCompression scope;
        for (const auto& [keyword, entry] : m_keywords) {
            const values::ValueBase* value = entry->observed;
            const std::int32_t typeId = TypeIdOf(keyword);
            if (value == nullptr || m_file == nullptr || !ShouldRecordType(typeId)) {
                continue;
            }
            const std::string state = value->GetObjectStateStringForRecording();
            m_record.set_cmd(typeId);
            m_record.set_str(state.c_str(), static_cast<std::int32_t>(state.size()));
            m_file->write(m_record, InitialStateTime, dynamic_cast<const values::MappingBase*>(value) != nullptr);
        }
    } catch (const std::exception& exception) {
        RecordingErrors::rethrow(exception, RecordingErrors::InitialStates);
    }
}

}  // namespace Recording2
