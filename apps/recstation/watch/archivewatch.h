// The archive of a run, where there is one: waited for at the beginning, and for what it took over at the end.
#pragma once

#include <chrono>
#include <memory>

#include "archive/archiveservice.h"
#include "progress.h"
#include "summary.h"

namespace RecStation {

class ArchiveWatch {
public:
    /// @param configurationFile as makeArchiveService takes it
    /// @param wait for the archive, at the end of the run
    /// @throws std::runtime_error when the configuration is wrong
    ArchiveWatch(const QString& configurationFile, std::chrono::milliseconds wait);

    /// Waits for a while until it is set up; recording goes on without it.
    void begin(Messages& messages);
    /// To be called when all recordings are closed and in the summary; puts there what became of them.
    void finish(Summary& summary);

private:
    std::unique_ptr<ArchiveService> m_service;  // null without one
    std::chrono::milliseconds m_wait;
};

}  // namespace RecStation
