// The values that a receiver with a spectrum shows in the value tree.
#pragma once

#include <cstddef>
#include <span>

#include <QString>

#include "published/attachedvalue.h"

namespace RecStation {

/// What the values tell of the receiver.
struct SpectrumDevice {
    QString name;
    QString type;       ///< "IQ samples cu8"
    QString valuePath;  ///< "/Devices/Rx1"
    bool ifSpectrum = false;
};

/// A level map: /IfMapping for an IF spectrum, else Scn/RfSpectrum. The values stay in the tree when this object goes.
class SpectrumValues {
public:
    /// Creates the values and sets all that does not change in the run; a band or a panorama must be set next.
    /// @throws std::runtime_error when there is no tree, or a path holds another kind of value
    explicit SpectrumValues(const SpectrumDevice& device);

    /// The spectrum is of a band around a centre; its channels are emptied where the band is another.
    void setBand(double centreHz, double rateHz, std::size_t channels);
    /// The spectrum is a panorama, put together of several bands; there is no level of the whole.
    void setPanorama(const values::ChannelRange& channels, double lowHz, double highHz, double stepHz);
    /// The spectrum of a band, and its level.
    /// @param time when it was measured, microseconds since 1970 UTC
    void show(std::span<const float> levelsDb, double levelDb, unsigned long long time);
    /// Some channels of a panorama.
    void showPart(std::size_t first, std::span<const float> levelsDb, unsigned long long time);
    /// Nothing is measured at this time.
    void forget(unsigned long long time);

private:
    QString m_valuePath;
    values::ValuePtr<LevelMap> m_spectrum;
    values::ValuePtr<values::ValueNumeric<double>> m_level;
};

}  // namespace RecStation
