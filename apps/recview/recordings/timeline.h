// Recordings as people see them: the files that a recorder split one into, as one on a common time axis.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "recordedfile.h"

namespace RecView {

/// The files of one recording in the order of their times; at least one.
struct Timeline {
    std::string id;  ///< of the first file's name; no other timeline has it
    std::vector<FilePointer> files;

    [[nodiscard]] double startMs() const { return static_cast<double>(files.front()->startMs); }
    [[nodiscard]] double endMs() const;
    [[nodiscard]] bool isLive() const { return files.back()->live; }
    [[nodiscard]] bool timesKnown() const;
    /// What was recorded in any of the files, with the frequencies of all.
    [[nodiscard]] RecordedTypes recorded() const;
    /// The number of the file that is in force at a moment: the last that had begun, or the first one.
    [[nodiscard]] std::size_t fileAt(double ms) const;
};

/// Files of one device in one folder that follow each other within ten seconds, each begun after the end of the one
/// before, are one recording.
[[nodiscard]] std::vector<Timeline> makeTimelines(std::vector<FilePointer> files);

/// A file that cannot be shown, or not whole.
struct Problem {
    std::string name;
    std::string error;  ///< one sentence, and what to do about it
};

/// What there is at a moment. It never changes.
struct Listing {
    std::vector<Timeline> timelines;
    std::vector<Problem> problems;

    /// Null where there is none of that name.
    [[nodiscard]] const Timeline* find(const std::string& id) const;
};

using ListingPointer = std::shared_ptr<const Listing>;

}  // namespace RecView
