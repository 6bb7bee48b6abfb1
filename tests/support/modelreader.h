// A second reader of recording files, as simple as can be, against which the library is judged.
#pragma once

#include <array>
#include <fstream>
#include <optional>

#include "support/recordingbytes.h"

namespace TestSupport {

/// Everything in a sound file. Throws std::runtime_error at the first byte that a sound file would not have.
struct ParsedRecording {
    struct Record {
        std::uint64_t time = 0;
        std::int32_t position = 0;
        std::int32_t code = 0;
        std::string data;
    };

    HeaderFields header;
    std::vector<TypeFields> types;
    std::vector<Record> records;  ///< in file order
    std::vector<std::uint64_t> rangeDefs;
};
ParsedRecording parseRecording(const std::string& bytes);

/// Thrown where the format does not say what a reader finds in a damaged file.
struct Undefined {};

struct ModelRecord {
    std::int32_t code = 0;
    std::string data;
};

/// A header as read. A text that reached past the end of the file is unknown.
struct ModelHeader {
    std::int16_t majorVersion = 0;
    std::int16_t minorVersion = 0;
    std::array<float, 3> frequencies{};
    std::array<std::int32_t, 2> levels{};
    std::array<std::uint64_t, 2> timesMs{};
    std::array<std::optional<std::string>, 3> texts{"", "", ""};  ///< job id, device name, device type
    bool automatic = false;
};

/// Reads and navigates one file. The fields come out of a real stream in the classic locale, so that the flags of the
/// stream are those that the format is described with.
class ModelReader {
public:
    ModelReader(const std::string& path, bool withTables);

    [[nodiscard]] bool valid() const { return m_valid; }
    [[nodiscard]] const std::map<std::uint64_t, std::int32_t>& times() const { return m_times; }

    std::uint64_t readHeader(ModelHeader& header);
    std::uint64_t readTypes(std::vector<TypeFields>& types);
    void readTables();

    std::uint64_t read(ModelRecord& record);
    std::uint64_t readAndReturnTimeOfCurrentCmd(ModelRecord& record);
    std::uint64_t read(ModelRecord& record, std::uint64_t time);
    std::uint64_t readfirst(ModelRecord& record);
    std::uint64_t readnext(ModelRecord& record);
    std::uint64_t readfirst(ModelRecord& record, std::int32_t code);
    std::uint64_t readnext(ModelRecord& record, std::int32_t code);
    std::uint64_t readprev(ModelRecord& record, std::uint64_t time);

private:
    template <typename T>
    void number(T& target);
    void time(std::uint64_t& target);
    bool text(std::int32_t length, std::string& target);  ///< false when the file ends before the text does
    void headerText(std::optional<std::string>& target);
    void typeText(std::string& target);
    void readTimeTable();
    void seek(std::int64_t position);
    std::uint64_t timeHere();

    std::ifstream m_in;
    std::int64_t m_size = 0;
    bool m_valid = false;
    std::array<std::int32_t, 5> m_blocks{};  // type table, first record, time table, channel ranges, bookmarks
    std::map<std::uint64_t, std::int32_t> m_times;
    std::map<std::int32_t, std::uint64_t> m_positions;
};

}  // namespace TestSupport
