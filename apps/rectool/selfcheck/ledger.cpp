#include "ledger.h"

namespace RecTool::SelfCheck {

Ledger::Ledger(const QString& path) : m_file(path)
{
    constexpr qint64 bytes = 2 * sizeof(std::uint64_t);
    if (m_file.open(QIODevice::ReadWrite) && (m_file.size() >= bytes || m_file.resize(bytes))) {
        m_numbers = reinterpret_cast<std::uint64_t*>(m_file.map(0, bytes));  // as long as the file object lives
    }
}

}  // namespace RecTool::SelfCheck
