// The exception that station libraries throw across their interfaces.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

#include <vkbase/export.h>

/// A failure with the place it was raised at. All texts are UTF-8.
class VKBASE_EXPORT VKException : public std::runtime_error {
public:
    VKException(const std::string& message, std::string source, std::string function, std::int32_t line);
    VKException(const VKException&) = default;
    VKException& operator=(const VKException&) = default;
    ~VKException() override;

    [[nodiscard]] const std::string& Source() const noexcept;    ///< source name, with backslashes
    [[nodiscard]] const std::string& Function() const noexcept;  ///< function or class name
    [[nodiscard]] std::int32_t Line() const noexcept;            ///< line number, 0 when unknown

private:
    std::string m_source;
    std::string m_function;
    std::int32_t m_line;
};
