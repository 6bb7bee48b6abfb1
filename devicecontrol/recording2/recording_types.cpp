// Which values are recorded: keywords, types, and the walk that observes them.
#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

#include "recording.h"

namespace Recording2 {

namespace {

bool isOneOf(std::int32_t key, std::initializer_list<std::int32_t> keys)
{
    return std::find(keys.begin(), keys.end(), key) != keys.end();
}

// Truncated; a number that no level field can hold gives the nearest it can.
std::int32_t truncated(double number)
{
    if (std::isnan(number)) {
        return 0;
    }
    constexpr double Low = std::numeric_limits<std::int32_t>::min();
    constexpr double High = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::clamp(number, Low, High));
}

std::optional<float> numberOf(const values::ValueBase& value)
{
    const auto* number = dynamic_cast<const values::ValueNumeric<double>*>(&value);
    return number == nullptr ? std::nullopt : std::optional<float>(static_cast<float>(number->GetValue()));
}

}  // namespace

// A map whose own time stamp is the time of its records: bearings of a direction finder, levels of a spectrum.
const values::MappingBase* CRecording::TimedMap(const values::ValueBase* value)
{
    if (const auto* bearings = dynamic_cast<const values::ValueMap<values::Bearing, values::BearingHandler>*>(value)) {
        return bearings;
    }
    return dynamic_cast<const values::FastValueMap<float, values::levelHandler>*>(value);
}

std::int32_t CRecording::TypeIdOf(const QString& keyword) const
{
    const auto entry = m_typeIds.find(keyword);
    return entry == m_typeIds.end() ? UnknownType : entry->second;
}

QString CRecording::KeywordOf(std::int32_t typeId) const
{
    const auto entry =
        std::find_if(m_typeIds.begin(), m_typeIds.end(), [&](const auto& type) { return type.second == typeId; });
    return entry == m_typeIds.end() ? QString() : entry->first;
}

QString CRecording::ResolveValuePath(const QString& keyword, const QString& fallback) const
{
    const CValueTable* entry = m_keywords.Find(keyword);
    const QString path = entry != nullptr ? entry->GetValuePath() : fallback;
    return path.startsWith(QLatin1Char('/')) ? path : m_valuePath + QLatin1Char('/') + path;
}

values::ValueBase* CRecording::ValueOf(const QString& keyword, const QString& fallback) const
{
    const values::Tree* tree = values::Tree::Instance();
    return tree == nullptr ? nullptr : tree->Find(ResolveValuePath(keyword, fallback));
}

bool CRecording::RecDf() const
{
    if (m_recDf) {
        return m_recDf->GetValue();
    }
    return m_refusedRecDf != nullptr && m_refusedRecDf->GetValue();
}

bool CRecording::ShouldRecordType(const QString& keyword) const
{
    return ShouldRecordType(TypeIdOf(keyword));
}

// The sets of mode keys here, in ModeExcludesIfSpectrum and in ApplyModeKeywords differ, and are meant to.
bool CRecording::ShouldRecordType(std::int32_t typeId) const
{
    if (!isOneOf(typeId, {RfSpectrum, IfSpectrum, DfSpectrum}) || m_keywords.IsEmpty()) {
        return true;
    }
    bool spectrum = false;
    bool dfSpectrum = false;
    for (const auto& [keyword, entry] : m_keywords) {
        const std::int32_t id = TypeIdOf(keyword);
        spectrum = spectrum || id == RfSpectrum || id == IfSpectrum;
        dfSpectrum = dfSpectrum || id == DfSpectrum;
    }
    if (!spectrum || !dfSpectrum) {
        return true;
    }
    if (RecDf()) {
        return typeId == DfSpectrum;
    }
    if (typeId == IfSpectrum) {
        return !ModeExcludesIfSpectrum(m_modeKey);
    }
    return typeId == RfSpectrum && !isOneOf(m_modeKey, {3, 23, 42});
}

bool CRecording::ModeExcludesIfSpectrum(std::int32_t modeKey) const
{
    constexpr std::int32_t DependsOnAntenna = 24;
    if (!isOneOf(modeKey, {3, 23, DependsOnAntenna, 27, 42})) {
        return true;
    }
    return modeKey == DependsOnAntenna && m_antennaMode && m_antennaMode->GetText() == QLatin1String("DF");
}

// These two are told by the header of a recording, not by records.
bool CRecording::IsHeaderText(const QString& keyword)
{
    return keyword == QLatin1String("DEVICENAME") || keyword == QLatin1String("DEVICETYPE");
}

void CRecording::AttachRecordedValues()
{
    if (values::Tree::Instance() == nullptr) {
        return;
    }
    for (const auto& [keyword, entry] : m_keywords) {
        values::ValueBase* value = IsHeaderText(keyword) ? nullptr : ValueOf(keyword);
        if (value == nullptr) {
            continue;
        }
        const std::int32_t typeId = TypeIdOf(keyword);
        AssignFields(typeId, *value);
        // Setting STARTFREQ and STOPFREQ there may have removed it.
        if (ValueOf(keyword) == value && ShouldRecordType(typeId)) {
            Observe(*entry, *value);
        }
    }
}

void CRecording::Observe(CValueTable& entry, values::ValueBase& value)
{
    if (entry.observed == &value) {
        return;
    }
    entry.observed = &value;
    value.AddObserver(this);
    value.CommandRecordingOn();
    entry.switchedOn = true;
    RefreshObserved();
}

// Another recorder may have the value's command recording on: each ends only what it began.
void CRecording::StopObserving(CValueTable& entry)
{
    values::ValueBase* const value = entry.observed;
    if (value == nullptr) {
        return;
    }
    if (std::exchange(entry.switchedOn, false)) {
        value->CommandRecordingOff();
    }
    value->RemoveObserver(this);
    entry.observed = nullptr;
    entry.joined = false;
}

void CRecording::RefreshObserved()
{
    m_observed.clear();
    for (const auto& [keyword, entry] : m_keywords) {
        if (entry->observed != nullptr) {
            m_observed.push_back({entry->observed, TypeIdOf(keyword), TimedMap(entry->observed), entry->joined});
        }
    }
}

void CRecording::DropKeyword(const QString& keyword)
{
    CValueTable* entry = m_keywords.Find(keyword);
    if (entry == nullptr) {
        return;
    }
    StopObserving(*entry);
    m_keywords.MoveTo(m_inactiveKeywords, keyword);
    RefreshObserved();
}

void CRecording::TakeKeyword(const QString& keyword)
{
    CValueTable* entry = m_inactiveKeywords.Find(keyword);
    if (entry == nullptr) {
        return;
    }
    m_inactiveKeywords.MoveTo(m_keywords, keyword);
    if (values::ValueBase* value = ValueOf(keyword)) {
        entry->joined = !m_starting && value->IsCommandRecording();  // at the start its state follows
        Observe(*entry, *value);
    }
}

void CRecording::ApplyModeKeywords()
{
    const bool ifMode = isOneOf(m_modeKey, {3, 23, 24, 42});
    DropKeyword(KeywordOf(ifMode ? RfSpectrum : IfSpectrum));
    TakeKeyword(KeywordOf(ifMode ? IfSpectrum : RfSpectrum));
}

void CRecording::ComputeRange()
{
    const double centre = static_cast<double>(m_frequency) + m_frequencyOffset;
    const double half = static_cast<double>(m_ifSpan) / 2;
    m_startFreq = static_cast<float>(centre - half);
    m_stopFreq = static_cast<float>(centre + half);
}

void CRecording::SetTreeNumber(std::int32_t typeId, double value)
{
    if (auto* number = dynamic_cast<values::ValueNumeric<double>*>(ValueOf(KeywordOf(typeId)))) {
        number->SetValue(value, this);
    }
}

bool CRecording::TakeFrequency(const values::ValueBase& value)
{
    const auto* frequency = dynamic_cast<const values::ValueNumericWithOffset<double>*>(&value);
    if (frequency == nullptr) {
        return false;
    }
    m_frequency = static_cast<float>(frequency->GetValue());
    m_frequencyOffset = frequency->GetOffset();
    return true;
}

bool CRecording::TakeModeKey(const values::ValueBase& value)
{
    const auto* commands = dynamic_cast<const values::ValueSelection*>(&value);
    if (commands == nullptr) {
        return false;
    }
    m_modeKey = commands->GetCurrentKey();
    return true;
}

// True when the range is to follow the span.
bool CRecording::TakeIfSpan(const values::ValueBase& value)
{
    const auto* span = dynamic_cast<const values::ValueSelection*>(&value);
    if (span == nullptr || m_frequency == 0 || ModeExcludesIfSpectrum(m_modeKey)) {
        return false;
    }
    m_ifSpan = static_cast<float>(span->GetCurrentValue());
    return m_ifSpan >= 1;
}

void CRecording::TakeLevelFields(std::int32_t typeId, const values::ValueBase& value)
{
    if (!isOneOf(typeId, {StartLevel, StopLevel, RfYLimit})) {
        return;
    }
    const auto* number = dynamic_cast<const values::ValueNumeric<double>*>(&value);
    if (number == nullptr) {
        return;
    }
    if (typeId == StartLevel) {
        m_minLevel = truncated(number->GetValue());
    } else if (typeId == StopLevel) {
        m_maxLevel = truncated(number->GetValue());
    } else {
        m_minLevel = truncated(number->GetLowerLimit());
        m_maxLevel = truncated(number->GetUpperLimit());
    }
}

// At the start the fields take over what the tree holds; TrackFields follows the changes.
void CRecording::AssignFields(std::int32_t typeId, const values::ValueBase& value)
{
    switch (typeId) {
        case StartFreq:
            m_startFreq = numberOf(value).value_or(m_startFreq);
            break;
        case StopFreq:
            m_stopFreq = numberOf(value).value_or(m_stopFreq);
            break;
        case Frequency:
            TakeFrequency(value);
            break;
        case DrvCommands:
            TakeModeKey(value);
            break;
        case IfSpan:
            if (TakeIfSpan(value)) {
                LetScanRangeFollow();
            }
            break;
        default:
            TakeLevelFields(typeId, value);
    }
}

// The device's scan range follows the IF span.
void CRecording::LetScanRangeFollow()
{
    ComputeRange();
    const auto start = static_cast<double>(m_startFreq);
    const auto stop = static_cast<double>(m_stopFreq);
    SetTreeNumber(StartFreq, start);
    SetTreeNumber(StopFreq, stop);
}

void CRecording::TrackFields(std::int32_t typeId, const values::ValueBase& value)
{
    switch (typeId) {
        case StartFreq:
            m_startFreq = std::min(m_startFreq, numberOf(value).value_or(m_startFreq));
            break;
        case StopFreq:
            m_stopFreq = std::max(m_stopFreq, numberOf(value).value_or(m_stopFreq));
            break;
        case Frequency:
            if (TakeFrequency(value) && m_ifSpan != 0 && !ModeExcludesIfSpectrum(m_modeKey)) {
                ComputeRange();
            }
            break;
        case DrvCommands:
            if (TakeModeKey(value)) {
                ApplyModeKeywords();
            }
            break;
        case IfSpan:
            if (TakeIfSpan(value)) {
                ComputeRange();
            }
            break;
        default:
            TakeLevelFields(typeId, value);
    }
}

}  // namespace Recording2
