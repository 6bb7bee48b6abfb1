// A choice out of named items.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include <QHash>

#include <values/valuebase.h>

namespace values {

/// One item of a selection. Names are unique within a selection; keys and values need not be.
class VALUES_EXPORT SelectionItem {
public:
    SelectionItem(QString name, double value, std::int32_t key);
    [[nodiscard]] const QString& GetName() const { return m_name; }
    [[nodiscard]] double GetValue() const { return m_value; }
    [[nodiscard]] std::int32_t GetKey() const { return m_key; }

private:
    friend class ValueSelection;

    QString m_name;
    double m_value;
    std::int32_t m_key;
    std::uint64_t m_number = 0;  // in the order of adding
    bool m_deleted = false;      // waits to be taken out of the list
};

/// Selecting another item notifies ValueChanged, selecting the selected one SelectedAgain, deleting an item Removed
/// (QueryChange answers 0). Deleting the selected item leaves nothing selected. No operation looks through all items.
class VALUES_EXPORT ValueSelection final : public ValueBase {
public:
    ValueSelection();
    ~ValueSelection() override;

    /// Takes ownership. An item whose name is taken is destroyed and nothing changes.
    void AddItem(SelectionItem* item, IObserver* originator = nullptr);
    bool DeleteItem(const QString& name, IObserver* originator = nullptr);  ///< false when there is none
    void DeleteItems(IObserver* originator = nullptr);                      ///< one notification if there were any
    bool Select(const QString& name, IObserver* originator = nullptr);      ///< false for an unknown name
    bool SelectKey(std::int32_t key, IObserver* originator = nullptr);      ///< the first item with the key

    [[nodiscard]] const SelectionItem* GetCurrentItem() const;  ///< null when nothing is selected
    [[nodiscard]] std::int32_t GetCurrentKey() const;           ///< 0 when nothing is selected
    [[nodiscard]] double GetCurrentValue() const;               ///< 0 when nothing is selected
    /// In the order of adding; good until an item is added or deleted.
    [[nodiscard]] const std::vector<std::unique_ptr<SelectionItem>>& GetItems() const;

    [[nodiscard]] ValueType GetType() const override;
    [[nodiscard]] QString GetText() const override;  ///< name of the selected item
    /// Selects the recorded item, adding it where the selection does not have it; an item of its name takes over the
    /// recorded key and value.
    bool ApplyRecordedState(const std::string& text, std::int32_t originatorKey, bool notify) override;

protected:
    void AppendChangeText(std::string& text) const override;

private:
    bool SelectItem(const SelectionItem* item, IObserver* originator);
    bool TakeRecorded(const SelectionItem& recorded);
    SelectionItem* Append(std::unique_ptr<SelectionItem> item);
    void TakeOutDeleted() const;

    // A deleted item stays in the list, out of the reach of the look-ups, until many are or somebody asks for the list.
    mutable std::vector<std::unique_ptr<SelectionItem>> m_items;
    mutable std::size_t m_deleted = 0;
    QHash<QString, SelectionItem*> m_byName;
    std::map<std::pair<std::int32_t, std::uint64_t>, SelectionItem*> m_byKey;  // key and number
    std::uint64_t m_added = 0;
    const SelectionItem* m_current = nullptr;
};

}  // namespace values
