// Fixture of the tests that look into the recorder: the recorder itself, and the door to what it keeps.
#pragma once

#include <recording2/recording.h>

#include "station.h"

namespace Recording2 {

/// The archive group of the open file, which shows whether a file was opened as the continuation of another, and the
/// requests to the archive.
class FileAccessTestPeer {
public:
    static void setGroup(const QString& guid) { CFileAccess::m_sGuid = guid; }
    static QString group() { return CFileAccess::m_sGuid; }
    static QString newGroup(CFileAccess& file, bool reuse) { return file.getNewGroupGuid(reuse); }
    static int addFile(CFileAccess& file, const QString& path, const QString& guid)
    {
        return file.addFileToFileGroup(path, guid);
    }
    static void move(CFileAccess& file, const QString& guid, int fileId) { file.moveToNas(guid, fileId); }
    static void failWriting(CFileAccess& file);
};

/// What tests may see and set of a recorder beyond its interface.
class RecordingTestPeer {
public:
    static std::int64_t& fileSizeLimit(CRecording& recorder) { return recorder.m_fileSizeLimit; }
    static std::int32_t& modeKey(CRecording& recorder) { return recorder.m_tracker.m_modeKey; }
    static float& startFreq(CRecording& recorder) { return *recorder.m_tracker.m_range.startFreq; }
    static float& stopFreq(CRecording& recorder) { return *recorder.m_tracker.m_range.stopFreq; }
    static float& frequency(CRecording& recorder) { return recorder.m_tracker.m_frequency; }
    static float& ifSpan(CRecording& recorder) { return recorder.m_tracker.m_ifSpan; }
    static double& frequencyOffset(CRecording& recorder) { return recorder.m_tracker.m_frequencyOffset; }
    static std::int32_t& minLevel(CRecording& recorder) { return *recorder.m_tracker.m_range.minLevel; }
    static std::int32_t& maxLevel(CRecording& recorder) { return *recorder.m_tracker.m_range.maxLevel; }
    static const auto& configuration(const CRecording& recorder) { return recorder.m_configuration; }
    static QString currentFileName(const CRecording& recorder) { return recorder.m_currentFileName; }
    static bool isRecording(const CRecording& recorder) { return recorder.m_file != nullptr; }
    /// Puts a file of any name in the place of the open one.
    static void replaceFile(CRecording& recorder, const QString& path)
    {
        recorder.m_file =
            std::make_unique<CFileAccess>(path.toUtf8().constData(), recorder.m_configuration.statusValuePath, nullptr,
                                          true, true, false, &recorder, nullptr);
    }
    static const CValueTableMap& keywords(const CRecording& recorder) { return recorder.m_values.m_keywords; }
    static const CValueTableMap& inactiveKeywords(const CRecording& recorder)
    {
        return recorder.m_values.m_inactiveKeywords;
    }
    static const std::map<QString, std::int32_t>& typeIds(const CRecording& recorder)
    {
        return recorder.m_values.m_typeIds;
    }
    static bool shouldRecord(const CRecording& recorder, std::int32_t id) { return recorder.ShouldRecordType(id); }
    static bool shouldRecord(const CRecording& recorder, const QString& keyword)
    {
        return recorder.ShouldRecordType(recorder.m_values.typeIdOf(keyword));
    }
    static bool excludesIfSpectrum(const CRecording& recorder, std::int32_t modeKey)
    {
        return recorder.ModeExcludesIfSpectrum(modeKey);
    }
    static void applyModeKeywords(CRecording& recorder) { recorder.ApplyModeKeywords(); }
    static QString resolve(const CRecording& recorder, const QString& keyword, const QString& fallback)
    {
        return recorder.m_values.pathOf(keyword, fallback);
    }
};

}  // namespace Recording2

namespace RecorderTests {

using Recording2::CFileAccess;
using Recording2::CHeaderData;
using Recording2::CRecording;
using Recording2::CTimeStamp;
using Recording2::CVTCmdData;
using Recording2::CVTTypesData;
using Peer = Recording2::RecordingTestPeer;

/// A station and its recorder, which is made by makeRecorder.
class RecorderTest : public testing::Test {
protected:
    ~RecorderTest() override;

    CRecording& makeRecorder(const QString& instance = "Rx");
    /// Makes the recorder and starts a recording.
    CRecording& startRecorder();
    /// Makes the recorder and runs the start of a recording without writing one.
    void attachRecorder() { makeRecorder().AttachRecordedValues(); }
    /// What the header would tell now, in Hz.
    void expectRange(float start, float stop) const
    {
        EXPECT_EQ(Peer::startFreq(recorder()), start);
        EXPECT_EQ(Peer::stopFreq(recorder()), stop);
    }
    void destroyRecorder() { m_recorder.reset(); }
    [[nodiscard]] CRecording& recorder() const { return *m_recorder; }

    /// Stops the recording and reads the file with two readers, which must agree.
    ParsedRecording stopAndRead();
    /// Starts a recording and lets enough time pass to tell changes from initial states.
    void start();

    /// Keywords of the keyword map, sorted.
    [[nodiscard]] QStringList keywords() const;
    [[nodiscard]] bool hasKeyword(const char* keyword) const;
    [[nodiscard]] bool hasInactiveKeyword(const char* keyword) const;

    template <typename T>
    [[nodiscard]] T& at(const char* path) const
    {
        return station.value<T>(path);
    }

    Station station;

private:
    std::unique_ptr<CRecording> m_recorder;
};

/// A station that has a value for every keyword.
class FullStationTest : public RecorderTest {
protected:
    FullStationTest() { station.addAllKeywords(); }

    [[nodiscard]] Number& level() const { return at<Number>("/LEVEL"); }
    [[nodiscard]] LevelMap& rfSpectrum() const { return at<LevelMap>("/Devices/Rx1/Scn/RfSpectrum"); }
    [[nodiscard]] LevelMap& ifSpectrum() const { return at<LevelMap>("/IfMapping"); }
    [[nodiscard]] BearingMap& dfSpectrum() const { return at<BearingMap>("/DfSpectrum"); }
    [[nodiscard]] Number& startFreq() const { return at<Number>("/Devices/Rx1/Scn/StartFreq"); }
    [[nodiscard]] Number& stopFreq() const { return at<Number>("/Devices/Rx1/Scn/StopFreq"); }
    [[nodiscard]] OffsetNumber& frequency() const { return at<OffsetNumber>("/FREQUENCY"); }
    [[nodiscard]] Selection& mode() const { return at<Selection>("/Devices/Rx1/Gen/DRVCOMMANDS"); }
    [[nodiscard]] Selection& ifSpan() const { return at<Selection>("/IFSPAN"); }
    void setRecDf(bool on) const { at<Flag>("/Status/Rx1/REC_DF").SetValue(on); }
    void prepareSpectra() const;
};

/// Reads a file with CFileAccess and with the reader of the tests; a difference fails the test.
ParsedRecording readBack(const QString& file);

std::vector<std::uint64_t> timesOf(const std::vector<ParsedRecording::Record>& records);

}  // namespace RecorderTests
