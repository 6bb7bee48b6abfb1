// From a station's journal to the registry it shares with others.
#pragma once

#include <cstdint>
#include <functional>

#include "registry.h"

namespace Zelvo {

/// How many groups and files of the journal the shared registry has not heard of.
[[nodiscard]] std::int64_t unpublished(Registry& journal);
void publish(Registry& journal, Registry& shared);
/// Forgets in the journal what needs no more of it.
void prune(Registry& journal, Registry& shared, const std::function<bool(const QString&)>& ownerLives);

}  // namespace Zelvo
