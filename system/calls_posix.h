// Calls of POSIX systems that answer with an error of ours.
#pragma once

#include <cerrno>

#include "names.h"

namespace System {

inline Error resultOf(int result)
{
    return result == 0 ? 0 : errno;
}

/// @param name empty: the open file itself; else seen from that directory
Error statusOf(int descriptor, const char* name, FileIdentity& identity);

}  // namespace System
