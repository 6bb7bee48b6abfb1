// Making and deleting a recorder for the host; one that finds no memory is traced.
#include "loadinterface.h"

#include <new>

#include "recording.h"

#include <vkbase/trace.h>

namespace {

void traceOutOfMemory(const std::bad_alloc& exception)
{
    if ((ErrorHandler::Instance().TraceMask() & ErrorHandler::RecordingTraces) != 0) {
        _Q_Trace(QString::fromUtf8(exception.what()), QStringLiteral("devicecontrol\\recording2\\loadinterface"), 21);
    }
}

}  // namespace

IDllInstance* VKCreate(const wchar_t* instanceName)
{
    try {
        auto recorder = std::make_unique<Recording2::CRecording>(QString::fromWCharArray(instanceName));
        recorder->Init();
        return recorder.release();
    } catch (const std::bad_alloc& exception) {
        traceOutOfMemory(exception);
        return nullptr;
    }
}

void VKDestroy(IDllInstance* instance)
{
    delete dynamic_cast<Recording2::CRecording*>(instance);
}
