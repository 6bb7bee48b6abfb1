// Telling the first bad lines one by one, then how many more there were.
#include "input/badlines.h"

#include <utility>

namespace RecStation {

namespace {

constexpr std::uint64_t MostSentences = 20;

}  // namespace

BadLines::BadLines(std::string source, bool strict, InputReport report)
    : m_source(std::move(source)), m_strict(strict), m_report(std::move(report))
{
}

void BadLines::add(std::size_t line, const std::string& problem)
{
    ++m_count;
    const std::string sentence = at(line) + problem;
    if (m_strict) {
        throw StrictError(sentence + " (--strict allows no bad line)");
    }
    if (m_count <= MostSentences) {
        m_report(QString::fromStdString(sentence));
    }
}

std::string BadLines::at(std::size_t line) const
{
    return m_source + (m_input.empty() ? ": line " : ": " + m_input + ": line ") + std::to_string(line) + ": ";
}

void BadLines::finish()
{
    if (!std::exchange(m_finished, true) && m_count > MostSentences) {
        say("and " + std::to_string(m_count - MostSentences) + " more bad lines");
    }
}

void BadLines::say(const std::string& sentence) const
{
    m_report(QString::fromStdString(m_source + ": " + sentence));
}

}  // namespace RecStation
