#include "changecounter.h"

#include <gtest/gtest.h>

#include <values/tree.h>

namespace recstation {
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

}  // namespace
}  // namespace recstation
