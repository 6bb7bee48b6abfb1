// What is fuzzed. The targets know nothing of libFuzzer, so that the ordinary tests run them too.
#pragma once

#include <algorithm>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace Fuzzing {

/// Takes any bytes. What the code under test answers is not looked at, only what it must not do; that is thrown as
/// NotKept, and a sanitizer ends the process.
struct Target {
    const char* name;
    void (*run)(const std::string& input);
    std::vector<std::string> (*seeds)();  ///< inputs to begin with
};

/// In the order of their names.
[[nodiscard]] std::span<const Target> targets();
/// @throws std::invalid_argument when there is none of the name
[[nodiscard]] const Target& targetOf(std::string_view name);

/// Something that must hold for any input does not.
class NotKept : public std::logic_error {
    using std::logic_error::logic_error;
};
inline void require(bool kept, const char* what)
{
    if (!kept) {
        throw NotKept(what);
    }
}

// One function a target, and one for its seeds.
void runBearings(const std::string& input);
void runConfiguration(const std::string& input);
void runFeed(const std::string& input);
void runGpsd(const std::string& input);
void runKraken(const std::string& input);
void runJournal(const std::string& input);
void runMapText(const std::string& input);
void runNmea(const std::string& input);
void runPlot(const std::string& input);
void runRecording(const std::string& input);
void runRectool(const std::string& input);
void runRig(const std::string& input);
void runRequests(const std::string& input);
void runSamples(const std::string& input);
void runSweep(const std::string& input);
void runTimes(const std::string& input);
[[nodiscard]] std::vector<std::string> bearingsSeeds();
[[nodiscard]] std::vector<std::string> configurationSeeds();
[[nodiscard]] std::vector<std::string> feedSeeds();
[[nodiscard]] std::vector<std::string> gpsdSeeds();
[[nodiscard]] std::vector<std::string> krakenSeeds();
[[nodiscard]] std::vector<std::string> journalSeeds();
[[nodiscard]] std::vector<std::string> mapTextSeeds();
[[nodiscard]] std::vector<std::string> nmeaSeeds();
[[nodiscard]] std::vector<std::string> plotSeeds();
[[nodiscard]] std::vector<std::string> recordingSeeds();
[[nodiscard]] std::vector<std::string> requestsSeeds();
[[nodiscard]] std::vector<std::string> rigSeeds();
[[nodiscard]] std::vector<std::string> samplesSeeds();
[[nodiscard]] std::vector<std::string> sweepSeeds();
[[nodiscard]] std::vector<std::string> timesSeeds();

}  // namespace Fuzzing
