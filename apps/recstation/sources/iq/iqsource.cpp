// The options of the source "iq", and playing samples frame by frame, each at the time of its first sample.
#include "sources/iq/iqsource.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include <QFileInfo>

#include <CLI/CLI.hpp>

#include "clock.h"
#include "input/optionchecks.h"
#include "input/timetext.h"
#include "published/spectrumvalues.h"
#include "sources/iq/knownsamples.h"
#include "sources/offeredsource.h"

namespace RecStation {

namespace {

QString deviceName(const IqPlan& plan)
{
    return plan.file == QLatin1String("-") ? QStringLiteral("IQ input") : QFileInfo(plan.file).completeBaseName();
}

/// A pipe shows what it is only once it is read.
ByteInput refusingForeign(ByteInput input, const std::string& name)
{
    return [input = std::move(input), name, first = std::optional<std::string>(), given = std::size_t{0}](
               char* buffer, std::size_t size) mutable -> std::size_t {
        if (!first) {
            first.emplace(ForeignBytes, '\0');
            first->resize(readWhole(input, *first));
            if (const std::string why = whyNoSamples(*first); !why.empty()) {
                throw std::runtime_error("iq: " + name + " " + why);
            }
        }
        if (given == first->size()) {
            return input(buffer, size);
        }
        const std::size_t count = first->copy(buffer, size, given);
        given += count;
        return count;
    };
}

class IqSource final : public Source {
public:
    IqSource(IqOptions options, InputReport report) : m_options(std::move(options)), m_report(std::move(report)) {}

    [[nodiscard]] QString name() const override { return QStringLiteral("iq"); }
    void prepare() override
    {
        m_plan = makeIqPlan(m_options);
        for (const QString& remark : m_plan.remarks) {
            m_report(remark);
        }
        m_input = m_plan.wav
                      ? openWav(m_plan.file)
                      : refusingForeign(openInput(m_plan.file.toStdString()), inputName(m_plan.file.toStdString()));
        m_frames = std::make_unique<FrameReader>(m_plan, m_plan.format, inputOf(stretch()),
                                                 [this](const QString& sentence) { tell(sentence); });
        if (!m_options.live && !readFrame()) {  // what is live may wait for it in nextTime only
            throw std::runtime_error("iq: " + inputName(m_plan.file.toStdString()) +
                                     (m_samples == 0 ? " holds no samples" : " holds no whole spectrum"));
        }
        const QString format = m_plan.wav ? QStringLiteral("WAV") : QLatin1String(sampleFormatName(m_plan.format));
        m_values = std::make_unique<SpectrumValues>(SpectrumDevice{.name = deviceName(m_plan),
                                                                   .type = QStringLiteral("IQ samples %1").arg(format),
                                                                   .valuePath = m_options.valuePath,
                                                                   .ifSpectrum = m_options.ifSpectrum});
        m_values->setBand(stretch().centreHz, m_plan.rateHz, m_plan.fftSize);
        m_shownStretch = m_stretch;
    }
    [[nodiscard]] std::optional<unsigned long long> nextTime() override
    {
        return m_pending || readFrame() ? std::optional(pendingTime()) : std::nullopt;
    }
    void step() override
    {
        if (std::exchange(m_shownStretch, m_stretch) != m_stretch) {
            m_values->setBand(stretch().centreHz, m_plan.rateHz, m_plan.fftSize);
        }
        m_values->show(m_pending->levelsDb, m_pending->levelDb, m_options.live ? stationTimeUs() : m_latest);
        m_pending.reset();
        ++m_shown;
    }
    [[nodiscard]] std::optional<unsigned long long> lastTime() override
    {
        std::optional<unsigned long long> last;
        for (const IqStretch& stretch : m_plan.stretches) {
            if (!stretch.samples) {
                return std::nullopt;
            }
            last = std::max(last.value_or(0), m_plan.timeOf(stretch, *stretch.samples));
        }
        return last;
    }
    /// Another capture's frequency is set before its spectrum.
    [[nodiscard]] bool plainValuesComeFirst() const override { return m_plan.stretches.size() > 1; }
    [[nodiscard]] QStringList spectra() const override
    {
        return {m_options.valuePath + QStringLiteral("/Scn/RfSpectrum"), QStringLiteral("/IfMapping")};
    }
    [[nodiscard]] SourceReport report() const override
    {
        if (m_frames == nullptr) {
            return {};
        }
        return {.used = m_shown, .skipped = m_frames->skipped(), .bad = m_plan.bad + m_frames->bad()};
    }

private:
    // The stretches lie one behind the other, so that a pipe would do.
    [[nodiscard]] ByteInput inputOf(const IqStretch& stretch)
    {
        constexpr std::uint64_t NoEnd = std::numeric_limits<std::uint64_t>::max();
        const std::uint64_t bytes = stretch.samples ? *stretch.samples * sampleBytes(m_plan.format) : NoEnd;
        return [this, first = stretch.firstByte, left = bytes](char* buffer, std::size_t size) mutable -> std::size_t {
            if (left == 0 || !skipTo(first)) {
                return 0;
            }
            const std::size_t count = m_input(buffer, static_cast<std::size_t>(std::min<std::uint64_t>(size, left)));
            left -= std::min<std::uint64_t>(left, count);
            m_position += count;
            return count;
        };
    }
    bool skipTo(std::uint64_t byte)
    {
        constexpr std::size_t PieceSize = 65'536;
        std::vector<char> piece(m_position < byte ? PieceSize : 0);
        while (m_position < byte) {
            const std::size_t count = m_input(
                piece.data(), static_cast<std::size_t>(std::min<std::uint64_t>(piece.size(), byte - m_position)));
            if (count == 0) {
                return false;
            }
            m_position += count;
        }
        return true;
    }

    // The next spectrum, of whichever stretch has one.
    bool readFrame()
    {
        while (!(m_pending = m_frames->next())) {
            m_samples += m_frames->samplesRead();
            if (m_stretch + 1 == m_plan.stretches.size()) {
                return false;
            }
            ++m_stretch;
            m_backTold = false;
            m_frames->begin(inputOf(stretch()));
        }
        return true;
    }
    void tell(const QString& sentence) const
    {
        m_report(m_plan.stretches.size() == 1 ? sentence
                                              : QStringLiteral("capture %1: ").arg(m_stretch + 1) + sentence);
    }
    [[nodiscard]] const IqStretch& stretch() const { return m_plan.stretches[m_stretch]; }

    // Never before what was shown: a capture may begin before the one in front of it ended.
    [[nodiscard]] unsigned long long pendingTime()
    {
        const unsigned long long time = m_plan.timeOf(stretch(), m_pending->firstSample);
        if (time < m_latest && !std::exchange(m_backTold, true)) {
            tell(QStringLiteral(
                     "it begins %1 before the end of what comes before it; until then its spectra have that time")
                     .arg(QString::fromStdString(spanText(m_latest - time))));
        }
        m_latest = std::max(m_latest, time);
        return m_latest;
    }

    IqOptions m_options;
    InputReport m_report;
    IqPlan m_plan;
    ByteInput m_input;
    std::uint64_t m_position = 0;  // of the next byte of the input
    std::size_t m_stretch = 0;     // that is read
    std::unique_ptr<FrameReader> m_frames;
    std::unique_ptr<SpectrumValues> m_values;
    std::optional<IqFrame> m_pending;  // read, not yet shown
    std::size_t m_shownStretch = 0;    // whose band is set
    unsigned long long m_latest = 0;
    bool m_backTold = false;  // of the stretch
    std::uint64_t m_samples = 0;
    std::uint64_t m_shown = 0;
};

constexpr auto IqExamples = R"(
Examples:
  recstation -o recordings iq capture.cu8 --rate 2M --centre 1090M
  recstation -o recordings iq capture.sigmf-data
  recstation -o recordings iq HDSDR_20200102_030405Z_7100kHz_RF.wav
  recstation -o recordings iq capture.bin --format ci8 --rate 8M --centre 2437M
  rtl-driver | recstation -o recordings iq - --format cu8 --rate 2.048M --centre 98.5M)";

// A number without a unit may be one whose unit was forgotten; the plan knows what is likely.
CLI::Validator centreFrequency(IqOptions& options)
{
    return {[&options, check = TerminalText::inHertz(-HighestCentreHz, HighestCentreHz)](std::string& text) {
                options.centreHasUnit = !TerminalText::parseInUnits(text, {{"", 1}});
                return check(text);
            },
            ""};
}

void addIqOptions(CLI::App& command, IqOptions& options)
{
    command.footer(IqExamples);
    addInputFile(command, options.file, "IQ samples, I and Q interleaved; - reads standard input");
    command
        .add_option("--format", options.format,
                    std::string(SampleFormatNames) + " (default: SigMF metadata, WAV or suffix)")
        ->check(TerminalText::acceptedIf([](const std::string& text) { return sampleFormatByName(text).has_value(); },
                                         SampleFormatNames));
    command
        .add_option("--rate", options.rateHz, "samples a second, as 48k or 2.4M (default: SigMF metadata, WAV or name)")
        ->transform(TerminalText::inHertz(std::nextafter(0.0, 1.0), HighestRateHz, "more than 0 and at most 1e12"));
    command
        .add_option("--centre,--center", options.centreHz,
                    "centre frequency in Hz, as 145.5M (default: SigMF metadata, WAV or name)")
        ->transform(centreFrequency(options));
    addStart(command, options.startTime,
             "time of the first sample, as 2026-11-21T08:30:00.25Z (default: SigMF metadata, WAV or name, otherwise "
             "now)");
    addSpectrumOptions(command, options);
}

}  // namespace

std::unique_ptr<Source> makeIqSource(const IqOptions& options, InputReport report)
{
    return std::make_unique<IqSource>(options, std::move(report));
}

std::shared_ptr<OfferedSource> offerIq()
{
    const auto make = [](IqOptions options, const SourceRun& run) {
        options.valuePath = receiverOf(run.configuration).valuePath;
        options.live = run.live;
        const InputReport report = run.hooks.report;
        return makeIqSource(options, [report](const QString& sentence) { report(QStringLiteral("iq: ") + sentence); });
    };
    return std::make_shared<SourceWith<IqOptions>>(
        SourceTraits{.name = "iq", .description = "IQ samples from a file", .turn = 1, .receives = true}, addIqOptions,
        make);
}

}  // namespace RecStation
