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

#include "scribe.h"

namespace {

using Recording2::CFileAccess;
using TestSupport::Scribe;

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
    modulation.AddItem(new values::SelectionItem("AM", 1, 3));
    modulation.AddItem(new values::SelectionItem("FM", 2, 7));
    modulation.Select("FM");
    caption.SetValue("N\u00fcrnberg");
    squelch.SetValue(true);
    spectrum.SetChannelRange(values::ChannelRange::Even(88e6, 25e3, 5));
    spectrum.SetCells(0, std::vector<float>{-90, -80.5F, -100, None, -70}, 0);
    bearings.SetChannelRange(values::ChannelRange::List({1e6, 3e6, 2e6}));
    bearings.SetCell(1, {12.5, 1, -60, 90}, 5'000'000);

    CFileAccess file(path.c_str(), QString(), nullptr, true, false, false, nullptr, nullptr);
    writeTypes(file);
    std::uint64_t time = 10;
    Scribe frequencyScribe(file, frequency, 46, time);
    Scribe levelScribe(file, level, 36, time);
    Scribe modulationScribe(file, modulation, 6, time);
    Scribe captionScribe(file, caption, 47, time);
    Scribe squelchScribe(file, squelch, 17, time);
    Scribe spectrumScribe(file, spectrum, 1, time);
    Scribe bearingsScribe(file, bearings, 20, time);
    for (Scribe* scribe : {&frequencyScribe, &levelScribe, &modulationScribe, &captionScribe, &squelchScribe,
                           &spectrumScribe, &bearingsScribe}) {
        scribe->storeState();
    }
    time = 900;
    spectrum.SetCell(3, -50, 0);  // the first text after recording went on is complete
    time = 1000;
    spectrum.SetCell(3, -20, 0);
    time = 1500;
    level.SetValue(-31.5);
    time = 2000;
    caption.SetValue("two\nlines");
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
    std::uint64_t time = 10;
    Scribe bearingsScribe(file, bearings, 20, time);
    Scribe levelScribe(file, level, 36, time);
    bearingsScribe.storeState(withRangeTable);
    levelScribe.storeState();
    time = 100;
    bearings.SetCell(0, {10, 1, -60, 90}, 1'700'000'000'100'000);  // carries the range: the first after the state
    time = 200;
    bearings.SetCell(1, {20, 2, -50, 80}, 1'700'000'000'200'000);
    time = 1000;
    bearings.SetChannelRange(values::ChannelRange::Even(2e6, 25e3, 2));
    time = 1500;
    bearings.SetCell(0, {30, 3, -40, 70}, 1'700'000'001'500'000);
    time = 1600;
    level.SetValue(-31.5);
    time = 2000;
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
    std::uint64_t time = 10;
    Scribe spectrumScribe(file, spectrum, 1, time);
    Scribe headingScribe(file, heading, 41, time);
    Scribe bearingsScribe(file, bearings, 20, time);
    spectrumScribe.storeState();
    headingScribe.storeState();
    bearingsScribe.storeState();
    time = 500;
    bearings.SetCell(0, {20, 1, -60, 90}, 1'700'000'000'500'000);
    time = 1000;
    spectrum.SetCells(0, std::vector<float>(spectrum.size(), -100), 0);
    time = 1500;
    spectrum.SetCell(Strong, -20, 0);
    time = 1501;
    heading.SetValue(100);
    time = 2000;
    bearings.SetCell(1, {30, 2, -50, 80}, 1'700'000'002'000'000);
    time = 2001;
    spectrum.SetChannelRange(values::ChannelRange::Even(100.0 * MHz, 0.1 * MHz, 4));
    time = 2002;
    spectrum.SetCells(0, std::vector<float>(spectrum.size(), -60), 0);
    close(file);
}
