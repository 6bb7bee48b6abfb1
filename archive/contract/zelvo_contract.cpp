// What a client answers where no archive is set up, and which texts are addresses.
#include <QStringList>

#include <gtest/gtest.h>

#include <zelvo/zelvo.h>

using namespace Zelvo;

namespace {

const ZelvoUrl& AnyUrl()
{
    static const ZelvoUrl url(QStringLiteral("zelvo:///group/7"));
    return url;
}

/// Each request has the same answer.
class RequestsWithoutAnArchive : public testing::Test {
protected:
    ~RequestsWithoutAnArchive() override
    {
        EXPECT_EQ(client.GetError(), ZelvoError::NotAvailable);
        EXPECT_EQ(client.GetErrorString(), QStringLiteral("No archive is available."));
    }

    ZelvoClient client;
};

}  // namespace

TEST(ZelvoUrl, HasTheFormOfAnArchiveAddressOnlyWithGroupAndFile)
{
    EXPECT_TRUE(AnyUrl().isZelvoUrl());
    const QStringList others = {QString(),
                                QStringLiteral("/tmp/a.rec"),
                                QStringLiteral("zelvo:///"),
                                QStringLiteral("zelvo:///group"),
                                QStringLiteral("zelvo:///group/"),
                                QStringLiteral("zelvo:////7"),
                                QStringLiteral("zelvo:///group/7/8"),
                                QStringLiteral("http:///group/7")};
    for (const QString& text : others) {
        EXPECT_FALSE(ZelvoUrl(text).isZelvoUrl()) << text.toStdString();
    }
}

TEST(ZelvoUrl, KeepsItsTextUntilItIsCleared)
{
    ZelvoUrl url(QStringLiteral("anything"));
    EXPECT_EQ(url.toString(), QStringLiteral("anything"));
    url.clear();
    EXPECT_TRUE(url.toString().isEmpty());
    EXPECT_FALSE(url.isZelvoUrl());
}

TEST(ZelvoClient, SaysThatNoArchiveIsAvailable)
{
    ZelvoClient client;
    client.SetUser(QStringLiteral("operator"));
    EXPECT_FALSE(ZelvoClient::IsZelvoAvailable());
    EXPECT_FALSE(client.IsConnected());
    EXPECT_FALSE(client.IsValidURL(AnyUrl()));
}

TEST(ZelvoClient, HasNoErrorBeforeTheFirstRequest)
{
    const ZelvoClient client;
    EXPECT_EQ(client.GetError(), ZelvoError::None);
    EXPECT_TRUE(client.GetErrorString().isEmpty());
}

TEST_F(RequestsWithoutAnArchive, CreateNoFileGroup)
{
    QString directory = QStringLiteral("untouched");
    EXPECT_EQ(client.CreateFileGroup(QString(), QDateTime(), QString(), QString(), FileType::Recording, 1, QString(),
                                     directory, QString()),
              QStringLiteral("ERROR"));
    EXPECT_EQ(directory, QStringLiteral("untouched"));
}

TEST_F(RequestsWithoutAnArchive, AddNoFile)
{
    EXPECT_EQ(client.AddFile(QStringLiteral("a.rec"), QStringLiteral("guid")), 0U);
}

TEST_F(RequestsWithoutAnArchive, MoveNothing)
{
    EXPECT_EQ(client.MoveToNas(QStringLiteral("guid")), QStringLiteral("No archive is available."));
}

TEST_F(RequestsWithoutAnArchive, GiveNoFileForAnAddress)
{
    EXPECT_TRUE(client.RequestFile(AnyUrl(), LockState::Shared).isEmpty());
}

TEST_F(RequestsWithoutAnArchive, CloseNoFile)
{
    client.CloseFile(AnyUrl());
}
