// Finding, loading and resolving the recorder plug-in, and creating its instances.
#include "plugin.h"

#include <stdexcept>
#include <string>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStringList>

namespace RecStation {

namespace {

#if defined(_WIN32)
constexpr auto FileName = "Recording2.dll";
#else
constexpr auto FileName = "Recording2.so";
#endif

QStringList placesBesideProgram()
{
    const QDir program(QCoreApplication::applicationDirPath());
    const QString name = QLatin1String(FileName);
    return {program.filePath(QStringLiteral("../lib/") + name),
            program.filePath(QStringLiteral(RECSTATION_PLUGIN_FOLDER "/") + name), program.filePath(name)};
}

template <typename Function>
Function resolve(QLibrary& library, const char* symbol)
{
    const QFunctionPointer found = library.resolve(symbol);
    if (found == nullptr) {
        throw std::runtime_error(library.fileName().toStdString() + " is no recorder plug-in: it lacks " + symbol);
    }
    return reinterpret_cast<Function>(found);
}

}  // namespace

QString Plugin::findBesideProgram()
{
    for (const QString& place : placesBesideProgram()) {
        if (QFileInfo::exists(place)) {
            return QDir::cleanPath(place);
        }
    }
    return {};
}

Plugin::Plugin(const QString& path)
{
    const QString file = path.isEmpty() ? findBesideProgram() : path;
    if (file.isEmpty()) {
        throw std::runtime_error(std::string("cannot find the recorder plug-in ") + FileName +
                                 " beside this program; name it with --plugin");
    }
    if (!QFileInfo::exists(file)) {
        throw std::runtime_error("cannot load the recorder plug-in: " + file.toStdString() + " does not exist");
    }
    m_library.setFileName(QFileInfo(file).absoluteFilePath());
    if (!m_library.load()) {
        throw std::runtime_error("cannot load the recorder plug-in: " + m_library.errorString().toStdString());
    }
    m_create = resolve<decltype(m_create)>(m_library, "VKCreate");
    m_destroy = resolve<decltype(m_destroy)>(m_library, "VKDestroy");
}

Plugin::Instance Plugin::create(const QString& instanceName) const
{
    Instance instance(m_create(instanceName.toStdWString().c_str()), Destroy{m_destroy});
    if (instance == nullptr) {
        throw std::runtime_error("the plug-in gave no recorder for \"" + instanceName.toStdString() + "\"");
    }
    return instance;
}

}  // namespace RecStation
