// Three recordings of live values: one of every kind, one of bearings, one to plot.
#include "samplerecording.h"

#include <cstdint>
#include <limits>
#include <vector>

#include <QString>

#include <recording2/fileaccess.h>
#include <values/maps.h>
#include <values/selection.h>
#include <values/value.h>
#include <vkbase/observer.h>

namespace {

using Recording2::CFileAccess;

/// Stores what a value says about its changes, as the recorder does.
class Scribe final : public IObserver {
public:
    Scribe(CFileAccess& file, values::ValueBase& value, std::int32_t code) : m_file(file), m_value(value), m_code(code)
    {
        m_value.CommandRecordingOn();
        m_value.AddObserver(this);
    }
    Scribe(const Scribe&) = delete;
    Scribe& operator=(const Scribe&) = delete;
    ~Scribe() override { m_value.RemoveObserver(this); }

    void store(const std::string& text, std::uint64_t time, bool isChannelRangeDef = false)
    {
        Recording2::CVTCmdData record;
        record.set_cmd(m_code);
        record.set_str(text.data(), static_cast<std::int32_t>(text.size()));
        m_file.write(record, time, isChannelRangeDef);
    }
    void storeState(bool isChannelRangeDef = false)
    {
        store(m_value.GetStringForRecording(false), 10, isChannelRangeDef);
    }
    void at(std::uint64_t time) { m_time = time; }

private:
    void Update(void* /*subject*/, TChangeCode /*code*/) override
    {
        store(m_value.GetStringForRecording(true), m_time);
    }

    CFileAccess& m_file;
    values::ValueBase& m_value;
    std::int32_t m_code;
    std::uint64_t m_time = 10;
};

void writeTypes(CFileAccess& file)
{
    Recording2::CVTTypesData types;
    types.get_vector() = {{46, 4, "FREQUENCY", "/FREQUENCY"},   {36, 3, "LEVEL", "/LEVEL"},
                          {6, 5, "MODULATION", "/MODULATION"},  {47, 2, "DEVICE_CAPTION", "/DEVICE_CAPTION"},
                          {17, 1, "SQUELCHSTATE", "/SQUELCH"},  {1, 6, "RFSPECTRUM", "/RfSpectrum"},
                          {20, 7, "DFSPECTRUM", "/DfSpectrum"}, {41, 3, "TRUEHEADING", "/TRUEHEADING"}};
    file.write(types);
}

void close(CFileAccess& file)
{
    Recording2::CHeaderData header;
    header.set_version(2, 0);
    header.set_startTS(Recording2::CTimeStamp(1'700'000'000'000'000ULL));
    header.set_stopTS(Recording2::CTimeStamp(1'700'000'002'500'000ULL));
    header.set_deviceName("Receiver");
    header.setJobID("Job");
    file.CloseRecording(header, true);
}

}  // namespace

void writeSampleRecording(const std::string& path)
{
    constexpr float None = std::numeric_limits<float>::quiet_NaN();
    values::ValueNumericWithOffset<double> frequency;
    values::ValueNumeric<double> level;
    values::ValueSelection modulation;
    values::Value<QString> caption;
    values::Value<bool> squelch;
    values::FastValueMap<float, values::levelHandler> spectrum;
    values::ValueMap<values::Bearing, values::BearingHandler> bearings;

    frequency.SetValue(100'000'000);
    frequency.SetOffset(1000);
    level.SetLimits(-150, 50);
    level.SetValue(-30.25);
    modulation.AddItem(new values::SelectionItem(QStringLiteral("AM"), 1, 3));
    modulation.AddItem(new values::SelectionItem(QStringLiteral("FM"), 2, 7));
    modulation.Select(QStringLiteral("FM"));
    caption.SetValue(QStringLiteral("N\u00fcrnberg"));
    squelch.SetValue(true);
    spectrum.SetChannelRange(values::ChannelRange::Even(88e6, 25e3, 5));
    spectrum.SetCells(0, std::vector<float>{-90, -80.5F, -100, None, -70}, 0);
    bearings.SetChannelRange(values::ChannelRange::List({1e6, 3e6, 2e6}));
    bearings.SetCell(1, {12.5, 1, -60, 90}, 5'000'000);

    CFileAccess file(path.c_str(), QString(), nullptr, true, false, false, nullptr, nullptr);
    writeTypes(file);
    Scribe frequencyScribe(file, frequency, 46);
    Scribe levelScribe(file, level, 36);
    Scribe modulationScribe(file, modulation, 6);
    Scribe captionScribe(file, caption, 47);
    Scribe squelchScribe(file, squelch, 17);
    Scribe spectrumScribe(file, spectrum, 1);
    Scribe bearingsScribe(file, bearings, 20);
    for (Scribe* scribe : {&frequencyScribe, &levelScribe, &modulationScribe, &captionScribe, &squelchScribe,
                           &spectrumScribe, &bearingsScribe}) {
        scribe->storeState();
    }
    spectrumScribe.at(900);
    spectrum.SetCell(3, -50, 0);  // the first text after recording went on is complete
    spectrumScribe.at(1000);
    spectrum.SetCell(3, -20, 0);
    levelScribe.at(1500);
    level.SetValue(-31.5);
    captionScribe.at(2000);
    caption.SetValue(QStringLiteral("two\nlines"));
    close(file);
}

void writeBearingRecording(const std::string& path, bool withRangeTable)
{
    values::ValueNumeric<double> level;
    values::ValueMap<values::Bearing, values::BearingHandler> bearings;
    level.SetLimits(-150, 50);
    level.SetValue(-30);
    bearings.SetChannelRange(values::ChannelRange::Even(1e6, 25e3, 3));

    CFileAccess file(path.c_str(), QString(), nullptr, true, false, false, nullptr, nullptr);
    writeTypes(file);
    Scribe bearingsScribe(file, bearings, 20);
    Scribe levelScribe(file, level, 36);
    bearingsScribe.storeState(withRangeTable);
    levelScribe.storeState();
    bearingsScribe.at(100);
    bearings.SetCell(0, {10, 1, -60, 90}, 1'700'000'000'100'000);  // carries the range: the first after the state
    bearingsScribe.at(200);
    bearings.SetCell(1, {20, 2, -50, 80}, 1'700'000'000'200'000);
    bearingsScribe.at(1000);
    bearings.SetChannelRange(values::ChannelRange::Even(2e6, 25e3, 2));
    bearingsScribe.at(1500);
    bearings.SetCell(0, {30, 3, -40, 70}, 1'700'000'001'500'000);
    levelScribe.at(1600);
    level.SetValue(-31.5);
    bearingsScribe.at(2000);
    bearings.SetCell(1, {40, 4, -30, 60}, 1'700'000'002'000'000);
    close(file);
}

void writePlotRecording(const std::string& path)
{
    constexpr double MHz = 1e6;
    constexpr std::size_t Strong = 2;
    values::ValueNumeric<double> heading;
    values::FastValueMap<float, values::levelHandler> spectrum;
    values::ValueMap<values::Bearing, values::BearingHandler> bearings;
    heading.SetValue(350);
    spectrum.SetChannelRange(values::ChannelRange::List(
        {100.0 * MHz, 100.1 * MHz, 100.2 * MHz, 100.3 * MHz, 100.4 * MHz, 100.8 * MHz, 100.9 * MHz}));
    bearings.SetChannelRange(values::ChannelRange::Even(1e6, 25e3, 3));

    CFileAccess file(path.c_str(), QString(), nullptr, true, false, false, nullptr, nullptr);
    writeTypes(file);
    Scribe spectrumScribe(file, spectrum, 1);
    Scribe headingScribe(file, heading, 41);
    Scribe bearingsScribe(file, bearings, 20);
    spectrumScribe.storeState();
    headingScribe.storeState();
    bearingsScribe.storeState();
    bearingsScribe.at(500);
    bearings.SetCell(0, {20, 1, -60, 90}, 1'700'000'000'500'000);
    spectrumScribe.at(1000);
    spectrum.SetCells(0, std::vector<float>(spectrum.size(), -100), 0);
    spectrumScribe.at(1500);
    spectrum.SetCell(Strong, -20, 0);
    headingScribe.at(1501);
    heading.SetValue(100);
    bearingsScribe.at(2000);
    bearings.SetCell(1, {30, 2, -50, 80}, 1'700'000'002'000'000);
    spectrumScribe.at(2001);
    spectrum.SetChannelRange(values::ChannelRange::Even(100.0 * MHz, 0.1 * MHz, 4));
    spectrumScribe.at(2002);
    spectrum.SetCells(0, std::vector<float>(spectrum.size(), -60), 0);
    close(file);
}
