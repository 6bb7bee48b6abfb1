// What a program is started with: its arguments and its standard streams.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace System {

/// The arguments after the program's name: bytes as they were given, on Windows UTF-8.
[[nodiscard]] std::vector<std::string> argumentsOf(int argc, const char* const* argv);

/// What becomes of what is written to a stream that the caller closed.
enum class ClosedStream : std::uint8_t { TakesAll, RefusesAll };
/// First thing in main: a closed stream becomes an empty one, so that no other file takes its number, and what is
/// printed is the same bytes on every system (lines end with "\n" alone, text is UTF-8).
void prepareStandardStreams(ClosedStream closed);

enum class Stream : std::uint8_t { Input = 0, Output = 1, Errors = 2 };
/// Whether a person is at the other end.
[[nodiscard]] bool isTerminal(Stream stream);

/// Writing to a pipe whose reader has gone is an error from now on, and does not end the process.
void ignoreBrokenPipes();

}  // namespace System
