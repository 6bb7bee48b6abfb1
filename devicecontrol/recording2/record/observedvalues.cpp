// Finding the values of keywords, observing them and letting them go.
#include "observedvalues.h"

#include <algorithm>
#include <utility>

#include <values/tree.h>

#include "../traces.h"

namespace Recording2 {

const values::MappingBase* timedMap(const values::ValueBase* value)
{
    if (const auto* bearings = dynamic_cast<const values::ValueMap<values::Bearing, values::BearingHandler>*>(value)) {
        return bearings;
    }
    return dynamic_cast<const values::FastValueMap<float, values::levelHandler>*>(value);
}

bool isHeaderText(const QString& keyword)
{
    return keyword == QLatin1String("DEVICENAME") || keyword == QLatin1String("DEVICETYPE");
}

ObservedValues::ObservedValues(IObserver& observer, const QString& root) : m_observer(observer), m_root(root)
{
    for (const RecordType& type : RecordTypeTable) {
        m_typeIds[QString::fromLatin1(type.keyword)] = type.id;
    }
}

void ObservedValues::clear()
{
    stopAll(true);
    m_keywords.clear();
    m_inactiveKeywords.clear();
}

std::int32_t ObservedValues::typeIdOf(const QString& keyword) const
{
    const auto entry = m_typeIds.find(keyword);
    return entry == m_typeIds.end() ? UnknownType : entry->second;
}

QString ObservedValues::keywordOf(std::int32_t typeId) const
{
    const auto entry =
        std::find_if(m_typeIds.begin(), m_typeIds.end(), [&](const auto& type) { return type.second == typeId; });
    return entry == m_typeIds.end() ? QString() : entry->first;
}

QString ObservedValues::pathOf(const QString& keyword, const QString& fallback) const
{
    const auto entry = m_keywords.find(keyword);
    const QString path = entry != m_keywords.end() ? entry->second.valuePath : fallback;
    return path.startsWith(QLatin1Char('/')) ? path : m_root + QLatin1Char('/') + path;
}

values::ValueBase* ObservedValues::valueOf(const QString& keyword, const QString& fallback) const
{
    const values::Tree* tree = values::Tree::Instance();
    return tree == nullptr ? nullptr : tree->Find(pathOf(keyword, fallback));
}

const ObservedValues::Observed* ObservedValues::find(const void* subject) const
{
    const auto found = std::find_if(m_observed.begin(), m_observed.end(),
                                    [&](const Observed& observed) { return observed.value == subject; });
    return found == m_observed.end() ? nullptr : &*found;
}

// A value that another recorder records already gives a keyword that is taken in the middle of a recording no complete
// first text.
const std::string& ObservedValues::textOf(const Observed& change)
{
    if (!change.joined) {
        return change.value->GetStringForRecording(true);
    }
    for (auto& [keyword, entry] : m_keywords) {
        entry.joined = entry.joined && entry.observed != change.value;
    }
    refresh();
    static_cast<void>(change.value->GetStringForRecording(true));  // which counts as given
    return change.value->GetStringForRecording(false);
}

void ObservedValues::observe(CValueTable& entry, values::ValueBase& value)
{
    if (entry.observed != &value) {
        entry.observed = &value;
        entry.registered = !value.IsObservedBy(&m_observer);
        value.AddObserver(&m_observer);
    }
    if (!entry.switchedOn) {  // a value that failed to be switched off is still observed
        value.CommandRecordingOn();
        entry.switchedOn = true;
    }
    refresh();
}

// Another recorder may have the value's command recording on: each ends only what it began.
void ObservedValues::stopObserving(CValueTable& entry)
{
    values::ValueBase* const value = entry.observed;
    if (value == nullptr) {
        return;
    }
    if (std::exchange(entry.switchedOn, false)) {
        value->CommandRecordingOff();
    }
    letGo(entry);
    entry.joined = false;
}

// A value may have several keywords, and may be one that controls the recorder: it is observed as long as one needs it.
void ObservedValues::letGo(CValueTable& entry)
{
    values::ValueBase* const value = std::exchange(entry.observed, nullptr);
    if (!std::exchange(entry.registered, false)) {
        return;
    }
    const auto other = std::find_if(m_keywords.begin(), m_keywords.end(),
                                    [&](const auto& keyword) { return keyword.second.observed == value; });
    if (other != m_keywords.end()) {
        other->second.registered = true;
    } else {
        value->RemoveObserver(&m_observer);
    }
}

bool ObservedValues::forget(const void* subject, TChangeCode code)
{
    bool watched = false;
    for (auto& [keyword, entry] : m_keywords) {
        values::ValueBase* value = entry.observed;
        if (value == nullptr || value != subject) {
            continue;
        }
        watched = true;
        if (value->QueryChange(code) == 1) {
            letGo(entry);
            entry.switchedOn = false;
        }
    }
    if (watched) {
        refresh();
    }
    return watched;
}

void ObservedValues::stopAll(bool goOn)
{
    bool failed = false;
    for (auto entry = m_keywords.begin(); entry != m_keywords.end() && (goOn || !failed); ++entry) {
        try {
            stopObserving(entry->second);
        } catch (...) {
            failed = true;
            Traces::tell(Traces::Recorder, QString::fromStdString(Traces::textOfException()), __LINE__);
        }
    }
    refresh();
}

void ObservedValues::refresh()
{
    m_observed.clear();
    for (const auto& [keyword, entry] : m_keywords) {
        if (entry.observed != nullptr) {
            m_observed.push_back({entry.observed, typeIdOf(keyword), timedMap(entry.observed), entry.joined});
        }
    }
}

void ObservedValues::drop(const QString& keyword)
{
    const auto entry = m_keywords.find(keyword);
    if (entry == m_keywords.end()) {
        return;
    }
    stopObserving(entry->second);
    m_inactiveKeywords.insert_or_assign(keyword, entry->second);
    m_keywords.erase(entry);
    refresh();
}

void ObservedValues::take(const QString& keyword, bool starting)
{
    const auto inactive = m_inactiveKeywords.extract(keyword);
    if (!inactive) {
        return;
    }
    CValueTable& entry = m_keywords.insert_or_assign(keyword, inactive.mapped()).first->second;
    if (values::ValueBase* value = valueOf(keyword)) {
        entry.joined = !starting && value->IsCommandRecording();
        observe(entry, *value);
    }
}

}  // namespace Recording2
