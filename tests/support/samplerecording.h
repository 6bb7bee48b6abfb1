// A recording of one value of every kind, with the texts that the values themselves write.
#pragma once

#include <string>

/// Writes the recording; its records, with their times:
/// 10 /FREQUENCY (number with offset), 11 /LEVEL (number), 12 /MODULATION (selection), 13 /DEVICE_CAPTION (text),
/// 14 /SQUELCH (boolean), 15 /RfSpectrum (levels, all of 5 channels), 16 /DfSpectrum (bearings of 3 channels),
/// 900 /RfSpectrum (all channels), 1000 /RfSpectrum (one channel), 1500 /LEVEL, 2000 /DEVICE_CAPTION (a text with a
/// line break).
void writeSampleRecording(const std::string& path);

/// Writes a recording of bearings and levels that ends 2500 ms after its start, 2023-11-14 22:13:20 UTC. Its records,
/// with their times: 10 /DfSpectrum (3 channels from 1 MHz, no bearing), 11 /LEVEL -30, 100 and 200 /DfSpectrum
/// (channel 0, then 1), 1000 /DfSpectrum (2 channels from 2 MHz, no bearing), 1500 /DfSpectrum (channel 0), 1600 /LEVEL
/// -31.5, 2000 /DfSpectrum (channel 1). Those at 10, 100 and 1000 carry the channel range.
/// @param withRangeTable the file has a channel range table that names the first record
void writeBearingRecording(const std::string& path, bool withRangeTable);

/// Writes a recording of spectra and true bearings that ends 2500 ms after its start, 2023-11-14 22:13:20 UTC.
/// /RfSpectrum has channels from 100 to 100.4 MHz, and 100.8 and 100.9 MHz, all 100 kHz apart but for the gap. It is
/// not measured at 10, -100 dB everywhere at 1000, and -20 dB at 100.2 MHz from 1500 on; at 2001 it gets four channels
/// from 100 MHz, 100 kHz apart, with -60 dB at 2002. /TRUEHEADING is 350 degrees at 11 and 100 degrees at 1501.
/// /DfSpectrum has an azimuth of 20 degrees in its channel 0 at 500 and of 30 degrees in its channel 1 at 2000.
void writePlotRecording(const std::string& path);
