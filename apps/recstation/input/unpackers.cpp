// The unpackers of gzip (zlib) and Zstandard (libzstd).
#include <algorithm>
#include <limits>
#include <new>

#include <zlib.h>
#include <zstd.h>

#include "input/unpacking.h"

namespace RecStation {

namespace {

class GzipUnpacker final : public Unpacker {
public:
    GzipUnpacker()
    {
        constexpr int GzipOnly = 16;
        if (inflateInit2(&m_stream, MAX_WBITS + GzipOnly) != Z_OK) {
            throw std::bad_alloc();
        }
    }
    GzipUnpacker(const GzipUnpacker&) = delete;
    GzipUnpacker& operator=(const GzipUnpacker&) = delete;
    ~GzipUnpacker() override { inflateEnd(&m_stream); }

    Step step(const char* packed, std::size_t packedSize, char* out, std::size_t outSize) override
    {
        // zlib takes its input as bytes that may change, and leaves them as they are.
        m_stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed));  // NOLINT(*-const-cast)
        m_stream.avail_in = bounded(packedSize);
        m_stream.next_out = reinterpret_cast<Bytef*>(out);
        m_stream.avail_out = bounded(outSize);
        const int result = inflate(&m_stream, Z_NO_FLUSH);
        Step step{.taken = bounded(packedSize) - m_stream.avail_in, .given = bounded(outSize) - m_stream.avail_out};
        if (result == Z_STREAM_END) {
            step.whole = true;
            inflateReset(&m_stream);
        } else if (result != Z_OK && result != Z_BUF_ERROR) {
            step.problem = m_stream.msg != nullptr ? m_stream.msg : "it is not gzip";
        }
        return step;
    }

private:
    static uInt bounded(std::size_t size)
    {
        return static_cast<uInt>(std::min<std::size_t>(size, std::numeric_limits<uInt>::max()));
    }

    z_stream m_stream{};
};

class ZstdUnpacker final : public Unpacker {
public:
    ZstdUnpacker()
    {
        if (m_stream == nullptr) {
            throw std::bad_alloc();
        }
    }

    Step step(const char* packed, std::size_t packedSize, char* out, std::size_t outSize) override
    {
        ZSTD_inBuffer from{packed, packedSize, 0};
        ZSTD_outBuffer to{out, outSize, 0};
        const std::size_t result = ZSTD_decompressStream(m_stream.get(), &to, &from);
        Step step{.taken = from.pos, .given = to.pos, .whole = result == 0, .problem = {}};
        if (ZSTD_isError(result) != 0U) {
            step.problem = ZSTD_getErrorName(result);
        }
        return step;
    }

private:
    struct Free {
        void operator()(ZSTD_DStream* stream) const { ZSTD_freeDStream(stream); }
    };

    std::unique_ptr<ZSTD_DStream, Free> m_stream{ZSTD_createDStream()};
};

}  // namespace

std::unique_ptr<Unpacker> makeGzipUnpacker()
{
    return std::make_unique<GzipUnpacker>();
}

std::unique_ptr<Unpacker> makeZstdUnpacker()
{
    return std::make_unique<ZstdUnpacker>();
}

}  // namespace RecStation
