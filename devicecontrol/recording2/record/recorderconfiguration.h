// What a station's configuration says of a recorder.
#pragma once

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include <QString>

#include <system/nativefile.h>

#include "../file/journal.h"

class ICfg;

namespace Recording2 {

struct RecorderConfiguration {
    QString valuePath;        ///< root of the device's values
    QString statusValuePath;  ///< root of the recorder's own
    QString recordingPath;
    bool fileNameFormat83 = false;       ///< published; names are the same with it
    std::int32_t maxFileLength = 0;      ///< read and kept, not consulted
    std::int32_t fileExpandingSize = 0;  ///< the same
    std::int64_t diskExpandingSize = 0;  ///< the same
    JournalMode journal = JournalMode::Process;
    System::FileMode fileMode = System::DefaultFileMode;
    /// Keywords and paths to be recorded, where the configuration names them; else the recorder's stay as they are.
    std::optional<std::vector<std::pair<QString, QString>>> values;

    /// A value that none of these can be is traced and has its default; a key of another type throws VKException.
    void read(const ICfg& cfg);
    /// Of a recorder without a configuration.
    void useNone();
    /// Fills in the paths that were left empty; an empty status path stays, and moves the value path.
    void useDefaultPaths();

private:
    void readRecordingPath(const ICfg& cfg);
    void readJournalMode(const ICfg& cfg);
    void readFileMode(const ICfg& cfg);
    void readValues(const ICfg& section);
};

}  // namespace Recording2
