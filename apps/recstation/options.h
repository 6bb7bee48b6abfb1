// What the command line asks for.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "input/badlines.h"
#include "sources/offeredsource.h"
#include "stationfile.h"

namespace RecStation {

/// Exit codes of the program.
enum class ExitCode : std::uint8_t {
    Success = 0,
    Usage = 1,       ///< the command line is wrong
    CannotRun = 2,   ///< nothing could be recorded, or the run broke off
    Incomplete = 3,  ///< it ran, but input was bad or a file is not properly written
};

enum class Task : std::uint8_t {
    Record,
    Check,  ///< tell what would be recorded
};

/// The file that a run was started with.
struct GivenFile {
    std::string path;                    ///< empty: none
    std::optional<std::string> content;  ///< nothing where it cannot be read
    std::string problem;                 ///< why its options cannot be used; else empty
    std::string tables;                  ///< the recorders' tables where they are not those of the content
    bool builtIn = false;                ///< it has no recorders, and needs none
    bool hasArchive = false;
    KeyLines lines;
};

/// All texts are UTF-8.
struct Options {
    std::string plugin;  ///< empty: the one beside the program
    GivenFile file;
    std::string output;                     ///< empty: as configured
    std::vector<std::string> recorders;     ///< to switch on; empty: those that suit the sources
    std::optional<double> speed;            ///< nothing: as fast as possible
    std::optional<double> durationSeconds;  ///< of a live run; nothing: until somebody stops it
    double archiveWaitSeconds = 60;         ///< for the archive, at the end of the run
    double checkSeconds = 5;                ///< how long a source may take to show something, in a check
    std::string splitOnGap;                 ///< as it was given; empty: do not
    std::optional<unsigned long long>
        splitGapUs;       ///< the same: begin new recordings where time leaps farther, to and fro
    std::string journal;  ///< "process", "power" or "off"; empty: as configured
    ChosenSources sources;
    int viewPort = 0;  ///< 0: one that is free
    Task task = Task::Record;
    bool printConfig = false;
    bool sourceTime = false;  ///< of a live run: record the peers' times
    bool json = false;
    bool quiet = false;
    bool trace = false;
    bool view = false;        ///< show in the browser what is recorded
    bool makeOutput = false;  ///< make the directory of output
    bool allowGap = false;    ///< record sources together that measured at other times
    bool recover = true;      ///< recordings that earlier runs left unfinished
};

}  // namespace RecStation
