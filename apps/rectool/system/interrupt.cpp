// Signal handlers that only note the interrupt, while an object wants it noted.
#include "interrupt.h"

#include <atomic>
#include <csignal>

namespace RecTool {

namespace {

std::atomic<bool> interrupted = false;
static_assert(std::atomic<bool>::is_always_lock_free, "set in a signal handler");

extern "C" void onInterrupt(int /*signal*/)
{
    interrupted = true;
}

void setHandlers(void (*onEnd)(int), [[maybe_unused]] void (*onLimit)(int))
{
    static_cast<void>(std::signal(SIGINT, onEnd));
    static_cast<void>(std::signal(SIGTERM, onEnd));
#if defined(SIGBREAK)
    static_cast<void>(std::signal(SIGBREAK, onEnd));
#endif
#if defined(SIGXFSZ)
    static_cast<void>(std::signal(SIGXFSZ, onLimit));
#endif
}

}  // namespace

Interrupt::Interrupt()
{
    interrupted = false;
    setHandlers(onInterrupt, SIG_IGN);
}

Interrupt::~Interrupt()
{
    setHandlers(SIG_DFL, SIG_DFL);
}

bool Interrupt::requested() noexcept
{
    return interrupted;
}

}  // namespace RecTool
