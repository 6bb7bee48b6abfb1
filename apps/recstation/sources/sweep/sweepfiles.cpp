// Putting files in the order of their times, and opening one after the other.
#include "sources/sweep/sweepfiles.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include <QFileInfo>

#include "input/usageerror.h"

namespace RecStation {

namespace {

// A row of a million values fits.
constexpr std::size_t LongestRow = std::size_t{16} * 1024 * 1024;

// Calls with the time of each row of a file until that wants no more. What is bad is told when it is played.
void forEachRow(const std::string& file, long long utcOffsetUs,
                const std::function<bool(unsigned long long time)>& wantsMore)
{
    SweepRowParser parser(utcOffsetUs);
    LineReader lines(openText(file), LongestRow);
    SweepRow row;
    while (lines.next()) {
        try {
            if (SweepRowParser::isNoRow(lines.line())) {
                continue;
            }
            parser.parse(lines.line(), lines.terminated(), row);
        } catch (const LineError&) {
            continue;
        }
        if (!wantsMore(row.time)) {
            return;
        }
    }
}

std::optional<unsigned long long> firstTime(const std::string& file, long long utcOffsetUs)
{
    std::optional<unsigned long long> first;
    forEachRow(file, utcOffsetUs, [&first](unsigned long long time) {
        first = time;
        return false;
    });
    return first;
}

}  // namespace

SweepFiles::SweepFiles(const std::vector<std::string>& files, long long utcOffsetUs, const Tell& tell)
    : m_files(files), m_utcOffsetUs(utcOffsetUs)
{
    if (m_files.size() > 1) {
        sortByTime(tell);
    }
    open();
}

void SweepFiles::sortByTime(const Tell& tell)
{
    std::vector<std::pair<unsigned long long, std::string>> dated;
    std::vector<std::string> without;
    for (const std::string& file : m_files) {
        if (file == "-") {
            throw UsageError("sweep: - is the standard input and stands alone: name only files, or only -");
        }
        const QFileInfo info(QString::fromStdString(file));
        if (info.exists() && !info.isFile()) {
            throw std::runtime_error("sweep: " + file + " is no file: of several inputs each has to be one");
        }
        if (const auto time = firstTime(file, m_utcOffsetUs)) {
            dated.emplace_back(*time, file);
        } else {
            without.push_back(file);
        }
    }
    if (dated.empty()) {
        return;
    }
    std::stable_sort(dated.begin(), dated.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    m_files.clear();
    for (auto& [time, file] : dated) {
        m_files.push_back(std::move(file));
    }
    for (std::string& file : without) {
        tell(file + " holds no row of a sweep");
        m_files.push_back(std::move(file));  // so that its bad lines are told
    }
}

void SweepFiles::open()
{
    m_lines.emplace(openText(m_files[m_current]), LongestRow);
}

bool SweepFiles::openNext()
{
    if (m_current + 1 >= m_files.size()) {
        return false;
    }
    ++m_current;
    open();
    return true;
}

std::string SweepFiles::name() const
{
    return m_files.size() > 1 ? m_files[m_current] : std::string();
}

std::optional<unsigned long long> SweepFiles::lastTime() const
{
    std::optional<unsigned long long> last;
    for (const std::string& file : m_files) {
        forEachRow(file, m_utcOffsetUs, [&last](unsigned long long time) {
            last = std::max(last.value_or(0), time);
            return true;
        });
    }
    return last;
}

}  // namespace RecStation
