// Counts the changes of device values, for the progress line.
#pragma once

#include <cstddef>
#include <cstdint>

#include <values/tree.h>
#include <vkbase/observer.h>

namespace recstation {

/// Observes every value of a tree but the status values of recorders. It must outlive the tree.
class ChangeCounter final : public IObserver {
public:
    void Update(void* subject, TChangeCode code) override;

    /// Observes the values that the tree got since the last call; cheap when there are none.
    void follow(const values::Tree& tree);
    [[nodiscard]] std::uint64_t changes() const { return m_changes; }

private:
    std::uint64_t m_changes = 0;
    std::size_t m_followed = 0;  // size of the tree that was looked through last
};

}  // namespace recstation
