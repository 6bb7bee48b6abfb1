// What the recorders trace, heard by the host: why one of them stopped is said nowhere else.
#pragma once

#include <functional>

#include <QString>
#include <QStringList>
#include <QtGlobal>

namespace RecStation {

/// Switches the recorders' traces on and listens to them while it lives. One at a time, on the thread of the recorders.
class RecorderTraces {
public:
    /// @param show whether the traces go on to where Qt's logging goes
    /// @param warn called with a sentence that people should see although they do not want all traces; may be empty
    RecorderTraces(bool show, std::function<void(const QString&)> warn);
    RecorderTraces(const RecorderTraces&) = delete;
    RecorderTraces& operator=(const RecorderTraces&) = delete;
    ~RecorderTraces();

    /// Why the recording of a path was stopped by its recorder; empty when no trace told.
    [[nodiscard]] QString whyStopped(const QString& path) const;

private:
    static void handle(QtMsgType type, const QMessageLogContext& context, const QString& message);
    void hear(const QString& message);

    bool m_show;
    std::function<void(const QString&)> m_warn;
    QStringList m_stops;
    QtMessageHandler m_before;
};

}  // namespace RecStation
