// Spectra of a receiver's samples as they come, of one band or of several in turn, whose channels are put one behind
// the other; and whether all samples come.
#include <algorithm>
#include <cmath>
#include <numeric>
#include <span>
#include <utility>

#include <terminaltext/quantity.h>

#include "clock.h"
#include "input/badlines.h"
#include "iqspectra/frames.h"
#include "iqspectra/receiver.h"
#include "live/peersource.h"
#include "published/attachedvalue.h"
#include "published/spectrumvalues.h"

namespace RecStation {

namespace {

bool areEven(const std::vector<double>& channelsHz, double stepHz)
{
    constexpr double Tolerance = 0.01;  // channels
    for (std::size_t i = 0; i < channelsHz.size(); ++i) {
        const double expected = channelsHz.front() + static_cast<double>(i) * stepHz;
        if (std::abs(channelsHz[i] - expected) > Tolerance * stepHz) {
            return false;
        }
    }
    return true;
}

constexpr std::chrono::seconds WatchWindow{10};
constexpr double Tolerated = 0.02;  // of all

constexpr double DefaultDwellSeconds = 0.02;
constexpr std::size_t MostChannels = 1'000'000;

SpectrumPlan planOf(const ReceiverOptions& options)
{
    SpectrumPlan plan = makeSpectrumPlan(options, options.rateHz);
    if (!options.hopHz.empty() && options.average == 0) {
        plan.average = averageOver(options.dwellSeconds.value_or(DefaultDwellSeconds), options.rateHz, plan.advance);
    }
    return plan;
}

void checkTogether(const ReceiverDevice& device, const ReceiverOptions& options)
{
    const auto refuse = [&device](const std::string& sentence) {
        throw UsageError(std::string(device.source) + ": " + sentence);
    };
    for (const double hz : options.bareHz) {
        if (const auto why = whyAUnit(options.centreHz ? "--centre" : "--hop", hz, options.rateHz); !why.empty()) {
            refuse(why);
        }
    }
    if (options.centreHz.has_value() != options.hopHz.empty()) {
        refuse(options.hopHz.empty() ? "the centre frequency is not known: give --centre, or several with --hop"
                                     : "--centre and --hop exclude each other: a receiver has one frequency at a time");
    }
    if (options.hopHz.empty() && options.dwellSeconds) {
        refuse("--dwell says how long each frequency of --hop is received: there is none");
    }
    if (options.dwellSeconds && options.average > 0) {
        refuse("--dwell and --average exclude each other: with --hop each dwell is one spectrum");
    }
    if (!options.hopHz.empty() && options.ifSpectrum) {
        refuse("--hop makes a panorama, and --as if is the spectrum of one fixed frequency");
    }
    std::vector<double> sorted = options.hopHz;
    std::sort(sorted.begin(), sorted.end());
    if (std::adjacent_find(sorted.begin(), sorted.end()) != sorted.end()) {
        refuse("--hop names a frequency twice");
    }
    if (options.hopHz.size() * options.fftSize > MostChannels) {
        refuse("--hop and --fft make more than 1000000 channels");
    }
}

class ReceiverSource final : public PeerSource {
public:
    ReceiverSource(const ReceiverDevice& device, const ReceiverOptions& options, std::unique_ptr<IqReceiver> receiver,
                   const SourceRun& run)
        : PeerSource(device.source, device.peer, run),
          m_options(options),
          m_device{.name = forFileNames(device.name),
                   .type = device.type,
                   .valuePath = options.valuePath,
                   .ifSpectrum = options.ifSpectrum},
          m_plan(planOf(options)),
          m_receiver(std::move(receiver)),
          m_frames(
              m_plan, m_receiver->format(), {}, [this](const QString& sentence) { tell(sentence.toStdString()); },
              StretchEnds::Usual),
          m_watch(options.rateHz)
    {
        if (hops()) {
            m_layout = layOutHops(m_options.hopHz, m_options.rateHz, m_plan.fftSize);
        }
    }

    void prepare() override
    {
        m_values = std::make_unique<SpectrumValues>(m_device);
        if (hops()) {
            m_values->setPanorama(m_layout.channels, m_layout.lowHz, m_layout.highHz, m_layout.stepHz);
        } else {
            m_values->setBand(*m_options.centreHz, m_options.rateHz, m_plan.fftSize);
        }
    }
    [[nodiscard]] QStringList spectra() const override
    {
        return {m_device.valuePath + QStringLiteral("/Scn/RfSpectrum"), QStringLiteral("/IfMapping")};
    }

protected:
    void connect() override
    {
        m_receiver->open(m_options);
        m_watch.begin(std::chrono::steady_clock::now());
        tuneTo(0);
    }
    [[nodiscard]] Received receive() override
    {
        for (;;) {
            if (auto frame = m_frames.next()) {
                m_pending = *std::move(frame);
                m_pendingHop = m_hop;
                const unsigned long long arrival = systemTimeUs();
                if (m_options.hopHz.size() > 1) {
                    tuneTo((m_hop + 1) % m_options.hopHz.size());
                }
                return {arrival, std::nullopt};
            }
            // Samples are missing here: the next spectrum begins behind them.
            m_frames.begin([this](char* buffer, std::size_t size) { return read(buffer, size); });
        }
    }
    void disconnect() noexcept override { m_receiver->close(); }
    void apply() override
    {
        const unsigned long long time = stationTimeUs();
        if (hops()) {
            const HopPart& part = m_layout.parts[m_pendingHop];
            m_values->showPart(part.firstChannel, std::span(m_pending.levelsDb).subspan(part.firstBin, part.bins),
                               time);
        } else {
            m_values->show(m_pending.levelsDb, m_pending.levelDb, time);
        }
        ++m_shown;
    }
    void forget() override { m_values->forget(stationTimeUs()); }
    [[nodiscard]] SourceReport counts() const override
    {
        return {.used = m_shown, .bad = m_frames.bad(), .lost = m_missing + m_receiver->overruns()};
    }

private:
    [[nodiscard]] bool hops() const { return !m_options.hopHz.empty(); }
    void tuneTo(std::size_t hop)
    {
        m_hop = hop;
        m_toDiscard =
            m_receiver->tune(hops() ? m_options.hopHz[hop] : *m_options.centreHz) * sampleBytes(m_receiver->format());
        m_frames.begin([this](char* buffer, std::size_t size) { return read(buffer, size); });
    }
    std::size_t read(char* buffer, std::size_t size)
    {
        discard();
        const std::size_t count = m_receiver->read(buffer, size);
        note(count);
        return count;
    }

    // Whole samples, so that what follows begins with one.
    void discard()
    {
        constexpr std::size_t PieceSize = 65'536;
        std::vector<char> piece(m_toDiscard > 0 ? PieceSize : 0);
        while (m_toDiscard > 0) {
            const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(piece.size(), m_toDiscard));
            const std::size_t count = m_receiver->read(piece.data(), wanted);
            note(count);
            m_toDiscard -= count;
        }
    }
    void note(std::size_t bytes)
    {
        if (m_options.hopHz.size() > 1) {
            return;  // what came while it was tuned is thrown away unseen
        }
        const auto now = std::chrono::steady_clock::now();
        m_watch.add(bytes / sampleBytes(m_receiver->format()));
        if (const auto rate = m_watch.higherRate(now)) {
            say("samples come at " + TerminalText::shortest(std::round(*rate)) + " a second, and not at the " +
                TerminalText::shortest(m_options.rateHz) +
                " of --rate: the receiver has not got that rate, and the frequencies of its spectra are wrong");
        }
        const auto missing = m_watch.missing(now);
        if (!missing) {
            return;
        }
        const std::uint64_t perSpectrum = m_plan.average * m_plan.advance;
        m_missing += std::max<std::uint64_t>(1, *missing / perSpectrum);
        tell(std::to_string(*missing) +
             " samples did not come within ten seconds: receiver, network or this computer are too slow for this rate");
    }

    // What may happen again and again.
    void tell(const std::string& clause)
    {
        if (m_tellRate.take(std::chrono::steady_clock::now())) {
            say(clause);
        }
    }

    ReceiverOptions m_options;
    SpectrumDevice m_device;
    SpectrumPlan m_plan;
    HopLayout m_layout;
    std::unique_ptr<IqReceiver> m_receiver;
    FrameReader m_frames;
    SampleWatch m_watch;
    std::unique_ptr<SpectrumValues> m_values;
    std::size_t m_hop = 0;          // that is received
    std::uint64_t m_toDiscard = 0;  // bytes, before the next spectrum
    IqFrame m_pending;              // to be shown
    std::size_t m_pendingHop = 0;
    std::uint64_t m_shown = 0;
    std::uint64_t m_missing = 0;  // spectra whose samples never came
    TellRate m_tellRate;          // of those, and of damaged ones
};

}  // namespace

HopLayout layOutHops(const std::vector<double>& centresHz, double rateHz, std::size_t bins)
{
    HopLayout out;
    out.stepHz = rateHz / static_cast<double>(bins);
    out.parts.resize(centresHz.size());
    std::vector<std::size_t> ascending(centresHz.size());
    std::iota(ascending.begin(), ascending.end(), std::size_t{0});
    std::sort(ascending.begin(), ascending.end(),
              [&centresHz](std::size_t a, std::size_t b) { return centresHz[a] < centresHz[b]; });
    std::vector<double> channelsHz;
    for (std::size_t i = 0; i < ascending.size(); ++i) {
        const double centre = centresHz[ascending[i]];
        const double startHz = centre - rateHz / 2;
        double lowHz = startHz;
        double highHz = centre + rateHz / 2;
        if (i > 0) {
            lowHz = std::max(lowHz, std::midpoint(centresHz[ascending[i - 1]], centre));
        }
        if (i + 1 < ascending.size()) {
            highHz = std::min(highHz, std::midpoint(centre, centresHz[ascending[i + 1]]));
        }
        // The channels from the lower edge on, without the upper one; a rounding error must not give one to both.
        const auto binAt = [&](double hz) {
            constexpr double Tolerance = 1e-6;
            const double bin = std::ceil((hz - startHz) / out.stepHz - Tolerance);
            return static_cast<std::size_t>(std::clamp(bin, 0.0, static_cast<double>(bins)));
        };
        HopPart& part = out.parts[ascending[i]];
        part.firstChannel = channelsHz.size();
        part.firstBin = binAt(lowHz);
        part.bins = binAt(highHz) - part.firstBin;
        for (std::size_t bin = part.firstBin; bin < part.firstBin + part.bins; ++bin) {
            channelsHz.push_back(startHz + static_cast<double>(bin) * out.stepHz);
        }
    }
    out.lowHz = channelsHz.front();
    out.highHz = channelsHz.back() + out.stepHz;
    out.channels = areEven(channelsHz, out.stepHz)
                       ? values::ChannelRange::Even(channelsHz.front(), out.stepHz, channelsHz.size())
                       : values::ChannelRange::List(std::move(channelsHz));
    return out;
}

void SampleWatch::begin(Time now)
{
    *this = SampleWatch(m_rateHz);
    m_connected = now;
    m_window = now;
}

std::optional<std::uint64_t> SampleWatch::missing(Time now)
{
    m_leastBehind =
        std::min(m_leastBehind, std::chrono::duration<double>(now - m_connected).count() * m_rateHz - m_came);
    if (now - m_window < WatchWindow) {
        return std::nullopt;
    }
    const double tolerated = Tolerated * std::chrono::duration<double>(now - m_window).count() * m_rateHz;
    const double missing = m_leastBehind - m_leastBefore.value_or(m_leastBehind);
    m_leastBefore = std::exchange(m_leastBehind, std::numeric_limits<double>::infinity());
    m_window = now;
    return missing > tolerated ? std::optional(static_cast<std::uint64_t>(missing)) : std::nullopt;
}

std::optional<double> SampleWatch::higherRate(Time now)
{
    if (m_rateTold || now - m_connected < WatchWindow) {
        return std::nullopt;
    }
    const double rate = m_came / std::chrono::duration<double>(now - m_connected).count();
    m_rateTold = rate > (1 + Tolerated) * m_rateHz;
    return m_rateTold ? std::optional(rate) : std::nullopt;
}

std::unique_ptr<Source> makeReceiverSource(const ReceiverDevice& device, const ReceiverOptions& options,
                                           std::unique_ptr<IqReceiver> receiver, const SourceRun& run)
{
    checkTogether(device, options);
    return std::make_unique<ReceiverSource>(device, options, std::move(receiver), run);
}

}  // namespace RecStation
