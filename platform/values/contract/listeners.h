// Observers for the contract tests, and what nearly all of them include.
#pragma once

#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <numeric>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include <values/maps.h>
#include <values/recordingtext.h>
#include <values/selection.h>
#include <values/tree.h>
#include <values/value.h>
#include <vkbase/vkexception.h>

using Flag = values::Value<bool>;
using Text = values::Value<QString>;
using Number = values::ValueNumeric<double>;
using NumberWithOffset = values::ValueNumericWithOffset<double>;
using LevelMap = values::FastValueMap<float, values::levelHandler>;
using BearingMap = values::ValueMap<values::Bearing, values::BearingHandler>;
using FastBearingMap = values::FastValueMap<values::Bearing, values::BearingHandler>;

/// Keeps the change codes that it is told.
class Listener final : public IObserver {
public:
    Listener() = default;
    explicit Listener(values::ValueBase& value) { value.AddObserver(this); }
    void Update(void* subject, TChangeCode code) override
    {
        m_codes.push_back(code);
        m_subject = subject;
    }
    [[nodiscard]] const std::vector<TChangeCode>& codes() const { return m_codes; }
    [[nodiscard]] const void* subject() const { return m_subject; }
    void forget() { m_codes.clear(); }

private:
    std::vector<TChangeCode> m_codes;
    const void* m_subject = nullptr;
};

/// Does something when it is told.
class Actor final : public IObserver {
public:
    explicit Actor(std::function<void(TChangeCode)> action) : m_action(std::move(action)) {}
    void Update(void* /*subject*/, TChangeCode code) override { m_action(code); }

private:
    std::function<void(TChangeCode)> m_action;
};

/// Keeps the text of every change of one value while it records that.
class TextRecorder final : public IObserver {
public:
    explicit TextRecorder(values::ValueBase& value) : m_value(value)
    {
        m_value.AddObserver(this);
        m_value.CommandRecordingOn();
    }
    ~TextRecorder() override
    {
        m_value.CommandRecordingOff();
        m_value.RemoveObserver(this);
    }
    void Update(void* /*subject*/, TChangeCode /*code*/) override
    {
        m_texts.push_back(m_value.GetStringForRecording(true));
    }
    [[nodiscard]] const std::vector<std::string>& texts() const { return m_texts; }
    [[nodiscard]] const std::string& last() const { return m_texts.back(); }

private:
    values::ValueBase& m_value;
    std::vector<std::string> m_texts;
};

constexpr std::size_t Channels = 4096;

class Spectrum : public testing::Test {
protected:
    Spectrum() { m_map.SetChannelRange(values::ChannelRange::Even(100e6, 2500, Channels)); }

    LevelMap m_map;
};

inline bool hasRange(const std::string& text)
{
    return text.find("34;") != std::string::npos;
}
