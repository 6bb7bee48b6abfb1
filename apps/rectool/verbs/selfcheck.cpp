// The verb "selfcheck": recordings killed, cut and out of room, and what was lost.
#include <array>
#include <iostream>
#include <string>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "commandline/verb.h"
#include "printing/json.h"
#include "printing/output.h"
#include "printing/text.h"
#include "selfcheck/faults.h"
#include "selfcheck/recordingrun.h"
#include "system/filesizelimit.h"
#include "system/interrupt.h"

namespace RecTool {

using SelfCheck::FaultReport;

namespace {

struct SelfCheckOptions {
    std::string directory;    ///< where a folder of its own is made
    std::uint64_t runs = 20;  ///< of killed processes
    bool keep = false;        ///< the folder
    bool json = false;
    bool child = false;            ///< be the process that records into the directory
    std::uint64_t limitBytes = 0;  ///< of its files; 0: none
};

struct Result {
    FaultReport killed{"killed", "killed at any moment"};
    FaultReport cut{"cut", "files cut anywhere"};
    FaultReport filled{"filled", "no more room"};
    bool interrupted = false;

    [[nodiscard]] std::array<const FaultReport*, 3> all() const { return {&killed, &cut, &filled}; }
    [[nodiscard]] bool held() const { return killed.broken.empty() && cut.broken.empty() && filled.broken.empty(); }
};

QString ownProgram()
{
    static int count = 1;
    static std::array<char, 8> name = {"rectool"};
    static std::array<char*, 2> arguments = {name.data(), nullptr};
    const QCoreApplication application(count, arguments.data());
    return QCoreApplication::applicationFilePath();
}

Result makeRuns(const SelfCheckOptions& options, SelfCheck::Faults& faults, Progress& progress)
{
    Result result;
    const std::uint64_t fills = canLimitFileSize() ? (options.runs + 3) / 4 : 0;
    const auto all = static_cast<std::int64_t>(options.runs + fills);
    for (std::uint64_t run = 0; run < options.runs + fills; ++run) {
        if (Interrupt::requested()) {
            result.interrupted = true;
            break;
        }
        if (run < options.runs) {
            faults.kill(result.killed, result.cut);
        } else {
            faults.fill(result.filled);
        }
        progress.show(static_cast<std::int64_t>(run) + 1, all);
    }
    return result;
}

std::string lossOf(const FaultReport& report)
{
    if (report.worstLostRecords == 0) {
        return "nothing was lost";
    }
    return "at worst " + grouped(report.worstLostRecords) + " records were lost, " + grouped(report.worstLostMs) +
           " ms of recorded time";
}

void printText(const SelfCheckOptions& options, const Result& result)
{
    for (const FaultReport* report : result.all()) {
        std::cout << report->text << ": " << grouped(report->runs) << " runs, "
                  << (report->runs == 0 ? "cannot be tried on this system" : lossOf(*report)) << '\n';
    }
    for (const FaultReport* report : result.all()) {
        for (const std::string& sentence : report->broken) {
            std::cout << "Not held: " << report->text << ": " << sentence << '\n';
        }
    }
    std::cout << options.directory << ": "
              << (result.held() ? "every promise was held." : "not every promise was held.") << '\n';
    if (!result.held() && !options.keep) {
        std::cout << "With --keep what is left of such runs can be looked at.\n";
    }
}

void printRunsAsJson(const SelfCheckOptions& options, const Result& result)
{
    Json faults = Json::array();
    for (const FaultReport* report : result.all()) {
        faults.push_back({{"fault", report->name},
                          {"runs", report->runs},
                          {"worstLostRecords", report->worstLostRecords},
                          {"worstLostMs", report->worstLostMs},
                          {"broken", report->broken}});
    }
    printJson({{"directory", options.directory}, {"held", result.held()}, {"faults", faults}});
}

/// Starts this program anew for each run.
ExitCode selfCheck(const SelfCheckOptions& options)
{
    if (options.child) {
        return SelfCheck::recordForSelfCheck(options.directory, options.limitBytes) ? ExitCode::Fine
                                                                                    : ExitCode::CannotRead;
    }
    const Interrupt interrupt;
    QTemporaryDir folder(
        QDir(QString::fromStdString(options.directory)).filePath(QStringLiteral("rectool-selfcheck-XXXXXX")));
    if (!folder.isValid()) {
        complain(options.directory, "No folder can be made there: " + folder.errorString().toStdString() + '.');
        return ExitCode::CannotRead;
    }
    folder.setAutoRemove(!options.keep);
    SelfCheck::Faults faults(QDir(folder.path()).absolutePath(), ownProgram());
    const std::string problem = faults.makeReference();
    if (!problem.empty()) {
        complain(folder.path().toStdString(), problem);
        return ExitCode::CannotRead;
    }
    Progress progress(options.directory);
    const Result result = makeRuns(options, faults, progress);
    progress.clear();
    if (result.interrupted) {
        complain(options.directory, "Interrupted.");
        return ExitCode::CannotRead;
    }
    (options.json ? printRunsAsJson : printText)(options, result);
    if (options.keep) {
        std::cerr << "rectool: " << folder.path().toStdString() << " is kept.\n";
    }
    return finish(result.held() ? ExitCode::Fine : ExitCode::Damaged);
}

}  // namespace

void addSelfCheck(const Syntax& program)
{
    Verb verb(program, "selfcheck", "Record on a disk, let go wrong what can, and see what is lost", selfCheck);
    SelfCheckOptions& options = verb.options();
    constexpr double MostRuns = 100'000;
    verb.number("--runs", options.runs, "How many recordings to kill").showDefault().wholeNumber(1, MostRuns);
    verb.flag("--keep", options.keep, "Keep the folder, with what is left of runs that went wrong");
    verb.json();
    verb.flag("--child", options.child, "").hidden();  // how it starts itself
    verb.number("--limit", options.limitBytes, "").hidden();
    verb.examples({"selfcheck /var/lib/recordings", "selfcheck . --runs 300 --json"},
                  "Works in a folder of its own, which is removed at the end, and takes about 100 MB meanwhile.\n"
                  "Exit code 0: every promise was held; 3: one was not; 2: it could not be tried.");
}

}  // namespace RecTool
