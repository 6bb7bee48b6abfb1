// Slices of steps on a timer, the waits of a paced run, and a signal's way, or that of a thread of the system's, into
// the event loop.
#include "runner.h"

#include <algorithm>
#include <utility>

#include <QSocketNotifier>

#include <system/program.h>

namespace RecStation {

namespace {

// Long enough that the event loop costs nothing, short enough that timers and signals are served promptly.
constexpr qint64 SliceMs = 20;
constexpr long long LongestWaitMs = 3'600'000;
constexpr long long IdleMs = 250;

}  // namespace

Runner::Runner(Scheduler& scheduler, std::optional<double> speed, Hooks hooks)
    : m_scheduler(scheduler), m_speed(speed), m_hooks(std::move(hooks))
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { runSteps(); });
}

void Runner::run()
{
    m_sinceStart.start();
    m_timer.start(0);
    m_loop.exec();
    if (m_failure) {
        std::rethrow_exception(std::exchange(m_failure, nullptr));
    }
}

void Runner::awaitStep(std::chrono::milliseconds atMost)
{
    m_onlyAwaits = atMost;
    run();
    m_onlyAwaits.reset();
}

void Runner::wake()
{
    m_timer.start(0);
}

void Runner::wakeFromAnyThread()
{
    QMetaObject::invokeMethod(&m_timer, "start", Qt::QueuedConnection, Q_ARG(int, 0));
}

// Exceptions must not cross the event loop, so run throws them on.
void Runner::runSteps()
{
    try {
        if (!stepsUntilWait()) {
            m_loop.quit();
        }
    } catch (...) {
        m_failure = std::current_exception();
        m_loop.quit();
    }
}

// False at the end of the run.
bool Runner::stepsUntilWait()
{
    QElapsedTimer slice;
    slice.start();
    while (!m_hooks.stopRequested()) {
        const auto due = m_scheduler.nextTime();
        if (!due && m_scheduler.isWaiting()) {
            if (m_onlyAwaits && std::chrono::milliseconds(m_sinceStart.elapsed()) >= *m_onlyAwaits) {
                return false;
            }
            const auto awaited = m_onlyAwaits ? m_onlyAwaits : m_scheduler.askAgainIn();
            waitIdly(awaited ? std::min<long long>(awaited->count(), IdleMs) : IdleMs);
            return true;
        }
        if (!due || m_onlyAwaits) {
            return false;
        }
        const long long wait = millisecondsUntil(*due);
        if (wait > 0 || slice.elapsed() >= SliceMs) {
            waitIdly(wait);
            return true;
        }
        m_scheduler.step();
        m_hooks.afterStep();
    }
    return false;
}

void Runner::waitIdly(long long milliseconds)
{
    if (milliseconds > 0 && m_hooks.idle) {
        m_hooks.idle();
    }
    m_timer.start(static_cast<int>(m_hooks.idle ? std::min(milliseconds, IdleMs) : milliseconds));
}

long long Runner::millisecondsUntil(unsigned long long time)
{
    if (!m_speed) {
        return 0;
    }
    if (!m_start || time < *m_start) {  // before the first step, and after a gap back
        m_start = time;
        m_sinceStart.restart();
    }
    constexpr double MicrosecondsPerMillisecond = 1000;
    const double dueMs = static_cast<double>(time - *m_start) / MicrosecondsPerMillisecond / *m_speed;
    const double wait = dueMs - static_cast<double>(m_sinceStart.elapsed());
    return static_cast<long long>(std::clamp(wait, 0.0, static_cast<double>(LongestWaitMs)));
}

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
