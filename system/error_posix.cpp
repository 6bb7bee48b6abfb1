// Error numbers of POSIX systems, and what they mean.
#include "error.h"

#include <cerrno>
#include <system_error>

namespace System {

const Error InvalidPosition = EINVAL;
const Error CannotRead = EIO;
const Error FileTooLarge = EFBIG;
const Error NameTaken = EEXIST;
const Error LockHeld = EWOULDBLOCK;
const Error NoOrdinaryFile = -1;
const Error BeingRemoved = -2;  // never

std::string errorText(Error error)
{
    if (error == LockHeld) {
        return "Another program holds its lock";
    }
    if (error == NoOrdinaryFile) {
        return "It is no ordinary file";
    }
    return std::generic_category().message(error);
}

ErrorKind kindOf(Error error)
{
    switch (error) {
        case ENOENT:
        case ENOTDIR:
            return ErrorKind::Missing;
        case EEXIST:
        case ENOTEMPTY:
            return ErrorKind::Exists;
        case ENOSPC:
        case EDQUOT:
        case EFBIG:
            return ErrorKind::Full;
        case EROFS:
        case EIO:
        case ENOTCONN:
        case ESTALE:
        case ENODEV:
        case ENXIO:
        case EHOSTDOWN:
        case EHOSTUNREACH:
        case ETIMEDOUT:
            return ErrorKind::Away;
        case ELOOP:
        case EISDIR:
        case NoOrdinaryFile:
            return ErrorKind::NotAFile;
        default:
            return ErrorKind::Other;
    }
}

}  // namespace System
