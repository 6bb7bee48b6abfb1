// Opening a log twice: files anew, what comes from a pipe out of memory.
#include "sources/bearings/loginput.h"

#include <stdexcept>
#include <vector>

#include <QFileInfo>

namespace RecStation {

namespace {

constexpr std::size_t MostKept = 268'435'456;

std::shared_ptr<const LogInput::Kept> readAll(const std::string& file, const std::string& name)
{
    constexpr std::size_t PieceSize = 65'536;
    const ByteInput input = openText(file);
    std::vector<char> piece(PieceSize);
    const auto kept = std::make_shared<LogInput::Kept>();
    try {
        while (const std::size_t count = input(piece.data(), piece.size())) {
            if (kept->bytes.size() + count > MostKept) {
                throw std::runtime_error("bearings: " + name +
                                         " gives more than 256 MiB: store it in a file, which may have any length");
            }
            kept->bytes.append(piece.data(), count);
        }
    } catch (const DamagedInput& error) {
        kept->damage = error.what();
    }
    return kept;
}

}  // namespace

LogInput::LogInput(const std::string& file) : m_file(file), m_name(inputName(file))
{
    if (file == "-" || !QFileInfo(QString::fromStdString(file)).isFile()) {
        m_kept = readAll(m_file, m_name);
    }
}

ByteInput LogInput::open() const
{
    if (m_kept == nullptr) {
        return openText(m_file);
    }
    return [kept = m_kept, position = std::size_t{0}](char* buffer, std::size_t size) mutable {
        const std::size_t count = kept->bytes.copy(buffer, size, position);
        position += count;
        if (count == 0 && !kept->damage.empty()) {
            throw DamagedInput(kept->damage);
        }
        return count;
    };
}

}  // namespace RecStation
