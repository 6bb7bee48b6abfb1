// Built against a station's own archive client, which configures and moves by itself.
#include <stdexcept>

#include "archiveservice.h"

namespace RecStation {

bool ArchiveService::leftThreadBehind()
{
    return false;
}

std::unique_ptr<ArchiveService> makeArchiveService(const QString& configurationFile)
{
    if (!configurationFile.isEmpty()) {
        throw std::runtime_error(configurationFile.toStdString() +
                                 ": the table [archive] has no meaning here: this program was built with the station's "
                                 "own archive client");
    }
    return nullptr;
}

}  // namespace RecStation
