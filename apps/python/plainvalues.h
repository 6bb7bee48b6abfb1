// Every value of a type with its time: numbers as one array, other plain values as texts.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "reading.h"

namespace RecPython {

/// Either the numbers or the texts are as many as the times.
struct FoundValues : FoundType {
    std::vector<std::int64_t> sinceStartUs;
    std::vector<double> numbers;     ///< while all are numbers or booleans
    std::vector<std::string> texts;  ///< UTF-8, otherwise
    bool areBooleans = false;
    std::string unit;  ///< empty where there is none
};

/// Without the interpreter's lock. @throws Refusal, Interrupted
[[nodiscard]] FoundValues readValues(const Request& request);

}  // namespace RecPython
