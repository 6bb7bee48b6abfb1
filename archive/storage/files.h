// What the archive needs of the file system, in steps that are each either done or not.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>

#include <QByteArray>
#include <QString>

#include <system/lockfile.h>

namespace Zelvo {

/// A step that failed, with what the system said.
class FileError : public std::runtime_error {
public:
    using Kind = System::ErrorKind;
    FileError(Kind kind, const QString& sentence) : std::runtime_error(sentence.toStdString()), m_kind(kind) {}
    [[nodiscard]] Kind kind() const { return m_kind; }
    [[nodiscard]] QString text() const { return QString::fromUtf8(what()); }

private:
    Kind m_kind;
};

/// The caller asked for the end while a file was read.
struct Interrupted {};

struct FileIdentity : System::FileIdentity {
    /// What stays the same under every name and whatever is written. Not the device: its number is given anew when it
    /// is mounted.
    [[nodiscard]] QString lasting() const { return QStringLiteral("%1:%2").arg(number).arg(bornNs); }
};

struct Digest {
    QByteArray sha256;  ///< 64 hexadecimal digits
    std::int64_t bytes = 0;
    FileIdentity identity;  ///< of the file that was read
};

using FileKind = System::NameKind;

using StopWish = std::function<bool()>;

/// The steps. A test puts its own in between. Links are never followed at the last component of a path.
class Files {
public:
    Files() = default;
    Files(const Files&) = delete;
    Files& operator=(const Files&) = delete;
    virtual ~Files();

    [[nodiscard]] virtual FileKind kind(const QString& path) const;
    /// @throws FileError also when it is no file
    [[nodiscard]] virtual FileIdentity identity(const QString& path) const;
    /// Makes one directory where there is none. fsyncDirectory() of the one above makes it last.
    virtual void makeDirectory(const QString& path, unsigned mode);
    /// Writes a new file with the bytes of another and has them on the device when it returns. A file that it could not
    /// finish is removed. What is no ordinary file is not opened: a pipe would be waited for.
    /// @param mode less the process's mask @return of the bytes that were read
    virtual Digest copy(const QString& from, const QString& to, unsigned mode, const StopWish& stop);
    /// Reads the file from the device where the system can be asked to.
    [[nodiscard]] virtual Digest digest(const QString& path, const StopWish& stop) const;
    /// Never replaces a file. @throws FileError of Kind::Exists
    virtual void rename(const QString& from, const QString& to);
    /// Has the names in a directory on the device.
    virtual void fsyncDirectory(const QString& path);
    /// Missing is no error.
    virtual void remove(const QString& path);
    /// Marks a file as just used. A failure only makes it look older.
    virtual void touch(const QString& path);
    /// Writes a small file under a temporary name and renames it, replacing what is there, lasting. @param mode less
    /// the process's mask
    virtual void write(const QString& path, const QByteArray& bytes, unsigned mode);
};

/// Makes an empty file where there is none. @param mode less the process's mask @throws FileError
void createEmpty(const QString& path, unsigned mode);

/// A lock that the system releases when the process ends, on a file made for the purpose.
class FileLock {
public:
    using Mode = System::LockMode;
    /// Does not wait. @return null when others hold it. @throws FileError when the file cannot be made
    [[nodiscard]] static std::unique_ptr<FileLock> tryLock(const QString& path, Mode mode, unsigned fileMode);
    /// Of one who shares it: keeps it alone. Others may have had it in between. @return whether this one has it now
    [[nodiscard]] bool keepAlone() { return m_lock.keepAlone() == 0; }
    /// Whether somebody holds it; a missing file is held by nobody.
    [[nodiscard]] static bool isHeld(const QString& path);

private:
    System::LockFile m_lock;
};

}  // namespace Zelvo
