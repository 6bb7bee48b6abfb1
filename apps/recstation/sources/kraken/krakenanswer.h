// What a KrakenSDR serves: bearings as CSV or XML.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "live/connection.h"
#include "sources/bearings/krakenrow.h"

namespace RecStation {

/// The two documents of github.com/krakenrf/krakensdr_doa: DOA_value.html ("Kraken App"), lines of CSV (KrakenRows),
/// and doa.xml ("DF Aggregator"), one bearing in XML. The second has theta as it is, counter-clockwise (wr_xml of
/// _sdr/_signal_processing/kraken_sdr_signal_processor.py, whose calculate_end_lat_lng takes 360 minus it; so does
/// receivers.py of github.com/ckoval7/df-aggregator unless told otherwise): its azimuth is 360 degrees minus DOA. PWR
/// is the power in dB of full scale plus 100, CONF the confidence times 100; programs of 2022 wrote both as in CSV,
/// which shows by a PWR below 0 or a CONF with a fraction.
class KrakenAnswers {
public:
    explicit KrakenAnswers(Mirror mirror) : m_mirror(mirror), m_rows(mirror) {}

    /// Its bearings. Lines that are cut are passed over and counted: the finder writes while we read.
    /// @throws ConnectionError when it is another document
    [[nodiscard]] std::vector<LoggedBearing> parse(const std::string& body);
    [[nodiscard]] std::uint64_t broken() const { return m_broken; }
    [[nodiscard]] bool foundMirrored() const { return m_rows.foundMirrored(); }

private:
    [[nodiscard]] std::vector<LoggedBearing> parseLines(std::string_view body);
    [[nodiscard]] std::vector<LoggedBearing> parseXml(const std::string& body);

    Mirror m_mirror;
    KrakenRows m_rows;
    std::uint64_t m_broken = 0;
    int m_brokenInARow = 0;  // answers without a whole bearing
};

}  // namespace RecStation
