// recstation --view: the viewer beside a recording costs it nothing, and ends with it.
#include <atomic>
#include <random>

#include <QRegularExpression>

#include <recording2/inspection/verify/verification.h>

#include "../recstation/programtest.h"
#include "support/httpclient.h"

using RecView::Client;
using testing::HasSubstr;

namespace RecStation {

namespace {

class ViewTest : public ProgramTest {
protected:
    /// @return the viewer's port
    std::uint16_t begin(const QStringList& arguments = {})
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("XDG_CACHE_HOME", path("cache"));
        m_process.setProcessEnvironment(environment);
        start(m_process,
              QStringList{"--view", "--json"} + arguments + QStringList{"feed", "--start", "2026-01-02T03:04:05Z"});
        m_process.write(
            R"({"at": 0, "path": "/Devices/Rx1/Scn/RfSpectrum", "create": "levels", "range": {"start": 4e8, "step": 1e4, "count": 16}}
{"at": 0, "record": "On"}
)");
        m_process.setReadChannel(QProcess::StandardError);
        const QRegularExpression address("the recordings show at http://127.0.0.1:(\\d+)/");
        for (QString messages;;) {
            const QRegularExpressionMatch match = address.match(messages);
            if (match.hasMatch()) {
                return static_cast<std::uint16_t>(match.captured(1).toInt());
            }
            if (!m_process.waitForReadyRead(PatienceMs)) {
                ADD_FAILURE() << messages.toStdString();
                return 0;
            }
            messages += QString::fromUtf8(m_process.readAllStandardError());
        }
    }
    void sendSweep(int number)
    {
        QByteArray cells;
        for (int cell = 0; cell < 16; ++cell) {
            cells += (cell == 0 ? "" : ",") + QByteArray::number(-(cell * 7 + number) % 90 - 20);
        }
        m_process.write(R"({"at": )" + QByteArray::number(100 + number) +
                        R"(, "path": "/Devices/Rx1/Scn/RfSpectrum", "cells": [)" + cells + "]}\n");
    }

    QProcess m_process;
};

// Asks for what is there, for what is not, and for nonsense, until it is told to stop.
int ask(std::uint16_t port, const std::atomic<bool>& isOver)
{
    std::mt19937 random(20261122);
    int count = 0;
    while (!isOver) {
        Client client(port);
        std::string request = "GET /api/" + std::string(random() % 2 == 0 ? "recordings" : "view?recording=x&type=") +
                              std::to_string(random()) + " HTTP/1.1\r\nHost: " + client.host() + "\r\n\r\n";
        request[random() % request.size()] = static_cast<char>(random() % 256);
        client.send(random() % 4 == 0 ? request.substr(0, random() % request.size()) : request);
        if (random() % 2 == 0) {
            client.endSending();
            client.receiveRest();
        } else {
            client.abort();
        }
        ++count;
    }
    return count;
}

}  // namespace

TEST_F(ViewTest, ThePageIsThereWhileItRecordsAndEndsWithIt)
{
    const std::uint16_t port = begin();
    ASSERT_NE(port, 0);
    Client client(port);
    ASSERT_EQ(client.get("/")->status, 200);
    const nlohmann::json recordings = nlohmann::json::parse(client.get("/api/recordings")->body);
    EXPECT_EQ(recordings.at("edit"), false);
    EXPECT_EQ(recordings.at("recordings").size() + recordings.at("problems").size(), 1U) << recordings;
    sendSweep(1);
    EXPECT_EQ(finish(m_process).exitCode, 0);
    EXPECT_EQ(client.receiveRest(), "") << "the connection ends";
    EXPECT_FALSE(Client(port).isConnected());
}

TEST_F(ViewTest, WhenTheRecorderIsKilledThePageEnds)
{
    const std::uint16_t port = begin();
    ASSERT_NE(port, 0);
    Client client(port);
    ASSERT_EQ(client.get("/")->status, 200);
    m_process.kill();
    ASSERT_TRUE(m_process.waitForFinished(PatienceMs));
    EXPECT_EQ(client.receiveRest(), "");
}

TEST_F(ViewTest, WhateverIsAskedTheRecordingHasEverySweep)
{
    const std::uint16_t port = begin();
    ASSERT_NE(port, 0);
    std::atomic<bool> isOver = false;
    int asked = 0;
    std::thread hostile([&] { asked = ask(port, isOver); });
    constexpr int Count = 20'000;
    for (int i = 0; i < Count; ++i) {
        sendSweep(i);
        if (i % 500 == 0) {
            while (m_process.bytesToWrite() > 0) {
                ASSERT_TRUE(m_process.waitForBytesWritten(PatienceMs));
            }
        }
    }
    const Result result = finish(m_process);
    isOver = true;
    hostile.join();
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_GT(asked, 100);
    const QStringList recordings = files("*.rec");
    ASSERT_EQ(recordings.size(), 1);
    const auto found = Recording2::Inspection::verify(path(recordings.first()).toStdString());
    EXPECT_EQ(found.count(Recording2::Inspection::Severity::Damage), 0U);
    EXPECT_GE(result.summary().at("files").at(0).at("records").get<int>(), Count);
}

TEST_F(ViewTest, WithoutAViewerItRecordsAllTheSame)
{
    const QString alone = path("recstation");
    ASSERT_TRUE(QFile::copy(RECSTATION, alone));
    QProcess process;
    start(process, {"--view", "--plugin", PLUGIN, "sim", "--duration", "1s"}, alone);
    const Result result = finish(process);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.err, HasSubstr("warning: there is no page, as recview is not beside this program\n"));
    EXPECT_FALSE(files("*.rec").isEmpty());
}

TEST_F(ViewTest, WhatKeepsThePageFromBeingThereIsToldAndItRecordsAllTheSame)
{
    const std::uint16_t port = begin();
    ASSERT_NE(port, 0);
    QProcess process;
    start(process, {"--view", "--view-port", QString::number(port), "--speed", "4", "sim"});
    EXPECT_THAT(waitForMessage(process, "warning: recview has ended, and the page with it").toStdString(),
                HasSubstr("Address already in use"));
    process.terminate();
    EXPECT_EQ(finish(process).exitCode, 0);
    EXPECT_FALSE(files("*.rec").isEmpty());
}

}  // namespace RecStation
