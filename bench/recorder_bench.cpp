// The whole way of a change in one process: the value is set, notified and rendered, the recorder writes its record.
#include <benchmark/benchmark.h>

#include <time.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <QDir>
#include <QFile>

#include <recording2/inspection/following.h>
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
        begin();
    }
    Station(const Station&) = delete;
    Station& operator=(const Station&) = delete;
    ~Station()
    {
        end();
        m_recorder.reset();
        CfgCenter::Clear();
        QDir(folder()).removeRecursively();
    }
    void begin() { status().Select(QStringLiteral("On")); }
    void end() { status().Select(QStringLiteral("Off")); }
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
    [[nodiscard]] QString fileName() const { return m_tree.Find(QStringLiteral("/Rx/REC_FILENAME"))->GetText(); }
    [[nodiscard]] std::int64_t written() const { return QFile(fileName()).size(); }

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

void smallChange(benchmark::State& state)
{
    Station station;
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

void wholeSpectrum(benchmark::State& state)
{
    Station station;
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

/// Somebody who looks every 50 ms at what was recorded meanwhile, while this exists.
class Reader {
public:
    explicit Reader(const std::string& file)
    {
        std::string problem;
        m_following = Recording2::Inspection::Following::open(file, problem);
        if (!m_following) {
            throw std::runtime_error(problem);
        }
        look();
        m_thread = std::thread([this] {
            while (!m_end) {
                std::this_thread::sleep_for(std::chrono::milliseconds(50));
                look();
            }
        });
    }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;
    ~Reader()
    {
        m_end = true;
        m_thread.join();
    }

private:
    void look()
    {
        while (m_following->next(m_record)) {
            benchmark::DoNotOptimize(m_record.data.data());
        }
    }

    std::optional<Recording2::Inspection::Following> m_following;
    Recording2::Inspection::Record m_record;
    std::atomic<bool> m_end{false};
    std::thread m_thread;
};

/// Processor time of this thread, in nanoseconds.
double ownTime()
{
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
}

/// The processor time per change of a stretch of changes.
template <typename Change>
double stretch(Station& station, Change& change, std::chrono::milliseconds length)
{
    constexpr int AtOnce = 50;
    double changes = 0;
    const auto end = std::chrono::steady_clock::now() + length;
    const double begun = ownTime();
    while (std::chrono::steady_clock::now() < end) {
        for (int i = 0; i < AtOnce; ++i) {
            change(station);
        }
        changes += AtOnce;
    }
    return (ownTime() - begun) / changes;
}

/// The ratio of two measures, the middle one of many pairs. What else the machine does meets both alike.
template <typename Measure>
void ratioInPairs(benchmark::State& state, int pairs, const Measure& measure)
{
    for (auto round : state) {
        static_cast<void>(round);
        std::vector<double> ratios;
        for (int pair = 0; pair < pairs; ++pair) {
            const bool with = pair % 2 == 0;
            const double first = measure(with);
            const double second = measure(!with);
            ratios.push_back(with ? first / second : second / first);
        }
        std::nth_element(ratios.begin(), ratios.begin() + pairs / 2, ratios.end());
        state.counters["ratio"] = ratios[static_cast<std::size_t>(pairs / 2)];
    }
}

/// What a reader costs the recorder, to a recorder without one.
template <typename Change>
void besideAReader(benchmark::State& state, Change change)
{
    constexpr std::chrono::milliseconds SomeLooks(200);
    Station station;
    ratioInPairs(state, 31, [&](bool withReader) {
        station.end();
        Station::removeFinished();
        station.begin();
        std::optional<Reader> reader;
        if (withReader) {
            reader.emplace(station.fileName().toStdString());
        }
        return stretch(station, change, SomeLooks);
    });
}

/// What a journal costs the recorder, to a recorder without one.
template <typename Change>
void withJournal(benchmark::State& state, const char* journal, Change change)
{
    constexpr std::chrono::milliseconds SomeFlushes(50);
    ratioInPairs(state, 61, [&](bool with) {
        Station station(with ? journal : "off");
        return stretch(station, change, SomeFlushes);
    });
}

auto changesOfANumber()
{
    return [number = 0](Station& station) mutable {
        station.advance();
        station.level.SetValue(-static_cast<double>(++number % 1'000) / 8);
    };
}

auto changesOfASpectrum()
{
    return [cells = sweeps(), number = std::size_t{0}](Station& station) mutable {
        station.advance();
        station.spectrum.SetCells(0, cells[++number % cells.size()], station.now());
    };
}

void numbersBesideAReader(benchmark::State& state)
{
    besideAReader(state, changesOfANumber());
}

void spectraBesideAReader(benchmark::State& state)
{
    besideAReader(state, changesOfASpectrum());
}

void numbersWithJournal(benchmark::State& state, const char* journal)
{
    withJournal(state, journal, changesOfANumber());
}

void spectraWithJournal(benchmark::State& state, const char* journal)
{
    withJournal(state, journal, changesOfASpectrum());
}

BENCHMARK(smallChange)->UseRealTime();
BENCHMARK(wholeSpectrum)->UseRealTime();
BENCHMARK_CAPTURE(numbersWithJournal, process, "process")->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(numbersWithJournal, power, "power")->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(spectraWithJournal, process, "process")->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(spectraWithJournal, power, "power")->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(numbersBesideAReader)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(spectraBesideAReader)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(memoryOf400MegaBytes)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
