// Shown names of files, complaints, failing standard output, and which exit code is worse.
#include "output.h"

#include <algorithm>
#include <cerrno>
#include <iostream>
#include <iterator>
#include <map>
#include <mutex>
#include <system_error>

#include "text.h"

namespace RecTool {

namespace {

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
