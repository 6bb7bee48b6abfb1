// The options of the source "sweep"; opening files in the order of their times, reading rows until a sweep is whole,
// and showing it as one spectrum.
#include "sources/sweep/sweepsource.h"

#include <algorithm>
#include <functional>
#include <stdexcept>
#include <utility>

#include <QFileInfo>

#include <CLI/CLI.hpp>

#include <system/stopsignal.h>

#include "clock.h"
#include "input/badlines.h"
#include "input/linereader.h"
#include "input/optionchecks.h"
#include "input/timeorder.h"
#include "input/timetext.h"
#include "published/spectrumvalues.h"
#include "sources/offeredsource.h"
#include "sources/sweep/sweepassembly.h"
#include "sources/sweep/sweeprow.h"

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

/// The inputs: one, or several files one after the other.
/// Several files are read in the order of the times of their first rows, whatever their names; those of one time as
/// they were given. Only one is open at a time.
class SweepFiles {
public:
    /// Opens the first. Files without any row are told, and come last.
    /// @param files UTF-8, one at least; the only one may be "-" or a pipe
    /// @throws UsageError when "-" is one of several; std::runtime_error when one cannot be read, or is no file and one
    /// of several
    SweepFiles(const std::vector<std::string>& files, long long utcOffsetUs, const BadLines& bad)
        : m_files(files), m_utcOffsetUs(utcOffsetUs)
    {
        if (m_files.size() > 1) {
            sortByTime(bad);
        }
        open();
    }

    [[nodiscard]] LineReader& lines() { return *m_lines; }
    /// Opens the next file; false when there is none.
    [[nodiscard]] bool openNext()
    {
        if (m_current + 1 >= m_files.size()) {
            return false;
        }
        ++m_current;
        open();
        return true;
    }
    /// How messages name the open file where there are several; empty for one.
    [[nodiscard]] std::string name() const { return m_files.size() > 1 ? m_files[m_current] : std::string(); }
    /// The file that is read first, as it was given.
    [[nodiscard]] const std::string& first() const { return m_files.front(); }
    [[nodiscard]] std::size_t count() const { return m_files.size(); }
    [[nodiscard]] bool isLive() const { return m_files.front() == "-"; }

    /// The latest time of all rows, microseconds since 1970 UTC; reads all files.
    [[nodiscard]] std::optional<unsigned long long> lastTime() const
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

private:
    void sortByTime(const BadLines& bad)
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
            bad.say(file + " holds no row of a sweep");
            m_files.push_back(std::move(file));  // so that its bad lines are told
        }
    }
    void open() { m_lines.emplace(openText(m_files[m_current]), LongestRow); }

    std::vector<std::string> m_files;
    long long m_utcOffsetUs;
    std::size_t m_current = 0;
    std::optional<LineReader> m_lines;
};

class SweepSource final : public Source {
public:
    SweepSource(SweepOptions options, InputReport report)
        : m_options(std::move(options)),
          m_bad("sweep", m_options.strict, std::move(report)),
          m_order(m_options.splitGapUs),
          m_parser(m_options.utcOffsetUs),
          m_assembly(m_options.binFrequency == "lower")
    {
    }

    [[nodiscard]] QString name() const override { return QStringLiteral("sweep"); }
    void prepare() override
    {
        m_files.emplace(m_options.files, m_options.utcOffsetUs, m_bad);
        m_bad.nameInput(m_files->name());
        const QString device = m_files->isLive() ? QStringLiteral("Sweep input") : textBaseName(m_files->first());
        m_values = std::make_unique<SpectrumValues>(SpectrumDevice{
            .name = forFileNames(device), .type = QStringLiteral("Sweep"), .valuePath = m_options.valuePath});
    }
    [[nodiscard]] std::optional<unsigned long long> nextTime() override
    {
        if (!m_sweepWaits && !m_ended && !readSweep()) {
            return std::nullopt;
        }
        return m_sweepWaits ? std::optional(m_sweep.time) : std::nullopt;
    }
    void step() override
    {
        if (std::exchange(m_sweep.newLayout, false)) {
            showLayout();
        }
        if (m_options.live) {
            m_sweep.time = stationTimeUs();
        }
        m_values->showPart(0, m_sweep.cells, m_sweep.time);
        m_sweepWaits = false;
    }
    [[nodiscard]] std::optional<unsigned long long> unfinishedTime() override
    {
        m_order.finish(m_bad);
        // A sweep that is put together and was not due yet lies ahead of the stop.
        if (m_sweepWaits || m_ended || (m_assembly.empty() && !m_rowWaits)) {
            return std::nullopt;
        }
        if (std::exchange(m_rowWaits, false)) {
            m_assembly.add(m_row);
            ++m_used;
        }
        m_ended = true;
        m_assembly.noteLoss();
        takeSweep();
        return m_sweep.time;
    }
    [[nodiscard]] std::optional<unsigned long long> lastTime() override
    {
        return m_files->isLive() ? std::nullopt : m_files->lastTime();
    }
    [[nodiscard]] bool plainValuesComeFirst() const override { return true; }  // a new range
    [[nodiscard]] QStringList spectra() const override { return {m_options.valuePath + "/Scn/RfSpectrum"}; }
    [[nodiscard]] SourceReport report() const override { return {m_used, m_skipped, m_bad.count(), true}; }

private:
    // Reads up to the end of a sweep, which waits then; false at the end of the last input.
    [[nodiscard]] bool readSweep()
    {
        while (!m_assembly.complete()) {
            if (m_rowWaits || readRow()) {
                if (std::exchange(m_rowWaits, false) || !m_assembly.beginsNext(m_row)) {
                    try {
                        m_assembly.add(m_row);
                        ++m_used;
                    } catch (const LineError& error) {
                        m_bad.add(m_files->lines().number(), error.what());
                    }
                    continue;
                }
                m_rowWaits = true;
            } else if (System::StopSignal::requested()) {
                return false;
            } else {
                endFile();
                if (m_assembly.empty() && !m_ended) {
                    continue;
                }
            }
            break;
        }
        if (!m_assembly.empty()) {
            takeSweep();
        } else {
            endInput();
        }
        return m_sweepWaits;
    }

    // False at the end of the input and when the process is to stop.
    [[nodiscard]] bool readRow()
    {
        LineReader& lines = m_files->lines();
        // A line that the wish to stop cut short is none.
        while (lines.next() && !System::StopSignal::requested()) {
            try {
                if (!SweepRowParser::isNoRow(lines.line())) {
                    m_parser.parse(lines.line(), lines.terminated(), m_row);
                    tellOverlap();
                    static_cast<void>(m_order.take(m_row.time, lines.number(), m_bad));
                    return true;
                }
                ++m_skipped;
            } catch (const LineError& error) {
                m_assembly.noteLoss();
                m_bad.add(lines.number(), error.what());
            }
        }
        return false;
    }

    // A sweep does not go on from one file to the next.
    void endFile()
    {
        if (!m_assembly.empty()) {
            m_assembly.noteLoss();
        }
        const std::string before = m_files->name();
        m_ended = !m_files->openNext();
        if (!m_ended) {
            m_fileBefore = before;
            m_bad.nameInput(m_files->name());
        }
    }

    // With the first row of a file.
    void tellOverlap()
    {
        const std::string before = std::exchange(m_fileBefore, {});
        if (!before.empty() && m_row.time < notBefore(m_order.latest(), m_row.time, m_options.splitGapUs)) {
            m_bad.say(m_files->name() + " begins " + spanText(m_order.latest() - m_row.time) + " before " + before +
                      " ends, at " + utcText(m_row.time) + ": what overlaps is recorded at " +
                      utcText(m_order.latest()));
        }
    }
    void endInput()
    {
        m_order.finish(m_bad);
        if (m_sweeps == 0) {
            throw std::runtime_error(
                "sweep: " +
                (m_files->count() == 1 ? inputName(m_files->first()) + " holds" : "all files together hold") +
                " no sweep (" + std::to_string(m_skipped) + " lines skipped, " + std::to_string(m_bad.count()) +
                " bad)");
        }
    }
    void takeSweep()
    {
        const bool first = m_sweeps++ == 0;
        m_assembly.take(m_sweep);
        m_latest = notBefore(m_latest, m_sweep.time, m_options.splitGapUs);
        m_sweep.time = m_latest;
        m_sweepWaits = true;
        if (first && !m_options.live) {  // when nextTime may not touch the tree
            // The channels are there before any recording starts.
            showLayout();
            m_sweep.newLayout = false;
        }
        if (m_ended) {
            endInput();
        }
    }
    void showLayout()
    {
        const SweepLayout& layout = m_assembly.layout();
        m_values->setPanorama(layout.range(), layout.lowHz(), layout.highHz(), layout.stepHz());
    }

    SweepOptions m_options;
    BadLines m_bad;
    TimeOrder m_order;  // of the rows
    SweepRowParser m_parser;
    SweepAssembly m_assembly;
    std::optional<SweepFiles> m_files;
    std::unique_ptr<SpectrumValues> m_values;
    SweepRow m_row;             // read last
    bool m_rowWaits = false;    // for the sweep before to be shown
    Sweep m_sweep;              // put together last
    bool m_sweepWaits = false;  // to be shown
    bool m_ended = false;
    std::string m_fileBefore;  // until the first row of the next one has come
    std::uint64_t m_used = 0;
    std::uint64_t m_skipped = 0;
    std::uint64_t m_sweeps = 0;
    unsigned long long m_latest = 0;  // of the sweeps
};

constexpr auto SweepExample = R"(
Every line is a row: date, time, lowest Hz, highest Hz, bin width in Hz, samples, and a level in dB for every bin.
The rows of a sweep are put together to one RF spectrum. rtl_power, hackrf_sweep and others write this.

Examples:
  recstation -o recordings sweep night.csv --utc-offset +01:00
  recstation -o recordings sweep night*.csv         in the order of their times
  hackrf_sweep -f 2400:2500 | recstation -o recordings sweep -)";

void addSweepOptions(CLI::App& command, SweepOptions& options)
{
    command.footer(SweepExample);
    addInputFile(command, options.files, "Rows as CSV, one file or several; - is the standard input");
    addUtcOffset(command, options.utcOffsetUs, "How far the rows' times are ahead of UTC, as -05:00");
    command
        .add_option("--bin-frequency", options.binFrequency,
                    "centre or lower: a value's channel is the middle or the lower edge of its bin")
        ->check(TerminalText::oneOf({"centre", "lower"}))
        ->capture_default_str();
    addStrict(command, options.strict);
}

}  // namespace

std::unique_ptr<Source> makeSweepSource(const SweepOptions& options, InputReport report)
{
    return std::make_unique<SweepSource>(options, std::move(report));
}

std::shared_ptr<OfferedSource> offerSweep()
{
    const auto make = [](SweepOptions options, const SourceRun& run) {
        options.splitGapUs = run.splitGapUs;
        options.live = run.live;
        options.valuePath = receiverOf(run.configuration).valuePath;
        return makeSweepSource(options, run.hooks.report);
    };
    return std::make_shared<SourceWith<SweepOptions>>(
        SourceTraits{
            .name = "sweep", .description = "Spectra of a sweeping receiver as CSV", .turn = 2, .receives = true},
        addSweepOptions, make);
}

}  // namespace RecStation
