// Tables as CSV: records of fields out of a stream of bytes, with bounded memory.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "input/byteinput.h"

namespace RecStation {

struct CsvRecord {
    std::size_t line = 0;             ///< the line that it begins in, from 1
    std::vector<std::string> fields;  ///< without quotes and the spaces around them
    std::string problem;              ///< why the fields cannot be trusted; empty for a sound record
    bool decimalComma = false;        ///< numbers in it have one
};

/// Fields may stand in double quotes and then hold separators, line breaks and, doubled, quotes. Lines end with CR, LF
/// or both; blank lines, lines of nothing but separators and a byte order mark are passed over, and so are lines that
/// begin with #, which are counted.
class CsvReader {
public:
    /// @param separator nothing: the one of ; , and tab that the first line has most of
    CsvReader(ByteInput input, std::optional<char> separator, bool decimalComma = false);

    /// The next record; nothing at the end. Hands on what the input throws.
    [[nodiscard]] std::optional<CsvRecord> next();
    [[nodiscard]] std::size_t comments() const { return m_comments; }

private:
    void begin();
    [[nodiscard]] std::string_view lineAhead();
    void skipLine();
    bool fill();
    bool readMore();
    CsvRecord& noteDamage(CsvRecord& record);
    [[nodiscard]] std::optional<char> peek();
    char take();
    [[nodiscard]] CsvRecord readRecord();
    void readField(CsvRecord& record);
    void readQuoted(CsvRecord& record);
    void readPlain(CsvRecord& record);
    void skipSpaces();
    [[nodiscard]] bool atFieldEnd();
    void keep(CsvRecord& record, char c);
    bool fits(CsvRecord& record);

    ByteInput m_input;
    std::string m_damage;  // why it cannot be read to its end
    bool m_cut = false;    // and there is nothing left before that
    bool m_damageTold = false;
    std::optional<char> m_separator;
    bool m_decimalComma;
    std::vector<char> m_buffer;
    std::size_t m_position = 0;  // of the next unread byte in the buffer
    std::size_t m_filled = 0;
    std::size_t m_line = 1;
    std::size_t m_comments = 0;
    std::size_t m_recordBytes = 0;
    char m_last = '\0';
    bool m_begun = false;
};

/// The one of ; , and tab that stands most often outside quotes in a line; comma for a line without any.
[[nodiscard]] char guessSeparator(std::string_view line, bool decimalComma = false);

}  // namespace RecStation
