// What all verbs print alike, and how far a long walk has come.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <recording2/inspection/inspection.h>

#include "exitcode.h"
#include "valuetext.h"

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

/// One line on standard error, only on a terminal and only when it takes long; it is gone when the object goes.
class Progress {
public:
    explicit Progress(std::string file);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    /// For walkRecords; empty when nobody watches.
    [[nodiscard]] std::function<void(std::int64_t, std::int64_t)> callback();
    void show(std::int64_t done, std::int64_t all);
    void clear();  ///< takes the line away, so that something else can be printed

private:
    std::string m_file;
    std::chrono::steady_clock::time_point m_begin;
    bool m_shown = false;
};

/// What to call a file to the user: the name that was given for it, where it was another (an archive address).
[[nodiscard]] const std::string& shownName(const std::string& path);
[[nodiscard]] std::vector<std::string> shownNames(const std::vector<std::string>& paths);
/// The same as it is printed.
[[nodiscard]] std::string printedName(const std::string& path);
void setShownName(const std::string& path, const std::string& name);

/// Who complains, where it is not rectool. The name is kept as it is.
void complainAs(const char* program);
/// A message on standard error: "rectool: FILE: TEXT".
void complain(const std::string& file, const std::string& text);
/// Damage on standard error, one line a finding; of very many only the first ones.
void complain(const std::string& file, const std::vector<Recording2::Inspection::Finding>& findings);

/// While it exists, what its thread complains of is kept instead of printed, for whoever answers in another way.
class Complaints {
public:
    Complaints();
    Complaints(const Complaints&) = delete;
    Complaints& operator=(const Complaints&) = delete;
    ~Complaints();

    /// The sentences without the file's name, one behind the other.
    [[nodiscard]] const std::string& text() const { return m_text; }
    /// The file that the first one is about.
    [[nodiscard]] const std::string& file() const { return m_file; }
    /// Whether those of this thread are being kept.
    [[nodiscard]] static bool areKept();

private:
    friend void complain(const std::string& file, const std::string& text);
    std::string m_text;
    std::string m_file;
};

/// The numbers of types that a user named by keyword or number. @return nothing, told, when one is no type of the file
[[nodiscard]] std::optional<std::set<std::int32_t>> takeTypes(const std::string& file,
                                                              const std::vector<std::string>& types,
                                                              const TypeNames& names);

/// Whether standard output still takes something. It does not after `| head` has seen enough. To be asked right after
/// printing, when the reason of a failure is still known.
[[nodiscard]] bool canPrint();
/// From now on whoever reads the output may stop reading, and nothing is wrong.
void letReaderLeave();
/// Hands everything to the system. A reader that has gone is no error, a full disk is: it is told, and the result is
/// CannotRead.
[[nodiscard]] ExitCode finish(ExitCode result);

/// Tells of records whose time is lost, which a new recording cannot have, if there were any.
void tellWithoutTime(const std::string& file, std::uint64_t count);
/// Tells of records that are not what a verb shows, if there were any.
/// @param what they should be, such as "bearings"
/// @return the result, Damaged where it was Fine
[[nodiscard]] ExitCode withPassedOver(const std::string& file, const std::string& keyword, const char* what,
                                      std::uint64_t count, ExitCode result);

/// Of several files: the worst one counts, and one that cannot be read is worse than a damaged one.
[[nodiscard]] ExitCode worse(ExitCode a, ExitCode b);
/// Fine, or Damaged if there is a finding.
[[nodiscard]] ExitCode soundness(const std::vector<Recording2::Inspection::Finding>& findings);

}  // namespace RecTool
