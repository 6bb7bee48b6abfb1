// Built against a station's own archive client, which has tools of its own.
#include <stdexcept>

#include "archive.h"
#include "archivedfiles.h"

namespace RecTool {

namespace {

[[noreturn]] ExitCode refuse(const ArchiveOptions& /*options*/)
{
    throw std::runtime_error("this rectool was built with the station's own archive client, which has its own tools");
}

}  // namespace

void useArchive(const std::string& configurationFile)
{
    if (!configurationFile.empty()) {
        throw std::runtime_error(
            "--archive-config has no meaning: this rectool was built with the station's own "
            "archive client, which is configured elsewhere");
    }
}

const ArchiveWork ArchiveVerbs{refuse, refuse, refuse, refuse, refuse, refuse};

}  // namespace RecTool
