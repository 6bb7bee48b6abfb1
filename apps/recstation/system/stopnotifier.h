// The wish to stop, told to the event loop.
#pragma once

#include <functional>
#include <memory>

#include <system/stopsignal.h>

class QSocketNotifier;
class QTimer;

namespace RecStation {

/// At most one object at a time. While it lives, a reader of the messages that goes away does not end the recording.
class StopNotifier {
public:
    /// @param wake called once from the event loop of the constructing thread
    explicit StopNotifier(const std::function<void()>& wake);
    StopNotifier(const StopNotifier&) = delete;
    StopNotifier& operator=(const StopNotifier&) = delete;
    ~StopNotifier();

private:
    std::unique_ptr<QTimer> m_wake;  // started by whatever thread the signal comes in
    System::StopSignal m_signal;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

}  // namespace RecStation
