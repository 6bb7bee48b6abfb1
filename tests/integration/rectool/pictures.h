// What tests of pictures share: drawing with the real program, and looking at pixels.
#pragma once

#include <QColor>
#include <QImage>
#include <nlohmann/json.hpp>

#include "support/program.h"

namespace PictureTests {

using nlohmann::json;
using Result = TestSupport::ProgramResult;

constexpr QRgb NotMeasured = 0xffd4d7da;

inline bool isWarm(const QColor& colour)
{
    return colour.red() > 200 && colour.green() > 150;
}

inline bool isDark(const QColor& colour)
{
    return colour.red() < 60 && colour.green() < 60;
}

/// Runs the program as a service would.
inline Result rectool(const QStringList& arguments)
{
    QProcess process;
    process.setProcessEnvironment(TestSupport::bareEnvironment(LEAKS_OF_QT));
    process.start(RECTOOL, arguments);
    return TestSupport::finish(process);
}

class Pictures : public testing::Test {
protected:
    [[nodiscard]] QString path(const QString& name) const { return m_folder.filePath(name); }
    [[nodiscard]] QString picture() const { return path("picture.png"); }
    Result plot(const QStringList& arguments, const char* verb = "plot") const
    {
        return rectool(QStringList{QLatin1String(verb)} + arguments + QStringList{"-o", picture(), "--json"});
    }
    /// Draws without a word of complaint. @return what the program says was drawn
    json draw(const QStringList& arguments, const char* verb = "plot")
    {
        const Result result = plot(arguments, verb);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_THAT(result.err, testing::IsEmpty());
        m_image = QImage(picture());
        return json::parse(result.out, nullptr, false);
    }

    QTemporaryDir m_folder;
    QImage m_image;
};

}  // namespace PictureTests
