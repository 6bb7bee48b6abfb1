// Telling packed bytes by how they begin, and feeding an unpacker.
#include "input/unpacking.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

namespace RecStation {

namespace {

using namespace std::string_view_literals;

/// How bytes begin that are no plain text, and what becomes of them.
struct Packing {
    std::string_view magic;
    std::unique_ptr<Unpacker> (*unpacker)();  // null: refused
    const char* why = "";
};

constexpr std::array Packings = {
    Packing{"\x1f\x8b"sv, makeGzipUnpacker},
    Packing{"\x28\xb5\x2f\xfd"sv, makeZstdUnpacker},
    Packing{"\xff\xfe"sv, nullptr, "is UTF-16 text: store it as UTF-8"},
    Packing{"\xfe\xff"sv, nullptr, "is UTF-16 text: store it as UTF-8"},
    Packing{"PK\x03\x04"sv, nullptr, "is a zip archive or a spreadsheet: unpack it, or export it as CSV"},
    Packing{"\xfd"
            "7zXZ"sv,
            nullptr, "is packed by xz: unpack it (gzip and Zstandard are read as they are)"},
    Packing{"BZh"sv, nullptr, "is packed by bzip2: unpack it (gzip and Zstandard are read as they are)"},
};

class UnpackedInput {
public:
    UnpackedInput(ByteInput input, std::string name) : m_input(std::move(input)), m_name(std::move(name)) {}

    std::size_t read(char* buffer, std::size_t size)
    {
        if (!m_begun) {
            begin();
        }
        return m_unpacker == nullptr ? readPlain(buffer, size) : readPacked(buffer, size);
    }

private:
    // Reads no more than it needs to know: a pipe's first line may be all there is for a while.
    void begin()
    {
        m_begun = true;
        char byte = 0;
        do {
            if (m_input(&byte, 1) == 0) {
                break;
            }
            m_buffer.push_back(byte);
        } while (mayBeMore());
        const auto* const found = std::find_if(Packings.begin(), Packings.end(),
                                               [this](const Packing& packing) { return begins(packing.magic); });
        if (found != Packings.end() && found->unpacker == nullptr) {
            throw std::runtime_error(m_name + " " + found->why);
        }
        m_unpacker = found == Packings.end() ? nullptr : found->unpacker();
    }

    // Whether more bytes would tell what it is.
    [[nodiscard]] bool mayBeMore() const
    {
        return std::any_of(Packings.begin(), Packings.end(), [this](const Packing& packing) {
            return mayBegin(packing.magic) && !begins(packing.magic);
        });
    }
    bool fill()
    {
        constexpr std::size_t PieceSize = std::size_t{64} * 1024;
        m_position = 0;
        m_buffer.resize(PieceSize);
        m_buffer.resize(m_input(m_buffer.data(), m_buffer.size()));
        return !m_buffer.empty();
    }
    [[nodiscard]] bool mayBegin(std::string_view magic) const
    {
        const auto length = std::min(magic.size(), m_buffer.size());
        return std::equal(m_buffer.begin(), m_buffer.begin() + static_cast<std::ptrdiff_t>(length), magic.begin());
    }
    [[nodiscard]] bool begins(std::string_view magic) const
    {
        return m_buffer.size() >= magic.size() && mayBegin(magic);
    }
    std::size_t readPlain(char* buffer, std::size_t size)
    {
        if (m_position == m_buffer.size()) {
            return m_input(buffer, size);
        }
        const std::size_t count = std::min(size, m_buffer.size() - m_position);
        std::copy_n(m_buffer.begin() + static_cast<std::ptrdiff_t>(m_position), count, buffer);
        m_position += count;
        return count;
    }
    std::size_t readPacked(char* buffer, std::size_t size)
    {
        while (m_problem.empty()) {
            if (m_position == m_buffer.size() && !fill()) {
                if (m_inMember) {
                    fail("ends too early, at byte " + std::to_string(m_consumed));
                }
                return 0;
            }
            Unpacker::Step step =
                m_unpacker->step(m_buffer.data() + m_position, m_buffer.size() - m_position, buffer, size);
            m_position += step.taken;
            m_consumed += step.taken;
            m_inMember = !step.whole;
            m_problem = std::move(step.problem);
            if (step.given > 0) {
                return step.given;
            }
        }
        fail("is damaged at byte " + std::to_string(m_consumed) + ": " + m_problem);
    }
    [[noreturn]] void fail(const std::string& problem) const
    {
        throw DamagedInput("the compressed data of " + m_name + " " + problem);
    }

    ByteInput m_input;
    std::string m_name;
    std::unique_ptr<Unpacker> m_unpacker;  // nothing: the bytes are not packed
    std::vector<char> m_buffer;
    std::size_t m_position = 0;    // of the next byte in the buffer
    std::uint64_t m_consumed = 0;  // packed bytes, before that
    bool m_begun = false;
    bool m_inMember = false;
    std::string m_problem;
};

}  // namespace

ByteInput unpackedWhereNeeded(ByteInput input, const std::string& name)
{
    const auto unpacked = std::make_shared<UnpackedInput>(std::move(input), name);
    return [unpacked](char* buffer, std::size_t size) { return unpacked->read(buffer, size); };
}

}  // namespace RecStation
