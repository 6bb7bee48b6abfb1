// A station of one level and one spectrum, with a clock set step by step.
#include "recordingrun.h"

#include <cstdio>
#include <memory>
#include <vector>

#include <recording2/loadinterface.h>
#include <startup/cfgcenter.h>
#include <values/maps.h>
#include <values/selection.h>
#include <values/tree.h>
#include <values/value.h>
#include <vkbase/quonos.h>
#include <QByteArray>
#include <QDir>

#include "system/filesizelimit.h"

namespace RecTool::SelfCheck {

namespace {

using LevelMap = values::FastValueMap<float, values::levelHandler>;
using Number = values::ValueNumeric<double>;

class SetClock final : public IQuonOS {
public:
    SetClock() { QuonOS::Replace(this); }
    SetClock(const SetClock&) = delete;
    SetClock& operator=(const SetClock&) = delete;
    ~SetClock() override { QuonOS::Replace(nullptr); }
    [[nodiscard]] unsigned long long CurrentTime() const override { return now; }

    unsigned long long now = 1'767'225'600'000'000ULL;  // 2026-01-01
};

struct DestroyRecorder {
    void operator()(IDllInstance* instance) const { VKDestroy(instance); }
};

QString inQuotes(QString text)
{
    return QLatin1Char('"') +
           text.replace(QLatin1Char('\\'), QStringLiteral("\\\\")).replace(QLatin1Char('"'), QStringLiteral("\\\"")) +
           QLatin1Char('"');
}

/// Records into a folder while it lives. One at a time: it puts value tree, clock and configuration of the process in
/// force.
class Station {
public:
    explicit Station(const QString& folder)
        : m_level(add<Number>(QStringLiteral("/LEVEL"))), m_spectrum(add<LevelMap>(QStringLiteral("/Spectrum")))
    {
        CfgCenter::LoadText(QStringLiteral("[Rx]\nValuePath = \"/Rx\"\nStatusValuePath = \"/Rx\"\n"
                                           "RecordingPath = %1\n[Rx.Values]\nLEVEL = \"/LEVEL\"\n"
                                           "RFSPECTRUM = \"/Spectrum\"\n")
                                .arg(inQuotes(QDir(folder).absolutePath())),
                            QStringLiteral("the self-check's configuration"));
        constexpr double FirstHz = 88e6;
        constexpr double WidthHz = 5e3;
        m_spectrum.SetChannelRange(values::ChannelRange::Even(FirstHz, WidthHz, m_cells.size()));
        m_recorder.reset(VKCreate(L"Rx"));
        status().Select(QStringLiteral("On"));
    }
    Station(const Station&) = delete;
    Station& operator=(const Station&) = delete;
    ~Station()
    {
        status().Select(QStringLiteral("Off"));
        m_recorder.reset();
        CfgCenter::Clear();
    }

    // Short records and long ones, as a receiver makes them.
    void step(std::uint64_t number)
    {
        constexpr unsigned long long StepMicroseconds = 1'000;
        constexpr std::uint64_t LevelsPerSpectrum = 8;
        m_clock.now += StepMicroseconds;
        if (number % LevelsPerSpectrum == 0) {
            for (std::size_t channel = 0; channel < m_cells.size(); ++channel) {
                m_cells[channel] = -100 + static_cast<float>((channel * 31 + number * 17) % 701) / 10;
            }
            m_spectrum.SetCells(0, m_cells, m_clock.now);
        } else {
            m_level.SetValue(static_cast<double>(number));
        }
    }
    [[nodiscard]] bool isRecording() const { return status().GetCurrentKey() == 1; }

private:
    template <typename T>
    T& add(const QString& path)
    {
        auto value = std::make_unique<T>();
        T& added = *value;
        const int leaf = path.lastIndexOf(QLatin1Char('/')) + 1;
        value->SetName(path.mid(leaf));
        m_tree.Insert(path.left(leaf), value.get());
        static_cast<void>(value.release());  // the tree's now
        return added;
    }
    [[nodiscard]] values::ValueSelection& status() const
    {
        return dynamic_cast<values::ValueSelection&>(*m_tree.Find(QStringLiteral("/Rx/REC_STATUS")));
    }

    SetClock m_clock;
    values::Tree m_tree;
    Number& m_level;
    LevelMap& m_spectrum;
    std::vector<float> m_cells = std::vector<float>(256);
    std::unique_ptr<IDllInstance, DestroyRecorder> m_recorder;
};

}  // namespace

Ledger::Ledger(const QString& path) : m_file(path)
{
    constexpr int Bytes = 2 * sizeof(std::uint64_t);
    if (!m_file.open(QIODevice::ReadWrite)) {
        return;
    }
    const bool isThere = m_file.size() >= Bytes;
    if (isThere || (m_file.write(QByteArray(Bytes, '\0')) == Bytes && m_file.flush())) {
        m_numbers = reinterpret_cast<std::uint64_t*>(m_file.map(0, Bytes));  // as long as the file object lives
    }
}

bool recordForSelfCheck(const std::string& folder, std::uint64_t limitBytes)
{
    Ledger ledger(QDir(QString::fromStdString(folder)).filePath(QString::fromLatin1(LedgerName)));
    if (!ledger.isOpen() || (limitBytes > 0 && !limitFileSize(limitBytes))) {
        return false;
    }
    Station station(QString::fromStdString(folder));
    for (std::uint64_t number = 1; number <= Steps; ++number) {
        station.step(number);
        if (!station.isRecording()) {
            ledger.setStopped();
            return true;
        }
        ledger.setAccepted(number);
    }
    while (limitBytes == 0 && std::getchar() != EOF) {
    }
    return true;
}

}  // namespace RecTool::SelfCheck
