// The runs of a self-check: a recording process that something happens to, and what is left of its recording.
#pragma once

#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include <QString>

#include "comparison.h"

namespace RecTool::SelfCheck {

/// Of all runs with one kind of fault.
struct FaultReport {
    FaultReport(const char* forPrograms, const char* forPeople) : name(forPrograms), text(forPeople) {}

    const char* name;  ///< for programs
    const char* text;  ///< for people
    std::uint64_t runs = 0;
    std::uint64_t worstLostRecords = 0;  ///< of those that were accepted
    std::uint64_t worstLostMs = 0;       ///< recorded time after the last record that is left
    std::vector<std::string> broken;     ///< a sentence each: where a promise was not held
};

/// Makes the runs in a folder of its own.
class Faults {
public:
    /// @param program this program, which records in processes of its own
    Faults(QString folder, QString program);

    /// Records a run that nothing happens to. @return why that did not work; empty when it did
    [[nodiscard]] std::string makeReference();
    /// Kills the process at a random moment. Then, on copies, cuts the recording, its journal or both at random places.
    void kill(FaultReport& killed, FaultReport& cut);
    /// No file may grow past a random size.
    void fill(FaultReport& filled);

private:
    struct Left;

    [[nodiscard]] QString freshFolder();
    [[nodiscard]] Left record(std::uint64_t killAt, std::uint64_t limitBytes);
    void cutAndRecover(const Left& left, FaultReport& report);
    void judge(const Left& left, const std::string& recovered, bool nothingMayBeLost, FaultReport& report) const;
    [[nodiscard]] std::uint64_t between(std::uint64_t least, std::uint64_t most);

    QString m_folder;
    QString m_program;
    Reference m_reference;
    std::mt19937_64 m_chance{std::random_device{}()};
    int m_runs = 0;
};

}  // namespace RecTool::SelfCheck
