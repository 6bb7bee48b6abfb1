// Watches every value of the tree while one source after the other changes it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

#include <QString>
#include <QStringList>

#include <values/tree.h>
#include <vkbase/observer.h>

#include "check/findings.h"

namespace RecStation {

/// It must outlive the tree.
class Probe final : public IObserver {
public:
    /// What is in the tree by now is no source's.
    void leaveOut(const values::Tree& tree);
    /// Whose changes follow, and at what time.
    void begin(std::size_t source, unsigned long long timeUs);
    /// Notes what is new in the tree as the present source's.
    void follow(const values::Tree& tree);
    void Update(void* subject, TChangeCode code) override;

    /// What a source made or changed.
    [[nodiscard]] std::vector<FoundValue> valuesOf(std::size_t source, const values::Tree& tree) const;
    /// How often the source's value at a path was something known.
    [[nodiscard]] std::uint64_t shown(std::size_t source, const QString& path) const;
    [[nodiscard]] std::uint64_t shown(std::size_t source) const;  ///< of all its values together

private:
    struct Seen {
        std::uint64_t shown = 0;
        unsigned long long firstUs = 0;
        unsigned long long lastUs = 0;
    };

    std::map<std::size_t, std::map<QString, Seen>> m_seen;
    std::size_t m_source = 0;
    unsigned long long m_timeUs = 0;
    std::size_t m_followed = 0;
    QStringList m_leftOut;
};

/// Whether a value tells nothing: a number or a map without any measurement, an empty text.
[[nodiscard]] bool isUnknown(const values::ValueBase& value);

}  // namespace RecStation
