// The logging categories in use, and messages that are sent to them.
#include <vkbase/trace.h>

#include <map>
#include <memory>
#include <mutex>

#include <QByteArray>
#include <QLoggingCategory>
#include <QMessageLogger>

namespace {

/// The categories in use. A category keeps only a pointer to its name, which the key beside it holds.
class Categories {
public:
    const QLoggingCategory& Find(const QString& source)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto entry = m_categories.try_emplace(source.toUtf8()).first;
        if (!entry->second) {
            entry->second = std::make_unique<QLoggingCategory>(entry->first.constData());
        }
        return *entry->second;
    }

private:
    std::mutex m_mutex;
    std::map<QByteArray, std::unique_ptr<QLoggingCategory>> m_categories;
};

}  // namespace

ErrorHandler& ErrorHandler::Instance()
{
    static ErrorHandler handler;
    return handler;
}

std::uint32_t ErrorHandler::TraceMask() const noexcept
{
    return m_traceMask;
}

void ErrorHandler::SetTraceMask(std::uint32_t mask) noexcept
{
    m_traceMask = mask;
}

// NOLINTBEGIN(bugprone-reserved-identifier)
void _Q_Trace(const QString& message, const QString& source, std::uint16_t line)
{
    static Categories categories;
    const QLoggingCategory& category = categories.Find(source);
    QMessageLogger(category.categoryName(), line, nullptr).info(category).noquote() << message;
}

void _Q_TraceOld(const char* format, const char* text)
{
    _Q_Trace(QString::fromUtf8(format).replace(QStringLiteral("%s"), QString::fromUtf8(text)), QStringLiteral("trace"),
             0);
}
// NOLINTEND(bugprone-reserved-identifier)
