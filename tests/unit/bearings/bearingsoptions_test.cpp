// Options for a log of bearings: names of columns, the heading, and the help.
#include <algorithm>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <CLI/CLI.hpp>

#include "sources/bearings/bearingssource.h"

namespace {

using recstation::BearingsOptions;

BearingsOptions parse(std::vector<std::string> arguments)
{
    BearingsOptions options;
    CLI::App app;
    recstation::addBearingsOptions(*app.add_subcommand("bearings"), options);
    arguments.insert(arguments.begin(), "bearings");
    std::reverse(arguments.begin(), arguments.end());
    app.parse(arguments);
    return options;
}

TEST(BearingsOptions, WithoutOptionsTheColumnsHaveTheirPlainNames)
{
    const BearingsOptions options = parse({"log.csv"});
    EXPECT_EQ(options.file, "log.csv");
    EXPECT_EQ(options.azimuthColumn, "azimuth");
    EXPECT_EQ(options.latitudeColumns, std::nullopt);
    EXPECT_EQ(options.frequencyUnit, "MHz");
    EXPECT_FALSE(options.west || options.south || options.strict);
}

TEST(BearingsOptions, EveryOptionArrives)
{
    const BearingsOptions options = parse({"--separator",
                                           "tab",
                                           "--date-column",
                                           "Day",
                                           "--time-column",
                                           "Clock",
                                           "--station-column",
                                           "Post",
                                           "-",
                                           "--date-format",
                                           "dd.MM.yyyy",
                                           "--utc-offset",
                                           "-05:00",
                                           "--latitude-column",
                                           "la,lb,lc",
                                           "--longitude-column",
                                           "lo",
                                           "--south",
                                           "--west",
                                           "--altitude-column",
                                           "alt",
                                           "--frequency-column",
                                           "f",
                                           "--azimuth-column",
                                           "az",
                                           "--frequency-unit",
                                           "kHz",
                                           "--heading",
                                           "-6.5",
                                           "--station",
                                           "E3",
                                           "--strict"});
    EXPECT_EQ(options.file, "-");
    EXPECT_EQ(options.separator, "tab");
    EXPECT_EQ(options.dateColumn, "Day");
    EXPECT_EQ(options.timeColumn, "Clock");
    EXPECT_EQ(options.stationColumn, "Post");
    EXPECT_EQ(options.dateFormat, "dd.MM.yyyy");
    EXPECT_EQ(options.utcOffset, "-05:00");
    EXPECT_EQ(options.latitudeColumns, "la,lb,lc");
    EXPECT_EQ(options.longitudeColumns, "lo");
    EXPECT_TRUE(options.south && options.west && options.strict);
    EXPECT_EQ(options.altitudeColumn, "alt");
    EXPECT_EQ(options.frequencyColumn, "f");
    EXPECT_EQ(options.azimuthColumn, "az");
    EXPECT_EQ(options.frequencyUnit, "kHz");
    EXPECT_EQ(options.headingDeg, -6.5);
    EXPECT_EQ(options.station, "E3");
}

TEST(BearingsOptions, TheFileIsRequiredAndTheHeadingIsAnAngle)
{
    EXPECT_THROW(parse({}), CLI::ParseError);
    EXPECT_THROW(parse({"log.csv", "--heading", "361"}), CLI::ParseError);
}

TEST(BearingsOptions, TheHelpShowsAnExample)
{
    BearingsOptions options;
    CLI::App app;
    CLI::App* command = app.add_subcommand("bearings");
    recstation::addBearingsOptions(*command, options);
    EXPECT_THAT(command->help(), testing::HasSubstr("--date-format MM/dd/yy --utc-offset -05:00"));
}

}  // namespace
