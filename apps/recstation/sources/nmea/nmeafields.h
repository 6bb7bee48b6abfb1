// Fields of NMEA 0183 sentences as numbers, times and angles; an empty field is nothing.
#pragma once

#include <optional>
#include <string_view>

#include "published/fix.h"
#include "sources/nmea/nmeasentence.h"

namespace RecStation::NmeaFields {

// All throw LineError when a field is there and cannot be read; "what" names it then.

[[noreturn]] void refuse(const char* what, std::string_view field);
[[nodiscard]] std::optional<double> number(std::string_view field, const char* what, double lowest, double highest);
/// hhmmss with any fraction; microseconds since midnight. The second 60 is a leap second.
[[nodiscard]] std::optional<long long> time(std::string_view field);
/// ddmmyy; days since 1970. Years from 80 on are of the 20th century.
[[nodiscard]] std::optional<long long> date(std::string_view field);
/// dd, mm and yyyy; days since 1970.
[[nodiscard]] std::optional<long long> date(std::string_view day, std::string_view month, std::string_view year);
/// Latitude, half, longitude, half from the field on: both, or neither.
void position(const NmeaSentence& sentence, std::size_t first, Fix& fix);
/// Metres above mean sea level; the field behind it is the unit.
[[nodiscard]] std::optional<double> altitude(std::string_view field);
[[nodiscard]] std::optional<double> speed(std::string_view field);  ///< in the unit of the field
[[nodiscard]] std::optional<double> knots(std::string_view field);  ///< metres a second
[[nodiscard]] std::optional<double> heading(std::string_view field);
/// A magnetic deviation or variation, which is added to a heading: east is positive. No letter, no number: none.
[[nodiscard]] std::optional<double> easterly(std::string_view field, std::string_view side, const char* what);
[[nodiscard]] std::optional<double> roll(std::string_view field);
[[nodiscard]] std::optional<double> pitch(std::string_view field);

}  // namespace RecStation::NmeaFields
