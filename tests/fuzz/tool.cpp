// Without libFuzzer: writes the seeds, and runs kept inputs through a target.
#include <iostream>

#include "target.h"

namespace {

namespace fs = std::filesystem;

int usage()
{
    std::cerr << "Usage: fuzz_tool list\n"
                 "       fuzz_tool seeds FOLDER         writes the seeds of every target into FOLDER/TARGET\n"
                 "       fuzz_tool run TARGET PATH...   runs files, and the files of folders, through a target\n";
    return 1;
}

void writeSeeds(const fs::path& folder)
{
    for (const Fuzzing::Target& target : Fuzzing::targets()) {
        fs::create_directories(folder / target.name);
        const std::vector<std::string> seeds = target.seeds();
        for (std::size_t i = 0; i < seeds.size(); ++i) {
            const fs::path path = folder / target.name / ("seed" + std::to_string(i));
            std::ofstream file(path, std::ios::binary);
            file << seeds[i];
            if (!file.flush()) {
                throw std::runtime_error(path.string() + " cannot be written.");
            }
        }
    }
}

void runFile(const Fuzzing::Target& target, const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error(path.string() + " cannot be read.");
    }
    target.run({std::istreambuf_iterator<char>(file), {}});
}

void run(const Fuzzing::Target& target, const std::vector<std::string>& paths)
{
    for (const fs::path path : paths) {
        if (!fs::is_directory(path)) {
            runFile(target, path);
            continue;
        }
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(path)) {
            if (entry.is_regular_file()) {
                runFile(target, entry.path());
            }
        }
    }
}

}  // namespace

int main(int argc, char** argv)
{
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    try {
        if (arguments == std::vector<std::string>{"list"}) {
            for (const Fuzzing::Target& target : Fuzzing::targets()) {
                std::cout << target.name << '\n';
            }
        } else if (arguments.size() == 2 && arguments[0] == "seeds") {
            writeSeeds(arguments[1]);
        } else if (arguments.size() > 2 && arguments[0] == "run") {
            run(Fuzzing::targetOf(arguments[1]), {arguments.begin() + 2, arguments.end()});
        } else {
            return usage();
        }
    } catch (const std::exception& error) {
        std::cerr << "fuzz_tool: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
