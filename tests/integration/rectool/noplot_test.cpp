// A rectool that was built without plotting.
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <QProcess>
#include <QStringList>

TEST(RecToolWithoutPlotting, SaysSoInOneSentence)
{
    for (const QString verb : {"spectrum", "level", "bearings"}) {
        QProcess process;
        const QString file = QStringLiteral(GOLDEN_FOLDER) + "/empty/empty.rec";
        process.start(QStringLiteral(RECTOOL), {"plot", verb, file, "-o", "picture.png"});
        ASSERT_TRUE(process.waitForFinished());
        EXPECT_EQ(process.exitCode(), 1);
        EXPECT_EQ(process.readAllStandardError().toStdString(), "rectool: This build of rectool has no plotting.\n");
    }
}
