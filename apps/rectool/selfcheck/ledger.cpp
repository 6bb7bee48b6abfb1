// Two numbers in a mapped file, which outlive the process that counts.
#include "ledger.h"

#include <QByteArray>

namespace RecTool::SelfCheck {

Ledger::Ledger(const QString& path) : m_file(path)
{
    constexpr int Bytes = 2 * sizeof(std::uint64_t);
    if (!m_file.open(QIODevice::ReadWrite)) {
        return;
    }
    const bool isThere = m_file.size() >= Bytes;
    if (isThere || (m_file.write(QByteArray(Bytes, '\0')) == Bytes && m_file.flush())) {
        m_numbers = reinterpret_cast<std::uint64_t*>(m_file.map(0, Bytes));  // as long as the file object lives
    }
}

}  // namespace RecTool::SelfCheck
