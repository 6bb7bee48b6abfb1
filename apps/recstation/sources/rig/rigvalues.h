// The values of a receiver that tells its frequency, mode, bandwidth, strength and spectrum.
#pragma once

#include <optional>
#include <string>

#include <QString>

#include "published/spectrumvalues.h"
#include "sources/rig/rigspectrum.h"

namespace RecStation {

/// What the receiver answered. What is empty stays as it is.
struct RigAnswers {
    std::optional<double> frequencyHz;
    std::optional<std::string> mode;    ///< empty: unknown
    std::optional<double> bandwidthHz;  ///< not a number: unknown
    std::optional<double> levelDb;      ///< likewise
};

/// The values stay in the tree when this object goes.
class RigValues {
public:
    /// Creates the values, not a number and "UNKNOWN" until the receiver tells them.
    /// @throws std::runtime_error when there is no tree, or a path holds another kind of value
    /// @param s9 the level of S9, in dB or dBm
    RigValues(const QString& deviceName, const QString& valuePath, bool withSpectrum, double s9);

    void show(const RigAnswers& answers);
    /// @param time microseconds since 1970 UTC
    void show(const RigSpectrum& spectrum, unsigned long long time);
    /// Mode, bandwidth and level become unknown; the frequency stays.
    void forget();
    /// So does every cell of the spectrum, of which something was shown.
    void forgetSpectrum(unsigned long long time) { m_spectrum->forget(time); }

private:
    void showMode(const std::string& mode);
    void beginRange(double s9);
    void addMode(const QString& name);

    QString m_valuePath;
    values::ValuePtr<values::ValueNumericWithOffset<double>> m_frequency;
    values::ValuePtr<values::ValueSelection> m_mode;
    values::ValuePtr<values::ValueNumeric<double>> m_bandwidth;
    values::ValuePtr<values::ValueNumeric<double>> m_level;
    std::optional<SpectrumValues> m_spectrum;
    values::ChannelRange m_channels;  // of the spectrum
    bool m_tellsRange = false;        // what it is tuned to, as nobody shows a spectrum
};

}  // namespace RecStation
