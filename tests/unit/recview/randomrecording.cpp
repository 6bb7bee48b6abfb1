// Changing live values at random, and storing what they say about it.
#include "randomrecording.h"

#include <random>

#include <values/maps.h>
#include <values/selection.h>
#include <values/value.h>

#include "support/libraryobjects.h"
#include "support/scribe.h"

namespace {

using Recording2::CFileAccess;

class RandomStation {
public:
    RandomStation(const std::string& path, const RandomRecording& random)
        : m_random(random),
          m_engine(random.seed),
          m_file(path.c_str(), QString(), nullptr, true, false, false, nullptr, nullptr)
    {
        m_modulation.AddItem(new values::SelectionItem("AM", 1, 3));
        m_modulation.AddItem(new values::SelectionItem("<b>FM", 2, 7));
        m_modulation.Select("AM");
        m_level.SetLimits(-150, 50);
        m_latitude.SetValue(48.5);
        m_longitude.SetValue(11.5);
        m_spectrum.SetChannelRange(values::ChannelRange::Even(88e6, 25e3, 40));
        m_bearings.SetChannelRange(values::ChannelRange::Even(430e6, 25e3, 20));
    }

    void record()
    {
        writeTypes();
        const std::vector<std::pair<values::ValueBase*, std::int32_t>> values{
            {&m_level, 36},     {&m_modulation, 6}, {&m_caption, 47},   {&m_squelch, 17}, {&m_latitude, 25},
            {&m_longitude, 26}, {&m_heading, 41},   {&m_frequency, 46}, {&m_spectrum, 1}, {&m_bearings, 20}};
        std::vector<std::unique_ptr<TestSupport::Scribe>> stored;
        for (const auto& [value, code] : values) {
            stored.push_back(std::make_unique<TestSupport::Scribe>(m_file, *value, code, m_time));
            stored.back()->storeState();
            ++m_time;
        }
        const auto most = static_cast<int>(2 * m_random.lengthMs / static_cast<std::uint64_t>(m_random.changes)) - 1;
        for (int i = 0; i < m_random.changes && m_time + static_cast<std::uint64_t>(most) < m_random.lengthMs; ++i) {
            m_time += static_cast<std::uint64_t>(number(1, most));
            change();
        }
        close();
    }

private:
    int number(int least, int most) { return std::uniform_int_distribution<int>(least, most)(m_engine); }
    double real(double least, double most) { return number(0, 10'000) * (most - least) / 10'000 + least; }
    unsigned long long nowUs() { return (m_random.startMs + m_time) * 1000; }

    void change()
    {
        switch (number(0, 11)) {
            case 0:
                return m_level.SetValue(real(-100, 0));
            case 1:
                m_modulation.Select(number(0, 1) == 0 ? "AM" : "<b>FM");
                return;
            case 2:
                return m_caption.SetValue(QStringLiteral("N\u00fcrnberg\n\"%1\"").arg(number(0, 5)));
            case 3:
                return m_squelch.SetValue(number(0, 1) == 0);
            case 4:
                return m_latitude.SetValue(m_latitude.GetValue() + real(-0.01, 0.01));
            case 5:
                return m_heading.SetValue(real(0, 359));
            case 6:
                return changeRange();
            case 7:
            case 8:
                return takeBearing();
            default:
                return sweep();
        }
    }
    void changeRange()
    {
        if (number(0, 4) == 0) {
            m_spectrum.SetChannelRange(values::ChannelRange::Even(88e6 + 1e6 * number(0, 2), 25e3, 40));
        } else {
            m_frequency.SetValue(430e6 + 25e3 * number(0, 19));
        }
    }
    void takeBearing()
    {
        m_bearings.SetCell(static_cast<std::size_t>(number(0, 19)),
                           {real(0, 359), real(-5, 5), real(-90, -20), real(0, 99)}, nowUs());
    }
    void sweep()
    {
        std::vector<float> levels(40);
        for (float& level : levels) {
            level = static_cast<float>(number(-12'000, 0)) / 100;
        }
        m_spectrum.SetCells(0, levels, nowUs());
    }
    void writeTypes()
    {
        Recording2::CVTTypesData types;
        types.get_vector() = {{36, 3, "LEVEL", "/LEVEL"},
                              {6, 5, "MODULATION", "/MODULATION"},
                              {47, 2, "DEVICE_CAPTION", "/DEVICE_CAPTION"},
                              {17, 1, "SQUELCHSTATE", "/SQUELCH"},
                              {25, 3, "LOCATIONLATITUDE", "/LOCATIONLATITUDE"},
                              {26, 3, "LOCATIONLONGITUDE", "/LOCATIONLONGITUDE"},
                              {41, 3, "TRUEHEADING", "/TRUEHEADING"},
                              {46, 3, "FREQUENCY", "/FREQUENCY"},
                              {1, 6, "RFSPECTRUM", "/RfSpectrum"},
                              {20, 7, "DFSPECTRUM", "/DfSpectrum"}};
        m_file.write(types);
    }
    void close()
    {
        Recording2::CHeaderData header = TestSupport::makeHeader({.startMs = m_random.startMs,
                                                                  .stopMs = m_random.startMs + m_random.lengthMs,
                                                                  .jobId = "Job",
                                                                  .deviceName = m_random.device});
        m_file.CloseRecording(header, true);
    }

    RandomRecording m_random;
    std::mt19937 m_engine;
    values::ValueNumeric<double> m_level;
    values::ValueSelection m_modulation;
    values::Value<QString> m_caption;
    values::Value<bool> m_squelch;
    values::ValueNumeric<double> m_latitude;
    values::ValueNumeric<double> m_longitude;
    values::ValueNumeric<double> m_heading;
    values::ValueNumeric<double> m_frequency;
    values::FastValueMap<float, values::levelHandler> m_spectrum;
    values::ValueMap<values::Bearing, values::BearingHandler> m_bearings;
    CFileAccess m_file;
    std::uint64_t m_time = 10;
};

}  // namespace

void writeRandomRecording(const std::string& path, const RandomRecording& random)
{
    RandomStation(path, random).record();
}
