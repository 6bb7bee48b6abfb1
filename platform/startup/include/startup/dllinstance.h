// What a host holds of a plug-in object.
#pragma once

#include <QString>

#include <startup/export.h>

/// One plug-in object, made by the plug-in's VKCreate and released through its VKDestroy.
class STARTUP_EXPORT IDllInstance {
public:
    explicit IDllInstance(const QString& instanceName = QString());
    IDllInstance(const IDllInstance&) = delete;
    IDllInstance& operator=(const IDllInstance&) = delete;
    virtual ~IDllInstance();

    virtual bool Start();  ///< does nothing, returns true
    virtual void Stop();   ///< does nothing
    virtual void Idle();   ///< does nothing

    [[nodiscard]] const QString& InstanceName() const;

private:
    QString m_instanceName;
};
