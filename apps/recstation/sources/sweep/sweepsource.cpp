// Reading rows until a sweep is whole, and showing it as one spectrum.
#include "sources/sweep/sweepsource.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include <QLoggingCategory>

#include <system/stopsignal.h>

#include "input/linereader.h"
#include "input/timeorder.h"
#include "sources/sweep/sweepassembly.h"
#include "sources/sweep/sweeprow.h"
#include "sources/sweep/sweepvalues.h"

namespace RecStation {

namespace {

Q_LOGGING_CATEGORY(sweepLog, "recstation.sweep")

// A row of a million values fits.
constexpr std::size_t LongestRow = std::size_t{16} * 1024 * 1024;

class SweepSource final : public Source {
public:
    SweepSource(SweepOptions options, InputReport report)
        : m_options(std::move(options)),
          m_bad("sweep", m_options.strict, std::move(report)),
          m_order("sweep", m_options.strict, m_options.splitGapUs),
          m_parser(m_options.utcOffset),
          m_assembly(m_options.binFrequency == "lower")
    {
    }

    [[nodiscard]] QString name() const override { return QStringLiteral("sweep"); }
    void prepare() override;
    [[nodiscard]] std::optional<unsigned long long> nextTime() override;
    void step() override;
    [[nodiscard]] std::optional<unsigned long long> unfinishedTime() override;
    [[nodiscard]] std::optional<unsigned long long> lastTime() override;
    [[nodiscard]] bool plainValuesComeFirst() const override { return true; }  // a new range
    [[nodiscard]] QStringList spectra() const override { return {m_options.valuePath + "/Scn/RfSpectrum"}; }
    [[nodiscard]] SourceReport report() const override { return {m_used, m_skipped, m_bad.count(), true}; }

private:
    [[nodiscard]] bool readSweep();
    [[nodiscard]] bool readRow();
    void endInput();
    void takeSweep();

    SweepOptions m_options;
    BadLines m_bad;
    TimeOrder m_order;  // of the rows
    SweepRowParser m_parser;
    SweepAssembly m_assembly;
    std::unique_ptr<LineReader> m_lines;
    std::unique_ptr<SweepValues> m_values;
    SweepRow m_row;             // read last
    bool m_rowWaits = false;    // for the sweep before to be shown
    Sweep m_sweep;              // put together last
    bool m_sweepWaits = false;  // to be shown
    bool m_ended = false;
    std::uint64_t m_used = 0;
    std::uint64_t m_skipped = 0;
    std::uint64_t m_sweeps = 0;
    unsigned long long m_latest = 0;  // of the sweeps
};

void SweepSource::prepare()
{
    m_lines = std::make_unique<LineReader>(openText(m_options.file), LongestRow);
    const QString device = m_options.file == "-" ? QStringLiteral("Sweep input") : textBaseName(m_options.file);
    m_values = std::make_unique<SweepValues>(device, m_options.valuePath);
}

std::optional<unsigned long long> SweepSource::nextTime()
{
    if (!m_sweepWaits && !m_ended && !readSweep()) {
        return std::nullopt;
    }
    return m_sweepWaits ? std::optional(m_sweep.time) : std::nullopt;
}

// Reads up to the end of a sweep, which waits then; false at the end of the input.
bool SweepSource::readSweep()
{
    while (!m_assembly.complete()) {
        if (m_rowWaits || readRow()) {
            if (std::exchange(m_rowWaits, false) || !m_assembly.beginsNext(m_row)) {
                try {
                    m_assembly.add(m_row);
                    ++m_used;
                } catch (const LineError& error) {
                    m_bad.add(m_lines->number(), error.what());
                }
                continue;
            }
            m_rowWaits = true;
        } else if (System::StopSignal::requested()) {
            return false;
        } else {
            m_ended = true;
            m_assembly.noteLoss();
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
bool SweepSource::readRow()
{
    for (;;) {
        const LineReader::Result result = m_lines->next();
        // A line that the wish to stop cut short is none.
        if (result == LineReader::Result::End || System::StopSignal::requested()) {
            return false;
        }
        try {
            if (result == LineReader::Result::TooLong) {
                throw LineError("it is longer than 16 MiB");
            }
            if (result == LineReader::Result::Damaged) {
                throw LineError(m_lines->problem());
            }
            if (!SweepRowParser::isNoRow(m_lines->line())) {
                m_parser.parse(m_lines->line(), m_lines->terminated(), m_row);
                static_cast<void>(m_order.take(m_row.time, m_lines->number()));
                return true;
            }
            ++m_skipped;
        } catch (const LineError& error) {
            m_assembly.noteLoss();
            m_bad.add(m_lines->number(), error.what());
        }
    }
}

void SweepSource::takeSweep()
{
    const bool first = m_sweeps++ == 0;
    m_assembly.take(m_sweep);
    m_latest = notBefore(m_latest, m_sweep.time, m_options.splitGapUs);
    m_sweep.time = m_latest;
    m_sweepWaits = true;
    if (first) {
        // The channels are there before any recording starts.
        m_values->setLayout(m_assembly.layout());
        m_sweep.newLayout = false;
    }
    if (m_ended) {
        endInput();
    }
}

void SweepSource::endInput()
{
    m_bad.finish();
    m_order.finish(m_bad);
    if (m_sweeps == 0) {
        throw std::runtime_error("sweep: " + inputName(m_options.file) + " holds no sweep (" +
                                 std::to_string(m_skipped) + " lines skipped, " + std::to_string(m_bad.count()) +
                                 " bad)");
    }
}

void SweepSource::step()
{
    if (std::exchange(m_sweep.newLayout, false)) {
        m_values->setLayout(m_assembly.layout());
    }
    m_values->show(m_sweep);
    m_sweepWaits = false;
}

std::optional<unsigned long long> SweepSource::unfinishedTime()
{
    m_bad.finish();
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

std::optional<unsigned long long> SweepSource::lastTime()
{
    if (m_options.file == "-") {
        return std::nullopt;
    }
    SweepRowParser parser(m_options.utcOffset);
    LineReader lines(openText(m_options.file), LongestRow);
    SweepRow row;
    std::optional<unsigned long long> last;
    for (auto result = lines.next(); result != LineReader::Result::End; result = lines.next()) {
        try {
            if (result == LineReader::Result::Line && !SweepRowParser::isNoRow(lines.line())) {
                parser.parse(lines.line(), lines.terminated(), row);
                last = std::max(last.value_or(0), row.time);
            }
        } catch (const LineError&) {
            continue;  // told when it is played
        }
    }
    return last;
}

}  // namespace

void logSweepReport(const QString& sentence)
{
    qCWarning(sweepLog).noquote() << sentence;
}

std::unique_ptr<Source> makeSweepSource(const SweepOptions& options, InputReport report)
{
    return std::make_unique<SweepSource>(options, std::move(report));
}

}  // namespace RecStation
