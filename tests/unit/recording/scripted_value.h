// A value that does what a test tells it to, failing included.
#pragma once

#include <values/valuebase.h>

#include "support/testing.h"

namespace RecorderTests {

class ScriptedValue final : public values::ValueBase {
public:
    using Action = std::function<void()>;

    /// Notifies a change whose text is the given one.
    void change(const std::string& text, TChangeCode code)
    {
        m_text = text;
        NotifyChange(code, nullptr);
    }

    [[nodiscard]] values::ValueType GetType() const override { return values::ValueType::String; }
    [[nodiscard]] QString GetText() const override { return QString::fromStdString(m_text); }
    [[nodiscard]] std::string GetObjectStateStringForRecording() const override
    {
        run(onState);
        return state;
    }
    bool ApplyRecordedState(const std::string& /*text*/, std::int32_t /*originatorKey*/, bool /*notify*/) override
    {
        return false;
    }

    std::string state = "state";
    Action onState;   ///< runs when the complete state is asked for
    Action onChange;  ///< runs when the text of a change is made
    Action onOff;     ///< runs when command recording ends

protected:
    void AppendChangeText(std::string& text) const override
    {
        run(onChange);
        text += m_text;
    }
    void ClearCollectedChange(bool /*wasGiven*/) override
    {
        if (!IsCommandRecording()) {
            run(onOff);
        }
    }

private:
    static void run(const Action& action)
    {
        if (action) {
            action();
        }
    }

    std::string m_text;
};

}  // namespace RecorderTests
