// What happens when a value or another observer fails: who is told, and what becomes of the file.
#include <vkbase/vkexception.h>

#include "recorder_fixture.h"
#include "scripted_value.h"

namespace RecorderTests {
namespace {

using namespace testing;

class RecorderFailure : public RecorderTest {
protected:
    RecorderFailure()
    {
        station.configure(QString(), "ALTITUDE = \"/Before\"\nLEVEL = \"/LEVEL\"\nROLL = \"/After\"");
        station.add<Number>("/Before");
        station.add<Number>("/After");
        m_scripted = &station.add<ScriptedValue>("/LEVEL");
        makeRecorder();
    }

    static void fail() { throw std::runtime_error("device lost"); }
    static void failAsStation() { throw VKException("device lost", "driver", "Driver", 7); }

    /// The line of the exception that an action must throw, which is the recorder's in everything else.
    template <typename Action>
    static std::int32_t lineOfFailure(const Action& action, const char* message = "device lost")
    {
        try {
            action();
        } catch (const VKException& exception) {
            EXPECT_STREQ(exception.what(), message);
            EXPECT_EQ(exception.Source(), "devicecontrol\\recording2\\recording");
            EXPECT_EQ(exception.Function(), "CRecording");
            return exception.Line();
        } catch (const std::exception& exception) {
            ADD_FAILURE() << "not the station's exception: " << exception.what();
            return -1;
        }
        ADD_FAILURE() << "no exception";
        return -1;
    }

    [[nodiscard]] ScriptedValue& scripted() const { return *m_scripted; }
    [[nodiscard]] Number& after() const { return station.value<Number>("/After"); }

private:
    ScriptedValue* m_scripted;
};

TEST_F(RecorderFailure, AStateThatCannotBeReadIsAFailureAtLine590AndCompressionIsBack)
{
    for (const auto& failure : {fail, failAsStation}) {
        scripted().onState = failure;
        EXPECT_EQ(lineOfFailure([this] { station.switchOn(); }), 590);
        EXPECT_TRUE(values::HandlerBase::GetDataCompressMode());
    }
}

TEST_F(RecorderFailure, AFileWhoseStartFailedIsClosedByOff)
{
    scripted().onState = fail;
    lineOfFailure([this] { station.switchOn(); });
    scripted().onState = nullptr;
    station.clock.advanceMs(1'000);
    after().SetValue(5);
    station.switchOff();
    ASSERT_THAT(station.files(), SizeIs(1));
    const ParsedRecording recording = readBack(station.file(station.files().first()));
    EXPECT_EQ(recording.header.typeTable, 500);
    EXPECT_EQ(recording.records.back().data, "3;5,0,0");
    EXPECT_FALSE(scripted().IsCommandRecording());
}

TEST_F(RecorderFailure, AnObserverThatFailsAtAStartIsAFailureAtLine1006)
{
    for (const auto& failure : {fail, failAsStation}) {
        {
            const Listener failing(*station.tree.Find("/Status/Rx1/REC_FILENAME"),
                                   [failure](values::ValueBase&, TChangeCode) { failure(); });
            EXPECT_EQ(lineOfFailure([this] { station.switchOn(); }), 1006);
        }
        station.switchOff();
    }
}

TEST_F(RecorderFailure, AnObserverThatFailsAtAStopIsAFailureAtLine1103AndTheNextStartWorks)
{
    station.switchOn();
    {
        const Listener failing(*station.tree.Find("/Status/Rx1/REC_FILENAME"),
                               [](values::ValueBase&, TChangeCode) { fail(); });
        EXPECT_EQ(lineOfFailure([this] { station.switchOff(); }), 1103);
    }
    EXPECT_FALSE(Peer::isRecording(recorder()));
    ASSERT_THAT(station.files(), SizeIs(1));
    readBack(station.file(station.files().first()));
    start();
    scripted().change("x", TChangeCode::ValueChanged);
    EXPECT_THAT(dataOf(changesIn(stopAndRead())), ElementsAre("x"));
}

TEST_F(RecorderFailure, AChangeThatCannotBeReadIsTheRecordersFailure)
{
    start();
    for (const auto& failure : {fail, failAsStation}) {
        scripted().onChange = failure;
        EXPECT_GT(lineOfFailure([this] { scripted().change("lost", TChangeCode::ValueChanged); }), 0);
    }
    scripted().onChange = nullptr;
    scripted().change("kept", TChangeCode::ValueChanged);
    EXPECT_THAT(dataOf(changesIn(stopAndRead())), ElementsAre("kept"));
}

TEST_F(RecorderFailure, AValueThatFailsWhileDetachingDoesNotKeepTheFileOpen)
{
    start();
    scripted().onOff = fail;
    EXPECT_NO_THROW(station.switchOff());
    ASSERT_THAT(station.files(), SizeIs(1));
    readBack(station.file(station.files().first()));
    // The first failure ended the walk; the next recording finds everything as it needs it all the same.
    scripted().onOff = nullptr;
    start();
    after().SetValue(3);
    scripted().change("x", TChangeCode::ValueChanged);
    EXPECT_THAT(dataOf(changesIn(stopAndRead())), ElementsAre("3;3,0,0", "x"));
    EXPECT_FALSE(after().IsCommandRecording());
    EXPECT_FALSE(after().IsObservedBy(&recorder()));
}

TEST_F(RecorderFailure, WhateverIsThrownIsTheRecordersFailureAndKeepsNoFileOpen)
{
    const auto throwNumber = [] { throw 7; };
    const auto lineOf = [](const auto& action) { return lineOfFailure(action, "unknown exception"); };
    scripted().onState = throwNumber;
    EXPECT_EQ(lineOf([this] { station.switchOn(); }), 590);
    station.switchOff();
    scripted().onState = nullptr;
    start();
    scripted().onChange = throwNumber;
    EXPECT_GT(lineOf([this] { scripted().change("lost", TChangeCode::ValueChanged); }), 0);
    scripted().onChange = nullptr;
    scripted().onOff = throwNumber;
    EXPECT_NO_THROW(station.switchOff());
    EXPECT_FALSE(Peer::isRecording(recorder()));
    start();
    destroyRecorder();
    scripted().onOff = nullptr;
    EXPECT_EQ(after().ObserverCount(), 0U);
}

TEST_F(RecorderFailure, ARecorderMayEndWhileValuesThatFailedAreObserved)
{
    start();
    scripted().onOff = fail;
    station.switchOff();
    destroyRecorder();
    scripted().onOff = nullptr;
    EXPECT_EQ(after().ObserverCount(), 0U);
    EXPECT_EQ(scripted().ObserverCount(), 0U);
}

TEST_F(RecorderFailure, AFileThatWasSavedAfterAFailureMayBeClosedAgainByACopy)
{
    const std::string path = TestSupport::fileName8(station.file("a.tmp"));
    CFileAccess file(path.c_str(), QString(), nullptr, true, false, false, &recorder(), nullptr);
    CFileAccess copy(file);
    CVTCmdData record;
    record.set_str("kept", 0);
    file.write(record, 10, false);
    Recording2::FileAccessTestPeer::failWriting(file);
    CHeaderData header;
    header.set_version(2, 0);
    file.CloseRecording(header, true);
    copy.CloseRecording(header, true);
    EXPECT_EQ(parsed(station.file("a.rec")).records.at(0).data, "kept");
}

TEST_F(RecorderFailure, AFailingObserverDoesNotKeepTheRecorderFromAChange)
{
    const Listener failing(after(), [](values::ValueBase&, TChangeCode) { fail(); });
    start();
    EXPECT_THROW(after().SetValue(9), std::runtime_error);
    EXPECT_THAT(dataOf(changesIn(stopAndRead())), ElementsAre("3;9,0,0"));
}

}  // namespace
}  // namespace RecorderTests
