// A disk that is full, without filling one.
#pragma once

#include <cstdint>

namespace RecTool {

/// Whether this system can limit the size of files.
[[nodiscard]] bool canLimitFileSize();
/// From now on no file of this process grows past a size: writing there fails as on a full disk.
/// @return false where that is not possible
[[nodiscard]] bool limitFileSize(std::uint64_t bytes);

}  // namespace RecTool
