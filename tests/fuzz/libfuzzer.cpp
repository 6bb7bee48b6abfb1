// The program that libFuzzer drives: fuzz --target=NAME CORPUS... (libFuzzer passes over options with two dashes).
#include <cstddef>
#include <cstdlib>
#include <iostream>

#include "target.h"

namespace {

const Fuzzing::Target* chosen = nullptr;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    constexpr std::string_view Option = "--target=";
    try {
        for (int i = 1; i < *argc; ++i) {
            const std::string_view argument = (*argv)[i];
            if (argument.starts_with(Option)) {
                chosen = &Fuzzing::targetOf(argument.substr(Option.size()));
            }
        }
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
    }
    if (chosen == nullptr) {
        std::cerr << "Usage: fuzz --target=NAME [libFuzzer's options] CORPUS...\n";
        std::exit(1);  // NOLINT(concurrency-mt-unsafe): there is one thread
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    chosen->run(std::string(reinterpret_cast<const char*>(data), size));
    return 0;
}
