// Translation contexts that plug-ins register while they live.
#pragma once

#include <memory>

#include <QString>
#include <QStringList>

#include <startup/export.h>

/// Counts the registered contexts; a host that shows texts loads translations for those that are in use.
class STARTUP_EXPORT TranslationCenter {
public:
    static TranslationCenter& Instance();

    void Register(const QString& context);       ///< counted: each Register needs its Unregister
    void Unregister(const QString& context);     ///< one that was not registered is ignored
    [[nodiscard]] QStringList Contexts() const;  ///< those registered now, sorted

private:
    TranslationCenter();
    ~TranslationCenter();
    struct Private;
    std::unique_ptr<Private> m_private;
};
