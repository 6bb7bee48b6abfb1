// Makes, starts and stops the recorder, and reads its file back in two ways.
#include "recorder_fixture.h"

#include <recording2/fileaccess_p.h>

#include "support/libraryobjects.h"

void Recording2::FileAccessTestPeer::failWriting(CFileAccess& file)
{
    file.d->shared->growing->file().fail(System::InvalidPosition);
}

namespace RecorderTests {

namespace {

void expectSameRecords(CFileAccess& file, const ParsedRecording& expected)
{
    CVTCmdData record;
    for (std::size_t i = 0; i < expected.records.size(); ++i) {
        const auto& wanted = expected.records[i];
        const unsigned long long next = i + 1 < expected.records.size() ? expected.records[i + 1].time : 0;
        ASSERT_EQ(file.read(record, wanted.time), next) << "record " << i;
        ASSERT_EQ(record.cmd(), wanted.code) << "record " << i;
        ASSERT_EQ(TestSupport::dataOf(record), wanted.data) << "record " << i;
    }
}

void expectSameTypes(CFileAccess& file, const ParsedRecording& expected)
{
    CVTTypesData types;
    ASSERT_EQ(file.read(types), 1ULL);
    EXPECT_EQ(TestSupport::fieldsOf(types), expected.types);
}

void expectSameHeader(CFileAccess& file, const ParsedRecording& expected)
{
    CHeaderData header;
    ASSERT_EQ(file.read(header), 1ULL);
    TestSupport::HeaderFields read = TestSupport::fieldsOf(header);
    for (const auto position : {&TestSupport::HeaderFields::typeTable, &TestSupport::HeaderFields::firstRecord,
                                &TestSupport::HeaderFields::timeTable, &TestSupport::HeaderFields::channelRangeTable,
                                &TestSupport::HeaderFields::bookmarkTable}) {
        read.*position = expected.header.*position;
    }
    EXPECT_EQ(read, expected.header);
}

}  // namespace

RecorderTest::~RecorderTest()
{
    m_recorder.reset();
    CTimeStamp::SetCts(0);
}

CRecording& RecorderTest::makeRecorder(const QString& instance)
{
    m_recorder = std::make_unique<CRecording>(instance);
    m_recorder->Init();
    return *m_recorder;
}

CRecording& RecorderTest::startRecorder()
{
    makeRecorder();
    start();
    return recorder();
}

void RecorderTest::start()
{
    station.switchOn();
    station.clock.advanceMs(1'000);
}

ParsedRecording RecorderTest::stopAndRead()
{
    station.switchOff();
    return readBack(station.fileName());
}

QStringList RecorderTest::keywords() const
{
    QStringList names;
    for (const auto& [keyword, entry] : Peer::keywords(recorder())) {
        names << keyword;
    }
    return names;
}

bool RecorderTest::hasKeyword(const char* keyword) const
{
    return Peer::keywords(recorder()).contains(keyword);
}

bool RecorderTest::hasInactiveKeyword(const char* keyword) const
{
    return Peer::inactiveKeywords(recorder()).contains(keyword);
}

void FullStationTest::prepareSpectra() const
{
    for (LevelMap* map : {&rfSpectrum(), &ifSpectrum()}) {
        map->SetChannelRange(values::ChannelRange::Even(88e6, 25e3, 16));
    }
    dfSpectrum().SetChannelRange(values::ChannelRange::Even(88e6, 25e3, 4));
}

ParsedRecording readBack(const QString& file)
{
    const ParsedRecording expected = parsed(file);
    CFileAccess access(TestSupport::fileName8(file).c_str(), "/Reader", nullptr, false, true, false, nullptr, nullptr);
    EXPECT_TRUE(access.IsValidFile());
    expectSameHeader(access, expected);
    if (expected.header.typeTable != 0) {
        expectSameTypes(access, expected);
    }
    expectSameRecords(access, expected);
    return expected;
}

std::vector<std::uint64_t> timesOf(const std::vector<ParsedRecording::Record>& records)
{
    std::vector<std::uint64_t> times;
    std::transform(records.begin(), records.end(), std::back_inserter(times),
                   [](const ParsedRecording::Record& record) { return record.time; });
    return times;
}

}  // namespace RecorderTests
