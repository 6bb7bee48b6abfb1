// Translation contexts: registered as often as they are used, and listed sorted.
#include <gtest/gtest.h>

#include <startup/translationcenter.h>

TEST(TranslationCenter, CountsRegistrationsOfAContext)
{
    TranslationCenter& center = TranslationCenter::Instance();
    const QString context = QStringLiteral("Recording");
    center.Register(context);
    center.Register(context);
    EXPECT_EQ(center.Contexts(), QStringList{context});
    center.Unregister(context);
    EXPECT_EQ(center.Contexts(), QStringList{context});
    center.Unregister(context);
    EXPECT_TRUE(center.Contexts().isEmpty());
}

TEST(TranslationCenter, IgnoresAContextThatWasNotRegistered)
{
    TranslationCenter& center = TranslationCenter::Instance();
    center.Unregister(QStringLiteral("Unknown"));
    center.Register(QStringLiteral("Unknown"));
    EXPECT_EQ(center.Contexts(), QStringList{QStringLiteral("Unknown")});
    center.Unregister(QStringLiteral("Unknown"));
}

TEST(TranslationCenter, GivesItsContextsSorted)
{
    TranslationCenter& center = TranslationCenter::Instance();
    const QStringList unsorted = {QStringLiteral("b"), QStringLiteral("a")};
    for (const QString& context : unsorted) {
        center.Register(context);
    }
    EXPECT_EQ(center.Contexts(), (QStringList{QStringLiteral("a"), QStringLiteral("b")}));
    for (const QString& context : unsorted) {
        center.Unregister(context);
    }
}
