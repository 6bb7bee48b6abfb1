// The columns of a log, found by their names.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "sources/bearings/csvreader.h"

namespace RecStation {

struct LogColumn {
    std::size_t index = 0;
    std::string name;
};

// All of these throw std::runtime_error when a name fits several columns, and when a column that is named is not there.

/// Upper and lower case are alike. A column of just this name counts before one that has a unit behind it.
[[nodiscard]] std::optional<LogColumn> findColumn(const CsvRecord& header, const std::string& name);
/// @param option that names the column
[[nodiscard]] LogColumn requireColumn(const CsvRecord& header, const std::string& name, const char* option);
/// @param name empty: none, also where the standard one is there
/// @param standardName of a column that may be missing while nobody names another one
[[nodiscard]] std::optional<LogColumn> optionalColumn(const CsvRecord& header, const std::optional<std::string>& name,
                                                      const char* standardName, const char* option);
/// The columns of degrees, minutes and seconds, as far as they are named; none without a name and a standard column.
[[nodiscard]] std::vector<LogColumn> angleColumns(const CsvRecord& header, const std::optional<std::string>& names,
                                                  const char* standardName, const char* option);
/// Of a frequency's unit as a column's name tells it; that of MHz where it does not.
[[nodiscard]] double hzPerUnitOf(const std::string& column);

}  // namespace RecStation
