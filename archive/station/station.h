// A station's own directory: who it is, its journal, who lives, what is locked.
#pragma once

#include <memory>
#include <optional>

#include <QString>

#include "configuration.h"
#include "registry/database.h"
#include "registry/registry.h"
#include "storage/files.h"

namespace Zelvo {

[[nodiscard]] std::int64_t currentMs();

/// The directory as set up, and the registry that it belongs to. Used by one thread.
class Station {
public:
    /// @throws ArchiveError when the directory was not set up, or for a station of another name
    explicit Station(const ArchiveConfiguration& checked);

    /// Makes directories, journal and registry where they are missing.
    static void setUp(const ArchiveConfiguration& checked, Files& files);

    [[nodiscard]] const ArchiveConfiguration& configuration() const { return m_configuration; }
    [[nodiscard]] const StationPaths& paths() const { return m_paths; }
    [[nodiscard]] const QString& name() const { return m_configuration.station; }
    [[nodiscard]] bool isShared() const { return m_sharedDatabase != nullptr; }
    /// Takes requests; always there.
    [[nodiscard]] Registry& journal() { return m_journal; }
    /// Answers questions; may be away. The journal itself where it is not shared.
    [[nodiscard]] Registry& registry() { return m_shared ? *m_shared : m_journal; }
    /// Tells the shared registry what only the journal knows.
    void publish();

    /// This process's name in the registry; made at the first call.
    [[nodiscard]] QString owner() const;
    /// Whether a process of this station lives.
    [[nodiscard]] bool ownerLives(const QString& owner) const;
    void removeDeadOwners() const;
    /// Of the file that an address is about: while it waits, all of its addresses have one lock.
    [[nodiscard]] std::unique_ptr<FileLock> lock(const Address& address, FileLock::Mode mode);
    /// Where the edited version of a file lies, by its name and version alone.
    [[nodiscard]] QString editedPath(const FileRow& file) const;
    [[nodiscard]] QString cachedPath(const FileRow& file) const;
    /// The file as this station registered it; nothing when it did not. What a shared registry says of paths is not
    /// believed.
    [[nodiscard]] std::optional<FileRow> own(const FileRow& file);
    /// Where the original of a waiting file lies when it is finished, or its edited version; empty when this station
    /// does not know it.
    [[nodiscard]] QString originalPath(const FileRow& file);
    [[nodiscard]] Origins& origins() { return m_origins; }

private:
    ArchiveConfiguration m_configuration;
    StationPaths m_paths;
    QString m_home;
    Database m_journalDatabase;
    Registry m_journal;
    Origins m_origins;
    std::unique_ptr<Database> m_sharedDatabase;
    std::unique_ptr<Registry> m_shared;
    bool m_claimed = false;
};

}  // namespace Zelvo
