// What random recordings are made of, the same on every platform.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "support/recordingbytes.h"

namespace DifferentialTests {

using TestSupport::HeaderFields;
using TestSupport::TypeFields;

/// Random choices that are the same on every platform.
class Dice {
public:
    explicit Dice(std::uint64_t seed) : m_engine(seed) {}

    std::uint64_t any() { return m_engine(); }
    std::uint64_t below(std::uint64_t count) { return m_engine() % count; }
    bool oneIn(std::uint64_t count) { return below(count) == 0; }
    template <typename T>
    const T& of(const std::vector<T>& items)
    {
        return items[below(items.size())];
    }
    std::int32_t int32()
    {
        const std::int32_t bits = static_cast<std::int32_t>(static_cast<std::uint32_t>(any()));
        return oneIn(2) ? bits : bits % 100;
    }
    /// Any bytes, those more often that mean something to a reader.
    std::string bytes(std::size_t count)
    {
        static const std::string special("#\0#0123456789-+ \n\r\x1a", 19);
        std::string text(count, '\0');
        std::generate(text.begin(), text.end(),
                      [this] { return oneIn(3) ? special[below(special.size())] : static_cast<char>(below(256)); });
        return text;
    }
    std::string name(std::size_t longest)
    {
        std::string text = bytes(below(longest + 1));
        std::replace(text.begin(), text.end(), '\0', 'n');
        return text;
    }

private:
    std::mt19937_64 m_engine;
};

struct Stored {
    std::int32_t code = 0;
    std::string data;
    std::uint64_t time = 0;
    bool rangeDef = false;
};

/// What one random recording is made of.
struct Script {
    HeaderFields header;
    std::optional<std::vector<TypeFields>> types;
    std::vector<Stored> records;
    bool sound = true;  ///< the header record fits into its area and its texts hold no NUL
};

[[nodiscard]] Script randomScript(Dice& dice);

}  // namespace DifferentialTests
