// How many records a change makes: one for every recorder that watches the value.
#include "changecounter.h"

#include <gtest/gtest.h>

#include <values/tree.h>

namespace RecStation {
namespace {

class Watcher final : public IObserver {
public:
    void Update(void* /*subject*/, TChangeCode /*code*/) override {}
};

TEST(ChangeCounter, CountsARecordForEveryRecorderThatWatchesAChangedValue)
{
    ChangeCounter counter;
    Watcher first;
    Watcher second;
    values::Tree tree;
    values::ValuePtr<values::Value<bool>> value;
    value.Attach(QStringLiteral("/Flag"));
    counter.follow(tree);
    value->SetValue(true);
    EXPECT_EQ(counter.records(), 0U);
    value->AddObserver(&first);
    value->SetValue(false);
    value->AddObserver(&second);
    value->SetValue(true);
    EXPECT_EQ(counter.changes(), 3U);
    EXPECT_EQ(counter.records(), 3U);
    value->RemoveObserver(&first);
    value->RemoveObserver(&second);
}

TEST(ChangeCounter, FollowsAValueThatWasCreatedAndOthersWithTheNextLookAtTheTree)
{
    ChangeCounter counter;
    values::Tree tree;
    const auto create = [](const char* path) {
        values::ValuePtr<values::Value<bool>> value;
        value.Attach(QString::fromLatin1(path));
        return value.get();
    };
    values::Value<bool>* const first = create("/First");
    counter.follow(tree, QStringLiteral("/First"));
    first->SetValue(true);
    EXPECT_EQ(counter.changes(), 1U);

    // Of two new values one is told.
    values::Value<bool>* const second = create("/Second");
    values::Value<bool>* const third = create("/Third");
    counter.follow(tree, QStringLiteral("/Third"));
    counter.follow(tree);
    first->SetValue(false);
    second->SetValue(true);
    third->SetValue(true);
    EXPECT_EQ(counter.changes(), 4U);
}

}  // namespace
}  // namespace RecStation
