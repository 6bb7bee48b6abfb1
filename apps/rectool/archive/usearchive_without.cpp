// An archive of the station's own is configured by itself.
#include <stdexcept>

#include "archivedfiles.h"

namespace RecTool {

void useArchive(const std::string& configurationFile)
{
    if (!configurationFile.empty()) {
        throw std::runtime_error(
            "--archive-config has no meaning: this rectool was built with the station's own "
            "archive client, which is configured elsewhere");
    }
}

}  // namespace RecTool
