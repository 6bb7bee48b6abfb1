// The runs of a self-check: a recording process that something happens to, what is left of its recording, and how
// that compares with one that nothing disturbed.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include <recording2/inspection/inspection.h>
#include <QString>

namespace RecTool::SelfCheck {

/// The records of a run that nothing disturbed: those of every other run begin as they do.
struct Reference {
    Recording2::Inspection::Header header;
    std::vector<Recording2::Inspection::Record> records;
    std::uint64_t states = 0;  ///< records before the first step's
    std::string problem;       ///< why there is none

    /// @param steps that the run made
    static Reference read(const std::string& path, std::uint64_t steps);
    /// Recorded time of the last of so many records.
    [[nodiscard]] std::uint64_t timeOf(std::uint64_t records) const;
};

/// How a recording stands to the reference.
struct Comparison {
    std::string problem;           ///< what was never recorded is in it, or it cannot be read; empty otherwise
    std::uint64_t records = 0;     ///< that it holds
    bool isBeginning = false;      ///< none is left out from the first to the last, and their times are right
    std::uint64_t exactTimes = 0;  ///< records whose time is the recorded one
};

/// Every record must be one of the reference's, in their order.
Comparison compare(const std::string& path, const Reference& reference);

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
