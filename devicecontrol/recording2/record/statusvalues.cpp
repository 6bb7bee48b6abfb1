// REC_STATUS and the values around it.
#include "statusvalues.h"

#include <memory>
#include <vector>

#include <vkbase/vkexception.h>

#include "../traces.h"

namespace Recording2 {

namespace {

constexpr std::int32_t KeyOn = 1;

// A value that the tree refused is never freed: somebody may have been given its address. Kept reachable here.
const values::Value<bool>* keepForever(std::unique_ptr<values::Value<bool>> value)
{
    static std::vector<std::unique_ptr<values::Value<bool>>> refused;
    refused.push_back(std::move(value));
    return refused.back().get();
}

}  // namespace

StatusValues::StatusValues(IObserver& recorder)
    : m_recorder(recorder),
      m_loaded(&recorder),
      m_status(&recorder),
      m_filePath(&recorder),
      m_fileNameFormat83(&recorder),
      m_header(&recorder)
{
}

void StatusValues::publish(const RecorderConfiguration& configuration)
{
    const QString root = configuration.valuePath + QLatin1Char('/');
    const QString status = configuration.statusValuePath + QLatin1Char('/');
    m_loaded.Attach(root + QStringLiteral("REC_LOADED"));
    m_loaded->SetValue(true, &m_recorder);
    m_status.Attach(root + QStringLiteral("REC_STATUS"));
    m_status->DeleteItems(&m_recorder);
    m_status->AddItem(new values::SelectionItem(QStringLiteral("Off"), 0.0, 0), &m_recorder);
    m_status->AddItem(new values::SelectionItem(QStringLiteral("On"), 1.0, KeyOn), &m_recorder);
    m_status->Select(QStringLiteral("Off"), &m_recorder);
    m_fileName.Attach(status + QStringLiteral("REC_FILENAME"));
    m_filePath.Attach(status + QStringLiteral("REC_FILEPATH"));
    m_filePath->SetValue(configuration.recordingPath, &m_recorder);
    m_fileGuid.Attach(status + QStringLiteral("REC_FILEGUID"));
    m_fileGuid->SetValue(QString(), nullptr);
    m_fileNameFormat83.Attach(status + QStringLiteral("REC_FILENAMEFORMAT83"));
    m_fileNameFormat83->SetValue(configuration.fileNameFormat83, &m_recorder);
    m_header.Attach(status + QStringLiteral("REC_HEADER"));
    m_uncFilePath.Attach(status + QStringLiteral("REC_UNCFILEPATH"));
    m_zelvoFilePath.Attach(status + QStringLiteral("REC_ZELVOFILEPATH"));
    publishRecDf(status);
    extendDriverTreeSelection();
}

void StatusValues::publishRecDf(const QString& parent)
{
    const QString path = parent + QStringLiteral("REC_DF");
    values::Tree& tree = *values::Tree::Instance();
    if (dynamic_cast<values::Value<bool>*>(tree.Find(path)) == nullptr) {
        auto value = std::make_unique<values::Value<bool>>();
        value->SetName(QStringLiteral("REC_DF"));
        try {
            tree.Insert(parent, value.get());
            value.release();  // NOLINT(bugprone-unused-return-value): the tree's now
        } catch (const VKException&) {
            Traces::tell(
                Traces::Recorder,
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

void StatusValues::extendDriverTreeSelection() const
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
        selection->AddItem(new values::SelectionItem(QString::fromLatin1(item), 0.0, 0), &m_recorder);
    }
}

void StatusValues::showUnloaded()
{
    if (m_loaded) {
        m_loaded->SetValue(false, &m_recorder);
    }
}

void StatusValues::showOff()
{
    if (m_status) {
        m_status->Select(QStringLiteral("Off"), &m_recorder);
    }
}

void StatusValues::showFileName(const QString& path, IObserver* sender)
{
    if (m_fileName) {
        m_fileName->SetValue(path, sender);
    }
}

void StatusValues::clearPaths()
{
    const values::VtTransaction transaction(false);
    for (auto* pointer : {&m_uncFilePath, &m_zelvoFilePath}) {
        if (*pointer) {
            (*pointer)->SetValue(QString(), nullptr);
        }
    }
}

bool StatusValues::isControl(const void* subject) const
{
    return subject == m_status.get() || subject == m_filePath.get() || subject == m_fileNameFormat83.get() ||
           subject == m_loaded.get() || subject == m_header.get();
}

bool StatusValues::isOn() const
{
    return m_status->GetCurrentKey() == KeyOn;
}

bool StatusValues::recDf() const
{
    return m_recDf ? m_recDf->GetValue() : m_refusedRecDf != nullptr && m_refusedRecDf->GetValue();
}

}  // namespace Recording2
