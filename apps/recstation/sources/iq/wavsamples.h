// The samples of WAV and RF64 files.
#pragma once

#include <QString>

#include "input/byteinput.h"
#include "sources/iq/knownsamples.h"

namespace RecStation {

[[nodiscard]] bool isWav(const QString& file);  ///< by its first bytes; false where it cannot be read

/// What a file's header tells, by a receiver's own chunk too.
struct KnownWav {
    KnownSamples known;          ///< as cf32_le, which openWav gives
    bool cut = false;            ///< the header promises more samples
    bool neverFinished = false;  ///< the header says nothing of their number
    bool unknownAuxi = false;    ///< the receiver's own chunk is of another form
};

/// @throws std::runtime_error with a sentence: a header that is damaged, another number of channels than two, a
/// compressed format
[[nodiscard]] KnownWav readWav(const QString& file);
/// I and Q as cf32_le, of full scale 1 (8 bits: 128 is 0). @throws std::runtime_error
[[nodiscard]] ByteInput openWav(const QString& file);

}  // namespace RecStation
