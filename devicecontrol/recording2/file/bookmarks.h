// Bookmarks: moments of a finished recording, marked with a text.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>

#include "../format/cursor.h"
#include "files.h"
#include "keycursor.h"

namespace Recording2 {

/// The table, at most one bookmark a time. The copies of a CFileAccess share it.
class Bookmarks {
public:
    /// A time that has a bookmark keeps its text.
    void add(std::uint64_t time, std::string text) { m_texts.emplace(time, std::move(text)); }
    void remove(std::uint64_t time) { m_texts.erase(time); }
    void clear() { m_texts.clear(); }
    [[nodiscard]] bool empty() const { return m_texts.empty(); }

    void toBegin(KeyCursor& place) const { place.toBegin(m_texts); }
    /// The bookmark at a place, which goes on to the next. @return whether there is a next one; at the end the time and
    /// the text are untouched
    bool next(KeyCursor& place, unsigned long long& time, std::string& text) const;

    /// Adds those from the cursor on to the end of the file.
    void read(Format::Cursor& cursor);
    void write(OutputFile& output) const;

private:
    std::map<std::uint64_t, std::string> m_texts;
};

}  // namespace Recording2
