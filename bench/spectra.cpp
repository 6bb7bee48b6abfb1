// How long a program in C++ takes to read all spectra of a recording, which the Python module is compared with.
// bench/run calls it: spectra_bench FILE prints JSON.
#include <chrono>
#include <cmath>
#include <cstdint>
#include <iostream>
#include <span>

#include "rectool/replay/recordings.h"

int main(int count, char** arguments)
{
    if (count != 2) {
        std::cerr << "spectra_bench: give one recording\n";
        return 1;
    }
    const auto begin = std::chrono::steady_clock::now();
    RecTool::RecordingsOptions options;
    options.files = {arguments[1]};
    RecTool::Recordings recordings(options, 1);
    const auto types =
        recordings.state() == RecTool::ExitCode::Fine ? recordings.takeTypes({"RFSPECTRUM"}) : std::nullopt;
    if (!types) {
        return 1;
    }
    std::uint64_t spectra = 0;
    double sum = 0;  // every level is looked at
    recordings.walk([&](const RecTool::PlacedRecord& placed) {
        const RecTool::LevelMap* const map = placed.type == types->front() ? placed.carriedLevels() : nullptr;
        bool isMeasured = false;
        for (const float level : map == nullptr ? std::span<const float>() : map->GetCells()) {
            isMeasured = isMeasured || !std::isnan(level);
            sum += std::isnan(level) ? 0 : double{level};
        }
        spectra += isMeasured ? 1 : 0;
    });
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    std::cout << "{\"seconds\": " << seconds << ", \"spectra\": " << spectra << ", \"sum\": " << sum << "}\n";
    return 0;
}
