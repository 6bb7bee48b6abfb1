// A station whose values a seed changes, and the observers that store every change.
#include "randomrecording.h"

#include <random>

#include <values/maps.h>
#include <values/selection.h>
#include <values/value.h>
#include <vkbase/observer.h>

#include "support/libraryobjects.h"

namespace RecToolTests {

namespace {

using Recording2::CFileAccess;
using values::ChannelRange;

constexpr std::int32_t UnnamedCode = 2;

class Writer {
public:
    explicit Writer(const std::string& file)
        : m_file(file.c_str(), QString(), nullptr, true, false, false, nullptr, nullptr)
    {
    }
    void write(std::int32_t code, const std::string& text, bool isRange)
    {
        Recording2::CVTCmdData record = TestSupport::makeRecord(code, text);
        m_file.write(record, time, isRange);
        if (!text.empty()) {
            time = std::max(time, m_last + 1);
            m_last = time;
        }
    }
    CFileAccess& file() { return m_file; }

    std::uint64_t time = 10;

private:
    CFileAccess m_file;
    std::uint64_t m_last = 0;
};

/// Stores the changes of a value as the recorder does.
class Recorded final : public IObserver {
public:
    Recorded(Writer& writer, values::ValueBase& value, std::int32_t code)
        : m_writer(writer), m_value(value), m_code(code)
    {
        const bool isMap = dynamic_cast<values::MappingBase*>(&value) != nullptr;
        m_writer.write(code, value.GetObjectStateStringForRecording(), isMap);
        m_value.CommandRecordingOn();
        m_value.AddObserver(this);
    }
    Recorded(const Recorded&) = delete;
    Recorded& operator=(const Recorded&) = delete;
    ~Recorded() override { m_value.RemoveObserver(this); }

private:
    void Update(void* /*subject*/, TChangeCode /*code*/) override
    {
        const std::string& text = m_value.GetStringForRecording(true);
        m_writer.write(m_code, text, m_code == 1 && text.find("34;") != std::string::npos);
    }

    Writer& m_writer;
    values::ValueBase& m_value;
    std::int32_t m_code;
};

class Station {
public:
    Station(const std::string& file, const RandomOptions& options)
        : m_options(options), m_random(options.seed), m_writer(file)
    {
        m_modulation.AddItem(new values::SelectionItem("AM; a|b", 1, 3));
        m_modulation.AddItem(new values::SelectionItem("FM", 2, 7));
        m_spectrum.SetChannelRange(ChannelRange::Even(88e6, 25e3, 12));
        m_other.SetChannelRange(ChannelRange::Even(20e6, 1e3, 6));
        m_bearings.SetChannelRange(ChannelRange::List({1e6, 3e6, 2e6, 5e6}));
        writeTypes();
        observe(m_frequency, 46);
        observe(m_level, 36);
        observe(m_modulation, 6);
        observe(m_caption, 47);
        observe(m_squelch, 17);
        observe(m_spectrum, 1);
        if (options.bearings) {
            observe(m_bearings, 20);
        }
    }

    void run()
    {
        for (int i = 0; i < m_options.changes; ++i) {
            m_writer.time += below(4) == 0 ? below(40) : below(4);
            change();
        }
        const std::uint64_t stop = m_writer.time + below(3);
        close(stop);
        if (m_options.bookmarks) {
            CFileAccess file(m_writer.file().path().c_str(), QString(), nullptr, false, true, false, nullptr, nullptr);
            for (int i = 0; i < 5; ++i) {
                file.addBookmark(1 + below(stop), "mark " + std::to_string(i));
            }
        }
    }

private:
    std::uint64_t below(std::uint64_t end) { return m_random() % end; }  // the same with every standard library

    void observe(values::ValueBase& value, std::int32_t code)
    {
        m_observers.push_back(std::make_unique<Recorded>(m_writer, value, code));
    }

    void writeTypes()
    {
        const std::string& prefix = m_options.pathPrefix;
        Recording2::CVTTypesData types;
        types.get_vector() = {
            {46, 4, "FREQUENCY", prefix + "/FREQUENCY"},  {36, 3, "LEVEL", prefix + "/LEVEL"},
            {6, 5, "MODULATION", prefix + "/MODULATION"}, {47, 2, "DEVICE_CAPTION", prefix + "/CAPTION"},
            {17, 1, "SQUELCHSTATE", prefix + "/SQUELCH"}, {1, 6, "RFSPECTRUM", prefix + "/RfSpectrum"}};
        if (m_options.bearings) {
            types.add_item({20, 7, "DFSPECTRUM", prefix + "/DfSpectrum"});
        }
        m_writer.file().write(types);
    }

    void change()
    {
        const unsigned long long stamp = (m_options.startMs + m_writer.time) * 1000;
        switch (below(m_options.damagedTexts ? 12 : 11)) {
            case 0:
                m_frequency.SetValue(static_cast<double>(100'000'000 + below(1000)));
                break;
            case 1:
                m_level.SetValue(-30 - static_cast<double>(below(5)) / 4);
                break;
            case 2:
                m_modulation.Select(below(2) == 0 ? "AM; a|b" : "FM");
                break;
            case 3:
                m_caption.SetValue(QStringLiteral("N\u00fcrnberg\n") + QString::number(below(3)));
                break;
            case 4:
                m_squelch.SetValue(below(2) == 0);
                break;
            case 5:
                m_frequency.SetOffset(static_cast<double>(below(3)) * 1000);
                break;
            case 6:
                changeRange();
                break;
            case 7:
                m_other.SetCell(below(m_other.size()), -static_cast<float>(below(9000)) / 100, stamp);
                m_writer.write(UnnamedCode, m_other.GetObjectStateStringForRecording(), false);
                break;
            case 8:
            case 9:
                m_bearings.SetCell(below(m_bearings.size()), {static_cast<double>(below(360)), 1, -60, 90}, stamp);
                break;
            case 11:
                m_writer.write(below(2) == 0 ? 1 : 36, below(2) == 0 ? "no text of ours" : "34;1000,10,4", false);
                break;
            default:
                m_spectrum.SetCell(below(m_spectrum.size()), -static_cast<float>(below(9000)) / 100, stamp);
        }
    }

    void changeRange()
    {
        if (below(2) == 0) {
            m_spectrum.SetChannelRange(
                ChannelRange::Even(88e6 + static_cast<double>(below(2)) * 1e6, 25e3, 10 + below(3)));
        } else {
            m_bearings.SetChannelRange(ChannelRange::List({1e6, 3e6, 2e6, 4e6 + static_cast<double>(below(2)) * 1e6}));
        }
    }

    void close(std::uint64_t stop)
    {
        Recording2::CHeaderData header = TestSupport::makeHeader({.startMs = m_options.startMs,
                                                                  .stopMs = m_options.startMs + stop,
                                                                  .jobId = "Job",
                                                                  .deviceName = m_options.device,
                                                                  .deviceType = "Test",
                                                                  .automatic = true});
        m_writer.file().CloseRecording(header, true);
    }

    RandomOptions m_options;
    std::mt19937 m_random;
    Writer m_writer;
    values::ValueNumericWithOffset<double> m_frequency;
    values::ValueNumeric<double> m_level;
    values::ValueSelection m_modulation;
    values::Value<QString> m_caption;
    values::Value<bool> m_squelch;
    values::FastValueMap<float, values::levelHandler> m_spectrum;
    values::FastValueMap<float, values::levelHandler> m_other;
    values::ValueMap<values::Bearing, values::BearingHandler> m_bearings;
    std::vector<std::unique_ptr<Recorded>> m_observers;
};

}  // namespace

void writeRandomRecording(const std::string& file, const RandomOptions& options)
{
    Station(file, options).run();
}

}  // namespace RecToolTests
