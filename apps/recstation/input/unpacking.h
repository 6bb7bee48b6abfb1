// Reading what gzip and Zstandard packed, as it comes and in bounded memory.
#pragma once

#include <memory>
#include <string>

#include "input/byteinput.h"

namespace RecStation {

/// Bytes as they are where they are not packed; else what was packed, of all members one behind the other. What is cut
/// off or damaged is thrown as DamagedInput once all before it was given.
/// @param name as messages name the input
/// The first read throws std::runtime_error where the bytes are packed otherwise, or are UTF-16.
[[nodiscard]] ByteInput unpackedWhereNeeded(ByteInput input, const std::string& name);

/// One way of packing. Used by unpackedWhereNeeded.
class Unpacker {
public:
    /// How far a step came.
    struct Step {
        std::size_t taken = 0;
        std::size_t given = 0;
        bool whole = false;        ///< a member ended here
        std::string problem = {};  ///< what was given before it is good
    };

    Unpacker() = default;
    Unpacker(const Unpacker&) = delete;
    Unpacker& operator=(const Unpacker&) = delete;
    virtual ~Unpacker() = default;

    virtual Step step(const char* packed, std::size_t packedSize, char* out, std::size_t outSize) = 0;
};

/// @throws std::runtime_error where this build has no such unpacker
[[nodiscard]] std::unique_ptr<Unpacker> makeGzipUnpacker();
[[nodiscard]] std::unique_ptr<Unpacker> makeZstdUnpacker();

}  // namespace RecStation
