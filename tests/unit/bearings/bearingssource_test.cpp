// Logs of bearings that cannot be read; what becomes of rows is tested in tests/cases.
#include <string>

#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <values/tree.h>
#include <values/value.h>

#include "sources/bearings/bearingssource.h"
#include "support/recordingbytes.h"

namespace {

using RecStation::BearingsOptions;
using RecStation::Source;
using testing::HasSubstr;
using Number = values::ValueNumeric<double>;

const std::string header = "date;time;station;latitude;longitude;altitude;frequency;azimuth\n";

class BearingsSource : public testing::Test {
protected:
    void prepare(const std::string& text)
    {
        const QString path = m_directory.filePath("field log.v2.csv");
        TestSupport::writeFile(path, text);
        m_options.file = path.toStdString();
        m_source = RecStation::makeBearingsSource(m_options, [](const QString& /*sentence*/) {});
        m_source->prepare();
    }
    std::string problem(const std::string& text)
    {
        try {
            prepare(text);
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "no problem";
    }
    void run()
    {
        while (m_source->nextTime()) {
            m_source->step();
        }
    }

    values::Tree m_tree;
    QTemporaryDir m_directory;
    BearingsOptions m_options;
    std::unique_ptr<Source> m_source;
};

TEST_F(BearingsSource, AFileThatChangedSinceItsChannelsWereFoundIsRefused)
{
    const std::string text = header + "2017-01-14;10:31;E1;4;-75;0;150;7\n";
    prepare(text);
    TestSupport::writeFile(QString::fromStdString(m_options.file), text + "2017-01-14;10:31;E1;4;-75;0;151;7\n");
    EXPECT_THROW(run(), std::runtime_error);
}

TEST_F(BearingsSource, APathHeldByAnotherKindOfValueIsRefused)
{
    values::ValuePtr<Number> other;
    other.Attach("/DfSpectrum");
    EXPECT_THAT(problem(header + "2017-01-14;10:31;E1;4;-75;0;150;7\n"), HasSubstr("/DfSpectrum is already there"));
}

}  // namespace
