// Opening a file or the standard input; a wish to stop ends the read.
#include "input/byteinput.h"

#include <memory>

#include <QFileInfo>

#include <system/stopsignal.h>

#include "input/unpacking.h"

namespace RecStation {

ByteInput openInput(const std::string& file)
{
    const auto input = std::make_shared<System::InterruptibleInput>(file);
    return [input](char* buffer, std::size_t size) { return input->read(buffer, size); };
}

ByteInput openText(const std::string& file)
{
    return unpackedWhereNeeded(openInput(file), inputName(file));
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
