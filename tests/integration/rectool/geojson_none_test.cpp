// rectool built without GeographicLib.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <QTemporaryDir>

#include "geojsontesting.h"

namespace {

TEST(WithoutGeographicLib, GeoJsonSaysSo)
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("file.rec"));
    writePlainRecording(file, {});
    const ProgramResult result = geoJson(file);
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, testing::EndsWith("built without GeographicLib, which --geojson needs.\n"));
}

}  // namespace
