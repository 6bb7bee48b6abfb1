// The whole way of a change in one process: the value is set, notified and rendered, the recorder writes its record.
#include <benchmark/benchmark.h>

#include <memory>
#include <stdexcept>
#include <vector>

#include <QDir>
#include <QFile>

#include <recording2/loadinterface.h>
#include <startup/cfgcenter.h>
#include <values/maps.h>
#include <values/selection.h>
#include <values/tree.h>
#include <values/value.h>
#include <vkbase/quonos.h>

#include "workload.h"

namespace {

using LevelMap = values::FastValueMap<float, values::levelHandler>;
using Number = values::ValueNumeric<double>;

constexpr std::size_t Channels = 4'096;

class ManualClock final : public IQuonOS {
public:
    ManualClock() { QuonOS::Replace(this); }
    ~ManualClock() override { QuonOS::Replace(nullptr); }
    [[nodiscard]] unsigned long long CurrentTime() const override { return now; }
    unsigned long long now = 1'537'358'587'000'000ULL;
};

struct DestroyRecorder {
    void operator()(IDllInstance* instance) const { VKDestroy(instance); }
};

/// A station with a level and a spectrum, whose recorder records while this exists. Files are removed as they are
/// finished.
class Station {
public:
    explicit Station(const char* journal = "process")
        : level(add<Number>(QStringLiteral("/LEVEL"))), spectrum(add<LevelMap>(QStringLiteral("/Spectrum")))
    {
        CfgCenter::LoadText(QStringLiteral("[Rx]\nValuePath = \"/Rx\"\nStatusValuePath = \"/Rx\"\n"
                                           "RecordingPath = \"%1\"\nJournal = \"%2\"\n[Rx.Values]\nLEVEL = \"/LEVEL\"\n"
                                           "RFSPECTRUM = \"/Spectrum\"\n")
                                .arg(folder(), QString::fromLatin1(journal)),
                            QStringLiteral("bench.toml"));
        spectrum.SetChannelRange(values::ChannelRange::Even(88e6, 5e3, Channels));
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
        QDir(folder()).removeRecursively();
    }
    void advance() { m_clock.now += 1'000; }
    [[nodiscard]] unsigned long long now() const { return m_clock.now; }
    /// Removes finished files, so that a long run does not fill the disk.
    static void removeFinished()
    {
        QDir directory(folder());
        for (const QString& name : directory.entryList({QStringLiteral("*.rec")}, QDir::Files)) {
            directory.remove(name);
        }
    }
    [[nodiscard]] std::int64_t written() const
    {
        return QFile(m_tree.Find(QStringLiteral("/Rx/REC_FILENAME"))->GetText()).size();
    }

private:
    static QString folder()
    {
        const QString path = QString::fromLocal8Bit(Bench::file("recorder").c_str());
        QDir().mkpath(path);
        return QDir(path).absolutePath();
    }
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

    ManualClock m_clock;
    values::Tree m_tree;

public:
    Number& level;
    LevelMap& spectrum;

private:
    std::unique_ptr<IDllInstance, DestroyRecorder> m_recorder;
};

void smallChange(benchmark::State& state, const char* journal)
{
    Station station(journal);
    std::int64_t number = 0;
    for (auto round : state) {
        static_cast<void>(round);
        station.advance();
        station.level.SetValue(-static_cast<double>(++number % 1'000) / 8);
        if (number % 4'000'000 == 0) {
            state.PauseTiming();
            Station::removeFinished();
            state.ResumeTiming();
        }
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}

std::vector<std::vector<float>> sweeps()
{
    std::vector<std::vector<float>> made(16, std::vector<float>(Channels));
    for (std::size_t sweep = 0; sweep < made.size(); ++sweep) {
        for (std::size_t channel = 0; channel < Channels; ++channel) {
            made[sweep][channel] = -100 + static_cast<float>((channel * 31 + sweep * 17) % 701) / 10;
        }
    }
    return made;
}

void wholeSpectrum(benchmark::State& state, const char* journal)
{
    Station station(journal);
    const std::vector<std::vector<float>> cells = sweeps();
    std::size_t number = 0;
    for (auto round : state) {
        static_cast<void>(round);
        station.advance();
        station.spectrum.SetCells(0, cells[++number % cells.size()], station.now());
        if (number % 40'000 == 0) {
            state.PauseTiming();
            Station::removeFinished();
            state.ResumeTiming();
        }
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}

/// What a recording of 400 MB adds to the memory of the process.
void memoryOf400MegaBytes(benchmark::State& state)
{
    constexpr std::int64_t Bytes = 400'000'000;
    const std::vector<std::vector<float>> cells = sweeps();
    for (auto round : state) {
        static_cast<void>(round);
        Station station;
        std::size_t before = 0;
        for (std::size_t number = 0; station.written() < Bytes; ++number) {
            for (int i = 0; i < 100; ++i) {
                station.advance();
                station.spectrum.SetCells(0, cells[number % cells.size()], station.now());
            }
            before = before == 0 ? Bench::residentBytes() : before;
        }
        state.counters["grownBytes"] = static_cast<double>(Bench::residentBytes()) - static_cast<double>(before);
    }
}

// With each journal, in one run: what one costs is a ratio.
BENCHMARK_CAPTURE(smallChange, off, "off")->UseRealTime();
BENCHMARK_CAPTURE(smallChange, process, "process")->UseRealTime();
BENCHMARK_CAPTURE(smallChange, power, "power")->UseRealTime();
BENCHMARK_CAPTURE(wholeSpectrum, off, "off")->UseRealTime();
BENCHMARK_CAPTURE(wholeSpectrum, process, "process")->UseRealTime();
BENCHMARK_CAPTURE(wholeSpectrum, power, "power")->UseRealTime();
BENCHMARK(memoryOf400MegaBytes)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
