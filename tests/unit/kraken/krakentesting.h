// A KrakenSDR's lines for tests.
#pragma once

#include <string>

namespace RecStation {

/// The 360 values with their peak at a direction, as the finder writes them: two decimals, flat on top.
inline std::string outputWithPeak(int peakDeg)
{
    constexpr int Circle = 360;
    std::string text;
    for (int i = 0; i < Circle; ++i) {
        const int apart = ((i - peakDeg) % Circle + Circle) % Circle;
        const int from = apart > Circle / 2 ? Circle - apart : apart;
        text += from <= 5 ? ", 0.47" : ", 0.1" + std::to_string(from % 10);
    }
    return text;
}

inline std::string krakenLine(const std::string& angle, const std::string& output = {})
{
    return "1679512414650, " + angle +
           ", 0.41, -48.5, 151880000, UCA, 100, dingus, 66.961348, -66.4438057, 12.5, 99, GPS, " + "R, R, R, R" +
           output + " \n";
}

}  // namespace RecStation
