// recview as whoever starts it sees it: arguments, the address that it prints, its end.
#include <QElapsedTimer>
#include <QUrl>
#include <QUrlQuery>

#include <nlohmann/json.hpp>

#include "support/httpclient.h"
#include "support/program.h"

using namespace testing;

namespace RecView {

namespace {

using TestSupport::PatienceMs;

class RecviewProgram : public testing::Test {
protected:
    RecviewProgram()
    {
        TestSupport::requireApplication();
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("XDG_CACHE_HOME", m_directory.filePath("cache"));
        environment.remove("ZELVO_CONFIG");
        m_process.setProcessEnvironment(environment);
        m_process.setWorkingDirectory(m_directory.path());
    }
    ~RecviewProgram() override
    {
        m_process.kill();
        m_process.waitForFinished(PatienceMs);
    }

    int run(const QStringList& arguments)
    {
        m_process.start(RECVIEW, arguments);
        EXPECT_TRUE(m_process.waitForFinished(PatienceMs)) << arguments.join(' ').toStdString();
        m_messages = m_process.readAllStandardError().toStdString();
        return m_process.exitCode();
    }
    /// The first line that it prints.
    QByteArray begin(const QStringList& arguments)
    {
        m_process.start(RECVIEW, arguments);
        while (!m_process.canReadLine()) {
            if (!m_process.waitForReadyRead(PatienceMs)) {
                ADD_FAILURE() << m_process.readAllStandardError().toStdString();
                return {};
            }
        }
        return m_process.readLine().trimmed();
    }
    static std::uint16_t portOf(const QByteArray& url)
    {
        return static_cast<std::uint16_t>(QUrl(QString::fromUtf8(url)).port());
    }
    [[nodiscard]] QString here() const { return m_directory.path(); }

    QTemporaryDir m_directory;
    QProcess m_process;
    std::string m_messages;
};

}  // namespace

TEST_F(RecviewProgram, AnswersAtTheAddressThatItPrints)
{
    const QByteArray url = begin({here()});
    ASSERT_TRUE(url.startsWith("http://127.0.0.1:") && url.endsWith("/")) << url.toStdString();
    Client client(portOf(url));
    const auto page = client.get("/");
    ASSERT_TRUE(page.has_value());
    EXPECT_EQ(page->status, 200);
    const auto recordings = client.get("/api/recordings");
    ASSERT_TRUE(recordings.has_value());
    EXPECT_EQ(nlohmann::json::parse(recordings->body).at("edit"), false);
}

TEST_F(RecviewProgram, TellsMachinesTheSame)
{
    const auto told = nlohmann::json::parse(begin({here(), "--json", "--edit"}).toStdString());
    Client client(told.at("port").get<std::uint16_t>());
    EXPECT_EQ(told.at("url"), "http://" + client.host() + '/');
    EXPECT_EQ(nlohmann::json::parse(client.get("/api/recordings")->body).at("edit"), true);
}

TEST_F(RecviewProgram, EndsAtOnceWhenToldToWhoeverIsConnected)
{
    const std::uint16_t port = portOf(begin({here()}));
    std::vector<std::unique_ptr<Client>> clients;
    constexpr int Count = 100;
    for (int i = 0; i < Count; ++i) {
        clients.push_back(std::make_unique<Client>(port));
        clients.back()->send(i % 2 == 0 ? "GET / HTTP/1.1\r\nHo"
                                        : "GET /api/events HTTP/1.1\r\nHost: " + clients.back()->host() + "\r\n\r\n");
    }
    EXPECT_THAT(clients[1]->receiveSome(), HasSubstr("200 OK"));
    QElapsedTimer time;
    time.start();
    m_process.terminate();
    ASSERT_TRUE(m_process.waitForFinished(PatienceMs));
    EXPECT_LT(time.elapsed(), 8'000) << "a connection is given 10 seconds at least";
    EXPECT_EQ(m_process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(m_process.exitCode(), 0);
}

TEST_F(RecviewProgram, EndsWithItsInputWhereThatIsAskedFor)
{
    begin({here(), "--until-input-ends"});
    m_process.closeWriteChannel();
    EXPECT_TRUE(m_process.waitForFinished(PatienceMs));
    EXPECT_EQ(m_process.exitCode(), 0);
}

TEST_F(RecviewProgram, WhatCannotBeReadIsToldInASentence)
{
    EXPECT_EQ(run({"missing.rec", here()}), 2);
    EXPECT_EQ(m_messages, "recview: missing.rec: There is no such file or directory.\n");
    EXPECT_EQ(run({"/dev/null"}), 2);
    EXPECT_EQ(m_messages, "recview: /dev/null: This is neither a file nor a directory.\n");
    EXPECT_EQ(run({"zelvo:///2026/night.rec"}), 2);
    EXPECT_THAT(m_messages, HasSubstr("zelvo:///2026/night.rec"));
}

TEST_F(RecviewProgram, FilesOfWhichNoneIsARecordingAreToldAndNothingIsServed)
{
    const QString text = here() + "/notes.txt";
    TestSupport::writeBytes(text, "no recording\n");
    EXPECT_EQ(run({text}), 2);
    EXPECT_EQ(m_messages, "recview: " + text.toStdString() + ": This is not a recording.\n");
}

TEST_F(RecviewProgram, OpensThePageInTheBrowserWhereThatIsAskedFor)
{
    const QString opener = m_directory.filePath("xdg-open");
    TestSupport::writeBytes(opener, "#!/bin/sh\nprintf '%s' \"$1\" >opened.new && mv opened.new opened\n");
    ASSERT_TRUE(QFile::setPermissions(opener, QFile::ReadOwner | QFile::ExeOwner));
    QProcessEnvironment environment = m_process.processEnvironment();
    environment.insert("PATH", here() + ':' + environment.value("PATH"));
    m_process.setProcessEnvironment(environment);
    const QByteArray url = begin({"--open"});
    QFile opened(m_directory.filePath("opened"));
    QElapsedTimer timer;
    timer.start();
    while (!opened.exists() && timer.elapsed() < PatienceMs) {
        m_process.waitForReadyRead(1);
    }
    EXPECT_EQ(TestSupport::readBytes(opened.fileName()), url);
}

TEST_F(RecviewProgram, WrongArgumentsAreToldInASentence)
{
    EXPECT_EQ(run({}), 1);
    EXPECT_EQ(m_messages, "recview: a file or directory with recordings is missing\nrecview --help tells more.\n");
    EXPECT_EQ(run({here(), "--prot", "1"}), 1);
    EXPECT_THAT(m_messages, HasSubstr("there is no option --prot: did you mean --port?"));
    EXPECT_EQ(run({here(), "--port", "70000"}), 1);
    EXPECT_THAT(m_messages, HasSubstr("--port: expected 0 to 65535, found 70000"));
    EXPECT_EQ(run({here(), "--cache-bytes", "much"}), 1);
    EXPECT_THAT(m_messages, HasSubstr("--cache-bytes: expected a size such as 500M or 4G, found much"));
    EXPECT_EQ(run({QString()}), 1);
    EXPECT_EQ(run({here(), "--listen", QString()}), 1);
}

TEST_F(RecviewProgram, AnAddressThatIsTakenIsToldInASentence)
{
    const std::uint16_t port = portOf(begin({here()}));
    QProcess second;
    second.start(RECVIEW, {here(), "--port", QString::number(port)});
    ASSERT_TRUE(second.waitForFinished(PatienceMs));
    EXPECT_EQ(second.exitCode(), 2);
    EXPECT_EQ(second.readAllStandardError().toStdString(),
              "recview: Cannot listen on 127.0.0.1, port " + std::to_string(port) + ": Address already in use.\n");
    EXPECT_EQ(second.readAllStandardOutput(), "");
}

TEST_F(RecviewProgram, ForOthersItPrintsATokenThatStandsNowhereElse)
{
    const QUrl url(QString::fromUtf8(begin({here(), "--listen", "127.0.0.1"})));
    const QString token = QUrlQuery(url).queryItemValue("token");
    EXPECT_GE(token.size(), 22) << "of 6 bits each";
    Client client(static_cast<std::uint16_t>(url.port()));
    EXPECT_EQ(client.get("/api/recordings")->status, 401);
    EXPECT_EQ(client.get("/?token=" + token.toStdString())->status, 303);
    m_process.terminate();
    ASSERT_TRUE(m_process.waitForFinished(PatienceMs));
    EXPECT_THAT(m_process.readAllStandardError().toStdString(),
                AllOf(HasSubstr("Everybody who has the address"), Not(HasSubstr(token.toStdString()))));
}

}  // namespace RecView
