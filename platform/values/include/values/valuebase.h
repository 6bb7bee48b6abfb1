// The base of everything that stands in the value tree.
#pragma once

#include <cstdint>
#include <string>

#include <QString>

#include <values/export.h>
#include <vkbase/observer.h>

namespace values {

class Tree;
class ValuePtrBase;

/// Type code of a value; recordings store it, so the numbers never change.
enum class ValueType : std::int32_t {
    Unknown = 0,
    Bool = 1,
    String = 2,
    Numeric = 3,
    NumericWithOffset = 4,
    Selection = 5,
    LevelMap = 6,        ///< FastValueMap<float, levelHandler>
    BearingMap = 7,      ///< ValueMap<Bearing, BearingHandler>
    FastBearingMap = 8,  ///< FastValueMap<Bearing, BearingHandler>
};

/// Name of a type code for people ("Selection"); "Unknown" for a number that names none.
VALUES_EXPORT QString ValueTypeName(ValueType type);

/// A named value. Not thread-safe: one thread changes and reads all values of a process.
///
/// Every change notifies the observers exactly once, with the value's ValueBase address as subject: code
/// CommandsPending for a map whose command recording is on, ValueChanged otherwise. Setting a plain value to what it
/// already is notifies nobody.
///
/// Recording texts: see doc/recording-text.md. They are ASCII without NUL.
class VALUES_EXPORT ValueBase : public Observable {
public:
    ~ValueBase() override;

    [[nodiscard]] const QString& GetName() const { return m_name; }
    /// @throws VKException when the value has been inserted into the tree; the name stays then
    void SetName(const QString& name);
    [[nodiscard]] const QString& GetPath() const { return m_path; }  ///< full path; the name while outside the tree

    [[nodiscard]] virtual ValueType GetType() const = 0;
    [[nodiscard]] virtual QString GetText() const = 0;  ///< the value as a person would write it, without a unit

    /// Asks, during a notification, what the change code is about: for Removed 1 when the value itself leaves the
    /// tree, 0 when only an item of it was deleted; 0 for every other code.
    [[nodiscard]] virtual std::int32_t QueryChange(TChangeCode code) const;

    /// Command recording is counted: it is on until Off was called as often as On. Off on a value that is not
    /// recording does nothing. A value collects what changes only while it is on.
    void CommandRecordingOn();
    void CommandRecordingOff();
    [[nodiscard]] bool IsCommandRecording() const { return m_commandRecording > 0; }

    /// The complete state as recording text: where a change carries all of it, the text of a change.
    [[nodiscard]] virtual std::string GetObjectStateStringForRecording() const;
    /// The text of the change being notified (onlyChanges true), or the complete state (false).
    /// It is built once a round and lasts until the round ends; reading it does not consume it. Between rounds the
    /// text of changes is empty. While command recording is off, changes are not collected and the complete state is
    /// given instead, so that a reader never loses a change. Where an observer changes the value in its round, the
    /// inner round and what is left of the outer one are given everything that changed since the outer one began.
    /// The reference is good until the next call, change, or end of the round.
    [[nodiscard]] const std::string& GetStringForRecording(bool onlyChanges);
    /// Takes over the state or change that a recording text describes. An empty text does nothing; a text of another
    /// kind of value changes nothing but, for a map, its channel range. Observers are told once if anything changed.
    /// @param originatorKey reserved, 0
    /// @param notify false: observers are not told
    /// @return false when the text could not be understood (whatever came before the damage may have been applied)
    virtual bool ApplyRecordedState(const std::string& text, std::int32_t originatorKey, bool notify) = 0;

protected:
    ValueBase() = default;
    /// Ends a change: builds nothing by itself, tells the observers, then forgets the collected change.
    /// @return false when an observer destroyed the value: touch no member after that
    bool NotifyChange(TChangeCode code, const IObserver* originator);
    /// Ends a change of which the observers are not told; what was collected goes into the next text.
    void ChangeSilently() { m_changedSilently = true; }
    /// Appends the text of what was collected since command recording went on or the last round ended.
    virtual void AppendChangeText(std::string& text) const = 0;
    /// @param wasGiven whether the text of the collected change was asked for
    virtual void ClearCollectedChange([[maybe_unused]] bool wasGiven) {}
    virtual void CommandRecordingStarted() {}  ///< the count went from 0 to 1

private:
    friend class Tree;
    friend class ValuePtrBase;
    class Round;

    QString m_name;
    QString m_path;
    std::int32_t m_commandRecording = 0;
    bool m_inTree = false;
    bool m_leavingTree = false;
    bool m_textBuilt = false;
    bool m_changedSilently = false;  // since the newest round began
    Round* m_round = nullptr;        // innermost round under way
    std::string m_changeText;        // buffers of the recording texts, reused
    std::string m_stateText;
    ValuePtrBase* m_pointers = nullptr;  // pointers attached to this value, detached when it is destroyed
};

}  // namespace values
