// Setting plain values, what is a change of them, and their recording texts.
#include <values/value.h>

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <type_traits>

#include "textformat.h"

namespace values {

namespace {

using Text::Match;

template <typename T>
bool isSame(const T& one, const T& other)
{
    return one == other;
}

bool isSame(double one, double other)
{
    // By their bits, so that a negative zero is kept; a NaN is what every other NaN is.
    return std::bit_cast<std::uint64_t>(one) == std::bit_cast<std::uint64_t>(other) ||
           (std::isnan(one) && std::isnan(other));
}

template <typename T>
bool replace(T& target, const T& value)
{
    if (isSame(target, value)) {
        return false;
    }
    target = value;
    return true;
}

void appendTag(std::string& text, ValueType type)
{
    Text::appendCommand(text, static_cast<std::int32_t>(type));
}

void appendPayload(std::string& text, bool value)
{
    text += value ? '1' : '0';
}

void appendPayload(std::string& text, const QString& value)
{
    Text::appendEscaped(text, value);
}

bool readPayload(std::string_view payload, bool& value)
{
    value = payload == "1";
    return value || payload == "0";
}

bool readPayload(std::string_view payload, QString& value)
{
    return Text::readEscaped(payload, value);
}

void appendFields(std::string& text, std::initializer_list<double> numbers)
{
    const char* before = "";
    for (const double number : numbers) {
        text += before;
        Text::appendNumber(text, number);
        before = ",";
    }
}

template <std::size_t Count>
bool readFields(std::string_view payload, std::array<double, Count>& numbers)
{
    for (double& number : numbers) {
        const bool last = &number == &numbers.back();
        if (!Text::readNumber(last ? payload : Text::takeField(payload), number)) {
            return false;
        }
    }
    return true;
}

/// Takes over the numbers of a text, as many as there are targets. @return false when it could not be understood
template <std::size_t Count>
bool applyNumbers(const std::string& text, ValueType type, const std::array<double*, Count>& targets, bool& changed)
{
    std::string_view payload;
    const Match match = Text::matchPlain(text, type, payload);
    if (match != Match::Own) {
        return match == Match::NotOwn;
    }
    std::array<double, Count> recorded{};
    if (!readFields(payload, recorded)) {
        return false;
    }
    for (std::size_t i = 0; i < Count; ++i) {
        changed = replace(*targets[i], recorded[i]) || changed;
    }
    return true;
}

QString textOf(bool value)
{
    return QString::fromLatin1(value ? "true" : "false");
}

QString textOf(const QString& value)
{
    return value;
}

}  // namespace

template <typename T, typename Format>
void Value<T, Format>::SetValue(const T& value, IObserver* originator)
{
    if (replace(m_value, value)) {
        this->NotifyChange(TChangeCode::ValueChanged, originator);
    }
}

template <typename T, typename Format>
ValueType Value<T, Format>::GetType() const
{
    return std::is_same_v<T, bool> ? ValueType::Bool : ValueType::String;
}

template <typename T, typename Format>
QString Value<T, Format>::GetText() const
{
    return textOf(m_value);
}

template <typename T, typename Format>
void Value<T, Format>::AppendChangeText(std::string& text) const
{
    appendTag(text, GetType());
    appendPayload(text, m_value);
}

template <typename T, typename Format>
bool Value<T, Format>::ApplyRecordedState(const std::string& text, std::int32_t /*originatorKey*/, bool notify)
{
    std::string_view payload;
    const Match match = Text::matchPlain(text, GetType(), payload);
    if (match != Match::Own) {
        return match == Match::NotOwn;
    }
    T recorded{};
    if (!readPayload(payload, recorded)) {
        return false;
    }
    if (replace(m_value, recorded) && notify) {
        this->NotifyChange(TChangeCode::ValueChanged, nullptr);
    }
    return true;
}

template <typename T>
void ValueNumeric<T>::SetValue(T value, IObserver* originator)
{
    if (replace(m_value, value)) {
        this->NotifyChange(TChangeCode::ValueChanged, originator);
    }
}

template <typename T>
void ValueNumeric<T>::SetLimits(T lower, T upper, IObserver* originator)
{
    const bool lowerChanged = replace(m_lower, lower);
    if (replace(m_upper, upper) || lowerChanged) {
        this->NotifyChange(TChangeCode::ValueChanged, originator);
    }
}

template <typename T>
ValueType ValueNumeric<T>::GetType() const
{
    return ValueType::Numeric;
}

template <typename T>
QString ValueNumeric<T>::GetText() const
{
    // An exponent only where the digits alone would be hard to read.
    const double magnitude = std::fabs(m_value);
    const bool fixed = magnitude == 0 || (magnitude >= 1e-6 && magnitude < 1e16);
    std::array<char, 64> digits{};
    const auto result =
        fixed ? std::to_chars(digits.data(), digits.data() + digits.size(), m_value, std::chars_format::fixed)
              : std::to_chars(digits.data(), digits.data() + digits.size(), m_value);
    return QString::fromLatin1(digits.data(), static_cast<int>(result.ptr - digits.data()));
}

template <typename T>
void ValueNumeric<T>::AppendChangeText(std::string& text) const
{
    appendTag(text, ValueType::Numeric);
    appendFields(text, {m_value, m_lower, m_upper});
}

template <typename T>
bool ValueNumeric<T>::ApplyRecordedState(const std::string& text, std::int32_t /*originatorKey*/, bool notify)
{
    bool changed = false;
    const bool understood = applyNumbers(text, ValueType::Numeric, std::array{&m_value, &m_lower, &m_upper}, changed);
    if (changed && notify) {
        this->NotifyChange(TChangeCode::ValueChanged, nullptr);
    }
    return understood;
}

template <typename T>
void ValueNumericWithOffset<T>::SetOffset(T offset, IObserver* originator)
{
    if (replace(m_offset, offset)) {
        this->NotifyChange(TChangeCode::ValueChanged, originator);
    }
}

template <typename T>
ValueType ValueNumericWithOffset<T>::GetType() const
{
    return ValueType::NumericWithOffset;
}

template <typename T>
void ValueNumericWithOffset<T>::AppendChangeText(std::string& text) const
{
    appendTag(text, ValueType::NumericWithOffset);
    appendFields(text, {this->m_value, this->m_lower, this->m_upper, m_offset});
}

template <typename T>
bool ValueNumericWithOffset<T>::ApplyRecordedState(const std::string& text, std::int32_t /*originatorKey*/, bool notify)
{
    bool changed = false;
    const std::array targets{&this->m_value, &this->m_lower, &this->m_upper, &m_offset};
    const bool understood = applyNumbers(text, ValueType::NumericWithOffset, targets, changed);
    if (changed && notify) {
        this->NotifyChange(TChangeCode::ValueChanged, nullptr);
    }
    return understood;
}

template class Value<bool>;
template class Value<QString>;
template class ValueNumeric<double>;
template class ValueNumericWithOffset<double>;

}  // namespace values
