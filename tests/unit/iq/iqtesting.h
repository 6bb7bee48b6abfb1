// What the tests of the iq source share: generated samples and spectra computed without the code under test.
#pragma once

#include <complex>

#include <QByteArray>

#include "support/testing.h"

namespace IqTesting {

using Samples = std::vector<std::complex<double>>;

/// A complex tone; its frequency is in channels of a spectrum of the size (negative: below the centre).
Samples tone(std::size_t count, double channel, std::size_t fftSize, double amplitude = 1, double phase = 0.3);

/// White complex Gaussian noise of a mean power, the same in every run.
Samples noise(std::size_t count, double power, std::uint32_t seed = 1);

// Samples as files hold them; full scale is 1, what lies beyond is cut.
QByteArray asUnsignedBytes(const Samples& samples);
QByteArray asSignedShorts(const Samples& samples);

QByteArray littleEndian(std::uint64_t number, int bytes);
QByteArray asFloat(double number);
/// Samples in any format of which a function gives the bytes of a number.
QByteArray encoded(const Samples& samples, const std::function<QByteArray(double)>& number);

/// Unsigned bytes as samples.
Samples fromUnsignedBytes(const QByteArray& bytes);

/// Averaged power spectrum in dB by the definition of the discrete Fourier transform, lowest frequency first.
/// @param terms cosine terms of the window, all positive
std::vector<double> spectrumByDefinition(const Samples& samples, std::size_t first, std::size_t fftSize,
                                         std::size_t advance, std::size_t average, const std::vector<double>& terms);
/// Cosine terms of the flat-top window.
const std::vector<double>& flatTopTerms();
/// Compares a spectrum by the flat-top window with that definition, where segments follow each other.
void expectSpectrum(const std::vector<float>& levelsDb, const Samples& samples, std::size_t first, std::size_t fftSize,
                    std::size_t average, double toleranceDb);
/// Mean power of samples in dB.
double meanLevelDb(const Samples& samples, std::size_t first, std::size_t count);

/// A file of the directory with real captures; it need not exist.
QString testDataPath(const QString& name);

}  // namespace IqTesting
