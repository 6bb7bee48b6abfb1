// Padding UTF-8 cells to the width of their column, and printing them line by line.
#include "table.h"

#include <algorithm>
#include <iostream>
#include <utility>

#include <terminaltext/terminaltext.h>

#include "style.h"

namespace RecTool {

std::size_t width(const std::string& utf8)
{
    // Every byte but those that continue a character.
    return static_cast<std::size_t>(std::count_if(
        utf8.begin(), utf8.end(), [](char byte) { return (static_cast<unsigned char>(byte) & 0xc0U) != 0x80U; }));
}

std::string padded(std::string utf8, std::size_t columns)
{
    utf8.append(columns - std::min(columns, width(utf8)), ' ');
    return utf8;
}

std::string paddedInFront(std::string utf8, std::size_t columns)
{
    utf8.insert(0, columns - std::min(columns, width(utf8)), ' ');
    return utf8;
}

void Table::add(std::vector<std::string> cells)
{
    for (std::string& cell : cells) {
        cell = TerminalText::oneLine(cell);
    }
    m_lines.push_back(std::move(cells));
}

void Table::print(const std::string& indent) const
{
    std::vector<std::size_t> widths(m_columns.size());
    for (const auto& line : m_lines) {
        for (std::size_t i = 0; i < widths.size(); ++i) {
            widths[i] = std::max(widths[i], width(line[i]));
        }
    }
    for (const auto& line : m_lines) {
        std::string text = indent;
        for (std::size_t i = 0; i < widths.size(); ++i) {
            text += (i == 0 ? "" : "  ");
            text += m_columns[i] == 'r' ? paddedInFront(line[i], widths[i]) : padded(line[i], widths[i]);
        }
        text.erase(text.find_last_not_of(' ') + 1);
        std::cout << (&line == &m_lines.front() ? styled(text, Style::Heading) : text) << '\n';
    }
}

}  // namespace RecTool
