// Something on the command line that cannot be used, found out only when configuration or files were read.
#pragma once

#include <stdexcept>

namespace RecStation {

class UsageError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

}  // namespace RecStation
