// Walking the records of a plain value into columns.
#include "plainvalues.h"

#include <values/value.h>

#include "rectool/printing/text.h"

namespace RecPython {

namespace {

bool isNumber(values::ValueType kind)
{
    return kind == values::ValueType::Numeric || kind == values::ValueType::NumericWithOffset;
}

class ValuesReader {
public:
    explicit ValuesReader(const Request& request) : m_reading(request) {}

    [[nodiscard]] FoundValues read();

private:
    void visit(const RecTool::PlacedRecord& placed);
    void add(const values::ValueBase& value);
    void refuseMap(values::ValueType kind) const;

    TypeReading m_reading;
    FoundValues m_found;
    bool m_areTexts = false;
    std::uint64_t m_notUnderstood = 0;
};

FoundValues ValuesReader::read()
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

void ValuesReader::visit(const RecTool::PlacedRecord& placed)
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

void ValuesReader::refuseMap(values::ValueType kind) const
{
    using values::ValueType;
    if (kind == ValueType::LevelMap || kind == ValueType::BearingMap || kind == ValueType::FastBearingMap) {
        const std::string keyword = RecTool::oneLine(m_reading.keyword());
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
    return ValuesReader(request).read();
}

}  // namespace RecPython
