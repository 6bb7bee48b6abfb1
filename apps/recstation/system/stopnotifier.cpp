// From a signal, or a thread of the system's, into the event loop.
#include "stopnotifier.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <system/program.h>

namespace RecStation {

StopNotifier::StopNotifier(const std::function<void()>& wake)
    : m_signal([wake] { QMetaObject::invokeMethod(QCoreApplication::instance(), wake, Qt::QueuedConnection); })
{
    System::ignoreBrokenPipes();
    if (System::StopSignal::wakeDescriptor() < 0) {
        return;
    }
    m_notifier = std::make_unique<QSocketNotifier>(System::StopSignal::wakeDescriptor(), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [this, wake] {
        m_notifier->setEnabled(false);
        wake();
    });
}

StopNotifier::~StopNotifier() = default;

}  // namespace RecStation
