// A message handler that picks warnings and stops out of what recorders trace.
#include "recordertraces.h"

#include <cstdint>
#include <utility>

#include <QLatin1String>

#include <vkbase/trace.h>

namespace RecStation {

namespace {

RecorderTraces* active = nullptr;  // Qt's handler takes no object

bool isOfRecorders(const char* category)
{
    const QLatin1String name(category);
    return name.startsWith(QLatin1String("devicecontrol\\recording2\\")) || name == QLatin1String("trace");
}

}  // namespace

RecorderTraces::RecorderTraces(bool show, std::function<void(const QString&)> warn)
    : m_show(show), m_warn(std::move(warn)), m_before(qInstallMessageHandler(&RecorderTraces::handle))
{
    active = this;
    ErrorHandler::Instance().SetTraceMask(ErrorHandler::Instance().TraceMask() | ErrorHandler::RecordingTraces);
}

RecorderTraces::~RecorderTraces()
{
    ErrorHandler::Instance().SetTraceMask(ErrorHandler::Instance().TraceMask() & ~ErrorHandler::RecordingTraces);
    qInstallMessageHandler(m_before);
    active = nullptr;
}

void RecorderTraces::handle(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    const bool ofRecorders = isOfRecorders(context.category);
    if (ofRecorders) {
        active->hear(message);
    }
    if (!ofRecorders || active->m_show) {
        active->m_before(type, context, message);
    }
}

void RecorderTraces::hear(const QString& message)
{
    if (message.contains(QLatin1String("recording stopped, writing "))) {
        m_stops += message;
    } else if (m_warn && message.contains(QLatin1String("recording goes on without a "))) {
        m_warn(message.mid(message.indexOf(QLatin1String(": ")) + 2));
    }
}

QString RecorderTraces::whyStopped(const QString& path) const
{
    const QString beginning = QStringLiteral("writing %1 failed: ").arg(path);
    for (const QString& stop : m_stops) {
        const int at = stop.indexOf(beginning);
        if (at >= 0) {
            return stop.mid(at + beginning.size());
        }
    }
    return {};
}

}  // namespace RecStation
