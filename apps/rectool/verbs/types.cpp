// The verb "types": the numbers, keywords, kinds and value paths of a recording.
#include <iostream>

#include <values/valuebase.h>

#include "commandline/verb.h"
#include "commands.h"
#include "printing/json.h"
#include "printing/output.h"
#include "printing/text.h"
#include "replay/walk.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;

namespace {

std::string valueTypeName(std::int32_t code)
{
    return values::ValueTypeName(static_cast<values::ValueType>(code)).toStdString();
}

/// The name, and the code where the name says nothing.
std::string valueTypeText(std::int32_t code)
{
    const std::string name = valueTypeName(code);
    return name == valueTypeName(0) ? name + " (" + std::to_string(code) + ")" : name;
}

Json typesDocument(const std::string& file, const Inspection::Summary& summary)
{
    const auto typeJson = [](const Inspection::TypeEntry& type) -> Json {
        return {{"number", type.typeNumber},
                {"keyword", fromLatin1(type.keyword)},
                {"path", fromLatin1(type.valuePath)},
                {"valueType", type.valueType},
                {"valueTypeName", valueTypeName(type.valueType)}};
    };
    return {{"file", shownName(file)}, {"types", Json::arrayOf(summary.types, typeJson)}};
}

void printTypes(const Inspection::Summary& summary)
{
    if (summary.types.empty()) {
        std::cout << "The recording has no type table.\n";
        return;
    }
    Table table("rlll", {"Number", "Keyword", "Value", "Path"});
    for (const Inspection::TypeEntry& type : summary.types) {
        table.add({std::to_string(type.typeNumber), oneLine(fromLatin1(type.keyword)), valueTypeText(type.valueType),
                   oneLine(fromLatin1(type.valuePath))});
    }
    table.print();
}

}  // namespace

ExitCode types(const ListOptions& options)
{
    Inspection::Summary summary;
    if (!readSummary(options.file, summary)) {
        return ExitCode::CannotRead;
    }
    if (options.json) {
        printJson(typesDocument(options.file, summary));
    } else {
        printTypes(summary);
    }
    complain(options.file, summary.findings);
    return finish(soundness(summary.findings));
}

void addTypes(const Syntax& program)
{
    Verb verb(program, "types", "Show what can be recorded: numbers, keywords, kinds and value paths", types);
    verb.json();
    verb.paged();
    verb.examples({"types recording.rec"});
}

}  // namespace RecTool
