// Where the bytes of a source come from.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace RecStation {

/// Gives bytes: how many were put into the buffer, 0 at the end.
using ByteInput = std::function<std::size_t(char* buffer, std::size_t size)>;

/// The bytes of a file or, for "-", of the standard input; the wish to stop ends them.
/// @param file UTF-8
/// @throws std::runtime_error when it cannot be opened
[[nodiscard]] ByteInput openInput(const std::string& file);

/// How messages name an input.
[[nodiscard]] std::string inputName(const std::string& file);

}  // namespace RecStation
