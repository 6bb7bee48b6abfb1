// A bearing, and the line that a KrakenSDR direction finder writes for each.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <string_view>

namespace RecStation {

/// A bearing as a direction finder reports it.
struct LoggedBearing {
    unsigned long long time = 0;  ///< microseconds since 1970 UTC
    double frequencyHz = 0;
    double azimuthDeg = 0;  ///< 0 to 360
    // Not a number where it was not told.
    double elevationDeg = std::numeric_limits<double>::quiet_NaN();  ///< -90 to 90
    double levelDb = std::numeric_limits<double>::quiet_NaN();
    double quality = std::numeric_limits<double>::quiet_NaN();       ///< 0 to 100
    double headingDeg = std::numeric_limits<double>::quiet_NaN();    ///< true heading of azimuth 0
    double latitudeDeg = std::numeric_limits<double>::quiet_NaN();   ///< north is positive
    double longitudeDeg = std::numeric_limits<double>::quiet_NaN();  ///< east is positive
    double altitudeM = std::numeric_limits<double>::quiet_NaN();
    std::string station;
};

/// Which way the finder counts its angles.
enum class Mirror : std::uint8_t {
    Auto,  ///< as its 360 values tell, otherwise as the form is documented
    Yes,   ///< counter-clockwise: the azimuth is 360 degrees minus the angle
    No     ///< clockwise: the angle is the azimuth
};

/// "Kraken App" CSV, one line a receiving channel: time (milliseconds since 1970 UTC), angle of the bearing,
/// confidence, power (dB of full scale), frequency (Hz), antennas, latency (ms), station, latitude, longitude, heading
/// by GPS, heading by compass, which of the two counts, four reserved fields, then the output of the direction finding
/// at 0, 1, ... 359 degrees, counter-clockwise. So says the wiki of github.com/krakenrf/krakensdr_docs ("Kraken App
/// output format"), and so _sdr/_signal_processing/kraken_sdr_signal_processor.py of github.com/krakenrf/krakensdr_doa
/// writes it.
///
/// The angle is clockwise ("compass convention") by the wiki, and was written as 360 - theta up to 2023; later versions
/// of the same program write theta itself, and a report of 2024 to krakensdr_docs ("Kraken APP output format") finds it
/// where the 360 values peak. These therefore decide: an angle at their peak is counter-clockwise, one at the mirror
/// image of their peak is clockwise; one at both or none is taken as the line before.
class KrakenRows {
public:
    static constexpr std::size_t FixedFields = 17;

    explicit KrakenRows(Mirror mirror) : m_mirror(mirror) {}

    /// Whether a line is one of these, judged by its fields.
    [[nodiscard]] static bool isRow(std::span<const std::string_view> fields);
    /// Fields without the spaces around them. A position of 0, 0 is none.
    /// @throws LineError
    [[nodiscard]] LoggedBearing parse(std::span<const std::string_view> fields);
    /// An angle was taken for one that is counted counter-clockwise, although nobody said so.
    [[nodiscard]] bool foundMirrored() const { return m_foundMirrored; }

private:
    [[nodiscard]] bool isMirrored(double angleDeg, std::span<const std::string_view> output);

    Mirror m_mirror;
    bool m_counterClockwise = false;  // the lines so far
    bool m_foundMirrored = false;
};

/// What to tell people when foundMirrored.
constexpr auto KrakenMirrored =
    "the angles are counter-clockwise, as the finder's 360 values show: azimuths are 360 degrees minus them "
    "(--no-mirror takes them as they are)";

/// 0 to below 360 degrees, of any finite angle.
[[nodiscard]] double azimuthOf(double angleDeg, bool mirrored);
/// Sets the position, or leaves it unknown where it is 0, 0 or none.
/// @throws LineError when it is none on the earth
void setKrakenPosition(LoggedBearing& bearing, std::string_view latitude, std::string_view longitude);
/// Not a number for "nan", "None" and the like.
[[nodiscard]] double krakenNumberOrNone(std::string_view text);
/// Microseconds. @throws LineError
[[nodiscard]] unsigned long long krakenTime(std::string_view milliseconds);
/// @throws LineError
[[nodiscard]] double krakenFrequency(std::string_view text, double unitHz);

}  // namespace RecStation
