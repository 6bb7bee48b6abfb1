// What the tests of cutting, merging and comparing share: running verbs in this process, and looking at what they made.
#pragma once

#include <recording2/inspection/inspection.h>
#include <verbs/commands.h>

#include "randomrecording.h"
#include "support/files.h"

namespace RecToolTests {

struct Result {
    RecTool::ExitCode exitCode = RecTool::ExitCode::Fine;
    std::string out;
    std::string err;
};

/// Runs a verb and takes what it prints.
Result run(const std::function<RecTool::ExitCode()>& verb);
Result cut(const std::string& file, const std::string& from, const std::string& to, const std::string& output);
Result merge(const std::vector<std::string>& files, const std::string& output, bool separate = false);

/// A record as the tests compare them.
struct ClockedRecord {
    std::uint64_t clockMs = 0;
    std::int32_t code = 0;
    std::string data;

    bool operator==(const ClockedRecord&) const = default;
};
std::vector<ClockedRecord> recordsOf(const std::string& file);

/// Codes and data without the times.
std::vector<std::pair<std::int32_t, std::string>> contentsOf(const std::vector<ClockedRecord>& records);

/// What is in force: a text that tells the whole value, by type number and path.
using State = std::map<std::string, std::string>;

/// The state of a recording at every moment at which it changes, by clock time.
class History {
public:
    explicit History(const std::string& file);
    [[nodiscard]] const State& at(std::uint64_t clockMs) const;
    [[nodiscard]] const std::map<std::uint64_t, State>& moments() const { return m_moments; }

private:
    std::map<std::uint64_t, State> m_moments;
};
/// The first clock time from `from` to `to` at which the two do not say the same; 0 when there is none.
std::uint64_t firstDifference(const History& a, const History& b, std::uint64_t from, std::uint64_t to);

/// Bookmarks by clock time.
std::map<std::uint64_t, std::string> bookmarksOf(const std::string& file);

/// A directory for the files of one test.
class Folder {
public:
    [[nodiscard]] std::string file(const std::string& name) const
    {
        return m_folder.filePath(QString::fromStdString(name)).toStdString();
    }
    [[nodiscard]] std::vector<std::string> names() const;  ///< of the files that are there, sorted

private:
    QTemporaryDir m_folder;
};

class InFolder : public testing::Test {
protected:
    [[nodiscard]] std::string file(const std::string& name) const { return m_folder.file(name); }
    /// Writes a random recording.
    [[nodiscard]] std::string random(const RandomOptions& options, const std::string& name = "random.rec") const
    {
        writeRandomRecording(file(name), options);
        return file(name);
    }
    /// Cuts, which must be possible. @return the part
    [[nodiscard]] std::string part(const std::string& source, const std::string& from, const std::string& to,
                                   const std::string& name = "cut.rec") const
    {
        const Result result = cut(source, from, to, file(name));
        EXPECT_EQ(result.exitCode, RecTool::ExitCode::Fine) << result.err;
        return file(name);
    }
    /// The same of several. @return the whole
    [[nodiscard]] std::string whole(const std::vector<std::string>& files, const std::string& name) const
    {
        const Result result = merge(files, file(name));
        EXPECT_EQ(result.exitCode, RecTool::ExitCode::Fine) << result.err;
        return file(name);
    }

    Folder m_folder;
};

using TestSupport::bytesOf;
using TestSupport::writeBytes;

}  // namespace RecToolTests
