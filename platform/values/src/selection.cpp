// Items found by name and key, and the selected one as a recording text.
#include <values/selection.h>

#include <bit>
#include <cmath>
#include <optional>
#include <string_view>
#include <utility>

#include "textformat.h"

namespace values {

namespace {

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
    if (!Text::readNumber(Text::takeField(payload), key) || !Text::readNumber(Text::takeField(payload), value) ||
        !Text::readEscaped(payload, name)) {
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
    if (owned == nullptr || m_byName.contains(owned->GetName())) {
        return;
    }
    Append(std::move(owned));
    NotifyChange(TChangeCode::ValueChanged, originator);
}

SelectionItem* ValueSelection::Append(std::unique_ptr<SelectionItem> item)
{
    SelectionItem* const added = item.get();
    added->m_number = m_added++;
    m_items.push_back(std::move(item));
    m_byName.insert(added->m_name, added);
    m_byKey.emplace(std::pair(added->m_key, added->m_number), added);
    return added;
}

bool ValueSelection::DeleteItem(const QString& name, IObserver* originator)
{
    SelectionItem* const item = m_byName.take(name);
    if (item == nullptr) {
        return false;
    }
    if (item == m_current) {
        m_current = nullptr;
    }
    m_byKey.erase({item->m_key, item->m_number});
    item->m_deleted = true;
    ++m_deleted;
    while (!m_items.empty() && m_items.back()->m_deleted) {
        m_items.pop_back();
        --m_deleted;
    }
    if (m_deleted > m_items.size() / 2) {
        TakeOutDeleted();
    }
    NotifyChange(TChangeCode::Removed, originator);
    return true;
}

void ValueSelection::TakeOutDeleted() const
{
    std::erase_if(m_items, [](const auto& item) { return item->m_deleted; });
    m_deleted = 0;
}

const std::vector<std::unique_ptr<SelectionItem>>& ValueSelection::GetItems() const
{
    if (m_deleted > 0) {
        TakeOutDeleted();
    }
    return m_items;
}

void ValueSelection::DeleteItems(IObserver* originator)
{
    if (m_byName.isEmpty()) {
        return;
    }
    m_current = nullptr;
    m_byName.clear();
    m_byKey.clear();
    m_items.clear();
    m_deleted = 0;
    NotifyChange(TChangeCode::Removed, originator);
}

bool ValueSelection::Select(const QString& name, IObserver* originator)
{
    const SelectionItem* const item = m_byName.value(name);
    return item != nullptr && SelectItem(item, originator);
}

bool ValueSelection::SelectKey(std::int32_t key, IObserver* originator)
{
    const auto first = m_byKey.lower_bound({key, 0});
    return first != m_byKey.end() && first->first.first == key && SelectItem(first->second, originator);
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

void ValueSelection::AppendChangeText(std::string& text) const
{
    Text::appendCommand(text, static_cast<std::int32_t>(ValueType::Selection));
    if (m_current == nullptr) {
        return;
    }
    Text::appendNumber(text, m_current->GetKey());
    text += Text::FieldEnd;
    Text::appendNumber(text, m_current->GetValue());
    text += Text::FieldEnd;
    Text::appendEscaped(text, m_current->GetName());
}

bool ValueSelection::ApplyRecordedState(const std::string& text, std::int32_t /*originatorKey*/, bool notify)
{
    std::string_view payload;
    const Text::Match match = Text::matchPlain(text, ValueType::Selection, payload);
    if (match != Text::Match::Own) {
        return match == Text::Match::NotOwn;
    }
    bool changed = m_current != nullptr;
    if (payload.empty()) {
        m_current = nullptr;
    } else {
        const std::optional<SelectionItem> recorded = readItem(payload);
        if (!recorded) {
            return false;
        }
        changed = TakeRecorded(*recorded);
    }
    if (changed && notify) {
        NotifyChange(TChangeCode::ValueChanged, nullptr);
    }
    return true;
}

bool ValueSelection::TakeRecorded(const SelectionItem& recorded)
{
    SelectionItem* const item = m_byName.value(recorded.m_name);
    if (item == nullptr) {
        m_current = Append(std::make_unique<SelectionItem>(recorded));
        return true;
    }
    const bool changed = item != m_current || !isSame(*item, recorded);
    m_byKey.erase({item->m_key, item->m_number});
    item->m_key = recorded.m_key;
    item->m_value = recorded.m_value;
    m_byKey.emplace(std::pair(item->m_key, item->m_number), item);
    m_current = item;
    return changed;
}

}  // namespace values
