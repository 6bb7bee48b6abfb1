// Counts the changes of device values and the records that they become, for progress and summary.
#pragma once

#include <cstddef>
#include <cstdint>

#include <QString>

#include <values/tree.h>
#include <vkbase/observer.h>

namespace RecStation {

/// Observes every value of a tree but the status values of recorders. It must outlive the tree.
class ChangeCounter final : public IObserver {
public:
    void Update(void* subject, TChangeCode code) override;

    /// Observes the values that the tree got since the last call; cheap when there are none.
    void follow(const values::Tree& tree);
    /// The same for a value that was just created; what else is new is left to the next call of the other.
    void follow(const values::Tree& tree, const QString& created);
    [[nodiscard]] std::uint64_t changes() const { return m_changes; }
    /// Records that recorders wrote of these changes: one of each recorder that watches the value. The states that a
    /// recording begins with come on top.
    [[nodiscard]] std::uint64_t records() const { return m_records; }

private:
    void observe(const values::Tree& tree, const QString& path);

    std::uint64_t m_changes = 0;
    std::uint64_t m_records = 0;
    std::size_t m_followed = 0;  // size of the tree that was looked through last
};

}  // namespace RecStation
