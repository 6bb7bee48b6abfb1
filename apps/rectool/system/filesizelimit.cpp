// Limiting how large this process's files may grow; Windows cannot.
#include "filesizelimit.h"

#if !defined(_WIN32)
#include <csignal>

#include <sys/resource.h>
#endif

namespace RecTool {

#if defined(_WIN32)

bool canLimitFileSize()
{
    return false;
}

bool limitFileSize(std::uint64_t /*bytes*/)
{
    return false;
}

#else

bool canLimitFileSize()
{
    return true;
}

bool limitFileSize(std::uint64_t bytes)
{
    static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
    rlimit limit{};
    if (getrlimit(RLIMIT_FSIZE, &limit) != 0) {
        return false;
    }
    limit.rlim_cur = static_cast<rlim_t>(bytes);
    return setrlimit(RLIMIT_FSIZE, &limit) == 0;
}

#endif

}  // namespace RecTool
