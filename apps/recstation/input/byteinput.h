// Where the bytes of a source come from.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <stdexcept>
#include <string>

#include <QString>

namespace RecStation {

/// Gives bytes: how many were put into the buffer, 0 at the end.
using ByteInput = std::function<std::size_t(char* buffer, std::size_t size)>;

/// Thrown by a ByteInput whose bytes cannot be understood from here on; all before were given. Names input and offset.
class DamagedInput : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Reads until the buffer is full or the input ends, as an input may give less than was asked for long before its end.
/// @return how many bytes there were
[[nodiscard]] std::size_t readWhole(const ByteInput& input, std::span<char> buffer);

/// The bytes of a file or, for "-", of the standard input; the wish to stop ends them.
/// @param file UTF-8
/// @throws std::runtime_error when it cannot be opened
[[nodiscard]] ByteInput openInput(const std::string& file);
/// The same of a text: where the bytes begin as those of gzip or Zstandard do, they are unpacked as they are read.
[[nodiscard]] ByteInput openText(const std::string& file);

/// Whether a file is no file but a pipe, a device or the standard input, which give what they have as it comes.
/// @param file UTF-8
[[nodiscard]] bool isStream(const std::string& file);

/// How messages name an input.
[[nodiscard]] std::string inputName(const std::string& file);
/// The name of a file of text without folders, suffix and what tells of its being packed: "night" of "/r/night.csv.gz".
[[nodiscard]] QString textBaseName(const std::string& file);

}  // namespace RecStation
