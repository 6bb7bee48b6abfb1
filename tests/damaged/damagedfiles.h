// What the tests of damaged files share: golden files, changes of them, and everything that reads one.
#pragma once

#include <algorithm>
#include <fstream>
#include <functional>
#include <iterator>
#include <random>

#include <gtest/gtest.h>
#include <QTemporaryDir>

#include <recording2/fileaccess.h>
#include <recording2/inspection/inspection.h>
#include <recording2/recordmodel.h>

#include "support/recordingbytes.h"

namespace DamagedFileTests {

using Recording2::CFileAccess;
using Recording2::CHeaderData;
using Recording2::CVTCmdData;
using Recording2::CVTTypesData;
namespace Inspection = Recording2::Inspection;

constexpr std::size_t HeaderArea = 500;

inline std::string golden(const std::string& name)
{
    std::ifstream file(std::string(GOLDEN_FOLDER) + "/" + name + "/" + name + ".rec", std::ios::binary);
    EXPECT_TRUE(file.is_open()) << name;
    return {std::istreambuf_iterator<char>(file), {}};
}

/// The bytes with the one occurrence of a piece replaced.
inline std::string with(std::string bytes, const std::string& piece, const std::string& replacement)
{
    const std::size_t at = bytes.find(piece);
    EXPECT_NE(at, std::string::npos) << piece;
    EXPECT_EQ(bytes.find(piece, at + 1), std::string::npos) << piece;
    return bytes.replace(at, piece.size(), replacement);
}

/// The same within the header, whose area keeps its size.
inline std::string withHeader(const std::string& bytes, const std::string& piece, const std::string& replacement)
{
    std::string area = with(bytes.substr(0, HeaderArea), piece, replacement);
    const std::size_t length = area.find_last_not_of('0', HeaderArea - 2 + replacement.size() - piece.size()) + 1;
    area.resize(length);
    area.append(HeaderArea - 1 - length, '0');
    return area + '#' + bytes.substr(HeaderArea);
}

inline std::string timeBytes(std::uint64_t milliseconds)
{
    return TestSupport::ByteBuilder().time(milliseconds).bytes();
}

inline std::string randomBytes()
{
    std::mt19937 generator(1);  // NOLINT(cert-msc51-cpp,cert-msc32-c): the same bytes every time
    std::string bytes(2000, '\0');
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(generator() & 0xffU); });
    return bytes;
}

/// A file in a folder that goes with it.
class File {
public:
    File() = default;
    explicit File(const std::string& bytes) { write(bytes); }
    void write(const std::string& bytes) const { std::ofstream(path(), std::ios::binary | std::ios::trunc) << bytes; }
    [[nodiscard]] std::string path() const { return (m_folder.path() + "/file.rec").toStdString(); }

private:
    QTemporaryDir m_folder;
};

/// All findings, of the tables and of the records, one a line.
inline std::string findingsOf(const std::string& path)
{
    const Inspection::Summary summary = Inspection::inspect(path);
    std::string text = summary.problem.empty() ? "" : summary.problem + "\n";
    const auto append = [&](const std::vector<Inspection::Finding>& findings) {
        for (const Inspection::Finding& finding : findings) {
            EXPECT_GE(finding.offset, 0);
            EXPECT_LE(finding.offset, summary.fileSize);
            text += std::to_string(finding.offset) + ": " + finding.text + "\n";
        }
    };
    append(summary.findings);
    append(Inspection::walkRecords(path, summary, [](const Inspection::Record&) { return true; }));
    return text;
}

/// Calls a read operation until it returns 0, which no operation may do without end.
inline void untilZero(std::size_t limit, const std::function<unsigned long long()>& read)
{
    std::size_t count = 0;
    while (read() != 0 && count <= limit) {
        ++count;
    }
    EXPECT_LE(count, limit) << "reading does not come to an end";
}

/// Uses every operation that reads. What it gives for a damaged file is not said, only that it ends.
inline void readEverything(const std::string& path, std::size_t fileSize)
{
    CFileAccess file(path.c_str(), QString(), nullptr, false, true, false, nullptr, nullptr);
    CHeaderData header;
    file.read(header);
    CVTTypesData types;
    file.read(types);
    CVTCmdData record;
    unsigned long long time = file.readfirst(record);
    untilZero(fileSize, [&] { return time = file.readnext(record); });
    file.readfirst(record, 0);
    file.readfirst(record, 36);
    untilZero(fileSize, [&] { return file.readnext(record, 36); });
    file.read(record, 1ULL);
    untilZero(fileSize, [&] { return file.read(record); });
    file.read(record, 1ULL);
    untilZero(fileSize, [&] { return file.readAndReturnTimeOfCurrentCmd(record); });
    time = 4'294'968'297ULL;
    untilZero(fileSize, [&] { return time = file.readprev(record, time); });
    file.readTables();
}

}  // namespace DamagedFileTests
