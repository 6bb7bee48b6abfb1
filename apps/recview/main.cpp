// recview: shows recordings in the browser. Paths are checked, the server runs until somebody wants it to end.
#include <algorithm>
#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <limits>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <nlohmann/json.hpp>

#include <system/program.h>
#include <system/stopsignal.h>
#include <terminaltext/qtnames.h>
#include <terminaltext/terminaltext.h>

#include "commandline.h"
#include "recordings/recordedfile.h"
#include "rectool/archive/archivedfiles.h"
#include "rectool/printing/output.h"
#include "server/server.h"

namespace RecView {

using RecTool::ExitCode;

namespace {

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
        std::cerr << "recview: " << TerminalText::oneLine(error.what()) << '\n';
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
