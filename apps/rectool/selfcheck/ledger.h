// What a recording process has been promised, known also after it was killed.
#pragma once

#include <atomic>
#include <cstdint>

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

}  // namespace RecTool::SelfCheck
