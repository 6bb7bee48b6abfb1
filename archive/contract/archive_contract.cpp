// What holds for a client with an archive.
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <zelvo/archive.h>
#include <zelvo/zelvo.h>

using namespace Zelvo;

namespace {

class ClientWithAnArchive : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(QDir(m_folder.path()).mkpath(QStringLiteral("storage")));
        configuration.directory = m_folder.filePath(QStringLiteral("station"));
        configuration.storage = m_folder.filePath(QStringLiteral("storage"));
        SetUpArchive(configuration);
        client = std::make_unique<ZelvoClient>(configuration);
    }

    QString createGroup()
    {
        QString directory = m_folder.path();
        return client->CreateFileGroup(QStringLiteral("2"), QDateTime::currentDateTime().addDays(7), QString(),
                                       QString(), FileType::Recording, 1, QString(), directory, QString());
    }
    [[nodiscard]] QString path(const char* name) const { return m_folder.filePath(QLatin1String(name)); }
    void write(const char* name) const
    {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write("recorded"), 8);
    }
    void expectSuccess() const
    {
        EXPECT_EQ(client->GetError(), ZelvoError::None);
        EXPECT_TRUE(client->GetErrorString().isEmpty());
    }

    ArchiveConfiguration configuration;
    std::unique_ptr<ZelvoClient> client;

private:
    QTemporaryDir m_folder;
};

}  // namespace

TEST_F(ClientWithAnArchive, IsConnectedAndHasNoErrorBeforeTheFirstRequest)
{
    EXPECT_TRUE(client->IsConnected());
    expectSuccess();
}

TEST_F(ClientWithAnArchive, GivesEveryGroupItsOwnName)
{
    const QString first = createGroup();
    expectSuccess();
    EXPECT_FALSE(first.isEmpty());
    EXPECT_NE(first, createGroup());
}

TEST_F(ClientWithAnArchive, LeavesTheDirectoryUntouchedOnFailure)
{
    QString directory = QStringLiteral("untouched");
    EXPECT_EQ(client->CreateFileGroup(QString(), QDateTime(), QString(), QString(), FileType::Recording, 1, QString(),
                                      directory, QString()),
              QStringLiteral("ERROR"));
    EXPECT_EQ(directory, QStringLiteral("untouched"));
    EXPECT_NE(client->GetError(), ZelvoError::None);
    EXPECT_FALSE(client->GetErrorString().isEmpty());
}

TEST_F(ClientWithAnArchive, NumbersTheFilesOfAGroup)
{
    const QString guid = createGroup();
    const std::uint32_t first = client->AddFile(QStringLiteral("a.rec"), guid);
    expectSuccess();
    EXPECT_NE(first, 0U);
    EXPECT_NE(first, client->AddFile(QStringLiteral("b.rec"), guid));
    EXPECT_EQ(client->AddFile(QStringLiteral("a.rec"), QStringLiteral("ERROR")), 0U);
    EXPECT_NE(client->GetError(), ZelvoError::None);
    client->MoveToNas(guid);
    expectSuccess();
}

TEST_F(ClientWithAnArchive, GivesAFileBackBeforeAndAfterItIsMoved)
{
    const QString guid = createGroup();
    write("a.tmp");
    const std::uint32_t id = client->AddFile(QStringLiteral("a.rec"), guid);
    ASSERT_TRUE(QFile::rename(path("a.tmp"), path("a.rec")));
    client->MoveToNas(guid);
    const ZelvoUrl url(QStringLiteral("zelvo:///%1/%2").arg(guid).arg(id));
    EXPECT_TRUE(client->IsValidURL(url));
    for (const bool moved : {false, true}) {
        if (moved) {
            EXPECT_EQ(Mover(configuration).runPending().moved, 1);
            EXPECT_FALSE(QFile::exists(path("a.rec")));
        }
        for (const LockState lock : {LockState::Shared, LockState::Exclusive}) {
            QFile file(client->RequestFile(url, lock));
            expectSuccess();
            ASSERT_TRUE(file.open(QIODevice::ReadOnly));
            EXPECT_EQ(file.readAll(), QByteArray("recorded"));
            client->CloseFile(url);
            expectSuccess();
        }
    }
}

TEST_F(ClientWithAnArchive, RefusesWhatIsNoAddress)
{
    for (const char* text : {"", "/tmp/a.rec", "zelvo:///group/7", "zelvo:///../7"}) {
        const ZelvoUrl url{QString::fromLatin1(text)};
        EXPECT_FALSE(client->IsValidURL(url)) << text;
        EXPECT_TRUE(client->RequestFile(url, LockState::Shared).isEmpty()) << text;
        EXPECT_NE(client->GetError(), ZelvoError::None) << text;
        client->CloseFile(url);
        EXPECT_NE(client->GetError(), ZelvoError::None) << text;
    }
}
