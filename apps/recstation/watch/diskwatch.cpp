// Summing up what is recorded into every directory, for the watch of its space.
#include "watch/diskwatch.h"

#include <map>

namespace RecStation {

void DiskWatch::start()
{
    m_sinceStart.start();
    m_sinceCheck.start();
}

void DiskWatch::check()
{
    constexpr qint64 CheckMs = 1'000;
    if (m_sinceCheck.elapsed() < CheckMs) {
        return;
    }
    m_sinceCheck.restart();
    std::map<QString, std::int64_t> written;
    for (const auto& recorder : m_recorders.all()) {
        if (recorder->isOn()) {
            written[recorder->directory()];
        }
        for (const QString& path : recorder->temporaryPaths()) {
            const auto found = written.find(recorder->directory());
            if (found != written.end()) {
                found->second += bytesRecorded(path);
            }
        }
    }
    for (const auto& [directory, bytes] : written) {
        const QString warning = m_space.check(directory, bytes, m_sinceStart.elapsed());
        if (!warning.isEmpty()) {
            m_messages.message(warning);
        }
    }
}

}  // namespace RecStation
