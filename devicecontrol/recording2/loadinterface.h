// The plug-in's entry points.
#pragma once

#include <recording2/export.h>
#include <startup/dllinstance.h>

extern "C" {

/// Makes the recorder of one instance: reads its configuration and publishes its status values.
/// @param instanceName NUL-terminated; names the table of the configuration, may be empty (defaults)
/// @return the recorder, to be released with VKDestroy on the same thread; null when memory ran out
/// @throws whatever set-up throws (a VKException for a wrong configuration)
RECORDING2_EXPORT IDllInstance* VKCreate(const wchar_t* instanceName);

/// Stops the recorder's open recording, if any, and destroys it. Null does nothing.
RECORDING2_EXPORT void VKDestroy(IDllInstance* instance);
}
