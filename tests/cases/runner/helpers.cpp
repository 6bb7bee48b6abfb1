// Makes the files that cases begin with, damages them, and shows what is there afterwards.
#include "helpers.h"

#include <filesystem>

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

#include <recording2/inspection/inspection.h>

#include "programs.h"
#include "support/recordingbytes.h"
#include "support/samplerecording.h"

namespace Cases {

namespace {

namespace fs = std::filesystem;
using TestSupport::HeaderFields;
using TestSupport::ReferenceRecording;

fs::path pathOf(const std::string& name)
{
    return QFile::encodeName(QString::fromStdString(name)).toStdString();
}

std::string bytesOf(const std::string& name)
{
    QFile file(QString::fromStdString(name));
    if (!file.open(QIODevice::ReadOnly)) {
        throw std::runtime_error("there is no file " + name);
    }
    return file.readAll().toStdString();
}

std::string store(const std::string& name, const std::string& bytes)
{
    QFile file(QString::fromStdString(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes.data(), static_cast<qint64>(bytes.size())) < 0) {
        throw std::runtime_error("this file cannot be written: " + name);
    }
    return {};
}

/// "3*text" stands for the text three times.
std::string repeated(const std::string& word)
{
    const std::size_t star = word.find('*');
    if (star == std::string::npos || star == 0 || word.find_first_not_of("0123456789") != star) {
        return word;
    }
    const std::string piece = word.substr(star + 1);
    std::string all;
    for (int i = std::stoi(word); i > 0; --i) {
        all += piece;
    }
    return all;
}

/// The words from one on as bytes, or where there are none the input, line by line.
std::string contentOf(const Words& words, const Lines& input)
{
    std::string content;
    for (std::size_t i = 2; i < words.size(); ++i) {
        content += repeated(words[i]);
    }
    for (const std::string& line : input) {
        content += repeated(line) + '\n';
    }
    return content;
}

/// How many bytes "first" leaves: a number, negative where so many at the end go; "record:3" up to that record, counted
/// from 0; "times:30" so many after the begin of the time table.
std::size_t sizeOf(const std::string& text, const std::string& name, std::size_t whole)
{
    const auto number = std::stoll(text.substr(text.find(':') + 1));
    if (text.find(':') == std::string::npos) {
        return number < 0 ? whole - static_cast<std::size_t>(-number) : static_cast<std::size_t>(number);
    }
    const auto summary = Recording2::Inspection::inspect(name);
    const auto at = text.starts_with("record") ? summary.times.at(static_cast<std::size_t>(number)).position
                                               : summary.header.positions.timeTable + static_cast<std::int32_t>(number);
    return static_cast<std::size_t>(at);
}

std::string first(const Words& words, const Lines& /*input*/)
{
    const std::string bytes = bytesOf(words.at(2));
    return store(words.at(3), bytes.substr(0, sizeOf(words.at(1), words[2], bytes.size())));
}

/// Bytes put over those at an offset, which is negative where it counts from the end.
std::string poke(const Words& words, const Lines& /*input*/)
{
    std::string bytes = bytesOf(words.at(1));
    const auto number = std::stoll(words.at(2));
    const auto at = number < 0 ? bytes.size() - static_cast<std::size_t>(-number) : static_cast<std::size_t>(number);
    return store(words.at(1), bytes.replace(at, words.at(3).size(), words.at(3)));
}

/// The record with this number, counted from 0, begins with no digit any more.
std::string damageRecord(const Words& words, const Lines& /*input*/)
{
    const auto summary = Recording2::Inspection::inspect(words.at(1));
    std::string bytes = bytesOf(words.at(1));
    bytes.at(static_cast<std::size_t>(summary.times.at(std::stoul(words.at(2))).position)) = 'x';
    return store(words.at(1), bytes);
}

std::string replace(const Words& words, const Lines& /*input*/)
{
    std::string bytes = bytesOf(words.at(1));
    const std::size_t at = words[0] == "replace" ? bytes.find(words.at(2)) : bytes.rfind(words.at(2));
    if (at == std::string::npos) {
        throw std::runtime_error("it is not there");
    }
    return store(words.at(1), bytes.replace(at, words[2].size(), words.at(3)));
}

void readHeader(std::istream& line, HeaderFields& header)
{
    std::uint64_t base = 1'600'000'000'000;
    const std::map<std::string, std::function<void(const std::string&)>> fields = {
        {"start", [&](const auto& text) { header.startMs = base + std::stoull(text); }},
        {"stop", [&](const auto& text) { header.stopMs = base + std::stoull(text); }},
        {"base",
         [&](const auto& text) {
             header.startMs = base = std::stoull(text);
             header.stopMs = base + 60'000;
         }},
        {"no-start", [&](const auto&) { header.startMs = 0; }},
        {"stop-at", [&](const auto& text) { header.stopMs = std::stoull(text); }},
        {"minor", [&](const auto& text) { header.minorVersion = static_cast<std::int16_t>(std::stoi(text)); }},
        {"step", [&](const auto& text) { header.stepWidth = std::stof(text); }},
        {"from", [&](const auto& text) { header.startFrequency = std::stof(text); }},
        {"to", [&](const auto& text) { header.stopFrequency = std::stof(text); }},
        {"min", [&](const auto& text) { header.minLevel = std::stoi(text); }},
        {"max", [&](const auto& text) { header.maxLevel = std::stoi(text); }},
        {"automatic", [&](const auto& text) { header.automatic = text == "yes"; }},
        {"job", [&](const auto& text) { header.jobId = text; }},
        {"device", [&](const auto& text) { header.deviceName = repeated(text); }}};
    for (std::string name, text; line >> name >> text;) {
        for (char& letter : text) {
            letter = letter == '_' ? ' ' : letter;
        }
        fields.at(name)(text);
    }
}

/// A recording of what the input says: "header NAME VALUE...", "type NUMBER KIND KEYWORD PATH", "MS TYPE DATA", the
/// latter with "*" after the time where the record is in the table of channel ranges; "end-of-types" where a further
/// table of types begins. Times are since 13:26:40 on 2020-09-13, or since the header's "base".
std::string record(const Words& words, const Lines& input)
{
    HeaderFields header;
    std::istringstream usual("base 1600000000000");
    readHeader(usual, header);
    std::vector<TestSupport::TypeFields> types;
    ReferenceRecording recording;
    for (const std::string& text : input) {
        std::istringstream line(text);
        std::string word;
        line >> word;
        if (word == "header") {
            readHeader(line, header);
        } else if (word == "end-of-types") {
            recording.types(std::exchange(types, {}));
        } else if (word == "type") {
            TestSupport::TypeFields& type = types.emplace_back();
            line >> type.typeNumber >> type.valueType >> type.keyword >> type.valuePath;
        } else {
            if (!types.empty()) {
                recording.types(std::exchange(types, {}));
            }
            std::int32_t code = 0;
            std::string data;
            line >> code;
            std::getline(line.ignore(1), data);
            recording.record(code, data, std::stoull(word), word.back() == '*');
        }
    }
    if (!types.empty()) {
        recording.types(types);
    }
    return store(words.at(1), recording.close(header));
}

/// A direction finder's recording: a map of four channels and a position, unless "bare", then the input's records.
std::string finder(const Words& words, const Lines& input)
{
    Lines lines = {"header base 1700000000000", "type 20 7 DFSPECTRUM /DfSpectrum",
                   "type 25 3 LOCATIONLATITUDE /LOCATIONLATITUDE", "type 26 3 LOCATIONLONGITUDE /LOCATIONLONGITUDE",
                   "type 41 3 TRUEHEADING /TRUEHEADING"};
    if (words.size() == 2) {
        lines.insert(lines.end(), {"10 20 7;0|34;1e+08,25000,4|50;////", "11 25 3;49.45,0,0", "12 26 3;11.08,0,0"});
    }
    lines.insert(lines.end(), input.begin(), input.end());
    return record(words, lines);
}

std::string list(const Words& words, const Lines& /*input*/)
{
    const QDir folder(words.size() > 1 ? QString::fromStdString(words[1]) : ".");
    std::string shown;
    for (const QFileInfo& entry :
         folder.entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name)) {
        const char* kind = entry.isSymLink() ? "@" : entry.isDir() ? "/" : entry.isFile() ? "" : "|";
        shown += entry.fileName().toStdString() + kind + '\n';
    }
    return shown;
}

/// Of folders, the files in them, by name.
bool areSame(const std::string& one, const std::string& other)
{
    if (!fs::is_directory(pathOf(one))) {
        return bytesOf(one) == bytesOf(other);
    }
    const std::string names = list({"ls", one}, {});
    const Lines files = linesOf(names);
    return names == list({"ls", other}, {}) && std::all_of(files.begin(), files.end(), [&](const std::string& name) {
               return bytesOf(one + '/' + name) == bytesOf(other + '/' + name);
           });
}

/// A command that takes no input and prints nothing.
template <typename Action>
Helper silent(const Action& action)
{
    return [action](const Words& words, const Lines& /*input*/) {
        action(words);
        return std::string();
    };
}

const std::map<std::string, Helper>& makers()
{
    static const std::map<std::string, Helper> All = {
        {"write", [](const Words& words, const Lines& input) { return store(words.at(1), contentOf(words, input)); }},
        {"append", [](const Words& words,
                      const Lines& input) { return store(words.at(1), bytesOf(words[1]) + contentOf(words, input)); }},
        {"golden",
         [](const Words& words, const Lines&) {
             return store(words.at(2), bytesOf(fromAnyDrive(GOLDEN_FOLDER "/") + words[1] + '/' + words[1] + ".rec"));
         }},
        {"sample", silent([](const Words& words) { writeSampleRecording(words.at(1)); })},
        {"bearings", silent([](const Words& words) { writeBearingRecording(words.at(1), words.size() == 2); })},
        {"plotsample", silent([](const Words& words) { writePlotRecording(words.at(1)); })},
        {"record", record},
        {"finder", finder},
        {"first", first},
        {"poke", poke},
        {"replace", replace},
        {"replace-last", replace},
        {"damage", damageRecord}};
    return All;
}

const std::map<std::string, Helper>& others()
{
    static const std::map<std::string, Helper> All = {
        {"ls", list},
        {"show", [](const Words& words, const Lines&) { return bytesOf(words.at(1)); }},
        {"same",
         [](const Words& words, const Lines&) {
             return std::string(areSame(words.at(1), words.at(2)) ? "the same\n" : "different\n");
         }},
        {"copy", [](const Words& words, const Lines&) { return store(words.at(2), bytesOf(words.at(1))); }},
        {"rename", silent([](const Words& words) { fs::rename(pathOf(words.at(1)), pathOf(words.at(2))); })},
        {"remove", silent([](const Words& words) { fs::remove_all(pathOf(words.at(1))); })},
        {"remove-recordings", silent([](const Words&) {
             for (const QString& name : QDir().entryList({"*.rec"})) {
                 QFile::remove(name);
             }
         })},
        {"mkdir", silent([](const Words& words) { fs::create_directories(pathOf(words.at(1))); })},
        {"link", silent([](const Words& words) { fs::create_symlink(pathOf(words.at(1)), pathOf(words.at(2))); })},
#if !defined(_WIN32)
        {"pipe", [](const Words& words,
                    const Lines&) { return std::to_string(mkfifo(words.at(1).c_str(), S_IRUSR | S_IWUSR)).substr(1); }},
#endif
        {"readonly", silent([](const Words& words) { fs::permissions(pathOf(words.at(1)), fs::perms::owner_read); })},
    };
    return All;
}

}  // namespace

const Helper* helperOf(const std::string& name)
{
    for (const auto* helpers : {&makers(), &others()}) {
        if (const auto found = helpers->find(name); found != helpers->end()) {
            return &found->second;
        }
    }
    return nullptr;
}

}  // namespace Cases
