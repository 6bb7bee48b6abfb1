// A recording that is being written, followed record by record into an overview that grows with it.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include <recording2/inspection/following.h>

#include "overviews.h"
#include "recordedfile.h"

namespace RecView {

/// Used by the thread that looks at recordings. Nothing is locked or written beside the file.
class GrowingFile {
public:
    using State = Recording2::Inspection::Following::State;

    /// @return null, with one sentence, for a file that nobody is writing or that cannot be read
    static std::unique_ptr<GrowingFile> open(const std::string& path, Overviews& overviews, std::string& problem);
    GrowingFile(const GrowingFile&) = delete;
    GrowingFile& operator=(const GrowingFile&) = delete;
    ~GrowingFile();

    /// Takes what was accepted since, but no longer than for a while. @return whether there was anything
    bool follow(std::chrono::milliseconds longest);
    /// It may have more at once: the last call ended because of the time that it took.
    [[nodiscard]] bool hasMore() const { return m_hasMore; }
    [[nodiscard]] State state() const { return m_following.state(); }
    [[nodiscard]] const std::string& finalPath() const { return m_following.finalPath(); }
    /// The file as it is now.
    [[nodiscard]] FilePointer file() const;
    /// Once it is closed: all of the overview, which reads the records from the closed file. Null without one.
    [[nodiscard]] std::shared_ptr<Overview> finish();

private:
    GrowingFile(std::string path, Overviews& overviews, Recording2::Inspection::Following following);

    void take(const Recording2::Inspection::Record& record);
    void begin();

    std::string m_path;
    Overviews& m_overviews;
    Recording2::Inspection::Following m_following;
    std::unique_ptr<OverviewBuilder> m_builder;
    RecordedTypes m_recorded;
    std::uint64_t m_lastTimeMs = 0;
    std::int64_t m_bytes = 0;
    bool m_hasBegun = false;
    bool m_hasMore = true;
};

}  // namespace RecView
