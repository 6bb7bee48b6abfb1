// The tables of a file. Each reads its block into the summary and adds what is damaged to the findings.
#pragma once

#include "../../format/bytesource.h"
#include "../inspection.h"

namespace Recording2::Inspection {

class FieldReader;

// Where a block ends: where the next one begins, or the end of the file. 0 for a block that is absent or lies outside
// the file.
std::int64_t recordsEnd(const Header& header, std::int64_t fileSize);
std::int64_t timeTableEnd(const Header& header, std::int64_t fileSize);

// One entry each, with nothing wrong in it.
bool readTypeEntry(FieldReader& fields, TypeEntry& entry);
bool readBookmark(FieldReader& fields, Bookmark& bookmark);

void readTypeTable(Format::ByteSource& source, Summary& summary);
void readTimeTable(Format::ByteSource& source, Summary& summary);
void readChannelRangeTable(Format::ByteSource& source, Summary& summary);
void readBookmarkTable(Format::ByteSource& source, Summary& summary);

}  // namespace Recording2::Inspection
