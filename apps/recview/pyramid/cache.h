// Overviews that were made before, kept in the user's cache directory by the content of their recordings. Which
// recording a file is: by what it holds, and by signs that it is the same as before.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "overview.h"

namespace RecView {

/// A checksum of header, types, records and times in hexadecimal digits, the same for every copy of a recording, with
/// any bookmarks. Reads the whole file. Empty when it cannot be read, or changes meanwhile.
[[nodiscard]] std::string contentOf(const std::string& path);

/// What changes when a file is changed, also where size and time of writing are kept.
struct FileStamp {
    std::uint64_t device = 0;
    std::uint64_t number = 0;
    std::int64_t bytes = 0;
    std::int64_t writtenNs = 0;
    std::int64_t touchedNs = 0;

    bool operator==(const FileStamp&) const = default;
    /// Whether there is a file, and a change from now on will be seen: clocks of files go in steps.
    [[nodiscard]] bool isGood() const;
};
[[nodiscard]] FileStamp stampOf(const std::string& path);

/// $XDG_CACHE_HOME/recview, else .cache/recview in the user's home; empty when there is neither.
[[nodiscard]] std::filesystem::path defaultCacheDirectory();

/// A directory of overviews: any thread, and several processes at once. A finished overview gets its name by a
/// renaming, so others see it whole or not at all. It is named by what the recording holds (header, types, records,
/// times; not by its bookmarks, name or place). That a file is the same as before is seen by its device, number, size
/// and times of change, which saves reading it; its content is looked at again where any of them differs. Directory and
/// files are the user's alone. Nothing here is ever an error for who wants an overview: what cannot be kept is made
/// again next time, in temporary files where the directory cannot be used.
class Cache {
public:
    struct Options {
        std::filesystem::path directory = defaultCacheDirectory();
        std::uint64_t bytes = std::uint64_t{4} << 30U;  ///< in all; those used longest ago are removed first
        std::uint32_t version = 0;  ///< of the part's columns: what was made with another one is made anew
    };
    explicit Cache(Options options);

    /// The overview of a finished recording as it was made before; null when there is none, or it is stale or damaged.
    /// At most some 100 ms where the file is the same as before, as long as reading it where it only seems to be.
    [[nodiscard]] std::shared_ptr<Overview> find(const std::string& path);
    /// A store for a new overview, in the cache directory or else in that of temporary files.
    /// @throws std::runtime_error with a sentence when there is room nowhere
    [[nodiscard]] std::unique_ptr<Store> newStore();
    /// Keeps a finished overview for the finished file that it was made of. Recordings below a megabyte are not worth
    /// it. @return whether it was kept
    bool keep(Overview& overview, const std::string& path);

    /// All of it: finds the overview of a finished file, or makes and keeps it.
    /// @param progress called now and then with a share of 1, and what there is so far; gives false to stop
    /// @return null when it was stopped, or the file cannot be read (problem then holds a sentence)
    [[nodiscard]] std::shared_ptr<Overview> overviewOf(
        const std::string& path, const MakePart& makePart, std::string& problem,
        const std::function<bool(double made, const std::shared_ptr<Overview>& soFar)>& progress = {});

private:
    [[nodiscard]] std::filesystem::path overviewPath(const std::string& content) const;
    [[nodiscard]] std::filesystem::path stampPath(const FileStamp& stamp) const;
    [[nodiscard]] std::string knownContent(const FileStamp& stamp) const;
    void noteContent(const FileStamp& stamp, const std::string& content);
    void makeRoom();

    Options m_options;
    bool m_usable = false;
};

}  // namespace RecView
