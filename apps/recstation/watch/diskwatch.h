// Looks after the room that the disks of a run's recordings have, while it lasts.
#pragma once

#include <QElapsedTimer>

#include "progress.h"
#include "recorders.h"
#include "watch/spacewatch.h"

namespace RecStation {

class DiskWatch {
public:
    DiskWatch(const Recorders& recorders, Messages& messages) : m_recorders(recorders), m_messages(messages) {}

    void start();  ///< with the recording
    /// Warns where a disk fills up; asks the system once a second, however often this is called.
    void check();

private:
    const Recorders& m_recorders;
    Messages& m_messages;
    SpaceWatch m_space{freeSpaceOf};
    QElapsedTimer m_sinceStart;
    QElapsedTimer m_sinceCheck;
};

}  // namespace RecStation
