// All sources of recstation.
#pragma once

#include <memory>
#include <vector>

#include "sources/offeredsource.h"

namespace RecStation {

/// In the order of the help, with their options as they are when nothing was said; the first runs where none is named.
[[nodiscard]] std::vector<std::shared_ptr<OfferedSource>> offeredSources();

}  // namespace RecStation
