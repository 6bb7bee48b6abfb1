// The archive that the program asks, by a configuration file.
#include <QByteArray>
#include <QFile>

#include <zelvo/archive.h>

#include "archivedfiles.h"

namespace RecTool {

void useArchive(const std::string& configurationFile)
{
    if (!configurationFile.empty()) {
        Zelvo::SetProcessArchive(
            Zelvo::LoadArchiveConfiguration(QFile::decodeName(QByteArray::fromStdString(configurationFile))));
    }
}

}  // namespace RecTool
