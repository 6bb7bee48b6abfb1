// Spectra and numbers that follow from a change's number, and the file they make.
#include "life.h"

#include "support/recordingbytes.h"

namespace CrashTests {

using namespace RecorderTests;

namespace {

std::vector<float> sweep(std::uint64_t number, std::size_t channels)
{
    std::vector<float> cells(channels);
    for (std::size_t channel = 0; channel < channels; ++channel) {
        cells[channel] = -100 + static_cast<float>((channel * 31 + number * 17) % 701) / 10;
    }
    return cells;
}

}  // namespace

Life::Life(const QString& directory, const QString& journal, std::size_t channels) : m_channels(channels)
{
    m_station.configure(QStringLiteral("Journal = \"%1\"").arg(journal));
    m_station.addAllKeywords();
    m_station.value<LevelMap>("/Devices/Rx1/Scn/RfSpectrum")
        .SetChannelRange(values::ChannelRange::Even(88e6, 5e3, channels));
    m_recorder = std::make_unique<Recording2::CRecording>("Rx");
    m_recorder->Init();
    m_station.value<Text>("/Status/Rx1/REC_FILEPATH").SetValue(directory);
}

Life::~Life() = default;

bool Life::isOn() const
{
    return m_station.value<Selection>("/Devices/Rx1/REC_STATUS").GetCurrentKey() == 1;
}

void Life::change(std::uint64_t number)
{
    m_station.clock.advanceMs(number % 3);  // some records share a millisecond
    const auto plain = static_cast<double>(number + 1);
    switch (number % 16) {
        case 3:
            m_station.value<LevelMap>("/Devices/Rx1/Scn/RfSpectrum")
                .SetCells(0, sweep(number, m_channels), m_station.clock.now);
            break;
        case 7:
            m_station.value<Number>("/Devices/Rx1/Scn/StopFreq").SetValue(1e8 + plain * 1e3);
            break;
        default:
            m_station.value<Number>("/LEVEL").SetValue(plain / 8);
    }
}

std::string closedAfter(std::uint64_t changes, std::size_t channels)
{
    const QTemporaryDir directory(directoryTemplate());
    {
        Life life(directory.path(), "process", channels);
        life.switchOn();
        for (std::uint64_t number = 0; number < changes; ++number) {
            life.change(number);
        }
        life.switchOff();
    }
    return TestSupport::readFile(fileIn(directory.path(), ".rec"));
}

void count(std::uint64_t number, const std::string& what)
{
    std::cout << "COUNT: " << number << ' ' << what << '\n';
}

QString fileIn(const QString& directory, const QString& suffix)
{
    const QStringList names = QDir(directory).entryList({QLatin1Char('*') + suffix}, QDir::Files);
    return names.size() == 1 ? QDir(directory).filePath(names.first()) : QString();
}

}  // namespace CrashTests
