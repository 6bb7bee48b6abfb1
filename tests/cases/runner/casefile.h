// A case: command lines with what they print, read from a file and written back when its expectations are made anew.
#pragma once

#include "support/testing.h"

namespace Cases {

using Lines = std::vector<std::string>;

/// What a command gave, or is expected to give.
struct Outcome {
    int exitCode = 0;
    Lines out;
    Lines err;
};

struct Step {
    Lines before;  ///< remarks and blank lines, as they stand
    std::string command;
    Lines input;
    Outcome expected;
};

/// Each line of the file says by its beginning what it is: "# " a remark, "needs: " what the build or system must have,
/// "$ " a command, "| " a line of its input, "? " its exit code when that is not 0, "> " a line of its output, "! " one
/// of its error output.
struct CaseFile {
    std::vector<Step> steps;
    Lines behind;  ///< remarks after the last step
    std::vector<std::string> needs;
};

/// @throws std::runtime_error with the number of a line that is none of a case
[[nodiscard]] CaseFile readCase(const std::string& path);
void writeCase(const std::string& path, const CaseFile& file);

/// The words of a command: apart at blanks, but within "..." (where \n, \t, \r, \", \\ and \xNN stand for bytes) or
/// '...'. A pipe sign by itself is a word.
[[nodiscard]] std::vector<std::string> wordsOf(const std::string& command);
/// The lines of a text; a last one that does not end says so.
[[nodiscard]] Lines linesOf(const std::string& text);
/// Whether lines are as expected: "[..]" stands for any part of a line, a line "[...]" for any lines.
[[nodiscard]] bool areAsExpected(const Lines& expected, const Lines& found);

}  // namespace Cases
