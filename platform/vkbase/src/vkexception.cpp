// The place that an exception carries with its message.
#include <vkbase/vkexception.h>

#include <utility>

VKException::VKException(const std::string& message, std::string source, std::string function, std::int32_t line)
    : std::runtime_error(message), m_source(std::move(source)), m_function(std::move(function)), m_line(line)
{
}

VKException::~VKException() = default;

const std::string& VKException::Source() const noexcept
{
    return m_source;
}

const std::string& VKException::Function() const noexcept
{
    return m_function;
}

std::int32_t VKException::Line() const noexcept
{
    return m_line;
}
