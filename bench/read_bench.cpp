// Opening a recording, reading its records in order, and reading one at a random time.
#include <benchmark/benchmark.h>

#include <memory>
#include <random>
#include <stdexcept>

#include <recording2/fileaccess.h>

#include "workload.h"

namespace {

using Recording2::CFileAccess;
using Recording2::CVTCmdData;

constexpr std::int64_t ReadBytes = std::int64_t{128} << 20U;
constexpr std::int64_t RecordHead = 26;

/// A recording that is there while this exists.
class Recording {
public:
    Recording(std::int64_t records, std::int64_t dataBytes) : m_path(Bench::file("read.rec"))
    {
        Bench::writeRecording(m_path, records, static_cast<std::size_t>(dataBytes));
    }
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;
    ~Recording() { Bench::removeFile(m_path); }
    [[nodiscard]] const std::string& path() const { return m_path; }
    [[nodiscard]] std::unique_ptr<CFileAccess> open() const
    {
        auto file = std::make_unique<CFileAccess>(m_path.c_str(), QStringLiteral("/Bench"), nullptr, false, true, false,
                                                  nullptr, nullptr);
        if (!file->IsValidFile()) {
            throw std::runtime_error("cannot be read");
        }
        return file;
    }

private:
    std::string m_path;
};

void passOver(benchmark::State& state)
{
    const std::int64_t records = ReadBytes / (state.range(0) + RecordHead);
    const Recording recording(records, state.range(0));
    for (auto round : state) {
        static_cast<void>(round);
        benchmark::DoNotOptimize(Bench::passOver(recording.path()));
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * records);
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * Bench::fileSize(recording.path()));
}

/// All records in order, from opening on or of a file that is open.
void readAll(benchmark::State& state)
{
    const std::int64_t records = ReadBytes / (state.range(0) + RecordHead);
    const Recording recording(records, state.range(0));
    const std::unique_ptr<CFileAccess> file = recording.open();
    CVTCmdData record;
    for (auto round : state) {
        static_cast<void>(round);
        std::int64_t count = 1;
        for (unsigned long long next = file->readfirst(record); next != 0; next = file->readnext(record)) {
            ++count;
        }
        if (count != records) {
            throw std::runtime_error("records are missing");
        }
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * records);
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * Bench::fileSize(recording.path()));
}

void open(benchmark::State& state)
{
    const std::int64_t records = state.range(0);
    const Recording recording(records, 20);
    const std::size_t before = Bench::heapBytes();
    const std::unique_ptr<CFileAccess> kept = recording.open();
    const std::size_t after = Bench::heapBytes();
    for (auto round : state) {
        static_cast<void>(round);
        benchmark::DoNotOptimize(recording.open());
    }
    state.counters["heapBytesPerRecord"] = static_cast<double>(after - before) / static_cast<double>(records);
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * records);
}

void readAtRandomTime(benchmark::State& state)
{
    const std::int64_t records = ReadBytes / (state.range(0) + RecordHead);
    const Recording recording(records, state.range(0));
    const std::unique_ptr<CFileAccess> file = recording.open();
    std::mt19937_64 random(1);  // NOLINT(cert-msc51-cpp): the same times in every run
    std::uniform_int_distribution<unsigned long long> times(1, static_cast<unsigned long long>(records));
    CVTCmdData record;
    for (auto round : state) {
        static_cast<void>(round);
        benchmark::DoNotOptimize(file->read(record, times(random)));
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}

BENCHMARK(passOver)->Arg(20)->Arg(2'000)->Arg(20'000)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(readAll)->Arg(20)->Arg(2'000)->Arg(20'000)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(open)->Arg(60'000)->Arg(240'000)->Arg(2'400'000)->Arg(5'000'000)->UseRealTime()->Unit(
    benchmark::kMillisecond);
BENCHMARK(readAtRandomTime)->Arg(20)->Arg(2'000)->Arg(20'000)->UseRealTime()->Unit(benchmark::kMicrosecond);

}  // namespace
