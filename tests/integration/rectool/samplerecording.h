// A recording of one value of every kind, with the texts that the values themselves write.
#pragma once

#include <string>

/// Writes the recording; its records, with their times:
/// 10 /FREQUENCY (number with offset), 11 /LEVEL (number), 12 /MODULATION (selection), 13 /DEVICE_CAPTION (text),
/// 14 /SQUELCH (boolean), 15 /RfSpectrum (levels, all of 5 channels), 16 /DfSpectrum (bearings of 3 channels),
/// 900 /RfSpectrum (all channels), 1000 /RfSpectrum (one channel), 1500 /LEVEL, 2000 /DEVICE_CAPTION (a text with a
/// line break).
void writeSampleRecording(const std::string& path);
