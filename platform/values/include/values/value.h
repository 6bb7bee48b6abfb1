// Plain values: boolean, text, number, number with offset.
#pragma once

#include <type_traits>

#include <values/valuebase.h>

namespace values {

struct VALUES_EXPORT FormatBool {};
struct VALUES_EXPORT FormatString {};
template <typename T>
using DefaultFormat = std::conditional_t<std::is_same_v<T, bool>, FormatBool, FormatString>;

/// A boolean (initially false) or a text (initially empty).
template <typename T, typename Format = DefaultFormat<T>>
class VALUES_EXPORT Value final : public ValueBase {
public:
    Value() = default;
    [[nodiscard]] const T& GetValue() const { return m_value; }
    void SetValue(const T& value, IObserver* originator = nullptr);

    [[nodiscard]] ValueType GetType() const override;
    [[nodiscard]] QString GetText() const override;
    bool ApplyRecordedState(const std::string& text, std::int32_t originatorKey, bool notify) override;

protected:
    void AppendChangeText(std::string& text) const override;

private:
    T m_value{};
};

/// A number with limits; the limits describe and do not restrict.
template <typename T>
class VALUES_EXPORT ValueNumeric : public ValueBase {
public:
    ValueNumeric() = default;
    [[nodiscard]] T GetValue() const { return m_value; }
    void SetValue(T value, IObserver* originator = nullptr);
    [[nodiscard]] T GetLowerLimit() const { return m_lower; }
    [[nodiscard]] T GetUpperLimit() const { return m_upper; }
    void SetLimits(T lower, T upper, IObserver* originator = nullptr);

    [[nodiscard]] ValueType GetType() const override;
    [[nodiscard]] QString GetText() const override;
    bool ApplyRecordedState(const std::string& text, std::int32_t originatorKey, bool notify) override;

protected:
    void AppendChangeText(std::string& text) const override;

    T m_value{};
    T m_lower{};
    T m_upper{};
};

/// A number with an offset that is added where the value is used (a converter's frequency shift).
template <typename T>
class VALUES_EXPORT ValueNumericWithOffset final : public ValueNumeric<T> {
public:
    ValueNumericWithOffset() = default;
    [[nodiscard]] T GetOffset() const { return m_offset; }
    void SetOffset(T offset, IObserver* originator = nullptr);

    [[nodiscard]] ValueType GetType() const override;
    bool ApplyRecordedState(const std::string& text, std::int32_t originatorKey, bool notify) override;

protected:
    void AppendChangeText(std::string& text) const override;

private:
    T m_offset{};
};

extern template class Value<bool>;
extern template class Value<QString>;
extern template class ValueNumeric<double>;
extern template class ValueNumericWithOffset<double>;

}  // namespace values
