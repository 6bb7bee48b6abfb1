// What a recorder shows of itself in the value tree, and what it is controlled by there.
#pragma once

#include <QString>

#include <values/selection.h>
#include <values/tree.h>
#include <values/value.h>
#include <vkbase/observer.h>

#include "recorderconfiguration.h"

namespace Recording2 {

class StatusValues {
public:
    /// @param recorder observes those by which others control it; must outlive this
    explicit StatusValues(IObserver& recorder);

    /// Creates them all; there is a tree.
    void publish(const RecorderConfiguration& configuration);
    /// REC_LOADED is false from then on.
    void showUnloaded();
    void showOff();
    void showFileName(const QString& path, IObserver* sender);
    /// Nothing is open any more.
    void clearPaths();

    /// Whether it is one of those that the recorder observes.
    [[nodiscard]] bool isControl(const void* subject) const;
    [[nodiscard]] bool isStatus(const void* subject) const { return subject == m_status.get(); }
    [[nodiscard]] bool isOn() const;
    [[nodiscard]] bool isFilePath(const void* subject) const { return subject == m_filePath.get(); }
    [[nodiscard]] QString filePath() const { return m_filePath->GetValue(); }
    [[nodiscard]] bool isFileNameFormat83(const void* subject) const { return subject == m_fileNameFormat83.get(); }
    [[nodiscard]] bool fileNameFormat83() const { return m_fileNameFormat83->GetValue(); }
    /// Whether bearings are to be recorded instead of spectra.
    [[nodiscard]] bool recDf() const;

private:
    void publishRecDf(const QString& parent);
    void extendDriverTreeSelection() const;

    IObserver& m_recorder;
    values::ValueObservingPtr<values::Value<bool>> m_loaded;
    values::ValueObservingPtr<values::ValueSelection> m_status;
    values::ValuePtr<values::Value<QString>> m_fileName;
    values::ValueObservingPtr<values::Value<QString>> m_filePath;
    values::ValueObservingPtr<values::Value<bool>> m_fileNameFormat83;
    values::ValueObservingPtr<values::Value<QString>> m_header;
    values::ValuePtr<values::Value<bool>> m_recDf;
    const values::Value<bool>* m_refusedRecDf = nullptr;
    values::ValuePtr<values::Value<QString>> m_fileGuid;
    values::ValuePtr<values::Value<QString>> m_zelvoFilePath;
    values::ValuePtr<values::Value<QString>> m_uncFilePath;
};

}  // namespace Recording2
