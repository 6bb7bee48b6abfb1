// Walking the records of a plain value, or of a direction finder, into columns.
#include "calls.h"

#include <cmath>
#include <memory>
#include <utility>

#include <values/value.h>

#include "pythonvalues.h"
#include "rectool/printing/text.h"
#include "rectool/replay/bearingreplay.h"

namespace RecPython {

namespace py = pybind11;

namespace {

/// Either the numbers or the texts are as many as the times.
struct FoundValues : FoundType {
    std::vector<std::int64_t> sinceStartUs;
    std::vector<double> numbers;     ///< while all are numbers or booleans
    std::vector<std::string> texts;  ///< UTF-8, otherwise
    bool areBooleans = false;
    std::string unit;  ///< empty where there is none
};

/// A row a bearing, in the order of recording.
struct FoundBearings : FoundType {
    std::vector<std::int64_t> sinceStartUs;
    std::vector<double> frequenciesHz;
    std::vector<double> azimuthsDeg;  ///< relative to the antenna
    std::vector<double> elevationsDeg;
    std::vector<double> levelsDb;
    std::vector<double> qualities;
};

bool isNumber(values::ValueType kind)
{
    return kind == values::ValueType::Numeric || kind == values::ValueType::NumericWithOffset;
}

class ValuesReader {
public:
    explicit ValuesReader(const Request& request) : m_reading(request) {}

    [[nodiscard]] FoundValues read()
    {
        m_found.areBooleans = true;
        m_reading.walk([this](const RecTool::PlacedRecord& placed, bool isOfType) {
            if (isOfType && !m_reading.recordings().isBefore(placed.momentMs)) {
                visit(placed);
            }
        });
        m_found.areBooleans = m_found.areBooleans && !m_found.numbers.empty();
        static_cast<FoundType&>(m_found) = m_reading.found(m_notUnderstood);
        m_found.unit = RecTool::unitOfKeyword(m_found.keyword);
        return std::move(m_found);
    }

private:
    void visit(const RecTool::PlacedRecord& placed)
    {
        const values::ValueBase* const value = placed.recorded.apply(placed.record);
        if (value == nullptr) {
            ++m_notUnderstood;
            return;
        }
        refuseMap(value->GetType());
        add(*value);
        m_found.sinceStartUs.push_back(m_reading.sinceStartUs(placed));
    }

    /// The first value that is neither number nor boolean makes texts of those before it.
    void add(const values::ValueBase& value)
    {
        const values::ValueType kind = value.GetType();
        if (!m_areTexts && isNumber(kind)) {
            m_found.numbers.push_back(static_cast<const values::ValueNumeric<double>&>(value).GetValue());
            m_found.areBooleans = false;
            return;
        }
        if (!m_areTexts && kind == values::ValueType::Bool) {
            m_found.numbers.push_back(static_cast<const values::Value<bool>&>(value).GetValue() ? 1 : 0);
            return;
        }
        if (!m_areTexts) {
            for (const double number : m_found.numbers) {
                m_found.texts.push_back(RecTool::number(number));
            }
            m_found.numbers.clear();
            m_areTexts = true;
        }
        m_found.texts.push_back(value.GetText().toStdString());
    }
    void refuseMap(values::ValueType kind) const
    {
        using values::ValueType;
        if (kind == ValueType::LevelMap || kind == ValueType::BearingMap || kind == ValueType::FastBearingMap) {
            const std::string keyword = RecTool::oneLine(m_reading.keyword());
            throw Refusal(RecTool::ExitCode::Usage, m_reading.recordings().file(),
                          keyword + " holds a value for each channel: " +
                              (kind == ValueType::LevelMap ? "spectra() gives its levels." : "bearings() gives them."));
        }
    }

    TypeReading m_reading;
    FoundValues m_found;
    bool m_areTexts = false;
    std::uint64_t m_notUnderstood = 0;
};

class BearingsReader {
public:
    explicit BearingsReader(const Request& request) : m_reading(request) {}

    [[nodiscard]] FoundBearings read()
    {
        m_reading.walk([this](const RecTool::PlacedRecord& placed, bool isOfType) {
            if (isOfType) {
                visit(placed);
            } else if (m_reading.isWanted(placed.type.track)) {
                tune(placed);
            }
        });
        endPart();
        static_cast<FoundType&>(m_found) = m_reading.found(m_notUnderstood);
        return std::move(m_found);
    }

private:
    void visit(const RecTool::PlacedRecord& placed)
    {
        beginPart(placed.part);
        m_sinceStartUs = m_reading.sinceStartUs(placed);
        m_isBefore = m_reading.recordings().isBefore(placed.momentMs);
        m_measured->apply(placed.record);
    }

    /// The frequency in force tells which of several cells was measured.
    void tune(const RecTool::PlacedRecord& placed)
    {
        if (placed.record.code != m_reading.recordings().tracks()[placed.type.track].names.numberOf("FREQUENCY")) {
            return;
        }
        beginPart(placed.part);
        if (const auto frequencyHz = placed.number()) {
            m_measured->tune(*frequencyHz);
        }
    }
    void beginPart(std::size_t part)
    {
        if (m_measured == nullptr || part != m_part) {
            endPart();
            m_measured = std::make_unique<RecTool::MeasuredBearings>(
                [this](const RecTool::BearingChange& change) { add(change); });
            m_part = part;
        }
    }
    void endPart() { m_notUnderstood += m_measured == nullptr ? 0 : m_measured->passedOver(); }
    void add(const RecTool::BearingChange& change)
    {
        if (m_isBefore || !std::isfinite(change.bearing.azimuthDeg)) {
            return;
        }
        m_found.sinceStartUs.push_back(m_sinceStartUs);
        m_found.frequenciesHz.push_back(m_measured->range().frequencyHz(change.channel));
        m_found.azimuthsDeg.push_back(change.bearing.azimuthDeg);
        m_found.elevationsDeg.push_back(change.bearing.elevationDeg);
        m_found.levelsDb.push_back(change.bearing.levelDb);
        m_found.qualities.push_back(change.bearing.quality);
    }

    TypeReading m_reading;
    std::unique_ptr<RecTool::MeasuredBearings> m_measured;  // of the file that is read
    std::size_t m_part = 0;
    std::int64_t m_sinceStartUs = 0;  // of the record that is read
    bool m_isBefore = false;
    std::uint64_t m_notUnderstood = 0;
    FoundBearings m_found;
};

}  // namespace

py::dict valuesOf(const std::vector<std::string>& files, const std::string& keyword, const std::string& device,
                  const std::string& from, const std::string& to)
{
    const Request request{files, keyword, device, from, to};
    FoundValues found = readUnlocked<ValuesReader>(request);
    py::dict all = aboutType(found);
    all["unit"] = pythonText(found.unit);
    all["since_start_us"] = takenArray(std::move(found.sinceStartUs));
    all["booleans"] = found.areBooleans;
    if (found.texts.empty()) {
        all["numbers"] = takenArray(std::move(found.numbers));
    } else {
        py::list texts;
        for (const std::string& text : found.texts) {
            texts.append(pythonText(text));
        }
        all["texts"] = texts;
    }
    return all;
}

py::dict bearingsOf(const std::vector<std::string>& files, const std::string& keyword, const std::string& device,
                    const std::string& from, const std::string& to)
{
    const Request request{files, keyword, device, from, to};
    FoundBearings found = readUnlocked<BearingsReader>(request);
    py::dict all = aboutType(found);
    all["since_start_us"] = takenArray(std::move(found.sinceStartUs));
    py::dict columns;
    columns["frequency"] = takenArray(std::move(found.frequenciesHz));
    columns["azimuth"] = takenArray(std::move(found.azimuthsDeg));
    columns["elevation"] = takenArray(std::move(found.elevationsDeg));
    columns["level"] = takenArray(std::move(found.levelsDb));
    columns["quality"] = takenArray(std::move(found.qualities));
    all["columns"] = columns;
    return all;
}

}  // namespace RecPython
