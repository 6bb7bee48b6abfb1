// Work in a process of its own.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include "support/testing.h"

namespace TestSupport {

/// @return with which code the work ended the process, or the negative signal that did
template <typename Work>
int endOf(const Work& work)
{
    const pid_t child = ::fork();
    if (child == 0) {
        ::_exit(work());
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

}  // namespace TestSupport
