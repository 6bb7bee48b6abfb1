// A recorder that writes at random, and those who follow what it writes.
#pragma once

#include <random>

#include <recording2/inspection/following.h>

#include "recorder_fixture.h"

namespace RecorderTests {

using Recording2::Inspection::Following;
using Recording2::Inspection::Record;
using State = Following::State;

inline std::string utf8(const QString& path)
{
    return path.toUtf8().toStdString();
}

/// A follower, and all that it showed.
class Reader {
public:
    explicit Reader(const QString& path)
    {
        std::string problem;
        m_following = Following::open(utf8(path), problem);
        EXPECT_TRUE(m_following) << problem;
    }

    /// Takes what there is now. @return whether there may be more later
    bool look(std::size_t atMost = SIZE_MAX)
    {
        Record record;
        for (; atMost > 0; --atMost) {
            if (!m_following->next(record)) {
                return m_following->state() == State::Growing;
            }
            seen.push_back(record);
        }
        return true;
    }
    /// Whether what was shown is how a recording begins, and all of it unless said otherwise.
    void expectBeginningOf(const ParsedRecording& recording, bool withTimes = true) const
    {
        ASSERT_LE(seen.size(), recording.records.size());
        for (std::size_t i = 0; i < seen.size(); ++i) {
            const auto& wanted = recording.records[i];
            ASSERT_EQ(seen[i].position, wanted.position) << "record " << i;
            ASSERT_EQ(seen[i].timeMs, withTimes ? wanted.time : 0) << "record " << i;
            ASSERT_EQ(seen[i].code, wanted.code) << "record " << i;
            ASSERT_EQ(seen[i].data, wanted.data) << "record " << i;
        }
    }
    void expectAllOf(const ParsedRecording& recording) const
    {
        EXPECT_EQ(seen.size(), recording.records.size());
        expectBeginningOf(recording);
    }
    Following& operator*() { return *m_following; }
    Following* operator->() { return &*m_following; }

    std::vector<Record> seen;

private:
    std::optional<Following> m_following;
};

class RecorderFollowing : public FullStationTest {
protected:
    void record(const QString& journal = "process")
    {
        station.configure(QString("Journal = \"%1\"").arg(journal));
        makeRecorder();
        rfSpectrum().SetChannelRange(values::ChannelRange::Even(88e6, 5e3, Channels));
        start();
    }
    /// One more record: mostly a small one, sometimes a spectrum, now and then one that no buffer holds.
    void change()
    {
        station.clock.advanceMs(random() % 3);
        ++changes;
        const std::uint32_t kind = random() % 512;
        if (kind == 0) {
            at<Text>("/Devices/Rx1/Mon/Antenna").SetValue(QString(300'000 + static_cast<int>(changes), 'x'));
        } else if (kind < 16) {
            std::vector<float> cells(Channels);
            std::generate(cells.begin(), cells.end(), [&] { return -static_cast<float>(random() % 1000) / 10; });
            rfSpectrum().SetCells(0, cells, station.clock.now);
        } else {
            level().SetValue(static_cast<double>(changes) / 8);
        }
    }
    void change(int times)
    {
        for (int i = 0; i < times; ++i) {
            change();
        }
    }
    [[nodiscard]] QString open() const { return station.fileName(); }

    static constexpr int Channels = 2048;
    std::mt19937 random{1};  // NOLINT(cert-msc51-cpp): a failure can be run again
    std::uint64_t changes = 0;
};

}  // namespace RecorderTests
