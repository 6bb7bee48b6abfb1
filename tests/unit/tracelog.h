// What the library traces, for the tests of CFileAccess.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include <QString>

#include <vkbase/trace.h>

namespace FileAccessTests {

struct Trace {
    std::string source;
    QString message;
};

/// Collects what is traced while it lives.
class TraceLog {
public:
    explicit TraceLog(std::uint32_t mask)
    {
        s_traces.clear();
        ErrorHandler::Instance().SetTraceMask(mask);
        m_before = qInstallMessageHandler(&TraceLog::take);
    }
    ~TraceLog()
    {
        qInstallMessageHandler(m_before);
        ErrorHandler::Instance().SetTraceMask(0);
    }
    TraceLog(const TraceLog&) = delete;
    TraceLog& operator=(const TraceLog&) = delete;

    [[nodiscard]] static const std::vector<Trace>& traces() { return s_traces; }
    [[nodiscard]] static auto count(const QString& message)
    {
        return std::count_if(s_traces.begin(), s_traces.end(), [&](const Trace& t) { return t.message == message; });
    }

private:
    static void take(QtMsgType, const QMessageLogContext& context, const QString& message)
    {
        s_traces.push_back({context.category, message});
    }

    inline static std::vector<Trace> s_traces;
    QtMessageHandler m_before;
};

}  // namespace FileAccessTests
