// What a build without zlib and libzstd says of packed files.
#include "input/unpacking.h"

namespace RecStation {

std::unique_ptr<Unpacker> makeGzipUnpacker()
{
    throw std::runtime_error("the input is packed by gzip, which this build cannot read: unpack it first");
}

std::unique_ptr<Unpacker> makeZstdUnpacker()
{
    throw std::runtime_error("the input is packed by zstd, which this build cannot read: unpack it first");
}

}  // namespace RecStation
