// Columns of text on a terminal.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace RecTool {

/// Lines whose columns stand below each other. The first line is the heading.
class Table {
public:
    enum class Align : unsigned char { Left, Right };

    explicit Table(std::vector<Align> columns) : m_columns(std::move(columns)) {}
    /// One text a column, UTF-8; whatever it holds, it stays in its cell.
    void add(std::vector<std::string> cells);
    void print(std::ostream& out, const std::string& indent) const;

private:
    std::vector<Align> m_columns;
    std::vector<std::vector<std::string>> m_lines;
};

[[nodiscard]] std::size_t width(const std::string& utf8);                        ///< characters
[[nodiscard]] std::string padded(std::string utf8, std::size_t columns);         ///< filled up after
[[nodiscard]] std::string paddedInFront(std::string utf8, std::size_t columns);  ///< filled up in front

}  // namespace RecTool
