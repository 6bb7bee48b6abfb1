// The source "sim": a receiver and a direction finder without any hardware.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "band.h"
#include "configuration.h"
#include "scenery.h"
#include "sources/source.h"

namespace RecStation {

struct SimOptions {
    std::uint64_t seed = 1;
    double durationSeconds = 180;                          ///< recorded time
    unsigned long long startTime = 1'767'225'600'000'000;  ///< microseconds since 1970 UTC; 2026-01-01 00:00:00
};

/// Publishes values for every instance of the configuration: receivers scan and monitor, direction finders find.
/// Needs the value tree in force. The same options and instances give the same changes on every machine.
class SimSource final : public Source {
public:
    SimSource(const SimOptions& options, std::vector<Instance> instances);

    [[nodiscard]] QString name() const override { return QStringLiteral("sim"); }
    [[nodiscard]] QStringList spectra() const override;
    void prepare() override;
    [[nodiscard]] std::optional<unsigned long long> nextTime() override;
    void step() override;
    [[nodiscard]] std::optional<unsigned long long> lastTime() override
    {
        return m_options.startTime + m_durationMs * 1000;
    }
    [[nodiscard]] SourceReport report() const override { return m_report; }

private:
    // Something that the station does again and again.
    struct Activity {
        unsigned long long nextMs;  // since the start
        unsigned long long periodMs;
        void (SimSource::*act)();
    };

    void sweepBand();
    void sweepAround();
    void measureLevel();
    void findDirections();
    void moveVehicle();
    void operate();

    void startScan();
    void startMonitoring();
    void tune();
    void setOnReceivers(const char* path, double value);
    void chooseOnReceivers(const char* path, std::int32_t key);
    [[nodiscard]] unsigned long long nowUs() const;
    [[nodiscard]] const Sim::Transmitter& tuned() const { return m_scenery.transmitters()[m_tuned]; }

    SimOptions m_options;
    std::vector<Instance> m_instances;
    unsigned long long m_durationMs;
    Sim::Scenery m_scenery;
    std::vector<Activity> m_activities;
    unsigned long long m_nowMs = 0;  // since the start
    bool m_monitoring = false;
    std::size_t m_tuned = 0;  // transmitter that the receivers are tuned to
    std::uint32_t m_tuningsLeft = 0;
    std::vector<float> m_bandCells;
    std::vector<float> m_ifCells;
    SourceReport m_report;
};

[[nodiscard]] std::unique_ptr<Source> makeSimSource(const SimOptions& options, const std::vector<Instance>& instances);

}  // namespace RecStation
