// The bytes of a finished recording, and what storing bookmarks and channel ranges makes of them.
#pragma once

#include "support/recordingbytes.h"

namespace ReplayTests {

using Bookmarks = std::map<std::uint64_t, std::string>;
using Times = std::set<std::uint64_t>;

std::string bookmarkTable(const Bookmarks& bookmarks);
std::string rangeTable(const Times& times);

/// Written without the library under test, to judge it.
class FinishedFile {
public:
    /// @param closed the bytes of a recording as it was closed, without bookmarks
    explicit FinishedFile(const std::string& closed);

    void storeBookmarks(const Bookmarks& bookmarks);
    void clearRanges();
    void rebuildRanges(const Times& times);

    [[nodiscard]] Bookmarks bookmarksRead() const;
    [[nodiscard]] Times rangesRead() const;
    [[nodiscard]] const std::string& bytes() const { return m_bytes; }
    [[nodiscard]] const TestSupport::HeaderFields& header() const { return m_header; }
    /// Writes something that no reader looks at into the header area: it is gone once the header was written anew.
    void markHeaderArea();

private:
    void overwrite(std::int32_t position, const std::string& bytes);
    void rewriteHeader();

    std::string m_bytes;
    TestSupport::HeaderFields m_header;
};

}  // namespace ReplayTests
