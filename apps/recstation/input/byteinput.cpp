// Opening a file or the standard input; a wish to stop ends the read.
#include "input/byteinput.h"

#include <memory>

#include <system/stopsignal.h>

namespace RecStation {

ByteInput openInput(const std::string& file)
{
    const auto input = std::make_shared<System::InterruptibleInput>(file);
    return [input](char* buffer, std::size_t size) { return input->read(buffer, size); };
}

std::string inputName(const std::string& file)
{
    return file == "-" ? "the standard input" : file;
}

}  // namespace RecStation
