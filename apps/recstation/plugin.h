// The recorder plug-in, loaded at run time.
#pragma once

#include <memory>

#include <QLibrary>
#include <QString>

#include <startup/dllinstance.h>

namespace RecStation {

/// The loaded plug-in. It stays in the process until the end, so objects that it made never lose their code.
class Plugin {
public:
    struct Destroy {
        void (*destroy)(IDllInstance*) = nullptr;
        void operator()(IDllInstance* instance) const { destroy(instance); }
    };
    using Instance = std::unique_ptr<IDllInstance, Destroy>;

    /// @param path the library; empty looks in the places beside the program
    /// @throws std::runtime_error when it cannot be found, loaded, or is no recorder plug-in
    explicit Plugin(const QString& path);

    /// Makes the recorder of a configured instance.
    /// @throws std::runtime_error when the plug-in gives none, and what its set-up throws
    [[nodiscard]] Instance create(const QString& instanceName) const;

    /// Where the plug-in lies beside this program, in the build tree and installed; empty when it is nowhere.
    [[nodiscard]] static QString findBesideProgram();

private:
    QLibrary m_library;
    IDllInstance* (*m_create)(const wchar_t*) = nullptr;
    void (*m_destroy)(IDllInstance*) = nullptr;
};

}  // namespace RecStation
