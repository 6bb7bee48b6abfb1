// Files of IQ that tests write, and what the source makes of them.
#pragma once

#include <values/maps.h>
#include <values/tree.h>
#include <values/value.h>

#include "iqtesting.h"
#include "sources/iq/iqsource.h"
#include "support/files.h"
#include "support/problem.h"

namespace IqTesting {

using FileLevels = values::FastValueMap<float, values::levelHandler>;

inline constexpr std::size_t FftSize = 64;

inline unsigned long long microseconds(std::size_t samples, double rateHz)
{
    return static_cast<unsigned long long>(std::llround(static_cast<double>(samples) / rateHz * 1e6));
}

inline constexpr unsigned long long NewYear = 1'577'934'245'000'000;  // 2020-01-02 03:04:05 UTC

inline QByteArray chunk(const char* tag, const QByteArray& bytes)
{
    return tag + littleEndian(static_cast<std::uint64_t>(bytes.size()), 4) + bytes +
           QByteArray(bytes.size() % 2 == 0 ? 0 : 1, '\0');
}

inline QByteArray formatChunk(int kind, int channels, int rate, int bits)
{
    return chunk(
        "fmt ",
        littleEndian(static_cast<std::uint64_t>(kind), 2) + littleEndian(static_cast<std::uint64_t>(channels), 2) +
            littleEndian(static_cast<std::uint64_t>(rate), 4) +
            littleEndian(static_cast<std::uint64_t>(rate) * static_cast<std::uint64_t>(channels * bits / 8), 4) +
            littleEndian(static_cast<std::uint64_t>(channels * bits / 8), 2) +
            littleEndian(static_cast<std::uint64_t>(bits), 2));
}

// 2020-01-02 03:04:05.250, a Thursday.
inline QByteArray auxiChunk(std::uint32_t centreHz)
{
    QByteArray bytes;
    for (int times = 0; times < 2; ++times) {
        for (const unsigned field : {2020U, 1U, 4U, 2U, 3U, 4U, 5U, 250U}) {
            bytes += littleEndian(field, 2);
        }
    }
    return chunk("auxi", bytes + littleEndian(centreHz, 4) + QByteArray(32, '\0'));
}

inline QByteArray riff(const QByteArray& chunks)
{
    return chunk("RIFF", "WAVE" + chunks);
}

// Samples that every format holds exactly but cu8, which has no 0.
inline Samples steps(std::size_t count, int seed)
{
    Samples samples(count);
    for (std::size_t n = 0; n < count; ++n) {
        const auto step = static_cast<int>(n) * (7 + seed) + static_cast<int>(n * n) % 61;
        samples[n] = {(step % 200 - 100) / 128.0, (step % 173 - 86) / 128.0};
    }
    return samples;
}

inline std::function<QByteArray(double)> asInteger(int bytes, int offset = 0)
{
    return [bytes, offset](double number) {
        const double scaled = number * static_cast<double>(std::uint64_t{1} << (8 * bytes - 1)) + offset;
        return littleEndian(static_cast<std::uint64_t>(static_cast<std::int64_t>(scaled)), bytes);
    };
}

class IqFiles : public testing::Test {
protected:
    struct Spectrum {
        unsigned long long time;
        double firstHz;
        double frequencyHz;
        std::vector<float> cells;
    };

    IqFiles()
    {
        m_options.fftSize = FftSize;
        m_options.average = 1;
    }
    QString write(const char* name, const QByteArray& bytes)
    {
        const QString path = m_directory.filePath(QString::fromUtf8(name));
        TestSupport::writeBytes(path, bytes);
        m_options.file = path.toStdString();
        return path;
    }
    /// Metadata of SigMF beside "x.sigmf-data" or whatever else they name. @return their file
    QString describe(const QByteArray& metadata)
    {
        QString path = m_directory.filePath("x.sigmf-meta");
        TestSupport::writeBytes(path, metadata);
        return path;
    }
    std::vector<Spectrum> run()
    {
        m_said.clear();
        const values::Tree tree;
        const auto source = RecStation::makeIqSource(
            m_options, [this](const QString& sentence) { m_said.push_back(sentence.toStdString()); });
        source->prepare();
        m_lastTime = source->lastTime();
        std::vector<Spectrum> out;
        while (const auto time = source->nextTime()) {
            source->step();
            const auto& map = dynamic_cast<const FileLevels&>(*tree.Find("/Devices/Rx1/Scn/RfSpectrum"));
            const auto& frequency =
                dynamic_cast<const values::ValueNumericWithOffset<double>&>(*tree.Find("/FREQUENCY"));
            const auto cells = map.GetCells();
            out.push_back({*time, map.GetChannelRange().startHz, frequency.GetValue(), {cells.begin(), cells.end()}});
        }
        m_report = source->report();
        return out;
    }
    std::string problem()
    {
        return TestSupport::problemOf([this] { run(); });
    }

    QTemporaryDir m_directory;
    RecStation::IqOptions m_options;
    std::vector<std::string> m_said;
    std::optional<unsigned long long> m_lastTime;
    RecStation::SourceReport m_report;
};

inline void expectSpectrumOf(const std::vector<float>& cells, const Samples& samples, std::size_t first)
{
    expectSpectrum(cells, samples, first, FftSize, 1, 1e-3);
}

}  // namespace IqTesting
