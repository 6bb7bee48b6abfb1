// The verb "verify": checks everything in recordings, with a verdict for each file.
#include <iostream>

#include <recording2/inspection/verify/verification.h>

#include "commandline/verb.h"
#include "commands.h"
#include "printing/json.h"
#include "printing/output.h"
#include "printing/text.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;
using Inspection::Severity;
using Inspection::Verification;

namespace {

const char* nameOf(Severity severity)
{
    return severity == Severity::Damage ? "damage" : "note";
}

std::string countedPlainly(std::size_t number, const char* what)
{
    return std::to_string(number) + ' ' + what + (number == 1 ? "" : "s");
}

void print(const std::string& file, const Verification& found)
{
    for (const Inspection::Remark& remark : found.remarks) {
        std::cout << printedName(file) << ": offset " << remark.offset << ": " << nameOf(remark.severity) << ": "
                  << oneLine(remark.text) << '\n';
    }
    const std::size_t damage = found.count(Severity::Damage);
    const std::size_t notes = found.count(Severity::Note);
    const std::string verdict = damage == 0 ? styled("sound", Style::Good)
                                            : styled("damaged", Style::Bad) + ", " + countedPlainly(damage, "finding");
    std::cout << printedName(file) << ": " << verdict << (notes == 0 ? "" : ", " + countedPlainly(notes, "note"))
              << '\n';
}

Json verificationJson(const std::string& file, const Verification& found)
{
    Json json = {{"file", shownName(file)}, {"readability", name(found.readability)}};
    if (found.readability != Inspection::Readability::Ok) {
        json["problem"] = found.problem;
        return json;
    }
    Json findings = Json::array();
    for (const Inspection::Remark& remark : found.remarks) {
        findings.push_back({{"offset", remark.offset}, {"severity", nameOf(remark.severity)}, {"text", remark.text}});
    }
    json["size"] = found.fileSize;
    json["records"] = found.records;
    json["sound"] = found.count(Severity::Damage) == 0;
    json["findings"] = std::move(findings);
    return json;
}

ExitCode judge(const Verification& found)
{
    if (found.readability != Inspection::Readability::Ok) {
        return ExitCode::CannotRead;
    }
    return found.count(Severity::Damage) == 0 ? ExitCode::Fine : ExitCode::Damaged;
}

}  // namespace

ExitCode verify(const VerifyOptions& options)
{
    ExitCode result = ExitCode::Fine;
    Json files = Json::array();
    for (const std::string& file : options.files) {
        Progress progress(file);
        const Verification found = Inspection::verify(file, progress.callback());
        progress.clear();
        result = worse(result, judge(found));
        if (found.readability != Inspection::Readability::Ok) {
            complain(file, found.problem);
        }
        if (options.json) {
            files.push_back(verificationJson(file, found));
        } else if (found.readability == Inspection::Readability::Ok) {
            print(file, found);
        }
    }
    if (options.json) {
        printJson({{"files", std::move(files)}});
    }
    return finish(result);
}

void addVerify(const Syntax& program)
{
    Verb verb(program, "verify", "Check everything in recordings that can be checked", verify);
    verb.json();
    verb.paged();
    verb.examples({"verify recording.rec", "verify --json *.rec"},
                  "Exit code 0: sound, there may be notes; 3: damaged; 2: a file cannot be read.");
}

}  // namespace RecTool
