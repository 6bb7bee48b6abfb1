// The configuration of the station: one TOML file, one table per instance.
#pragma once

#include <cstdint>

#include <QString>
#include <QStringList>

#include <startup/export.h>

class ICfg;

/// Loading and CreateCfg belong to one thread.
class STARTUP_EXPORT CfgCenter {
public:
    /// How a configuration is looked at. The bundled centre gives the same answers in every view.
    enum class View : std::int32_t { Default = 0, Machine = 1, Instance = 2 };

    CfgCenter() = delete;

    /// Host: reads the file that all later CreateCfg calls look into.
    /// @throws VKException with a sentence that names a file that cannot be read, or "FILE:LINE: what is wrong" for one
    ///         that is not TOML; the configuration loaded before stays in force
    static void LoadFile(const QString& path);
    /// Host: the same from text; fileName is used in messages only.
    static void LoadText(const QString& text, const QString& fileName);
    /// Host: forgets the configuration, so that every CreateCfg gives null.
    static void Clear();
    /// Names of the top-level tables in file order; top-level keys that are no tables are the host's own.
    static QStringList InstanceNames();

    /// The table of the given name, or null when there is none. Owned by the caller.
    /// @param section a sub-table to open instead ("" for the table itself)
    /// @throws VKException like ICfg::OpenSection for a name that is no table
    static ICfg* CreateCfg(const QString& name, View view, const QString& section);
};

/// A table of one instance's configuration. The caller destroys it; it stays valid when another file is loaded.
class STARTUP_EXPORT ICfg {
public:
    ICfg() = default;
    ICfg(const ICfg&) = delete;
    ICfg& operator=(const ICfg&) = delete;
    virtual ~ICfg();

    // Reading a key that is missing gives the default. A key of another type than the one asked for throws a
    // VKException "FILE:LINE: key "KEY": expected an integer, found a string". Keys are case-sensitive.
    [[nodiscard]] virtual QString ReadString(const QString& key, const QString& defaultValue) const = 0;
    /// Integers outside 32 bits throw as a wrong type does.
    [[nodiscard]] virtual std::int32_t ReadInteger(const QString& key, std::int32_t defaultValue) const = 0;
    [[nodiscard]] virtual bool ReadBoolean(const QString& key, bool defaultValue) const = 0;
    /// A sub-table, owned by the caller; null when there is none. A key that is no table throws.
    [[nodiscard]] virtual ICfg* OpenSection(const QString& name, CfgCenter::View view) const = 0;
    /// The name of the key at an index in file order; empty past the last key.
    [[nodiscard]] virtual QString KeyName(std::int32_t index) const = 0;
};
