// What Python calls: what recordings are, their arrays, the state at a moment, and changes of bookmarks. Times are
// texts as rectool takes them; empty: no bound. The interpreter's lock is given back while files are read.
#pragma once

#include <pybind11/pybind11.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace RecPython {

/// Headers and tables. @throws Refusal
[[nodiscard]] pybind11::dict describeFiles(const std::vector<std::string>& files);
/// A time as text in milliseconds of the axis. @throws Refusal
[[nodiscard]] double momentOf(const std::vector<std::string>& files, const std::string& text);

// Each with what is told of its type. All throw Refusal, Interrupted.

/// The spectra of a type, one array for each of its channel ranges.
/// @param every only the first of so many
/// @param complete levels in force after each record instead of those that it brought
/// @param byRange otherwise more than one range is refused
[[nodiscard]] pybind11::dict spectraOf(const std::vector<std::string>& files, const std::string& keyword,
                                       const std::string& device, const std::string& from, const std::string& to,
                                       std::optional<double> lowHz, std::optional<double> highHz, std::uint64_t every,
                                       bool complete, bool byRange);
/// Every value of a type with its time: numbers as one array, other plain values as texts.
[[nodiscard]] pybind11::dict valuesOf(const std::vector<std::string>& files, const std::string& keyword,
                                      const std::string& device, const std::string& from, const std::string& to);
/// Every bearing that a direction finder took, as "rectool map" takes them.
[[nodiscard]] pybind11::dict bearingsOf(const std::vector<std::string>& files, const std::string& keyword,
                                        const std::string& device, const std::string& from, const std::string& to);
/// The last record of every type up to a time (empty: the end), of each device:
/// [(device, keyword, type number, ms of the axis, value, data), ...].
[[nodiscard]] pybind11::list stateOf(const std::vector<std::string>& files, const std::string& device,
                                     const std::string& at);

// Times in milliseconds of the file, texts UTF-8. Without the interpreter's lock; whole or not at all. @throws Refusal
void addBookmark(const std::string& file, std::uint64_t timeMs, const std::string& text);
void removeBookmark(const std::string& file, std::uint64_t timeMs);
void renameBookmark(const std::string& file, std::uint64_t timeMs, const std::string& text);

}  // namespace RecPython
