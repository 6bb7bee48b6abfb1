// A receiver that hands over IQ samples while it runs, and the source that makes spectra of them. Linux only.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QString>

#include <values/maps.h>

#include "iqspectra/sampleformat.h"
#include "iqspectra/spectrum.h"
#include "live/connection.h"
#include "sources/offeredsource.h"

namespace RecStation {

/// What the command line says of any receiver.
struct ReceiverOptions : SpectrumOptions {
    double rateHz = 0;                   ///< samples a second, above 0
    std::optional<double> centreHz;      ///< to be tuned to; one of the two must be there
    std::vector<double> hopHz;           ///< centres that are tuned to in turn, for one panorama of all
    std::vector<double> bareHz;          ///< of these, what was given without a unit
    std::optional<double> dwellSeconds;  ///< for each of them, without what is discarded after tuning
    std::optional<double> gainDb;        ///< nothing: the receiver's own control
    QString valuePath = "/Devices/Rx1";  ///< of the receiver's recorder
};

/// --centre, --rate, --gain, --hop, --dwell, and those of spectra
void addReceiverOptions(CLI::App& command, ReceiverOptions& options);

/// The receiver of a source, used in the source's own thread only. Sources with peers have ways to fail
/// (ConnectionError) and to be ended (Stopped), see live/connection.h.
class IqReceiver {
public:
    IqReceiver() = default;
    IqReceiver(const IqReceiver&) = delete;
    IqReceiver& operator=(const IqReceiver&) = delete;
    virtual ~IqReceiver() = default;

    [[nodiscard]] virtual SampleFormat format() const = 0;
    /// Reaches the receiver, sets rate and gain, and lets samples flow. @throws ConnectionError, Stopped
    virtual void open(const ReceiverOptions& options) = 0;
    virtual void close() noexcept = 0;
    /// @return how many of the samples that are read next may still be of the frequency before
    virtual std::uint64_t tune(double centreHz) = 0;
    /// Waits for samples and takes at most so many bytes, not always whole samples. 0: samples are missing here, they
    /// were lost and counted. @throws ConnectionError, also when none come for long, Stopped
    virtual std::size_t read(char* buffer, std::size_t size) = 0;
    /// How often samples were lost so far, over all connections.
    [[nodiscard]] virtual std::uint64_t overruns() const = 0;
};

/// How the receiver is named.
struct ReceiverDevice {
    const char* source;  ///< "rtltcp"
    std::string peer;    ///< how messages name it: "127.0.0.1:1234"
    QString name;        ///< Adm/DRIVERNAME
    QString type;        ///< Adm/DEVICE_TYPE
};

/// Publishes what the source "iq" does. Without --hop: spectra of the band around the centre. With it: one panorama
/// (Scn/RfSpectrum) of all bands, of which each spectrum sets the channels of its band when it was measured; where
/// bands overlap, the part nearer to its centre counts, and between bands that do not join there are no channels.
/// @throws UsageError when the options do not go together
[[nodiscard]] std::unique_ptr<Source> makeReceiverSource(const ReceiverDevice& device, const ReceiverOptions& options,
                                                         std::unique_ptr<IqReceiver> receiver, const SourceRun& run);

// ---- what that source is made of

/// Where the spectrum of one band lies in the panorama.
struct HopPart {
    std::size_t firstChannel = 0;  ///< of the panorama
    std::size_t firstBin = 0;      ///< of the band's spectrum
    std::size_t bins = 0;
};

struct HopLayout {
    values::ChannelRange channels;
    double lowHz = 0;
    double highHz = 0;
    double stepHz = 0;
    std::vector<HopPart> parts;  ///< in the order of the centres that were given
};

/// Of two bands that overlap each keeps what lies nearer to its centre; where two do not join there is nothing between
/// them, and the channels are a list then, as they are where one does not fall on the grid of the other.
/// @param centresHz different from each other, at least one
/// @param bins of a band's spectrum, even
[[nodiscard]] HopLayout layOutHops(const std::vector<double>& centresHz, double rateHz, std::size_t bins);

/// A server on the network does not say what it had to drop: fewer samples come than the rate promises then.
class SampleWatch {
public:
    using Time = std::chrono::steady_clock::time_point;

    explicit SampleWatch(double rateHz) : m_rateHz(rateHz) {}

    void begin(Time now);  ///< a new connection
    void add(std::uint64_t samples) { m_came += static_cast<double>(samples); }
    /// To be asked whenever some came. Every ten seconds: how many samples are missing since the ten seconds before,
    /// nothing where all came. What comes late is not missing: only by what the samples are behind the clock even when
    /// they are least behind. Nor is the little that an oscillator is off.
    [[nodiscard]] std::optional<std::uint64_t> missing(Time now);
    /// Told once in a connection: the rate at which samples come, where that is more than was asked for. What came late
    /// comes at once then, so all of the connection counts.
    [[nodiscard]] std::optional<double> higherRate(Time now);

private:
    double m_rateHz;
    Time m_connected;
    double m_came = 0;                                               // samples
    Time m_window;                                                   // begin of the ten seconds
    double m_leastBehind = std::numeric_limits<double>::infinity();  // in them, samples
    std::optional<double> m_leastBefore;                             // in those before
    bool m_rateTold = false;
};

}  // namespace RecStation
