// A receiver behind an rtl_tcp server recorded by the real program, killed and back again; and what another client says
// of that server.
#include <QStandardPaths>

#include <nlohmann/json.hpp>

#include <recording2/fileaccess.h>
#include <values/maps.h>

#include "rtltcpserver.h"
#include "support/program.h"

namespace {

using RtlTcpTesting::Air;
using RtlTcpTesting::Server;
using LiveLevels = values::FastValueMap<float, values::levelHandler>;

constexpr std::int32_t SpectrumType = 1;
using TestSupport::PatienceMs;

class RtlTcpProgram : public testing::Test {
protected:
    RtlTcpProgram() { TestSupport::requireApplication(); }
    // Waits for what a process or a server does.
    static bool comesTrue(QProcess& process, const std::function<bool()>& condition)
    {
        for (int waited = 0; waited < PatienceMs && process.state() != QProcess::NotRunning; waited += 20) {
            if (condition()) {
                return true;
            }
            process.waitForFinished(20);
        }
        return condition();
    }

    QTemporaryDir m_directory;
};

struct Seen {
    std::size_t measured = 0;  ///< spectra with the tone at its level
    std::size_t unknown = 0;   ///< without a measurement, the initial state left out
    std::size_t other = 0;
};

void readSpectra(const QString& path, Seen& seen)
{
    Recording2::CFileAccess file(QFile::encodeName(path).constData(), QString(), nullptr, false, true, false, nullptr,
                                 nullptr);
    Recording2::CHeaderData header;
    ASSERT_EQ(file.read(header), 1U);
    LiveLevels map;
    Recording2::CVTCmdData record;
    bool first = true;
    for (unsigned long long next = file.readfirst(record);; next = file.readnext(record)) {
        if (record.cmd() == SpectrumType) {
            ASSERT_TRUE(map.ApplyRecordedState(std::string(record.strData(), record.strDataLen()), 0, false));
            const auto cells = map.GetCells();
            const auto peak = std::max_element(cells.begin(), cells.end());
            const bool unknown = std::all_of(cells.begin(), cells.end(), [](float cell) { return std::isnan(cell); });
            if (!std::exchange(first, false)) {
                const bool isTone =
                    !unknown && std::abs(static_cast<double>(*peak) + 12.04) < 0.1 && peak - cells.begin() == 2560;
                seen.unknown += unknown ? 1U : 0U;
                seen.measured += isTone ? 1U : 0U;
                seen.other += unknown || isTone ? 0U : 1U;
            }
        }
        if (next == 0) {
            break;
        }
    }
}

TEST_F(RtlTcpProgram, AServerThatGoesAndComesLeavesAGapAndNothingElse)
{
    // 512 channels above the centre.
    const Air air{.tonesHz = {98.5e6 + 2'048'000.0 / 8}};
    auto server = std::make_unique<Server>(air);
    const std::uint16_t port = server->port();
    QProcess process;
    process.setProcessChannelMode(QProcess::SeparateChannels);
    process.start(RECSTATION,
                  {"--plugin", PLUGIN, "--json", "-o", m_directory.path(), "rtltcp",
                   QStringLiteral("127.0.0.1:%1").arg(port), "--centre", "98.5M", "--rate", "2.048M", "--fft", "4096"});
    ASSERT_TRUE(process.waitForStarted());
    ASSERT_TRUE(comesTrue(process, [&] { return server->samplesSent() > 2'000'000; }));
    server.reset();
    QByteArray said;
    const auto hears = [&](const char* words) {
        return comesTrue(process, [&] {
            said += process.readAllStandardError();
            return said.contains(words);
        });
    };
    ASSERT_TRUE(hears("connection lost")) << said.toStdString();
    server = std::make_unique<Server>(air, port);
    ASSERT_TRUE(hears("connected again")) << said.toStdString();
    ASSERT_TRUE(comesTrue(process, [&] { return server->samplesSent() > 2'000'000; }));
    process.terminate();
    ASSERT_TRUE(process.waitForFinished(PatienceMs));
    const auto report = nlohmann::json::parse(process.readAllStandardOutput().toStdString());
    EXPECT_EQ(process.exitCode(), 0) << said.toStdString() << process.readAllStandardError().toStdString();
    EXPECT_EQ(report.at("/sources/0/reconnects"_json_pointer), 1);
    EXPECT_EQ(report.at("/sources/0/lost"_json_pointer), 0);
    EXPECT_EQ(report.at("/files/0/state"_json_pointer), "finished");

    Seen seen;
    readSpectra(QString::fromStdString(report.at("/files/0/path"_json_pointer)), seen);
    EXPECT_EQ(seen.measured, report.at("/sources/0/used"_json_pointer));
    EXPECT_GT(seen.measured, 100U);
    EXPECT_EQ(seen.unknown, 1U);
    EXPECT_EQ(seen.other, 0U);
}

TEST_F(RtlTcpProgram, AClientOfOthersTakesTheServerOfTheTestsForARealOne)
{
    const QString client = QStandardPaths::findExecutable("rtl_433");
    if (client.isEmpty()) {
        GTEST_SKIP() << "rtl_433 is not installed";
    }
    const Server server({.tonesHz = {100.25e6}});
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.setWorkingDirectory(m_directory.path());
    process.start(client,
                  {"-d", QStringLiteral("rtl_tcp:127.0.0.1:%1").arg(server.port()), "-f", "100100000", "-s", "1024k"});
    ASSERT_TRUE(process.waitForStarted());
    QByteArray said;
    EXPECT_TRUE(comesTrue(process, [&] {
        said += process.readAll();
        return server.samplesSent() > 1'000'000 && said.contains("Tuned to 100.100MHz");
    })) << said.toStdString();
    EXPECT_TRUE(said.contains("Tuner: R820T")) << said.toStdString();
    EXPECT_THAT(server.commands(),
                testing::IsSupersetOf({testing::Pair(1, 100'100'000U), testing::Pair(2, 1'024'000U)}));
    process.kill();
    process.waitForFinished(PatienceMs);
}

}  // namespace
