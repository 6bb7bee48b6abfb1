// An input of recstation's sources over a text, which comes in pieces as from a pipe.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

#include <input/byteinput.h>

namespace TestSupport {

[[nodiscard]] inline RecStation::ByteInput textInput(std::string text, std::size_t pieceSize = std::string::npos)
{
    return [text = std::move(text), pieceSize, position = std::size_t{0}](char* buffer, std::size_t size) mutable {
        const std::size_t count = std::min({pieceSize, size, text.size() - position});
        std::copy_n(text.data() + position, count, buffer);
        position += count;
        return count;
    };
}

}  // namespace TestSupport
