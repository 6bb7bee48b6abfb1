// Reading the type table as replay reads it.
#pragma once

#include "../format/cursor.h"
#include "../recordmodel.h"

namespace Recording2 {

/// Adds the entries of the block at the cursor. Past the end of the file there is nothing more to read, whatever the
/// count says.
void readTypes(Format::Cursor& cursor, CVTTypesData& types);

}  // namespace Recording2
