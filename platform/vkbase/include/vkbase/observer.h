// The observer pattern of the station: who is told of a change, and in which order of events.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <vkbase/export.h>

/// What happened to an observed value. The numbers are part of the station's interface.
enum class TChangeCode : std::int32_t {
    Removed = 2,          ///< The value leaves the tree, or an item of it was deleted.
    ValueChanged = 3,     ///< The value, or a property of it such as a limit, changed.
    CommandsPending = 4,  ///< A map changed while its command recording is on.
    SelectedAgain = 19,   ///< The item that is already selected was selected once more.
};

/// Receives change notifications. Not owned by what it observes: it must remove itself before it is destroyed.
class VKBASE_EXPORT IObserver {
public:
    IObserver() = default;
    IObserver(const IObserver&) = delete;
    IObserver& operator=(const IObserver&) = delete;
    virtual ~IObserver();

    /// Called on the thread that makes the change.
    /// @param subject address of the changed object (for a value: its values::ValueBase)
    virtual void Update(void* subject, TChangeCode code) = 0;
};

/// A set of observers. Not thread-safe; one thread makes all changes.
///
/// During a round of notification observers may be added (told from the next round on) and removed (not called
/// any more), and the observable itself may be destroyed (the round ends). Rounds may nest.
class VKBASE_EXPORT Observable {
public:
    Observable() = default;
    Observable(const Observable&) = delete;
    Observable& operator=(const Observable&) = delete;
    virtual ~Observable();

    /// Adds an observer, once however often it is added. Null is ignored.
    void AddObserver(IObserver* observer);
    /// Removes an observer; one that is not in the set is ignored.
    void RemoveObserver(IObserver* observer);
    [[nodiscard]] bool IsObservedBy(const IObserver* observer) const;
    [[nodiscard]] std::size_t ObserverCount() const;

protected:
    /// Tells every observer but the originator (null: all), in the order in which they were added. The first exception
    /// that an observer throws is thrown on after the others were told. Allocates nothing.
    /// @return false when the observable was destroyed during the round: touch no member after that. An exception of
    ///         such a round is traced, not thrown, so that whoever catches one may still use the observable.
    bool NotifyObservers(void* subject, TChangeCode code, const IObserver* originator);

private:
    struct Round;
    void Compact();  // closes the gaps once no round is under way

    std::vector<IObserver*> m_observers;  // null where an observer was removed during a round
    Round* m_round = nullptr;             // innermost round under way
};
