// What a configuration comes down to: checked values, and the paths in the station's own directory.
#pragma once

#include <QString>

#include <zelvo/archive.h>

namespace Zelvo {

/// The configuration with every default filled in.
/// @throws ArchiveError for values that cannot work together
[[nodiscard]] ArchiveConfiguration checkedConfiguration(const ArchiveConfiguration& configuration);

/// Paths below the station's own directory.
struct StationPaths {
    explicit StationPaths(const QString& directory) : root(directory) {}

    QString root;
    [[nodiscard]] QString journal() const { return root + QStringLiteral("/archive.sqlite"); }
    [[nodiscard]] QString identity() const { return root + QStringLiteral("/station"); }
    [[nodiscard]] QString moverLock() const { return root + QStringLiteral("/mover.lock"); }
    [[nodiscard]] QString owners() const { return root + QStringLiteral("/owners"); }
    [[nodiscard]] QString owner(const QString& name) const { return owners() + QLatin1Char('/') + name; }
    [[nodiscard]] QString locks() const { return root + QStringLiteral("/locks"); }
    [[nodiscard]] QString lock(const QString& flatName) const { return locks() + QLatin1Char('/') + flatName; }
    [[nodiscard]] QString cache() const { return root + QStringLiteral("/cache"); }
    [[nodiscard]] QString edited() const { return root + QStringLiteral("/edited"); }
};

}  // namespace Zelvo
