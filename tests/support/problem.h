// What somebody is told of something that cannot be done.
#pragma once

#include <stdexcept>
#include <string>

namespace TestSupport {

/// The words of the error that work throws; "no problem" when it throws none.
template <typename Error = std::runtime_error, typename Work>
[[nodiscard]] std::string problemOf(const Work& work)
{
    try {
        work();
    } catch (const Error& error) {
        return error.what();
    }
    return "no problem";
}

}  // namespace TestSupport
