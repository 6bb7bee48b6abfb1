// Traces: the category that a message goes to, its text, the process's mask.
#include <cstdint>
#include <ostream>
#include <vector>

#include <QLoggingCategory>

#include <gmock/gmock.h>

#include <vkbase/trace.h>

using namespace testing;

namespace {

struct Message {
    QtMsgType type;
    QString category;
    int line;
    QString text;

    friend void PrintTo(const Message& message, std::ostream* out)
    {
        *out << message.category.toStdString() << ':' << message.line << ": " << message.text.toStdString();
    }
};

/// Collects what goes through Qt's logging while it lives.
class Capture {
public:
    Capture()
    {
        Messages().clear();
        m_before = qInstallMessageHandler([](QtMsgType type, const QMessageLogContext& context, const QString& text) {
            Messages().push_back({type, QString::fromUtf8(context.category), context.line, text});
        });
    }
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;
    ~Capture() { qInstallMessageHandler(m_before); }

    static std::vector<Message>& Messages()
    {
        static std::vector<Message> messages;
        return messages;
    }

private:
    QtMessageHandler m_before;
};

const QString Source = QStringLiteral("devicecontrol\\recording2\\recording");

}  // namespace

TEST(Trace, GoesToTheCategoryNamedLikeTheSource)
{
    const Capture capture;
    _Q_Trace(QStringLiteral("CRecording::CRecording"), Source, 152);
    EXPECT_THAT(Capture::Messages(), ElementsAre(FieldsAre(QtInfoMsg, Source, 152, "CRecording::CRecording")));
}

TEST(Trace, KeepsTheCategoryNameWhenTheCallersStringIsGone)
{
    const Capture capture;
    for (int round = 0; round < 2; ++round) {
        for (int number = 0; number < 50; ++number) {
            _Q_Trace(QString(), QStringLiteral("source\\%1").arg(number), 1);
        }
    }
    ASSERT_THAT(Capture::Messages(), SizeIs(100));
    EXPECT_EQ(Capture::Messages()[7].category, QStringLiteral("source\\7"));
    EXPECT_EQ(Capture::Messages()[99].category, QStringLiteral("source\\49"));
}

TEST(Trace, ShowsTheMessageAsItIs)
{
    const Capture capture;
    const QString text = QStringLiteral("a \"quoted\" path c:\\temp, 100 %s, N\u00fcrnberg");
    _Q_Trace(text, Source, 65535);
    EXPECT_THAT(Capture::Messages(), ElementsAre(FieldsAre(QtInfoMsg, Source, 65535, text)));
}

TEST(Trace, CanBeSwitchedOffPerSource)
{
    const Capture capture;
    // In a rule a backslash is written as its code, as Qt takes "\\" for "/" there.
    QLoggingCategory::setFilterRules(QStringLiteral("devicecontrol%5Crecording2%5Crecording.info=false"));
    _Q_Trace(QStringLiteral("hidden"), Source, 1);
    _Q_Trace(QStringLiteral("shown"), QStringLiteral("another"), 1);
    QLoggingCategory::setFilterRules(QString());
    ASSERT_THAT(Capture::Messages(), SizeIs(1));
    EXPECT_EQ(Capture::Messages().front().text, QStringLiteral("shown"));
}

TEST(Trace, TheOlderFormPutsTheTextInPlaceOfItsMark)
{
    const Capture capture;
    _Q_TraceOld("failed: %s", "no space");
    _Q_TraceOld("%s and %s", "N\xC3\xBCrnberg");
    _Q_TraceOld("nothing: %s", nullptr);
    EXPECT_THAT(Capture::Messages(), ElementsAre(FieldsAre(_, "trace", _, "failed: no space"),
                                                 FieldsAre(_, _, _, QStringLiteral("N\u00fcrnberg and N\u00fcrnberg")),
                                                 FieldsAre(_, _, _, "nothing: ")));
}

TEST(ErrorHandler, KeepsItsMaskForTheWholeProcess)
{
    EXPECT_EQ(ErrorHandler::Instance().TraceMask(), 0U);
    ErrorHandler::Instance().SetTraceMask(ErrorHandler::RecordingTraces | 0x80000000U);
    EXPECT_EQ(ErrorHandler::Instance().TraceMask(), 0x80000020U);
    ErrorHandler::Instance().SetTraceMask(0);
    EXPECT_EQ(ErrorHandler::Instance().TraceMask(), 0U);
}
