// The checksum of the library xxHash, compiled here: it has no part at run time.
#include "checksum.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

namespace Recording2::Format {

std::uint64_t checksum(std::uint64_t seed, std::string_view bytes)
{
    return XXH3_64bits_withSeed(bytes.data(), bytes.size(), seed);
}

}  // namespace Recording2::Format
