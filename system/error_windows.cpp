// Error numbers of Windows, and what they mean.
#include "error.h"

#include <windows.h>

#include <system_error>

#include "text_windows.h"

namespace System {

const Error InvalidPosition = ERROR_NEGATIVE_SEEK;
const Error CannotRead = ERROR_READ_FAULT;
const Error FileTooLarge = ERROR_FILE_TOO_LARGE;
const Error NameTaken = ERROR_FILE_EXISTS;
const Error LockHeld = ERROR_LOCK_VIOLATION;
const Error NoOrdinaryFile = -1;
const Error BeingRemoved = ERROR_ACCESS_DENIED;

std::string errorText(Error error)
{
    if (error == LockHeld) {
        return "Another program holds its lock";
    }
    if (error == NoOrdinaryFile) {
        return "It is no ordinary file";
    }
    const std::string message = std::system_category().message(error);
    return inUtf8(message.substr(0, message.find_last_not_of(" \r\n") + 1));
}

ErrorKind kindOf(Error error)
{
    switch (error) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
            return ErrorKind::Missing;
        case ERROR_FILE_EXISTS:
        case ERROR_ALREADY_EXISTS:
            return ErrorKind::Exists;
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL:
            return ErrorKind::Full;
        case ERROR_WRITE_PROTECT:
        case ERROR_NOT_READY:
        case ERROR_IO_DEVICE:
        case ERROR_BAD_NETPATH:
        case ERROR_BAD_NET_NAME:
        case ERROR_NETNAME_DELETED:
        case ERROR_NETWORK_UNREACHABLE:
        case ERROR_UNEXP_NET_ERR:
        case ERROR_SEM_TIMEOUT:
            return ErrorKind::Away;
        case NoOrdinaryFile:
            return ErrorKind::NotAFile;
        default:
            return ErrorKind::Other;
    }
}

}  // namespace System
