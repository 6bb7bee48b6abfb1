// A recording whose every byte follows from how far it came.
#pragma once

#include <recording2/recording.h>

#include "station.h"
#include "support/memorydirectory.h"
#include "support/testing.h"

namespace CrashTests {

/// A station whose recorder records into a directory of the caller's.
class Life {
public:
    explicit Life(const QString& directory, const QString& journal = QStringLiteral("process"),
                  std::size_t channels = ManyChannels);
    Life(const Life&) = delete;
    Life& operator=(const Life&) = delete;
    ~Life();

    void switchOn() const { m_station.switchOn(); }
    void switchOff() const { m_station.switchOff(); }
    [[nodiscard]] bool isOn() const;
    /// The change with that number, which makes one record: small numbers mostly, every 16th a spectrum, and
    /// some that the header follows.
    void change(std::uint64_t number);
    [[nodiscard]] QString fileName() const { return m_station.fileName(); }

    static constexpr std::size_t ManyChannels = 4'096;
    static constexpr std::size_t FewChannels = 64;

private:
    RecorderTests::Station m_station;
    std::unique_ptr<Recording2::CRecording> m_recorder;
    std::size_t m_channels;
};

using TestSupport::directoryTemplate;

/// The closed recording of a life with so many changes.
[[nodiscard]] std::string closedAfter(std::uint64_t changes, std::size_t channels = Life::ManyChannels);

/// What is tried at every place is tried at every so-manieth where sanitizers make it slow: they look at the code, and
/// the build without them at the promises.
#if defined(__SANITIZE_ADDRESS__)
constexpr std::size_t Thinned = 7;
#else
constexpr std::size_t Thinned = 1;
#endif

/// Says how much was tried, for the page of figures.
void count(std::uint64_t number, const std::string& what);

/// The only file in a directory whose name ends so; empty without one.
[[nodiscard]] QString fileIn(const QString& directory, const QString& suffix);

}  // namespace CrashTests
