// Recorders of the real plug-in, which is loaded at run time as a host does it.
#pragma once

#include <startup/dllinstance.h>

#include "support/testing.h"

namespace RecorderTests {

/// What the plug-in exports.
struct PluginEntries {
    IDllInstance* (*create)(const wchar_t* instanceName);
    void (*destroy)(IDllInstance* instance);
};
/// Loads the plug-in on first use; it stays loaded. Throws std::runtime_error when it cannot be loaded.
const PluginEntries& plugin();

struct DestroyRecorder {
    void operator()(IDllInstance* instance) const { plugin().destroy(instance); }
};
using LoadedRecorder = std::unique_ptr<IDllInstance, DestroyRecorder>;
LoadedRecorder makeLoadedRecorder(const QString& instanceName);

}  // namespace RecorderTests
