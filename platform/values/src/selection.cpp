#include <values/selection.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <optional>
#include <string_view>
#include <utility>

#include "textformat.h"

namespace values {

namespace {

using Items = std::vector<std::unique_ptr<SelectionItem>>;

Items::iterator findItem(Items& items, const QString& name)
{
    return std::find_if(items.begin(), items.end(), [&name](const auto& item) { return item->GetName() == name; });
}

/// Same key and, to the bit, the same value.
bool isSame(const SelectionItem& one, const SelectionItem& other)
{
    return one.GetKey() == other.GetKey() &&
           (std::bit_cast<std::uint64_t>(one.GetValue()) == std::bit_cast<std::uint64_t>(other.GetValue()) ||
            (std::isnan(one.GetValue()) && std::isnan(other.GetValue())));
}

std::optional<SelectionItem> readItem(std::string_view payload)
{
    std::int32_t key = 0;
    double value = 0;
    QString name;
    if (!text::readSigned(text::takeField(payload), key) || !text::readNumber(text::takeField(payload), value) ||
        !text::readEscaped(payload, name)) {
        return std::nullopt;
    }
    return SelectionItem(name, value, key);
}

}  // namespace

SelectionItem::SelectionItem(QString name, double value, std::int32_t key)
    : m_name(std::move(name)), m_value(value), m_key(key)
{
}

ValueSelection::ValueSelection() = default;
ValueSelection::~ValueSelection() = default;

void ValueSelection::AddItem(SelectionItem* item, IObserver* originator)
{
    std::unique_ptr<SelectionItem> owned(item);
    if (owned == nullptr || findItem(m_items, owned->GetName()) != m_items.end()) {
        return;
    }
    m_items.push_back(std::move(owned));
    NotifyChange(TChangeCode::ValueChanged, originator);
}

bool ValueSelection::DeleteItem(const QString& name, IObserver* originator)
{
    const auto found = findItem(m_items, name);
    if (found == m_items.end()) {
        return false;
    }
    if (found->get() == m_current) {
        m_current = nullptr;
    }
    m_items.erase(found);
    NotifyChange(TChangeCode::Removed, originator);
    return true;
}

void ValueSelection::DeleteItems(IObserver* originator)
{
    if (m_items.empty()) {
        return;
    }
    m_current = nullptr;
    m_items.clear();
    NotifyChange(TChangeCode::Removed, originator);
}

bool ValueSelection::Select(const QString& name, IObserver* originator)
{
    const auto found = findItem(m_items, name);
    return found != m_items.end() && SelectItem(found->get(), originator);
}

bool ValueSelection::SelectKey(std::int32_t key, IObserver* originator)
{
    const auto found =
        std::find_if(m_items.begin(), m_items.end(), [key](const auto& item) { return item->GetKey() == key; });
    return found != m_items.end() && SelectItem(found->get(), originator);
}

bool ValueSelection::SelectItem(const SelectionItem* item, IObserver* originator)
{
    const TChangeCode code = item == m_current ? TChangeCode::SelectedAgain : TChangeCode::ValueChanged;
    m_current = item;
    NotifyChange(code, originator);
    return true;
}

const SelectionItem* ValueSelection::GetCurrentItem() const
{
    return m_current;
}

std::int32_t ValueSelection::GetCurrentKey() const
{
    return m_current != nullptr ? m_current->GetKey() : 0;
}

double ValueSelection::GetCurrentValue() const
{
    return m_current != nullptr ? m_current->GetValue() : 0;
}

ValueType ValueSelection::GetType() const
{
    return ValueType::Selection;
}

QString ValueSelection::GetText() const
{
    return m_current != nullptr ? m_current->GetName() : QString();
}

std::string ValueSelection::GetObjectStateStringForRecording() const
{
    std::string text;
    AppendChangeText(text);
    return text;
}

void ValueSelection::AppendChangeText(std::string& text) const
{
    text::appendCommand(text, static_cast<std::int32_t>(ValueType::Selection));
    if (m_current == nullptr) {
        return;
    }
    text::appendSigned(text, m_current->GetKey());
    text += text::FieldEnd;
    text::appendNumber(text, m_current->GetValue());
    text += text::FieldEnd;
    text::appendEscaped(text, m_current->GetName());
}

bool ValueSelection::ApplyRecordedState(const std::string& text, std::int32_t /*originatorKey*/, bool notify)
{
    std::string_view payload;
    const text::Match match = text::matchPlain(text, ValueType::Selection, payload);
    if (match != text::Match::Own) {
        return match == text::Match::NotOwn;
    }
    bool changed = m_current != nullptr;
    if (payload.empty()) {
        m_current = nullptr;
    } else {
        std::optional<SelectionItem> recorded = readItem(payload);
        if (!recorded) {
            return false;
        }
        changed = TakeRecorded(std::move(*recorded));
    }
    if (changed && notify) {
        NotifyChange(TChangeCode::ValueChanged, nullptr);
    }
    return true;
}

bool ValueSelection::TakeRecorded(SelectionItem recorded)
{
    const auto found = findItem(m_items, recorded.GetName());
    if (found == m_items.end()) {
        m_items.push_back(std::make_unique<SelectionItem>(std::move(recorded)));
        m_current = m_items.back().get();
        return true;
    }
    const bool changed = found->get() != m_current || !isSame(**found, recorded);
    **found = std::move(recorded);
    m_current = found->get();
    return changed;
}

}  // namespace values
