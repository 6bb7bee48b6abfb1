// Making and deleting a recorder for the host; one that finds no memory is traced.
#include "loadinterface.h"

#include <new>

#include "recording.h"
#include "traces.h"

IDllInstance* VKCreate(const wchar_t* instanceName)
{
    try {
        auto recorder = std::make_unique<Recording2::CRecording>(QString::fromWCharArray(instanceName));
        recorder->Init();
        return recorder.release();
    } catch (const std::bad_alloc& exception) {
        if (Recording2::Traces::enabled()) {  // else there may not even be memory for the text
            Recording2::Traces::tell(Recording2::Traces::LoadInterface, QString::fromUtf8(exception.what()), 21);
        }
        return nullptr;
    }
}

void VKDestroy(IDllInstance* instance)
{
    delete dynamic_cast<Recording2::CRecording*>(instance);
}
