// Reading a station's file with the lines of its keys, and writing the tables of its recorders.
#include "stationfile.h"

#include <algorithm>
#include <sstream>
#include <utility>

#include <terminaltext/nearestword.h>
#include <terminaltext/quantity.h>
#include <tomltext/tomltext.h>

namespace RecStation {

namespace {

const std::string StationName = "station";
const std::string SourceName = "source";
const std::string ArchiveName = "archive";
const std::string JournalKey = "Journal";

using Entry = std::pair<std::string, const toml::node*>;

// The parser itself sorts by name.
std::vector<Entry> inFileOrder(const toml::table& table)
{
    std::vector<std::pair<toml::source_position, Entry>> entries;
    for (const auto& [key, node] : table) {
        entries.push_back({key.source().begin, {std::string(key.str()), &node}});
    }
    std::stable_sort(entries.begin(), entries.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<Entry> ordered;
    ordered.reserve(entries.size());
    for (auto& entry : entries) {
        ordered.push_back(std::move(entry.second));
    }
    return ordered;
}

unsigned lineOf(const toml::node& node)
{
    return node.source().begin.line;
}

[[noreturn]] void fail(const StationFile& file, unsigned line, const std::string& what)
{
    throw StationFileError(file.at(line) + what);
}

std::optional<std::string> textOf(const toml::node& node)
{
    if (const auto* text = node.as_string()) {
        return text->get();
    }
    if (const auto* number = node.as_integer()) {
        return std::to_string(number->get());
    }
    if (const auto* number = node.as_floating_point()) {
        return TerminalText::shortest(number->get());
    }
    std::ostringstream shown;
    if (const auto* day = node.as_date()) {
        shown << day->get();
    } else if (const auto* time = node.as_time()) {
        shown << time->get();
    } else if (const auto* moment = node.as_date_time()) {
        shown << moment->get();
    }
    return shown.str().empty() ? std::nullopt : std::optional(shown.str());
}

StationSetting settingOf(const StationFile& file, const std::string& key, const toml::node& node)
{
    StationSetting setting{key, {}, std::nullopt, lineOf(node)};
    const std::string expected = "key \"" + key + "\": expected a text, a number, true or false, or a list of texts";
    if (const auto* on = node.as_boolean()) {
        setting.on = on->get();
    } else if (const auto* list = node.as_array()) {
        for (const toml::node& item : *list) {
            const auto text = textOf(item);
            setting.texts.push_back(text ? *text : (fail(file, lineOf(item), expected), std::string()));
        }
    } else if (const auto text = textOf(node)) {
        setting.texts.push_back(*text);
    } else {
        fail(file, lineOf(node), expected);
    }
    return setting;
}

StationTable tableOf(const StationFile& file, const toml::table& table)
{
    StationTable read;
    read.line = lineOf(table);
    for (const auto& [key, node] : inFileOrder(table)) {
        read.settings.push_back(settingOf(file, key, *node));
    }
    return read;
}

StationTable sourceOf(const StationFile& file, const toml::table& table)
{
    StationTable source = tableOf(file, table);
    const auto type = std::find_if(source.settings.begin(), source.settings.end(),
                                   [](const StationSetting& setting) { return setting.key == "type"; });
    if (type == source.settings.end()) {
        fail(file, source.line, "a [[source]] needs a type, such as type = \"sim\"");
    }
    if (type->texts.size() != 1) {
        fail(file, type->line, "the type of a source is a text, such as \"sim\"");
    }
    source.type = type->texts.front();
    source.settings.erase(type);
    return source;
}

void readSources(StationFile& file, const toml::node& node)
{
    const toml::array* list = node.as_array();
    const bool tables = list != nullptr &&
                        std::all_of(list->begin(), list->end(), [](const toml::node& item) { return item.is_table(); });
    if (!tables) {
        fail(file, lineOf(node), "every source has a table of its own, which begins with [[source]]");
    }
    for (const toml::node& item : *list) {
        file.sources.push_back(sourceOf(file, *item.as_table()));
    }
}

// A recorder has any name; one that is nearly another table's, and has no key of a recorder, was to be that table.
void refuseMistyped(const StationFile& file, const std::string& name, const toml::table& table)
{
    const auto near = TerminalText::nearestWord(name, {StationName, SourceName, ArchiveName});
    const bool recorder = table.empty() || std::any_of(table.begin(), table.end(), [](const auto& entry) {
                              const std::string_view key = entry.first.str();
                              return !key.empty() && key.front() >= 'A' && key.front() <= 'Z';
                          });
    if (near && !recorder) {
        fail(file, lineOf(table), "the table [" + name + "] has no key of a recorder: did you mean [" + *near + "]?");
    }
}

void noteRecorder(StationFile& file, const std::string& name, const toml::table& table)
{
    refuseMistyped(file, name, table);
    file.hasRecorders = true;
    for (const auto& [key, node] : table) {
        file.lines[name + '.' + std::string(key.str())] = lineOf(node);
    }
}

void readTop(StationFile& file, const std::string& name, const toml::node& node)
{
    if (name == SourceName) {
        readSources(file, node);
        file.startsSources = true;
    } else if (const toml::table* table = node.as_table()) {
        if (name == StationName) {
            file.station = tableOf(file, *table);
            file.startsSources = true;
        } else if (name == ArchiveName) {
            file.hasArchive = true;
        } else {
            noteRecorder(file, name, *table);
        }
    } else if (node.is_array_of_tables()) {
        const auto near = TerminalText::nearestWord(name, {SourceName});
        fail(file, lineOf(node), "there is no [[" + name + "]]" + (near ? ": did you mean [[" + *near + "]]?" : ""));
    } else {
        fail(file, lineOf(node), "key \"" + name + "\" stands in no table: recstation's options are keys of [station]");
    }
}

void writeTable(std::ostream& out, const std::string& name, const toml::table& table, const std::string& journal)
{
    out << '[' << name << "]\n";
    for (const auto& [key, node] : inFileOrder(table)) {
        if (node->is_table() || (key == JournalKey && !journal.empty())) {
            continue;
        }
        out << tomlKey(key) << " = ";
        if (const auto* text = node->as_string()) {
            out << tomlString(text->get());
        } else {
            node->visit([&out](const auto& value) { out << value; });
        }
        out << '\n';
    }
    if (!journal.empty()) {
        out << JournalKey << " = " << tomlString(journal) << '\n';
    }
    out << '\n';
    for (const auto& [key, node] : inFileOrder(table)) {
        if (const toml::table* inner = node->as_table()) {
            writeTable(out, name + '.' + tomlKey(key), *inner, {});
        }
    }
}

}  // namespace

StationFile readStationFile(const std::string& path, const std::string& text)
{
    StationFile file;
    file.path = path;
    file.text = text;
    try {
        const toml::table root = TomlText::parse(text);
        for (const auto& [name, node] : inFileOrder(root)) {
            readTop(file, name, *node);
        }
    } catch (const TomlText::Error& error) {
        fail(file, error.line(), error.what());
    }
    return file;
}

std::string otherTables(const std::string& text, const std::string& forced, const std::string& lacking)
{
    std::ostringstream out;
    const toml::table root = TomlText::parse(text);
    for (const auto& [name, node] : inFileOrder(root)) {
        const toml::table* table = node->as_table();
        if (table == nullptr || name == StationName) {
            continue;
        }
        const std::string& journal = forced.empty() && !table->contains(JournalKey) ? lacking : forced;
        writeTable(out, tomlKey(name), *table, name == ArchiveName ? std::string() : journal);
    }
    return out.str();
}

}  // namespace RecStation
