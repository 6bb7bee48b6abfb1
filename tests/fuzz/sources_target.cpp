// What recstation reads: configuration, feeds, NMEA, sweeps, logs of bearings. Each to its end, into a tree of its own.
#include <utility>

#include <startup/cfgcenter.h>
#include <values/tree.h>
#include <zelvo/archive.h>

#include "program.h"
#include "scratchfile.h"
#include "sources/bearings/bearingssource.h"
#include "sources/feed/feedsource.h"
#include "sources/nmea/nmeasource.h"
#include "sources/source.h"
#include "sources/sweep/sweepsource.h"
#include "support/documentexamples.h"
#include "support/textinput.h"
#include "target.h"

namespace Fuzzing {

namespace {

constexpr unsigned long long Start = 1'795'248'000'000'000;  // microseconds since 1970 UTC

/// What a user would be told in one sentence ends the run; anything else that is thrown is a fault.
void tolerating(const std::function<void()>& run)
{
    try {
        run();
    } catch (const std::runtime_error& error) {
        require(*error.what() != '\0', "an error says nothing");
    }
}

void play(RecStation::Source& source, std::size_t mostSteps)
{
    source.prepare();
    unsigned long long last = 0;
    for (std::size_t steps = 0;; ++steps) {
        const auto time = source.nextTime();
        if (!time) {
            break;
        }
        require(*time >= last, "a source goes back in time");
        require(steps <= mostSteps, "a source has more steps than its input has bytes");
        last = *time;
        source.step();
    }
    static_cast<void>(source.report());
}

void ignore(const QString& /*sentence*/)
{
}

template <typename Options>
Options fileOptions(const ScratchFile& file)
{
    Options options;
    options.file = file.path();
    return options;
}

}  // namespace

void runBearings(const std::string& input)
{
    const ScratchFile file(input);
    for (const bool strict : {false, true}) {
        const values::Tree tree;
        auto options = fileOptions<RecStation::BearingsOptions>(file);
        options.strict = strict;
        options.dateFormat = RecStation::LogDateFormat(strict ? "MM/dd/yy" : "yyyy-MM-dd");
        options.decimalComma = strict;
        tolerating([&] { play(*makeBearingsSource(options, ignore), input.size()); });
    }
}

void runConfiguration(const std::string& input)
{
    const values::Tree tree;
    tolerating([&] {
        const auto read = RecStation::loadConfigurationText(QString::fromStdString(input), "fuzz.toml");
        require(read.instances.size() <= input.size(), "there are more instances than bytes");
    });
    CfgCenter::Clear();
    if (Zelvo::ArchiveIsBuiltIn()) {
        tolerating(
            [&] { static_cast<void>(Zelvo::ParseArchiveConfiguration(QString::fromStdString(input), "fuzz.toml")); });
    }
}

void runFeed(const std::string& input)
{
    const values::Tree tree;
    RecStation::StationHooks host;
    host.switchRecorder = [](const QString& /*name*/, bool on) { return on; };
    host.created = ignore;
    host.report = ignore;
    tolerating([&] {
        RecStation::FeedSource source([&] { return TestSupport::textInput(input); }, Start, RecStation::FeedOptions(),
                                      host);
        play(source, input.size());
    });
}

void runNmea(const std::string& input)
{
    const ScratchFile file(input);
    for (const bool dated : {false, true}) {
        const values::Tree tree;
        auto options = fileOptions<RecStation::NmeaOptions>(file);
        options.firstDay = dated ? RecStation::LogDateFormat("yyyy-MM-dd").parse("2026-11-21") : std::nullopt;
        options.fixWeekRollover = !dated;
        tolerating([&] { play(*makeNmeaSource(options, ignore), input.size()); });
    }
}

void runSweep(const std::string& input)
{
    const ScratchFile file(input);
    for (const char* bins : {"centre", "lower"}) {
        const values::Tree tree;
        RecStation::SweepOptions options;
        options.files = {file.path()};
        options.binFrequency = bins;
        tolerating([&] { play(*makeSweepSource(options, ignore), input.size()); });
    }
}

std::vector<std::string> bearingsSeeds()
{
    std::vector<std::string> seeds = TestSupport::documentExamples(DOCUMENT_FOLDER "/bearings.md", "csv");
    seeds.emplace_back(
        "date;time;station;latitude;longitude;altitude;frequency;azimuth\n"
        "2017-01-14;10:31;\"Lecce; north\";40.3;18.1;12;433.92;271.5\n2017-01-14;10:32:07.25;B;40.3;18.1;;100;NA\n"
        "2017-01-14;10:32;B;40.3;18.1;;433.92;12\r\n");
    seeds.emplace_back(
        "timestamp,frequency,azimuth\n2026-03-01T08:00:00.25Z,150,1\n1772352003.5,150,4\n1772352004500,1,5\n");
    seeds.push_back(krakenSeeds().front());
    seeds.emplace_back(
        "# remark\nTime (UTC);Frequency [kHz];azimuth_deg;elevation_deg;level;quality\n;;;;;\n"
        "20260301T080000,25+0100;433920,5;271,5;-3;-67,25;91\n1772352001250000;433920;1;NA;;\n");
    seeds.emplace_back("date,time,frequency,azimuth\n01/14/17,5:31,433.92,271.5\n01/15/17,05:31:07,100,0\n");
    return seeds;
}

std::vector<std::string> configurationSeeds()
{
    std::vector<std::string> seeds = TestSupport::documentExamples(DOCUMENT_FOLDER "/recstation.md", "toml");
    for (std::string& example : TestSupport::documentExamples(DOCUMENT_FOLDER "/archive.md", "toml")) {
        seeds.push_back(std::move(example));
    }
    seeds.push_back(RecStation::defaultConfigurationText("/tmp").toStdString());
    return seeds;
}

std::vector<std::string> feedSeeds()
{
    return TestSupport::documentExamples(DOCUMENT_FOLDER "/feed.md", "jsonl");
}

std::vector<std::string> nmeaSeeds()
{
    return {
        "$GPRMC,080000.00,A,5230.0000,N,01330.0000,E,10.0,90.0,211126,,,A\n"
        "$GPGGA,080001.00,5230.0000,N,01330.0000,E,1,12,0.60,45.0,M,46.8,M,,\n$HEHDT,271,T\n"
        "$PASHR,080002.00,271.00,T,1.5,-2.5,0.1,0.1,0.1,0.1,1,1\n$GPRMC,080003,A,5230.1,S,01330.1,W,1,9,211126,,,A\n",
        "\\s:r1,c:1*00\\$GPGGA,235959,5230.0000,N,01330.0000,E,1,12,0.60,45.0,M,46.8,M,,*00\n# a comment\n!AIVDM,1\n"
        "$GPVTG,90.0,T,,M,10.0,N,18.5,K\n$GNGLL,5230.0,N,01330.0,E,000001,A\n$GPZDA,000002,22,11,2026,00,00\n",
        "$GNGNS,235959.5,5230.0,N,01330.0,E,AN,12,0.6,31.5,46.8,,\n$GPTHS,274.07,A\n$IIHDM,100.0,M\n"
        "$IIXDR,C,21.5,C,AIR,A,-3.861,D,Roll,A,2,D,PTCH\n$GPRMC,000003,A,5230.1,S,01330.1,W,1,9,221126,2.5,W,A\n",
    };
}

std::vector<std::string> sweepSeeds()
{
    std::vector<std::string> seeds = TestSupport::documentExamples(DOCUMENT_FOLDER "/sweep.md", "csv");
    std::string sweeps;
    for (const char* time : {"08:00:00", "08:00:01", "08:00:02"}) {
        const std::string start = std::string("2026-11-21, ") + time + ", ";
        sweeps += start + "88000000, 90000000, 1000000.00, 20, -50.5, -60\n";
        sweeps += start + "90000000, 92000000, 1000000.00, 20, -51.5, nan\n";
        sweeps += start + "99000000, 99500000, 250000.00, 20, -52.5, -62\n";
    }
    seeds.push_back(sweeps);
    return seeds;
}

}  // namespace Fuzzing
