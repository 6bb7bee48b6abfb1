// Columns of text on a terminal.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace RecTool {

/// Lines whose columns stand below each other. The first line is the heading.
class Table {
public:
    /// @param columns a letter each, l or r: where its texts stand
    Table(std::string columns, std::vector<std::string> heading) : m_columns(std::move(columns))
    {
        add(std::move(heading));
    }
    /// One text a column, UTF-8; whatever it holds, it stays in its cell.
    void add(std::vector<std::string> cells);
    /// On standard output.
    void print(const std::string& indent = {}) const;

private:
    std::string m_columns;
    std::vector<std::vector<std::string>> m_lines;
};

[[nodiscard]] std::size_t width(const std::string& utf8);                        ///< characters
[[nodiscard]] std::string padded(std::string utf8, std::size_t columns);         ///< filled up after
[[nodiscard]] std::string paddedInFront(std::string utf8, std::size_t columns);  ///< filled up in front

}  // namespace RecTool
