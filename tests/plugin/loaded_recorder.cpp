// Loads the plug-in once and finds its two entry points.
#include "loaded_recorder.h"

#include <QLibrary>

namespace RecorderTests {

namespace {

template <typename Function>
void resolve(QLibrary& library, const char* symbol, Function& function)
{
    const QFunctionPointer found = library.resolve(symbol);
    if (found == nullptr) {
        throw std::runtime_error(library.errorString().toStdString());
    }
    function = reinterpret_cast<Function>(found);
}

PluginEntries load()
{
    QLibrary library(RECORDER_PLUGIN);
    if (!library.load()) {
        throw std::runtime_error(library.errorString().toStdString());
    }
    PluginEntries entries{};
    resolve(library, "VKCreate", entries.create);
    resolve(library, "VKDestroy", entries.destroy);
    return entries;
}

}  // namespace

const PluginEntries& plugin()
{
    static const PluginEntries entries = load();
    return entries;
}

LoadedRecorder makeLoadedRecorder(const QString& instanceName)
{
    return LoadedRecorder(plugin().create(instanceName.toStdWString().c_str()));
}

}  // namespace RecorderTests
