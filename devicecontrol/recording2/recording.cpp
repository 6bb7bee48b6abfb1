// Set-up of the recorder and its end.
#include "recording.h"

#include <startup/cfgcenter.h>
#include <startup/translationcenter.h>

#include "traces.h"

namespace Recording2 {

namespace {

const QString TranslationContext = QStringLiteral("Recording");

}  // namespace

CRecording::CRecording(const QString& instanceName)
    : IDllInstance(instanceName),
      m_configurationName(instanceName),
      m_tracker({0.0F, 0.0F, -30, 120}, [this](std::int32_t modeKey) { return !ModeExcludesIfSpectrum(modeKey); }),
      m_status(*this),
      m_values(*this, m_configuration.valuePath),
      m_archive(std::make_unique<Zelvo::ZelvoClient>())
{
    TranslationCenter::Instance().Register(TranslationContext);
    Traces::tell(Traces::Recorder, QStringLiteral("CRecording::CRecording"), 152);
}

CRecording::~CRecording()
{
    Traces::tell(Traces::Recorder, QStringLiteral("CRecording::~CRecording"), 175);
    TranslationCenter::Instance().Unregister(TranslationContext);
    const auto guarded = [](const auto& step) {
        try {
            step();
        } catch (...) {
            Traces::tell(Traces::Recorder, QString::fromStdString(Traces::textOfException()), __LINE__);
        }
    };
    guarded([this] { m_status.showUnloaded(); });
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
    ReadConfiguration();
    if (m_values.keywords().empty()) {
        for (const RecordType& type : RecordTypeTable) {
            m_values.keywords()[QString::fromLatin1(type.keyword)].valuePath = QString::fromLatin1(type.defaultPath);
        }
    }
    m_configuration.useDefaultPaths();
    if (values::Tree::Instance() != nullptr) {
        m_status.publish(m_configuration);
    }
    WriteTypeTable(nullptr);
    return true;
}

void CRecording::ReadConfiguration()
{
    if (m_configurationName.isEmpty()) {
        m_configuration.useNone();
        return;
    }
    const std::unique_ptr<ICfg> cfg(CfgCenter::CreateCfg(m_configurationName, CfgCenter::View::Instance, QString()));
    if (cfg == nullptr) {
        return;
    }
    m_configuration.read(*cfg);
    m_antennaMode.Attach(m_configuration.valuePath + QStringLiteral("/AntennaMode"));
    m_files.journal = m_configuration.journal;
    m_files.mode = m_configuration.fileMode;
    if (m_configuration.values) {
        m_values.clear();
        for (const auto& [keyword, path] : *m_configuration.values) {
            m_values.keywords()[keyword].valuePath = path;
        }
    }
}

}  // namespace Recording2
