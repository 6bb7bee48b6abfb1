// The recording of a self-check: a station whose every step is known beforehand, the real recorder, and a
// ledger of what it accepted.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include <QFile>
#include <QString>

namespace RecTool::SelfCheck {

/// Two numbers in a file that both processes map: they stand there from the moment at which they are set.
class Ledger {
public:
    /// Makes the file, or opens the one that is there.
    explicit Ledger(const QString& path);

    [[nodiscard]] bool isOpen() const { return m_numbers != nullptr; }
    [[nodiscard]] QString problem() const { return m_file.errorString(); }
    /// Steps whose records the recorder has accepted.
    [[nodiscard]] std::uint64_t accepted() const { return number(0).load(); }
    void setAccepted(std::uint64_t steps) { number(0).store(steps); }
    /// The recorder has ended the recording by itself.
    [[nodiscard]] bool stopped() const { return number(1).load() != 0; }
    void setStopped() { number(1).store(1); }

private:
    [[nodiscard]] std::atomic_ref<std::uint64_t> number(int index) const
    {
        return std::atomic_ref<std::uint64_t>(m_numbers[index]);
    }

    QFile m_file;
    std::uint64_t* m_numbers = nullptr;
};

/// Steps of the longest run: about 20 MB of records.
constexpr std::uint64_t Steps = 80'000;

/// What the process of a run does: records a record a step, the same in every run, until it is killed, all steps are
/// done or writing fails, and notes in the folder's ledger what was accepted. After the last step it waits for the end
/// of its standard input.
/// @param limitBytes no file may grow past it; 0: no limit
/// @return whether it could record
bool recordForSelfCheck(const std::string& folder, std::uint64_t limitBytes);

/// Name of the ledger in the folder.
constexpr const char* LedgerName = "ledger";

}  // namespace RecTool::SelfCheck
