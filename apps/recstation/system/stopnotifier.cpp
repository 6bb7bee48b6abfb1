// From a signal, or a thread of the system's, into the event loop.
#include "stopnotifier.h"

#include <QSocketNotifier>
#include <QTimer>

#include <system/program.h>

namespace RecStation {

StopNotifier::StopNotifier(const std::function<void()>& wake)
    : m_wake(std::make_unique<QTimer>()),
      m_signal([timer = m_wake.get()] { QMetaObject::invokeMethod(timer, "start", Qt::QueuedConnection); })
{
    m_wake->setSingleShot(true);
    QObject::connect(m_wake.get(), &QTimer::timeout, m_wake.get(), wake);
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
