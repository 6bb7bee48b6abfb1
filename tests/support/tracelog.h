// What is traced while a test looks.
#pragma once

#include <QMessageLogContext>

#include <vkbase/trace.h>

#include "support/testing.h"

namespace TestSupport {

/// Collects what is logged while it exists; the trace mask and the handler of before are put back at the end.
class TraceLog {
public:
    struct Line {
        QString text;
        QString source;
        int line;

        friend void PrintTo(const Line& traced, std::ostream* out)
        {
            *out << traced.source.toStdString() << ':' << traced.line << ": " << traced.text.toStdString();
        }
    };

    explicit TraceLog(std::uint32_t mask = ErrorHandler::RecordingTraces)
    {
        s_lines.clear();
        ErrorHandler::Instance().SetTraceMask(mask);
    }
    TraceLog(const TraceLog&) = delete;
    TraceLog& operator=(const TraceLog&) = delete;
    ~TraceLog()
    {
        ErrorHandler::Instance().SetTraceMask(m_maskBefore);
        qInstallMessageHandler(m_handlerBefore);
    }

    [[nodiscard]] static const std::vector<Line>& lines() { return s_lines; }
    /// The first line of exactly that text, or null.
    [[nodiscard]] static const Line* find(const QString& text)
    {
        const auto found = std::find_if(s_lines.begin(), s_lines.end(), [&](const Line& l) { return l.text == text; });
        return found != s_lines.end() ? &*found : nullptr;
    }
    [[nodiscard]] static auto count(const QString& text)
    {
        return std::count_if(s_lines.begin(), s_lines.end(), [&](const Line& l) { return l.text == text; });
    }

private:
    static void take(QtMsgType /*type*/, const QMessageLogContext& context, const QString& message)
    {
        s_lines.push_back({message, context.category, context.line});
    }

    inline static std::vector<Line> s_lines;
    std::uint32_t m_maskBefore = ErrorHandler::Instance().TraceMask();
    QtMessageHandler m_handlerBefore = qInstallMessageHandler(&TraceLog::take);
};

}  // namespace TestSupport
