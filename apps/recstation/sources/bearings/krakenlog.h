// Rows of a log that a KrakenSDR has written.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "sources/bearings/bearingssource.h"
#include "sources/bearings/krakenrow.h"
#include "sources/bearings/rowparser.h"

namespace RecStation {

class KrakenLog final : public RowReader {
public:
    explicit KrakenLog(const BearingsOptions& options);

    [[nodiscard]] static bool isRow(const CsvRecord& row);
    [[nodiscard]] LogRow parse(const CsvRecord& row) override;
    [[nodiscard]] bool hasPosition() const override { return !m_noPosition; }
    [[nodiscard]] bool hasAltitude() const override { return false; }
    [[nodiscard]] std::string remark() const override;

private:
    KrakenRows m_rows;
    std::string m_onlyStation;
    bool m_noPosition;
    bool m_noHeading;
};

}  // namespace RecStation
