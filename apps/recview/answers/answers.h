// What the page asks for: every path below /api/ but the stream of events.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "server/http.h"

namespace RecView {

struct Options {
    std::vector<std::string> paths;  ///< files and directories, UTF-8
    bool edit = false;               ///< bookmarks may be changed
    std::uint64_t cacheBytes =
        std::uint64_t{4'000'000'000};  ///< all that may be kept of overviews; 0: as much as is usual
    std::string cacheDirectory;        ///< empty: the user's own
};

/// Answers requests from several threads at the same time. Of the values that a request needs it has its own; what they
/// share never changes (recordings as they were found), is safe for all threads by itself (overviews), or is used by
/// one at a time (changes of bookmarks). Nothing that takes long is waited for: what is not there yet is told by
/// "made".
class Answers {
public:
    /// Begins to look at the paths and to make overviews, in threads of its own.
    /// @param events must outlive the object
    Answers(const Options& options, Events& events);
    Answers(const Answers&) = delete;
    Answers& operator=(const Answers&) = delete;
    ~Answers();

    /// Never throws for what a request or a recording holds: an error is an answer with a status and a sentence.
    Response operator()(const Request& request);

private:
    struct Private;
    std::unique_ptr<Private> d;
};

}  // namespace RecView
