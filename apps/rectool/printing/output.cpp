// Shown names of files, complaints, percentages, failing standard output, and which exit code is worse.
#include "output.h"

#include <algorithm>
#include <cerrno>
#include <iostream>
#include <iterator>
#include <map>
#include <mutex>
#include <system_error>

#include <system/program.h>
#include <terminaltext/terminaltext.h>

#include "text.h"

namespace RecTool {

namespace {

/// Whether a person sees how far something has come.
bool isWatched()
{
    return !Complaints::areKept() && System::isTerminal(System::Stream::Errors);
}

const char* complainingProgram = "rectool";
bool readerMayLeave = false;
int firstError = 0;  // why standard output takes nothing any more

thread_local Complaints* keptHere = nullptr;

std::mutex& shownNamesMutex()
{
    static std::mutex mutex;
    return mutex;
}

std::map<std::string, std::string>& shownNames()
{
    static std::map<std::string, std::string> names;
    return names;
}

}  // namespace

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

Progress::Progress(std::string file) : m_file(std::move(file)), m_begin(std::chrono::steady_clock::now())
{
}

Progress::~Progress()
{
    clear();
}

std::function<void(std::int64_t, std::int64_t)> Progress::callback()
{
    if (!isWatched()) {
        return {};
    }
    return [this](std::int64_t done, std::int64_t all) { show(done, all); };
}

void Progress::show(std::int64_t done, std::int64_t all)
{
    constexpr std::chrono::milliseconds Patience{500};
    if (all > 0 && std::chrono::steady_clock::now() - m_begin > Patience && isWatched()) {
        std::cerr << '\r' << printedName(m_file) << ": " << done * 100 / all << " %" << std::flush;
        m_shown = true;
    }
}

void Progress::clear()
{
    if (m_shown) {
        std::cerr << '\r' << std::string(printedName(m_file).size() + 8, ' ') << '\r' << std::flush;
        m_shown = false;
    }
}

const std::string& shownName(const std::string& path)
{
    const std::lock_guard lock(shownNamesMutex());
    const auto found = shownNames().find(path);
    return found == shownNames().end() ? path : found->second;
}

std::vector<std::string> shownNames(const std::vector<std::string>& paths)
{
    std::vector<std::string> names;
    std::transform(paths.begin(), paths.end(), std::back_inserter(names), shownName);
    return names;
}

std::string printedName(const std::string& path)
{
    return oneLine(shownName(path));
}

void setShownName(const std::string& path, const std::string& name)
{
    const std::lock_guard lock(shownNamesMutex());
    std::string& shown = shownNames()[path];
    if (shown != name) {
        shown = name;
    }
}

Complaints::Complaints()
{
    keptHere = this;
}

Complaints::~Complaints()
{
    keptHere = nullptr;
}

bool Complaints::areKept()
{
    return keptHere != nullptr;
}

void complainAs(const char* program)
{
    complainingProgram = program;
}

void complain(const std::string& file, const std::string& text)
{
    if (keptHere != nullptr) {
        if (keptHere->m_text.empty()) {
            keptHere->m_file = file;
        }
        keptHere->m_text += (keptHere->m_text.empty() ? "" : " ") + text;
        return;
    }
    std::cout.flush();
    std::cerr << complainingProgram << ": " << printedName(file) << ": " << oneLine(text) << '\n';
}

void complain(const std::string& file, const std::vector<Recording2::Inspection::Finding>& findings)
{
    constexpr std::size_t Most = 100;
    for (std::size_t i = 0; i < findings.size() && i < Most; ++i) {
        complain(file, "damaged at " + std::to_string(findings[i].offset) + ": " + findings[i].text);
    }
    if (findings.size() > Most) {
        complain(file, "and " + std::to_string(findings.size() - Most) + " more findings.");
    }
}

std::optional<std::set<std::int32_t>> takeTypes(const std::string& file, const std::vector<std::string>& types,
                                                const TypeNames& names)
{
    std::set<std::int32_t> numbers;
    for (const std::string& type : types) {
        const std::optional<std::int32_t> number = names.numberOf(type);
        if (!number) {
            const std::string all = names.allKeywords();
            complain(file, "There is no type \"" + type + "\" in the recording. " +
                               (all.empty() ? "It has no types." : "Its types: " + all + "."));
            return std::nullopt;
        }
        numbers.insert(*number);
    }
    return numbers;
}

void letReaderLeave()
{
    readerMayLeave = true;
}

bool canPrint()
{
    if (!std::cout.good() && firstError == 0) {
        firstError = errno;
    }
    return std::cout.good();
}

ExitCode finish(ExitCode result)
{
    std::cout.flush();
    const bool printed = canPrint();
    const bool readerHasGone =
        readerMayLeave || firstError == EPIPE || firstError == EINVAL;  // the latter is what Windows says
    if (printed || readerHasGone) {
        return result;
    }
    std::cerr << complainingProgram
              << ": the output could not be written: " << std::generic_category().message(firstError) << '\n';
    return ExitCode::CannotRead;
}

void tellWithoutTime(const std::string& file, std::uint64_t count)
{
    if (count > 0) {
        complain(file, "Records left out because their time is lost: " + grouped(count) + '.');
    }
}

ExitCode withPassedOver(const std::string& file, const std::string& keyword, const char* what, std::uint64_t count,
                        ExitCode result)
{
    if (count == 0) {
        return result;
    }
    complain(file, keyword + " records that are no " + what + ", passed over: " + grouped(count) + '.');
    return result == ExitCode::Fine ? ExitCode::Damaged : result;
}

ExitCode worse(ExitCode a, ExitCode b)
{
    const bool unreadable = a == ExitCode::CannotRead || b == ExitCode::CannotRead;
    return unreadable ? ExitCode::CannotRead : std::max(a, b);
}

ExitCode soundness(const std::vector<Recording2::Inspection::Finding>& findings)
{
    return findings.empty() ? ExitCode::Fine : ExitCode::Damaged;
}

}  // namespace RecTool
