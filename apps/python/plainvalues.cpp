// Walking the records of a plain value into columns.
#include "plainvalues.h"

#include <algorithm>

#include <values/value.h>

#include "rectool/printing/text.h"
#include "rectool/printing/units.h"

namespace RecPython {

namespace {

bool isNumber(values::ValueType kind)
{
    return kind == values::ValueType::Numeric || kind == values::ValueType::NumericWithOffset;
}

class ValuesReader {
public:
    explicit ValuesReader(Reading& reading) : m_reading(reading), m_types(reading.types()) {}

    [[nodiscard]] FoundValues read();

private:
    void visit(const RecTool::PlacedRecord& placed);
    void add(const values::ValueBase& value);
    void refuseMap(values::ValueType kind) const;

    Reading& m_reading;
    std::vector<RecTool::TrackType> m_types;
    FoundValues m_found;
    bool m_areTexts = false;
    Patience m_patience;
};

FoundValues ValuesReader::read()
{
    m_found.areBooleans = true;
    m_reading.recordings().walk([this](const RecTool::PlacedRecord& placed) {
        m_patience.next();
        const bool isWanted = std::find(m_types.begin(), m_types.end(), placed.type) != m_types.end();
        if (isWanted && !m_reading.recordings().isBefore(placed.momentMs)) {
            visit(placed);
        }
    });
    m_found.areBooleans = m_found.areBooleans && !m_found.numbers.empty();
    m_found.keyword = m_reading.keywordOf(m_types.front());
    m_found.device = m_reading.deviceOf(m_types.front().track);
    m_found.unit = RecTool::unitOfKeyword(m_found.keyword);
    m_found.startUs = m_reading.startUs();
    m_found.damage = m_reading.damage();
    return std::move(m_found);
}

void ValuesReader::visit(const RecTool::PlacedRecord& placed)
{
    const values::ValueBase* const value = placed.recorded.apply(placed.record);
    if (value == nullptr) {
        ++m_found.notUnderstood;
        return;
    }
    refuseMap(value->GetType());
    add(*value);
    m_found.sinceStartUs.push_back(m_reading.sinceStartUs(placed));
}

void ValuesReader::refuseMap(values::ValueType kind) const
{
    using values::ValueType;
    if (kind == ValueType::LevelMap || kind == ValueType::BearingMap || kind == ValueType::FastBearingMap) {
        const std::string keyword = RecTool::oneLine(m_reading.keywordOf(m_types.front()));
        throw Refusal(RecTool::ExitCode::Usage, m_reading.recordings().file(),
                      keyword + " holds a value for each channel: " +
                          (kind == ValueType::LevelMap ? "spectra() gives its levels." : "bearings() gives them."));
    }
}

/// The first value that is neither number nor boolean makes texts of those before it.
void ValuesReader::add(const values::ValueBase& value)
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

}  // namespace

FoundValues readValues(const Request& request)
{
    Reading reading(request);
    ValuesReader reader(reading);
    const Kept quiet;
    return reader.read();
}

}  // namespace RecPython
