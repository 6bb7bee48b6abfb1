// Reading recording texts without knowing the value they came from: for tools that show recordings.
#pragma once

#include <memory>
#include <string>

#include <values/valuebase.h>

namespace values {

/// Kind of value that a recording text describes, Unknown when it is none of this library's texts or carries a channel
/// range only. A bearing text gives BearingMap. The structure is judged, not every number in it.
VALUES_EXPORT ValueType RecordedKind(const std::string& text);

/// Whether the text carries a channel range.
VALUES_EXPORT bool CarriesChannelRange(const std::string& text);

/// A new, empty value outside the tree that can take texts of the type by ApplyRecordedState; null for Unknown.
VALUES_EXPORT std::unique_ptr<ValueBase> MakeValue(ValueType type);

}  // namespace values
