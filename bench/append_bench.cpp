// Appending records, against a plain write of the same bytes.
#include <benchmark/benchmark.h>

#include "workload.h"

namespace {

constexpr std::int64_t FileBytes = std::int64_t{128} << 20U;
constexpr std::int64_t HeadBytes = 26;  // of a record and of its entry in the time table, about

std::int64_t recordsOf(std::int64_t dataBytes)
{
    return FileBytes / (dataBytes + HeadBytes);
}

template <typename Write>
void measure(benchmark::State& state, const Write& write)
{
    const std::string path = Bench::file("append.rec");
    for (auto round : state) {
        static_cast<void>(round);
        write(path);
        state.PauseTiming();
        state.counters["bytes"] = static_cast<double>(Bench::fileSize(path));
        Bench::removeFile(path);
        state.ResumeTiming();
    }
    const std::int64_t records = recordsOf(state.range(0));
    state.counters["records"] = static_cast<double>(records);
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * records);
}

/// As many bytes as a recording with such records has.
std::int64_t recordingBytes(std::int64_t dataBytes)
{
    const std::string path = Bench::file("size.rec");
    Bench::writeRecording(path, recordsOf(dataBytes), static_cast<std::size_t>(dataBytes));
    const std::int64_t bytes = Bench::fileSize(path);
    Bench::removeFile(path);
    return bytes;
}

void rawWrite(benchmark::State& state)
{
    const std::int64_t bytes = recordingBytes(state.range(0));
    measure(state, [bytes](const std::string& path) { Bench::writeRaw(path, bytes); });
}

void bareFormat(benchmark::State& state)
{
    measure(state, [&state](const std::string& path) {
        Bench::writeBare(path, recordsOf(state.range(0)), static_cast<std::size_t>(state.range(0)));
    });
}

void append(benchmark::State& state)
{
    measure(state, [&state](const std::string& path) {
        Bench::writeRecording(path, recordsOf(state.range(0)), static_cast<std::size_t>(state.range(0)));
    });
}

BENCHMARK(rawWrite)->Arg(20)->Arg(2'000)->Arg(20'000)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(bareFormat)->Arg(20)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(append)->Arg(20)->Arg(2'000)->Arg(20'000)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
