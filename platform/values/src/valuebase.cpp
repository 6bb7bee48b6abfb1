// A round of notification, and the change's text that is built once in it.
#include <values/valuebase.h>

#include <array>

#include <values/tree.h>
#include <vkbase/vkexception.h>

namespace values {

QString ValueTypeName(ValueType type)
{
    constexpr std::array Names{"Unknown",   "Bool",     "String",     "Numeric",       "NumericWithOffset",
                               "Selection", "LevelMap", "BearingMap", "FastBearingMap"};
    const auto number = static_cast<std::int32_t>(type);
    const bool known = number > 0 && number < static_cast<std::int32_t>(Names.size());
    return QString::fromLatin1(known ? Names[static_cast<std::size_t>(number)] : Names[0]);
}

/// One round of notification. It lives on the stack and survives the value where an observer destroys that.
class ValueBase::Round {
public:
    explicit Round(ValueBase& value) : m_value(&value), m_outer(value.m_round)
    {
        value.m_round = this;
        value.m_textBuilt = false;
        value.m_changedSilently = false;
    }
    Round(const Round&) = delete;
    Round& operator=(const Round&) = delete;
    ~Round()
    {
        if (m_value != nullptr) {
            m_value->m_round = m_outer;
            end(*m_value);
        }
    }

    void valueDestroyed()
    {
        for (Round* round = this; round != nullptr; round = round->m_outer) {
            round->m_value = nullptr;
        }
    }

private:
    void end(ValueBase& value) const
    {
        // An outer round goes on with everything that changed since it began.
        if (m_outer != nullptr) {
            return;
        }
        if (!value.m_changedSilently) {
            value.ClearCollectedChange(value.m_textBuilt);
        }
        value.m_textBuilt = false;
        value.m_changeText.clear();
    }

    ValueBase* m_value;
    Round* m_outer;
};

ValueBase::~ValueBase()
{
    while (m_pointers != nullptr) {
        m_pointers->ValueDestroyed();
    }
    if (m_round != nullptr) {
        m_round->valueDestroyed();
    }
}

void ValueBase::SetName(const QString& name)
{
    if (m_inTree) {
        throw VKException("A value in the tree cannot be renamed", "platform\\values\\valuebase", "ValueBase::SetName",
                          __LINE__);
    }
    m_name = name;
    m_path = name;
}

std::int32_t ValueBase::QueryChange(TChangeCode code) const
{
    return code == TChangeCode::Removed && m_leavingTree ? 1 : 0;
}

void ValueBase::CommandRecordingOn()
{
    if (m_commandRecording++ == 0) {
        CommandRecordingStarted();
        m_textBuilt = false;
    }
}

void ValueBase::CommandRecordingOff()
{
    if (m_commandRecording == 0) {
        return;
    }
    if (--m_commandRecording == 0) {
        ClearCollectedChange(true);
        m_textBuilt = false;
    }
}

std::string ValueBase::GetObjectStateStringForRecording() const
{
    std::string text;
    AppendChangeText(text);
    return text;
}

const std::string& ValueBase::GetStringForRecording(bool onlyChanges)
{
    if (!onlyChanges || !IsCommandRecording()) {
        m_stateText = GetObjectStateStringForRecording();
        return m_stateText;
    }
    if (m_round != nullptr && !m_textBuilt) {
        m_changeText.clear();
        AppendChangeText(m_changeText);
        m_textBuilt = true;
    }
    return m_changeText;
}

bool ValueBase::NotifyChange(TChangeCode code, const IObserver* originator)
{
    const Round round(*this);
    return NotifyObservers(this, code, originator);
}

}  // namespace values
