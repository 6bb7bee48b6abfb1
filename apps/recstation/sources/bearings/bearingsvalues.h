// The values that the direction finder of a log would show in the value tree.
#pragma once

#include <optional>
#include <vector>

#include <QString>

#include "published/attachedvalue.h"
#include "sources/bearings/bearinglog.h"

namespace RecStation {

/// The values stay in the tree when this object goes.
class BearingsValues {
public:
    /// Creates the values and sets all that does not change in the run, and where the first bearing was taken.
    /// @param deviceName for file names: other characters than letters, digits, space, - and _ become _
    /// @throws std::runtime_error when there is no tree, or a path holds another kind of value
    BearingsValues(const LogSurvey& survey, std::optional<double> headingDeg, const QString& deviceName,
                   const QString& valuePath);
    /// Those of a finder that has told nothing yet.
    BearingsValues(bool hasPosition, std::optional<double> headingDeg, const QString& deviceName,
                   const QString& valuePath);

    /// @throws std::runtime_error when the survey did not see the bearing's frequency
    void show(const LoggedBearing& bearing);
    /// The same where nobody knew the frequencies beforehand: one that is new becomes a channel, which empties the map.
    void showLive(const LoggedBearing& bearing);
    /// Nothing is measured and nobody knows where, but the frequencies stay.
    void forget(unsigned long long time);

private:
    using Number = values::ValuePtr<values::ValueNumeric<double>>;

    void addDevice(std::optional<double> headingDeg, const QString& deviceName, const QString& deviceType);
    void setChannels();
    void showReceiver(const LoggedBearing& bearing);

    QString m_valuePath;
    std::vector<double> m_channelsHz;
    values::ValuePtr<BearingMap> m_map;
    values::ValuePtr<values::ValueNumericWithOffset<double>> m_frequency;
    // Detached where the log has none.
    Number m_latitude;
    Number m_longitude;
    Number m_altitude;
    Number m_heading;
    bool m_headingTold = false;  // by a bearing
};

}  // namespace RecStation
