// A plug-in object that has a name and does nothing by itself.
#include <startup/dllinstance.h>

IDllInstance::IDllInstance(const QString& instanceName) : m_instanceName(instanceName)
{
}

IDllInstance::~IDllInstance() = default;

bool IDllInstance::Start()
{
    return true;
}

void IDllInstance::Stop()
{
}

void IDllInstance::Idle()
{
}

const QString& IDllInstance::InstanceName() const
{
    return m_instanceName;
}
