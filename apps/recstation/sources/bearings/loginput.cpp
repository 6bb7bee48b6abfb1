// Opening a log twice: files anew, what comes from a pipe out of memory.
#include "sources/bearings/loginput.h"

#include <stdexcept>
#include <vector>

#include <QFileInfo>

namespace RecStation {

namespace {

constexpr std::size_t MostKept = 268'435'456;

std::shared_ptr<const std::string> readAll(const std::string& file, const std::string& name)
{
    constexpr std::size_t PieceSize = 65'536;
    const ByteInput input = openInput(file);
    std::vector<char> piece(PieceSize);
    const auto bytes = std::make_shared<std::string>();
    while (const std::size_t count = input(piece.data(), piece.size())) {
        if (bytes->size() + count > MostKept) {
            throw std::runtime_error("bearings: " + name +
                                     " gives more than 256 MiB: store it in a file, which may have any length");
        }
        bytes->append(piece.data(), count);
    }
    return bytes;
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
        return openInput(m_file);
    }
    return [bytes = m_kept, position = std::size_t{0}](char* buffer, std::size_t size) mutable {
        const std::size_t count = bytes->copy(buffer, size, position);
        position += count;
        return count;
    };
}

}  // namespace RecStation
