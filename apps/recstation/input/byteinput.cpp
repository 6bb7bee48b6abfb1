// Opening a file or the standard input; a wish to stop ends the read.
#include "input/byteinput.h"

#include <filesystem>
#include <memory>
#include <system_error>

#include <QFileInfo>

#include <system/stopsignal.h>

#include "input/unpacking.h"

namespace RecStation {

std::size_t readWhole(const ByteInput& input, std::span<char> buffer)
{
    std::size_t have = 0;
    std::size_t count = 1;
    while (count > 0 && have < buffer.size()) {
        count = input(buffer.data() + have, buffer.size() - have);
        have += count;
    }
    return have;
}

ByteInput openInput(const std::string& file)
{
    const auto input = std::make_shared<System::InterruptibleInput>(file);
    return [input](char* buffer, std::size_t size) { return input->read(buffer, size); };
}

ByteInput openText(const std::string& file)
{
    return unpackedWhereNeeded(openInput(file), inputName(file));
}

bool isStream(const std::string& file)
{
    std::error_code error;  // what cannot be looked at is told when it is opened
    const auto status = std::filesystem::status(std::filesystem::path(std::u8string(file.begin(), file.end())), error);
    return file == "-" || std::filesystem::is_fifo(status) || std::filesystem::is_character_file(status) ||
           std::filesystem::is_socket(status);
}

std::string inputName(const std::string& file)
{
    return file == "-" ? "the standard input" : file;
}

QString textBaseName(const std::string& file)
{
    const QFileInfo info(QString::fromStdString(file));
    const QString suffix = info.suffix().toLower();
    const bool packed = suffix == QLatin1String("gz") || suffix == QLatin1String("zst");
    return packed ? QFileInfo(info.completeBaseName()).completeBaseName() : info.completeBaseName();
}

}  // namespace RecStation
