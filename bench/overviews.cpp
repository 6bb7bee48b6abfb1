// How long overviews of recordings take to make, to open again and to draw. bench/run and bench/day call it.
//
//   overviews_bench make FOLDER HOURS   writes recordings of 4 sweeps a second with 4,096 cells, the same in every run
//   overviews_bench FILE...             measures recordings that follow each other; prints JSON
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <iostream>
#include <random>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include <pyramid/cache.h>
#include <recording2/file/recordingwriter.h>
#include <values/maps.h>

namespace {

constexpr std::size_t Cells = 4096;
constexpr std::uint64_t SweepMs = 250;
constexpr std::uint64_t StartMs = 1'767'225'600'000;  // 2026-01-01

double secondsSince(std::chrono::steady_clock::time_point begin)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

/// One file of so many sweeps: noise, a signal that drifts, and bursts of one cell in one sweep.
void writeFile(const std::filesystem::path& path, std::uint64_t startMs, std::uint64_t sweeps, std::uint32_t seed)
{
    constexpr std::size_t NoiseCells = std::size_t{1} << 16U;
    std::mt19937 random(seed);
    std::vector<float> noise(NoiseCells);
    for (float& level : noise) {
        level = static_cast<float>(-11'000 + static_cast<int>(random() % 600)) / 100;
    }
    Recording2::RecordingWriter writer(path, System::DefaultFileMode);
    const std::vector<Recording2::Format::TypeEntryRecord> types{{1, 6, "RFSPECTRUM", "/RfSpectrum"}};
    if (writer.begin(Recording2::Format::typeTable(types)) != 0) {
        throw std::runtime_error(path.string() + " cannot be written");
    }
    values::FastValueMap<float, values::levelHandler> map;
    map.CommandRecordingOn();
    map.SetChannelRange(values::ChannelRange::Even(100e6, 25e3, Cells));
    std::vector<std::uint64_t> times;
    std::vector<float> levels(Cells);
    for (std::uint64_t i = 0; i < sweeps; ++i) {
        std::copy_n(noise.begin() + static_cast<std::ptrdiff_t>(random() % (NoiseCells - Cells)), Cells,
                    levels.begin());
        levels[(i / 500) % Cells] = -50;
        if (random() % 4096 == 0) {
            levels[random() % Cells] = -20;
        }
        times.push_back(10 + SweepMs * i);
        map.SetCells(0, levels, (startMs + times.back()) * 1000);
        std::string text = map.GetObjectStateStringForRecording();
        if (i > 0) {
            const std::size_t range = text.find('|');
            text.erase(range, text.find("|50;") - range);
        }
        writer.add(1, text);
    }
    Recording2::Format::HeaderRecord header;
    header.majorVersion = 2;
    header.startMs = startMs;
    header.stopMs = startMs + SweepMs * sweeps;
    header.deviceName = "RX 1";
    const std::vector<std::uint64_t> ranges{times.front()};
    writer.end(header, {times, ranges, {}});
    if (writer.close(false) != 0 || writer.takeName(true) != 0) {
        throw std::runtime_error(path.string() + " cannot be written");
    }
}

void make(const std::filesystem::path& folder, double hours)
{
    constexpr std::uint64_t SweepsOfFile = 40'000;  // just below 500 MB
    const auto sweeps = static_cast<std::uint64_t>(hours * 3600 * 1000 / static_cast<double>(SweepMs));
    std::uint32_t number = 0;
    for (std::uint64_t done = 0; done < sweeps; done += SweepsOfFile) {
        std::string name = std::to_string(++number);
        name.insert(0, name.size() < 2 ? "Day__RX_1__0" : "Day__RX_1__").append(".rec");
        writeFile(folder / name, StartMs + SweepMs * done, std::min(SweepsOfFile, sweeps - done), number);
    }
}

struct Files {
    std::vector<std::shared_ptr<RecView::Overview>> overviews;
    double fromMs = 0;
    double toMs = 0;
    RecTool::FrequencySpan span;
};

Files open(RecView::Cache& cache, std::span<char*> paths)
{
    Files files;
    std::string problem;
    for (const char* path : paths) {
        files.overviews.push_back(cache.overviewOf(path, {}, problem));
        if (files.overviews.back() == nullptr) {
            throw std::runtime_error(std::string(path) + ": " + problem);
        }
    }
    files.fromMs = files.overviews.front()->head().startMs;
    files.toMs = files.overviews.back()->head().endMs;
    files.span = files.overviews.front()->spectra().at(0).span;
    return files;
}

double drawSeconds(const Files& files, const RecView::View& view)
{
    const auto begin = std::chrono::steady_clock::now();
    RecView::Grid grid(view);
    for (const auto& overview : files.overviews) {
        overview->draw(grid);
    }
    grid.finish();
    return secondsSince(begin);
}

/// Zooms and pans as a user might: any width down to a minute, any part of the frequencies.
std::vector<double> drawRandomly(const Files& files, bool exact)
{
    constexpr int Draws = 300;
    constexpr double LeastMs = 60'000;
    std::mt19937 random(1);
    const auto share = [&] { return std::uniform_real_distribution<>(0, 1)(random); };
    std::vector<double> seconds;
    for (int i = 0; i < Draws; ++i) {
        const double allMs = files.toMs - files.fromMs;
        const double width = allMs * std::pow(LeastMs / allMs, share());
        const double from = files.fromMs + share() * (allMs - width);
        const double height = files.span.width() * std::pow(0.01, share() * (i % 2));
        const double low = files.span.lowHz + share() * (files.span.width() - height);
        seconds.push_back(
            drawSeconds(files, {1, from, from + width, low, low + height, 1200, 600, RecView::Combine::Max, exact}));
    }
    std::sort(seconds.begin(), seconds.end());
    return seconds;
}

std::uint64_t residentPeak()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return static_cast<std::uint64_t>(usage.ru_maxrss) * 1024;
}

void measure(std::span<char*> paths, const std::filesystem::path& directory)
{
    RecView::Cache::Options options;
    options.directory = directory / "cache";
    options.bytes = std::uint64_t{1} << 40U;
    RecView::Cache cache(options);
    auto begin = std::chrono::steady_clock::now();
    Files files = open(cache, paths);
    const double made = secondsSince(begin);
    const std::uint64_t peak = residentPeak();
    std::uint64_t kept = 0;
    for (const auto& overview : files.overviews) {
        kept += overview->store().bytes();
    }
    files = {};
    begin = std::chrono::steady_clock::now();
    files = open(cache, paths);
    const double opened = secondsSince(begin);
    const double whole = drawSeconds(files, {1, files.fromMs, files.toMs, files.span.lowHz, files.span.highHz, 1200,
                                             600, RecView::Combine::Max, false});
    std::uint64_t bytes = 0;
    for (const char* path : paths) {
        bytes += std::filesystem::file_size(path);
    }
    std::printf("{\"bytes\": %llu, \"made\": %.4f, \"memory\": %llu, \"kept\": %llu, \"opened\": %.4f, \"whole\": %.4f",
                static_cast<unsigned long long>(bytes), made, static_cast<unsigned long long>(peak),
                static_cast<unsigned long long>(kept), opened, whole);
    for (const bool exact : {false, true}) {
        const std::vector<double> seconds = drawRandomly(files, exact);
        std::printf(", \"%s\": [%.4f, %.4f]", exact ? "exact" : "drawn", seconds[seconds.size() / 2],
                    seconds[seconds.size() * 95 / 100]);
    }
    std::puts("}");
}

}  // namespace

int main(int argc, char** argv)
try {
    const std::span<char*> arguments(argv + 1, static_cast<std::size_t>(argc - 1));
    if (arguments.size() == 3 && std::string(arguments[0]) == "make") {
        make(arguments[1], std::stod(arguments[2]));
    } else if (!arguments.empty()) {
        const std::filesystem::path directory = std::filesystem::path(arguments[0]).parent_path() / "overviews";
        std::filesystem::create_directories(directory);
        measure(arguments, directory);
        std::filesystem::remove_all(directory);
    }
    return 0;
} catch (const std::exception& error) {
    std::cerr << "overviews_bench: " << error.what() << '\n';
    return 1;
}
