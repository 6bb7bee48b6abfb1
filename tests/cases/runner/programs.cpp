// Calls the programs with their streams taken into files, and one in a process of its own.
#include "programs.h"

#include <cstdio>

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

#include <QTemporaryFile>

#include <program.h>
#include <rectool.h>

#include "support/program.h"

namespace Cases {

namespace {

#if defined(_WIN32)
const std::string drive = QDir::currentPath().left(2).toStdString();  // where the tests are started
#endif

void flushAll()
{
    std::cout.flush();
    std::cerr.flush();
    static_cast<void>(std::fflush(nullptr));
}

/// One of the standard streams is a file while the object lives.
class StreamInFile {
public:
    StreamInFile(int descriptor, const std::string& content) : m_descriptor(descriptor), m_before(dup(descriptor))
    {
        m_file.open();
        m_file.write(content.data(), static_cast<qint64>(content.size()));
        m_file.seek(0);
        dup2(m_file.handle(), m_descriptor);
    }
    StreamInFile(const StreamInFile&) = delete;
    StreamInFile& operator=(const StreamInFile&) = delete;
    ~StreamInFile()
    {
        flushAll();
        dup2(m_before, m_descriptor);
        close(m_before);
    }
    [[nodiscard]] std::string text()
    {
        flushAll();
        QFile file(m_file.fileName());
        return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : std::string("the output is lost");
    }

private:
    int m_descriptor;
    int m_before;
    QTemporaryFile m_file;
};

Printed callHere(const std::vector<std::string>& words, const std::string& input)
{
    constexpr int StandardInput = 0;
    constexpr int StandardOutput = 1;
    constexpr int StandardError = 2;
    flushAll();
    const std::vector<std::string> arguments(words.begin() + 1, words.end());
    const StreamInFile in(StandardInput, input);
    StreamInFile out(StandardOutput, {});
    StreamInFile err(StandardError, {});
    const int exitCode = words[0] == "rectool" ? RecTool::CommandLine::run(arguments)
                                               : static_cast<int>(RecStation::runProgram(arguments));
    return {exitCode, out.text(), err.text()};
}

Printed callProcess(const std::vector<std::string>& words)
{
    QProcess process;
    process.setProcessEnvironment(TestSupport::bareEnvironment(LEAKS_OF_QT));
    QStringList arguments;
    for (const std::string& word : words) {
        arguments.append(QString::fromStdString(word));
    }
    process.start(QString::fromStdString(fromAnyDrive(RECTOOL)), arguments.mid(1));
    const auto [exitCode, out, err] = TestSupport::finish(process);
    return {exitCode, out, err};
}

}  // namespace

Printed runProgram(const std::vector<std::string>& words, const std::string& input)
{
    const bool isPlot = words.size() > 1 && words[0] == "rectool" && words[1] == "plot";
    const bool draws =
        isPlot || std::any_of(words.begin(), words.end(), [](const auto& word) { return word.ends_with(".png"); });
    return draws ? callProcess(words) : callHere(words, input);
}

std::string fromAnyDrive(const char* path)
{
#if defined(_WIN32)
    return drive + path;
#else
    return path;
#endif
}

}  // namespace Cases
