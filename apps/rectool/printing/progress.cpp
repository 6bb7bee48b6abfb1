// A percentage on the terminal, shown after half a second and wiped off later.
#include "progress.h"

#include <iostream>
#include <utility>

#include <system/program.h>

#include "output.h"

namespace RecTool {

Progress::Progress(std::string file) : m_file(std::move(file)), m_begin(std::chrono::steady_clock::now())
{
}

Progress::~Progress()
{
    clear();
}

std::function<void(std::int64_t, std::int64_t)> Progress::callback()
{
    if (Complaints::areKept() || !System::isTerminal(System::Stream::Errors)) {
        return {};
    }
    return [this](std::int64_t done, std::int64_t all) { show(done, all); };
}

void Progress::show(std::int64_t done, std::int64_t all)
{
    constexpr std::chrono::milliseconds Patience{500};
    if (all > 0 && std::chrono::steady_clock::now() - m_begin > Patience) {
        std::cerr << '\r' << printedName(m_file) << ": " << done * 100 / all << " %" << std::flush;
        m_shown = true;
    }
}

void Progress::clear()
{
    if (m_shown) {
        std::cerr << '\r' << std::string(printedName(m_file).size() + 8, ' ') << '\r' << std::flush;
        m_shown = false;
    }
}

}  // namespace RecTool
