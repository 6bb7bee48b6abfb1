// Reading and writing the files of cases, and comparing what was printed with what they expect.
#include "casefile.h"

namespace Cases {

namespace {

std::string withoutCarriageReturn(std::string line)
{
    if (!line.empty() && line.back() == '\r') {
        line.pop_back();
    }
    return line;
}

/// What stands after the sign that a line begins with and one blank.
std::string behindSign(const std::string& line)
{
    return line.size() > 2 ? line.substr(2) : std::string();
}

void addNeeds(CaseFile& file, const std::string& line)
{
    std::istringstream words(line.substr(line.find(':') + 1));
    for (std::string word; words >> word;) {
        file.needs.push_back(word);
    }
}

bool isOfStep(char sign)
{
    return std::string("|?>!").find(sign) != std::string::npos;
}

void addToStep(Step& step, const std::string& line)
{
    const std::string text = behindSign(line);
    switch (line[0]) {
        case '|':
            step.input.push_back(text);
            break;
        case '?':
            step.expected.exitCode = std::stoi(text);
            break;
        case '>':
            step.expected.out.push_back(text);
            break;
        default:
            step.expected.err.push_back(text);
    }
}

void write(std::ostream& stream, char sign, const Lines& lines)
{
    for (const std::string& line : lines) {
        stream << sign << (line.empty() ? "" : " ") << line << '\n';
    }
}

char escaped(const std::string& text, std::size_t& at)
{
    constexpr int Hexadecimal = 16;
    const char letter = text.at(++at);
    switch (letter) {
        case 'n':
            return '\n';
        case 't':
            return '\t';
        case 'r':
            return '\r';
        case 'x':
            at += 2;
            return static_cast<char>(std::stoi(text.substr(at - 1, 2), nullptr, Hexadecimal));
        default:
            return letter;
    }
}

bool lineMatches(const std::string& expected, const std::string& found)
{
    const std::string any = "[..]";
    std::size_t at = 0;
    std::size_t from = 0;
    for (std::size_t mask = expected.find(any); mask != std::string::npos; mask = expected.find(any, from)) {
        const std::string piece = expected.substr(from, mask - from);
        const std::size_t place = found.find(piece, at);
        if (place == std::string::npos || (from == 0 && place != 0)) {
            return false;
        }
        at = place + piece.size();
        from = mask + any.size();
    }
    const std::string rest = expected.substr(from);
    return from == 0 ? found == rest : found.size() >= at + rest.size() && found.ends_with(rest);
}

bool matches(const Lines& expected, std::size_t e, const Lines& found, std::size_t f)
{
    if (e == expected.size()) {
        return f == found.size();
    }
    if (expected[e] == "[...]") {
        return matches(expected, e + 1, found, f) || (f < found.size() && matches(expected, e, found, f + 1));
    }
    return f < found.size() && lineMatches(expected[e], found[f]) && matches(expected, e + 1, found, f + 1);
}

}  // namespace

CaseFile readCase(const std::string& path)
{
    std::ifstream stream(path);
    CaseFile file;
    Lines before;
    int number = 0;
    for (std::string raw; std::getline(stream, raw);) {
        const std::string line = withoutCarriageReturn(raw);
        ++number;
        if (line.empty() || line[0] == '#' || line.starts_with("needs:")) {
            before.push_back(line);
            if (line.starts_with("needs:")) {
                addNeeds(file, line);
            }
        } else if (line.starts_with("$ ")) {
            file.steps.push_back({std::move(before), behindSign(line), {}, {}});
            before.clear();
        } else if (isOfStep(line[0]) && !file.steps.empty() && before.empty()) {
            addToStep(file.steps.back(), line);
        } else {
            throw std::runtime_error(path + ':' + std::to_string(number) + ": this is no line of a case");
        }
    }
    file.behind = before;
    return file;
}

void writeCase(const std::string& path, const CaseFile& file)
{
    std::ofstream stream(path, std::ios::binary);
    for (const Step& step : file.steps) {
        for (const std::string& line : step.before) {
            stream << line << '\n';
        }
        stream << "$ " << step.command << '\n';
        write(stream, '|', step.input);
        if (step.expected.exitCode != 0) {
            stream << "? " << step.expected.exitCode << '\n';
        }
        write(stream, '>', step.expected.out);
        write(stream, '!', step.expected.err);
    }
    for (const std::string& line : file.behind) {
        stream << line << '\n';
    }
}

std::vector<std::string> wordsOf(const std::string& command)
{
    std::vector<std::string> words;
    bool isOpen = false;
    char quote = 0;
    for (std::size_t at = 0; at < command.size(); ++at) {
        const char letter = command[at];
        if (quote == 0 && letter == ' ') {
            isOpen = false;
            continue;
        }
        if (!isOpen) {
            words.emplace_back();
            isOpen = true;
        }
        if (quote == 0 && (letter == '"' || letter == '\'')) {
            quote = letter;
        } else if (letter == quote) {
            quote = 0;
        } else {
            words.back() += quote == '"' && letter == '\\' ? escaped(command, at) : letter;
        }
    }
    return words;
}

Lines linesOf(const std::string& text)
{
    Lines lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(withoutCarriageReturn(line));
    }
    if (!text.empty() && text.back() != '\n') {
        lines.back() += "[no end of line]";
    }
    return lines;
}

bool areAsExpected(const Lines& expected, const Lines& found)
{
    return matches(expected, 0, found, 0);
}

}  // namespace Cases
