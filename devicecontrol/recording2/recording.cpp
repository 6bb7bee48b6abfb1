// Set-up of the recorder: construction, configuration, status values.
#include "recording.h"

#include <cstdlib>
#include <exception>

#include <QDir>

#include <startup/cfgcenter.h>
#include <startup/translationcenter.h>

#include "filenames.h"
#include "recording_p.h"

namespace Recording2 {

namespace {

const QString DefaultValuePath = QStringLiteral("/Devices/NoName_Driver");
const QString DefaultStatusValuePath = QStringLiteral("/Devices/RecStatus");
const QString TranslationContext = QStringLiteral("Recording");

// Leading digits with white space and a sign in front, as the C library converts them; 0 without any.
std::int64_t leadingNumber(const QString& text)
{
    const std::string bytes = text.toStdString();
    const char* begin = bytes.c_str();
    return std::strtoll(begin, nullptr, 10);
}

// A value that the tree refused is never freed: somebody may have been given its address. Kept reachable here.
const values::Value<bool>* keepForever(std::unique_ptr<values::Value<bool>> value)
{
    static std::vector<std::unique_ptr<values::Value<bool>>> refused;
    refused.push_back(std::move(value));
    return refused.back().get();
}

}  // namespace

CRecording::CRecording(const QString& instanceName)
    : IDllInstance(instanceName),
      m_configurationName(instanceName),
      m_tracker({0.0F, 0.0F, -30, 120}, [this](std::int32_t modeKey) { return !ModeExcludesIfSpectrum(modeKey); }),
      m_recLoaded(this),
      m_recStatus(this),
      m_recFilePath(this),
      m_recFileNameFormat83(this),
      m_recHeader(this),
      m_values(*this, m_valuePath),
      m_archive(std::make_unique<Zelvo::ZelvoClient>())
{
    TranslationCenter::Instance().Register(TranslationContext);
    RecordingErrors::trace(QStringLiteral("CRecording::CRecording"), 152);
}

CRecording::~CRecording()
{
    RecordingErrors::trace(QStringLiteral("CRecording::~CRecording"), 175);
    TranslationCenter::Instance().Unregister(TranslationContext);
    const auto guarded = [](const auto& step) {
        try {
            step();
        } catch (const std::exception& exception) {
            RecordingErrors::trace(QString::fromUtf8(exception.what()), __LINE__);
        }
    };
    guarded([this] {
        if (m_recLoaded) {
            m_recLoaded->SetValue(false, this);
        }
    });
    guarded([this] { StopRecording(false); });
    m_file.reset();  // an observer may have started another, which must not outlive the archive client
    m_values.stopAll(true);
}

bool CRecording::IsRecorder()
{
    return true;
}

bool CRecording::Init()
{
    if (m_configurationName.isEmpty()) {
        m_valuePath = DefaultValuePath;
        m_statusValuePath = DefaultStatusValuePath;
    } else {
        ReadConfiguration();
    }
    if (m_values.keywords().IsEmpty()) {
        for (const RecordType& type : RecordTypeTable) {
            m_values.keywords().Set(QString::fromLatin1(type.keyword), QString::fromLatin1(type.defaultPath));
        }
    }
    UseDefaultPaths();
    if (values::Tree::Instance() != nullptr) {
        PublishStatusValues();
        ExtendDriverTreeSelection();
    }
    WriteTypeTable(nullptr);
    return true;
}

void CRecording::ReadConfiguration()
{
    const std::unique_ptr<ICfg> cfg(CfgCenter::CreateCfg(m_configurationName, CfgCenter::View::Instance, QString()));
    if (cfg == nullptr) {
        return;
    }
    m_valuePath = cfg->ReadString(QStringLiteral("ValuePath"), QString());
    m_antennaMode.Attach(m_valuePath + QStringLiteral("/AntennaMode"));
    m_statusValuePath = cfg->ReadString(QStringLiteral("StatusValuePath"), QStringLiteral("/DEVICES/RECSTATUS"));
    m_recordingPath = cfg->ReadString(QStringLiteral("RecordingPath"), FileNames::defaultDirectory());
    // An empty path is the current directory, which UseDefaultPaths names.
    if (!m_recordingPath.isEmpty() && !FileNames::isDirectory(FileNames::toBytes(m_recordingPath))) {
        RecordingErrors::trace(QStringLiteral("CRecording::Init() - Cannot find the <%1> directory, set it to <%2>")
                                   .arg(m_recordingPath, FileNames::defaultDirectory()),
                               212);
        m_recordingPath = FileNames::defaultDirectory();
    }
    m_fileNameFormat83 = cfg->ReadBoolean(QStringLiteral("RecFileNameFormat83"), false);
    m_maxFileLength = cfg->ReadInteger(QStringLiteral("MaxFileLength"), 10'000'000);
    m_fileExpandingSize = cfg->ReadInteger(QStringLiteral("FileExpandingSize"), 9'000'000);
    m_diskExpandingSize =
        leadingNumber(cfg->ReadString(QStringLiteral("DiskExpandingSize"), QStringLiteral("100000000")));
    ReadJournalMode(*cfg);
    ReadFileMode(*cfg);
    const std::unique_ptr<ICfg> section(cfg->OpenSection(QStringLiteral("Values"), CfgCenter::View::Instance));
    if (section != nullptr) {
        ReadRecordedValues(*section);
    }
}

void CRecording::ReadJournalMode(const ICfg& cfg)
{
    const QString text = cfg.ReadString(QStringLiteral("Journal"), QStringLiteral("process"));
    if (text == QLatin1String("off")) {
        m_files.journal = JournalMode::Off;
    } else if (text == QLatin1String("power")) {
        m_files.journal = JournalMode::Power;
    } else if (text != QLatin1String("process")) {
        RecordingErrors::trace(
            QStringLiteral("CRecording::Init() - Journal is <%1>, not process, power or off; set it to <process>")
                .arg(text),
            __LINE__);
    }
}

void CRecording::ReadFileMode(const ICfg& cfg)
{
    constexpr int Octal = 8;
    constexpr System::FileMode Everything = 0777;
    constexpr System::FileMode OwnerReadsAndWrites = 0600;
    const QString text = cfg.ReadString(QStringLiteral("FileMode"), QStringLiteral("0640"));
    bool sound = false;
    const System::FileMode mode = text.toUInt(&sound, Octal);
    if (sound && mode <= Everything && (mode & OwnerReadsAndWrites) == OwnerReadsAndWrites) {
        m_files.mode = mode;
    } else {
        RecordingErrors::trace(
            QStringLiteral("CRecording::Init() - FileMode is <%1>, no permissions in octal with which the owner reads "
                           "and writes; set it to <0640>")
                .arg(text),
            __LINE__);
    }
}

void CRecording::ReadRecordedValues(const ICfg& section)
{
    m_values.keywords().Clear();
    for (std::int32_t i = 0;; ++i) {
        const QString key = section.KeyName(i);
        if (key.isEmpty()) {
            return;
        }
        const QString path = section.ReadString(key, QString());
        if (!path.isEmpty()) {
            m_values.keywords().Set(key.toUpper(), path);
        }
    }
}

void CRecording::UseDefaultPaths()
{
    if (m_valuePath.isEmpty()) {
        m_valuePath = DefaultValuePath;
    }
    // An empty status path moves the value path and stays empty itself: stations are set up around this.
    if (m_statusValuePath.isEmpty()) {
        m_valuePath = DefaultStatusValuePath;
    }
    if (m_recordingPath.isEmpty()) {
        m_recordingPath = QDir::currentPath();
    }
}

void CRecording::PublishStatusValues()
{
    const QString root = m_valuePath + QLatin1Char('/');
    const QString status = m_statusValuePath + QLatin1Char('/');
    m_recLoaded.Attach(root + QStringLiteral("REC_LOADED"));
    m_recLoaded->SetValue(true, this);
    m_recStatus.Attach(root + QStringLiteral("REC_STATUS"));
    m_recStatus->DeleteItems(this);
    m_recStatus->AddItem(new values::SelectionItem(QStringLiteral("Off"), 0.0, 0), this);
    m_recStatus->AddItem(new values::SelectionItem(QStringLiteral("On"), 1.0, 1), this);
    m_recStatus->Select(QStringLiteral("Off"), this);
    m_recFileName.Attach(status + QStringLiteral("REC_FILENAME"));
    m_recFilePath.Attach(status + QStringLiteral("REC_FILEPATH"));
    m_recFilePath->SetValue(m_recordingPath, this);
    m_recFileGuid.Attach(status + QStringLiteral("REC_FILEGUID"));
    m_recFileGuid->SetValue(QString(), nullptr);
    m_recFileNameFormat83.Attach(status + QStringLiteral("REC_FILENAMEFORMAT83"));
    m_recFileNameFormat83->SetValue(m_fileNameFormat83, this);
    m_recHeader.Attach(status + QStringLiteral("REC_HEADER"));
    m_recUncFilePath.Attach(status + QStringLiteral("REC_UNCFILEPATH"));
    m_recZelvoFilePath.Attach(status + QStringLiteral("REC_ZELVOFILEPATH"));
    PublishRecDf();
}

void CRecording::PublishRecDf()
{
    const QString parent = m_statusValuePath + QLatin1Char('/');
    const QString path = parent + QStringLiteral("REC_DF");
    values::Tree& tree = *values::Tree::Instance();
    if (dynamic_cast<values::Value<bool>*>(tree.Find(path)) == nullptr) {
        auto value = std::make_unique<values::Value<bool>>();
        value->SetName(QStringLiteral("REC_DF"));
        try {
            tree.Insert(parent, value.get());
            value.release();  // NOLINT(bugprone-unused-return-value): the tree's now
        } catch (const VKException&) {
            RecordingErrors::trace(
                QStringLiteral("!!!!!!!MEMORY LEAK! The value with the path '%1' could not be created!!! A value of "
                               "this name already exists for a different type!!!!!!!!")
                    .arg(path),
                __LINE__);
            m_refusedRecDf = keepForever(std::move(value));
            return;
        }
    }
    m_recDf.Attach(path);
}

void CRecording::ExtendDriverTreeSelection()
{
    const values::Tree& tree = *values::Tree::Instance();
    const values::ValueBase* name = tree.Find(QStringLiteral("/ADMINISTRATION/DRVTREESELECTION"));
    if (name == nullptr || name->GetText().isEmpty()) {
        return;
    }
    auto* selection = dynamic_cast<values::ValueSelection*>(tree.Find(name->GetText()));
    if (selection == nullptr) {
        return;
    }
    for (const char* item :
         {"REC_LOADED", "REC_STATUS", "REC_FILENAME", "REC_FILEPATH", "REC_FILEGUID", "REC_HEADER"}) {
        selection->AddItem(new values::SelectionItem(QString::fromLatin1(item), 0.0, 0), this);
    }
}

}  // namespace Recording2
