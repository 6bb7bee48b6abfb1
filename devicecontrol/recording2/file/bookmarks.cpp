// The table of bookmarks: walked, read as replay reads it, and written.
#include "bookmarks.h"

#include "blocks.h"

namespace Recording2 {

bool Bookmarks::next(KeyCursor& place, unsigned long long& time, std::string& text) const
{
    if (place.atEnd()) {
        return false;
    }
    const auto bookmark = place.in(m_texts);
    if (bookmark == m_texts.end()) {
        return false;
    }
    time = bookmark->first;
    text = bookmark->second;
    place.advance(m_texts);
    return !place.atEnd();
}

void Bookmarks::read(Format::Cursor& cursor)
{
    std::uint64_t time = 0;
    std::string text;
    while (!cursor.atEnd()) {
        std::int64_t length = 0;  // what a longer table left may end within an entry: that has no text either
        cursor.readTime(time);
        cursor.readNumber(length);
        if (length > 0) {
            cursor.readBytes(text, length);
            m_texts.emplace(time, text);
        }
    }
}

void Bookmarks::write(OutputFile& output) const
{
    for (const auto& [time, text] : m_texts) {
        Blocks::appendBookmark(output, time, text);
    }
}

}  // namespace Recording2
