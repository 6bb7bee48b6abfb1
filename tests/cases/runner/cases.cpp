// Runs the cases of tests/cases, each a test named after its file; with --accept what is printed becomes expected.
#include <cstring>
#include <filesystem>

#include <QCoreApplication>
#include <QTemporaryFile>
#include <QTextCodec>

#include "casefile.h"
#include "helpers.h"
#include "programs.h"

namespace {

using namespace Cases;
namespace fs = std::filesystem;

bool acceptsWhatIsPrinted = false;

/// As root may.
bool mayWriteEverything()
{
    QTemporaryFile file;
    return file.open() && file.setPermissions(QFile::ReadOwner) && QFile(file.fileName()).open(QIODevice::ReadWrite);
}

/// What this build and system do not have, of what a case needs.
std::string missing(const std::vector<std::string>& needs)
{
    const std::vector<std::string> here = {
#if !defined(_WIN32)
        "posix",
#else
        "windows",
#endif
#if defined(HAS_PLOT)
        "plot",
#else
        "no-plot",
#endif
#if defined(HAS_GEO)
        "geo",
#else
        "no-geo",
#endif
#if defined(RECSTATION_HAS_IQ)
        "iq",
#endif
    };
    for (const std::string& need : needs) {
        const bool isGiven = need == "data" ? QDir(QString::fromStdString(fromAnyDrive(TEST_DATA_DIRECTORY))).exists()
                             : need == "limited-user" ? !mayWriteEverything()
                                                      : false;
        if (!isGiven && std::find(here.begin(), here.end(), need) == here.end()) {
            return need;
        }
    }
    return {};
}

void replaceAll(std::string& text, const std::string& what, const std::string& by)
{
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size())) {
        text.replace(at, what.size(), by);
    }
}

/// On Windows paths have other separators, which JSON doubles: every backslash there is, also of what is expected.
std::string withoutBackslashes(std::string text)
{
#if defined(_WIN32)
    replaceAll(text, R"(\\)", "/");
    replaceAll(text, R"(\)", "/");
#endif
    return text;
}
Lines withoutBackslashes(Lines lines)
{
    std::transform(lines.begin(), lines.end(), lines.begin(),
                   [](const std::string& line) { return withoutBackslashes(line); });
    return lines;
}

/// Without what differs from run to run and from system to system.
std::string generalised(std::string text)
{
    text = withoutBackslashes(std::move(text));
    replaceAll(text, QDir::currentPath().toStdString(), "FOLDER");
    return text;
}

/// "*.rec" is the recordings in the current folder.
Words withFilesFound(const Words& words)
{
    Words all;
    for (const std::string& word : words) {
        if (word != "*.rec" && word != "*RX*.rec" && word != "*DF*.rec") {
            all.push_back(word);
            continue;
        }
        for (const QString& name : QDir().entryList({QString::fromStdString(word)}, QDir::Files, QDir::Name)) {
            all.push_back(name.toStdString());
        }
    }
    return all;
}

Printed runHere(const Words& words, const Lines& input)
{
    if (const Helper* helper = helperOf(words.at(0))) {
        return {0, (*helper)(words, input), {}};
    }
    if (words[0] != "rectool" && words[0] != "recstation") {
        throw std::runtime_error("there is no command \"" + words[0] + '"');
    }
    std::string text;
    for (const std::string& line : input) {
        text += line + '\n';
    }
    return runProgram(words, text);
}

Outcome outcomeOf(const Step& step)
{
    Words words = wordsOf(step.command);
    const auto pipe = std::find(words.begin(), words.end(), "|");
    const Words filter(pipe == words.end() ? pipe : pipe + 1, words.end());
    words.erase(pipe, words.end());
    for (std::string& word : words) {
        replaceAll(word, "FOLDER", QDir::currentPath().toStdString());
        replaceAll(word, "DATA/", fromAnyDrive(TEST_DATA_DIRECTORY "/"));
    }
    Printed printed = runHere(withFilesFound(words), step.input);
    if (!filter.empty()) {
        printed.out = filtered(filter, printed.out);
    }
    return {printed.exitCode, linesOf(generalised(printed.out)), linesOf(generalised(printed.err))};
}

std::string shown(const Outcome& outcome)
{
    std::ostringstream text;
    text << "? " << outcome.exitCode << '\n';
    for (const std::string& line : outcome.out) {
        text << "> " << line << '\n';
    }
    for (const std::string& line : outcome.err) {
        text << "! " << line << '\n';
    }
    return text.str();
}

void compare(Step& step)
{
    const Outcome found = outcomeOf(step);
    const bool isAsExpected = found.exitCode == step.expected.exitCode &&
                              areAsExpected(withoutBackslashes(step.expected.out), found.out) &&
                              areAsExpected(withoutBackslashes(step.expected.err), found.err);
    if (acceptsWhatIsPrinted && !isAsExpected) {
        step.expected = found;
    } else if (!isAsExpected) {
        ADD_FAILURE() << "$ " << step.command << "\n--- expected\n"
                      << shown(step.expected) << "--- found\n"
                      << shown(found);
    }
}

class Case : public testing::Test {
public:
    explicit Case(std::string file) : m_path(std::move(file)) {}
    void TestBody() override
    {
        CaseFile file = readCase(m_path);
        if (const std::string need = missing(file.needs); !need.empty()) {
            GTEST_SKIP() << "this build or system has no " << need;
        }
        const QTemporaryDir folder;
        const QString before = QDir::currentPath();
        QDir::setCurrent(folder.path());
        for (Step& step : file.steps) {
            try {
                compare(step);
            } catch (const std::exception& error) {
                ADD_FAILURE() << "$ " << step.command << ": " << error.what();
            }
        }
        QDir::setCurrent(before);
        if (acceptsWhatIsPrinted) {
            writeCase(m_path, file);
        }
    }

private:
    std::string m_path;
};

/// A case's file name as a test's, in which "-" would part patterns.
std::string nameOf(const fs::path& path)
{
    std::string name = path.stem().string();
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

void registerCases()
{
    std::vector<fs::path> paths;
    for (const auto& entry : fs::recursive_directory_iterator(CASES_FOLDER)) {
        if (entry.path().extension() == ".case") {
            paths.push_back(entry.path());
        }
    }
    std::sort(paths.begin(), paths.end());
    for (const fs::path& path : paths) {
        testing::RegisterTest(nameOf(path.parent_path()).c_str(), nameOf(path).c_str(), nullptr, nullptr,
                              path.string().c_str(), 1, [path] { return new Case(path.string()); });
    }
}

}  // namespace

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    acceptsWhatIsPrinted = argc > 1 && std::strcmp(argv[1], "--accept") == 0;
    qputenv("TZ", "UTC");
    qunsetenv("ZELVO_CONFIG");
#if !defined(_WIN32)
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
#endif
    const QCoreApplication application(argc, argv);
    registerCases();
    return RUN_ALL_TESTS();
}
