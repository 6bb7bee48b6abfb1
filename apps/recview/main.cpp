// recview: shows recordings in the browser. Its options; paths are checked, the server runs until somebody wants it to
// end.
#include <algorithm>
#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <limits>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <system/program.h>
#include <system/stopsignal.h>
#include <terminaltext/commandtree.h>
#include <terminaltext/optionvalues.h>
#include <terminaltext/qtnames.h>
#include <terminaltext/terminaltext.h>
#include <terminaltext/wrongarguments.h>

#include "answers/answers.h"
#include "recordings/recordedfile.h"
#include "rectool/archive/archivedfiles.h"
#include "rectool/printing/exitcode.h"
#include "rectool/printing/output.h"
#include "server/server.h"

namespace RecView {

using RecTool::ExitCode;
using TerminalText::acceptedIf;
using TerminalText::oneLine;

namespace {

/// All texts are UTF-8. Among the paths may be archive addresses.
struct ProgramOptions : Options {
    std::uint16_t port = 0;            ///< 0: one that is free
    std::string listen;                ///< a numeric address; empty: the loopback one
    std::string archiveConfiguration;  ///< empty: of the environment
    bool open = false;                 ///< the page, in the user's browser
    bool json = false;
    bool quiet = false;
    bool untilInputEnds = false;  ///< end with whoever holds the standard input
};

struct CommandLine {
    std::optional<ProgramOptions> options;  ///< nothing: what was to be said is said, the program ends
    RecTool::ExitCode exitCode = RecTool::ExitCode::Fine;
};

constexpr auto Footer = R"(
It prints the page's address when it is ready, and runs until Ctrl-C. A directory is looked at again and again: what
is recorded there shows as it grows. Nothing is changed but, with --edit, the bookmarks of finished recordings.

Examples:
  recview recordings                       all recordings of a directory
  recview night.rec                        one file; its splits beside it belong to it when they are named, too
  recview zelvo:///2026/night.rec          one in the archive
  recview recordings --edit                bookmarks can be added, renamed and removed
  recview recordings --listen 192.168.1.20 for others, too: who has the printed address can look

Exit codes: 0 it ran until it was ended, 1 wrong arguments, 2 a file cannot be read, or nobody could connect.)";

// Refuses what a script passes when it has forgotten to set a variable.
CLI::Validator notEmpty()
{
    return acceptedIf([](const std::string& text) { return !text.empty(); }, "a name");
}

void addServerOptions(CLI::App& app, ProgramOptions& options)
{
    constexpr double HighestPort = 65535;
    app.add_option("--port", options.port, "Port of the page's address (default: one that is free)")
        ->type_name("NUMBER")
        ->transform(TerminalText::wholeNumber(0, HighestPort));
    app.add_option("--listen", options.listen,
                   "Address of this machine, in numbers, on which others may connect, too; the printed address has a "
                   "token that they need (default: only programs of this machine connect)")
        ->type_name("ADDRESS")
        ->check(notEmpty());
    app.add_flag("--until-input-ends", options.untilInputEnds, "")->group("");  // of programs that start this one
}

void addOptions(CLI::App& app, ProgramOptions& options)
{
    app.add_option("PATH", options.paths,
                   "Recordings: files, directories or archive addresses (with --open default: the working directory)")
        ->check(notEmpty());
    addServerOptions(app, options);
    app.add_flag("--open", options.open, "Open the page in the user's browser, too");
    app.add_flag("--edit", options.edit, "Bookmarks of finished recordings can be changed in the page");
    constexpr double MostBytes = 1e15;
    app.add_option("--cache-bytes", options.cacheBytes,
                   "How much may be kept for opening recordings quickly again; the oldest goes first")
        ->type_name("SIZE")
        ->transform(
            TerminalText::withUnit([](const std::string& text) { return TerminalText::parseQuantity(text, {"B"}); },
                                   "a size such as 500M or 4G", 0, MostBytes, "0 to 1000000G"))
        ->default_str("4G");
    app.add_option("--cache", options.cacheDirectory,
                   "Where that is kept (default: recview in XDG_CACHE_HOME or ~/.cache)")
        ->type_name("DIR")
        ->check(notEmpty());
    app.add_option("--archive-config", options.archiveConfiguration,
                   "Configuration of the archive (default: the file that ZELVO_CONFIG names)")
        ->type_name("FILE")
        ->check(notEmpty());
    app.add_flag("--json", options.json, "Print the address as JSON");
    app.add_flag("-q,--quiet", options.quiet, "Print nothing but the address");
}

CommandLine refused(const std::string& why)
{
    std::cerr << "recview: " << why << "\nrecview --help tells more.\n";
    return {std::nullopt, ExitCode::Usage};
}

/// @param arguments without the program's name
CommandLine parseCommandLine(const std::vector<std::string>& arguments)
{
    ProgramOptions options;
    CLI::App app("Shows recordings in the browser, finished or as they grow.", "recview");
    app.footer(Footer);
    app.allow_windows_style_options(false);  // the same arguments everywhere, paths that begin with "/" among them
    app.set_version_flag("--version", "recview " RECVIEW_VERSION);
    addOptions(app, options);
    if (TerminalText::printedCommandTree(app, arguments)) {
        return {std::nullopt, ExitCode::Fine};
    }
    try {
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::Success& success) {  // help was asked for
        app.exit(success);
        return {std::nullopt, ExitCode::Fine};
    } catch (const CLI::ParseError& error) {
        return refused(TerminalText::whatIsWrong(app, error));
    }
    if (options.paths.empty() && !options.open) {
        return refused("a file or directory with recordings is missing");
    }
    if (options.paths.empty()) {
        options.paths.emplace_back(".");
    }
    return {options, ExitCode::Fine};
}

/// Ends the process when what goes on in its lifetime takes too long: nobody waits for an answer any more that a
/// worker is still making, and what is kept in files is whole whenever the process ends.
class Deadline {
public:
    explicit Deadline(ExitCode code)
        : m_thread([this, code] {
              constexpr std::chrono::milliseconds Time{500};
              std::unique_lock lock(m_mutex);
              if (!m_ended.wait_for(lock, Time, [this] { return m_isKept; })) {
                  std::_Exit(static_cast<int>(code));
              }
          })
    {
    }
    Deadline(const Deadline&) = delete;
    Deadline& operator=(const Deadline&) = delete;
    ~Deadline()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_isKept = true;
        }
        m_ended.notify_one();
        m_thread.join();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_ended;
    bool m_isKept = false;
    std::thread m_thread;
};

// What keeps a path from being looked into; empty where nothing does.
std::string problemOf(const QString& path)
{
    const QFileInfo info(path);
    if (!info.exists()) {
        return "There is no such file or directory.";
    }
    if (info.isDir()) {
        return info.isReadable() && info.isExecutable() ? "" : "The directory cannot be read.";
    }
    if (!info.isFile()) {
        return "This is neither a file nor a directory.";
    }
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? "" : "The file cannot be read: " + file.errorString().toStdString() + '.';
}

/// Why a file shows nothing; empty for one that is a recording or is being written as one, and for a directory.
std::string whyNotShown(const std::string& path)
{
    std::string problem;
    const QFileInfo info(QString::fromStdString(path));
    const bool mayBe = !info.isFile() || info.suffix() == QLatin1String("tmp") || lookAtFile(path, problem) != nullptr;
    return mayBe ? "" : problem;
}

bool areUsable(const std::vector<std::string>& paths)
{
    const bool showsSomething =
        std::any_of(paths.begin(), paths.end(), [](const std::string& path) { return whyNotShown(path).empty(); });
    for (const std::string& path : showsSomething ? std::vector<std::string>() : paths) {
        RecTool::complain(path, whyNotShown(path));
    }
    bool good = showsSomething;
    for (const std::string& path : paths) {
        if (const std::string problem = problemOf(QString::fromStdString(path)); !problem.empty()) {
            RecTool::complain(path, problem);
            good = false;
        }
    }
    return good;
}

ExitCode tellAddress(const ProgramOptions& options, const Server& server)
{
    const std::string url = server.url();
    if (options.json) {
        std::cout << nlohmann::json{{"url", url}, {"port", server.port()}, {"edit", options.edit}}.dump() << '\n';
    } else {
        std::cout << url << '\n';
    }
    const ExitCode result = RecTool::finish(ExitCode::Fine);
    if (options.open && !QProcess::startDetached(QStringLiteral("xdg-open"), {QString::fromStdString(url)})) {
        std::cerr << "recview: No browser could be started, as the program xdg-open is missing.\n";
    }
    if (result == ExitCode::Fine && !options.quiet) {
        std::cerr << "recview: Open this address in a browser; Ctrl-C ends.\n";
        if (!options.listen.empty()) {
            std::cerr << "recview: Everybody who has the address and reaches this machine can look at the recordings"
                      << (options.edit ? ", and change bookmarks.\n" : ".\n");
        }
    }
    return result;
}

void waitForEnd(const ProgramOptions& options, const System::StopSignal& stop)
{
    if (options.untilInputEnds) {
        constexpr std::size_t Size = 256;
        std::array<char, Size> unused{};
        System::InterruptibleInput input("-");
        while (input.read(unused.data(), unused.size()) > 0) {
        }
        return;
    }
    while (!System::StopSignal::requested()) {
        stop.wait(std::numeric_limits<int>::max());
    }
}

Handler handlerOf(const ProgramOptions& options, Events& events)
{
    const auto answers = std::make_shared<Answers>(options, events);
    return [answers](const Request& request) { return (*answers)(request); };
}

// Archived recordings have paths of this machine here.
ExitCode serve(const ProgramOptions& options, bool storesAtEnd)
{
    if (!areUsable(options.paths)) {
        return ExitCode::CannotRead;
    }
    const System::StopSignal stop([] {});
    Events events;
    Handler handler = handlerOf(options, events);
    ServerOptions serverOptions;
    serverOptions.port = options.port;
    if (!options.listen.empty()) {
        serverOptions.address = options.listen;
        serverOptions.needsToken = true;
    }
    auto server = std::make_unique<Server>(serverOptions, handler, events);
    const ExitCode told = tellAddress(options, *server);
    if (told == ExitCode::Fine) {
        waitForEnd(options, stop);
    }
    std::optional<Deadline> deadline;
    if (!storesAtEnd) {
        deadline.emplace(told);
    }
    server.reset();
    handler = nullptr;
    return told;
}

/// @param arguments without the program's name
ExitCode runProgram(const std::vector<std::string>& arguments)
{
    const CommandLine commandLine = parseCommandLine(arguments);
    if (!commandLine.options) {
        return commandLine.exitCode;
    }
    RecTool::complainAs("recview");
    System::ignoreBrokenPipes();
    ProgramOptions options = *commandLine.options;
    try {
        RecTool::useArchive(options.archiveConfiguration);
        RecTool::NamedFiles files;
        files.list = &options.paths;
        files.change = options.edit;
        files.needsAll = true;
        // What was changed of an archived recording goes back when all has ended.
        const bool storesAtEnd =
            options.edit && std::any_of(options.paths.begin(), options.paths.end(), RecTool::isArchiveAddress);
        return RecTool::runOnLocalFiles(files, [&] { return serve(options, storesAtEnd); });
    } catch (const std::exception& error) {
        std::cerr << "recview: " << oneLine(error.what()) << '\n';
        return ExitCode::CannotRead;
    }
}

}  // namespace

}  // namespace RecView

int main(int argc, char* argv[])
{
    System::prepareStandardStreams(System::ClosedStream::RefusesAll);
    TerminalText::takeFileNamesInUtf8();
    const QCoreApplication application(argc, argv);
    return static_cast<int>(RecView::runProgram(System::argumentsOf(argc, argv)));
}
