// What the page asks for: every path below /api/ but the stream of events.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "server/http.h"

namespace RecView {

struct Options {
    std::vector<std::string> paths;    ///< files, directories, archive addresses
    bool edit = false;                 ///< bookmarks may be changed
    std::uint64_t cacheBytes = 0;      ///< all that may be kept of overviews; 0: as much as is usual
    std::string cacheDirectory;        ///< empty: the user's own
    std::string archiveConfiguration;  ///< empty: that of the environment
};

/// Answers requests from several threads at the same time. Of the values that a request needs it has its own; what they
/// share never changes (recordings as they were found), is safe for all threads by itself (overviews), or is used by
/// one at a time (changes of bookmarks). Nothing that takes long is waited for: what is not there yet is told by
/// "made".
class Answers {
public:
    /// Begins to look at the paths and to make overviews, in threads of its own.
    /// @param events must outlive the object
    /// @throws std::runtime_error with a sentence when an archive address cannot be resolved
    Answers(Options options, Events& events);
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
