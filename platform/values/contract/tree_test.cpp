// The value tree: paths, removal, its end, and the pointers that attach to its values.
#include "listeners.h"

namespace {

using testing::ElementsAre;
using values::Tree;
using values::ValueObservingPtr;
using values::ValuePtr;
using values::ValueSelection;

/// A tree that has a number, and somebody who listens and outlives it.
class TreeOfValues : public testing::Test {
protected:
    template <typename T>
    T* insert(const QString& parent, const QString& name)
    {
        auto value = std::make_unique<T>();
        value->SetName(name);
        tree->Insert(parent, value.get());
        return value.release();
    }

    Listener listener;
    std::unique_ptr<Tree> tree = std::make_unique<Tree>();
    Number* level = insert<Number>("/", "LEVEL");
};
using ValuePointer = TreeOfValues;

TEST_F(TreeOfValues, IsInForceWhileItLivesAndASecondOneIsRefused)
{
    EXPECT_EQ(Tree::Instance(), tree.get());
    EXPECT_THROW(Tree(), VKException);
    EXPECT_EQ(Tree::Instance(), tree.get());
    tree.reset();
    EXPECT_EQ(Tree::Instance(), nullptr);
}

TEST_F(TreeOfValues, FindsValuesByTheirExactPath)
{
    auto* deep = insert<Number>("/Devices/Rx1/", "LEVEL");
    EXPECT_EQ(tree->Find("/Devices/Rx1/LEVEL"), deep);
    EXPECT_EQ(deep->GetPath(), "/Devices/Rx1/LEVEL");
    for (const char* path : {"/devices/rx1/level", "/Devices//Rx1/LEVEL", "/Devices/Rx1/LEVEL/", ""}) {
        EXPECT_EQ(tree->Find(path), nullptr) << path;
    }
    EXPECT_EQ(tree->Find(QString()), nullptr);
}

TEST_F(TreeOfValues, ListsItsPathsSorted)
{
    insert<Number>("/", "A");
    insert<Number>("", "c");
    EXPECT_THAT(tree->Paths(), ElementsAre("/A", "/LEVEL", "c"));
    EXPECT_EQ(tree->Size(), 3U);
}

TEST_F(TreeOfValues, RefusesTakenPathsEmptyNamesAndValuesInTheTreeWhichCannotBeRenamed)
{
    Flag taken;
    taken.SetName("LEVEL");
    EXPECT_THROW(tree->Insert("/", &taken), VKException);
    Flag unnamed;
    EXPECT_THROW(tree->Insert("/", &unnamed), VKException);
    EXPECT_THROW(tree->Insert("/x/", level), VKException);
    EXPECT_THROW(tree->Insert("/", nullptr), VKException);
    EXPECT_EQ(tree->Size(), 1U);
    EXPECT_EQ(taken.GetPath(), "LEVEL");
    EXPECT_THROW(level->SetName("OTHER"), VKException);
    EXPECT_EQ(level->GetName(), "LEVEL");
}

TEST_F(TreeOfValues, RemovingTellsTheObserversAndTheQueryAnswersOne)
{
    std::int32_t removed = -1;
    std::int32_t changed = -1;
    Actor asker([&](TChangeCode) {
        removed = level->QueryChange(TChangeCode::Removed);
        changed = level->QueryChange(TChangeCode::ValueChanged);
    });
    level->AddObserver(&asker);
    level->AddObserver(&listener);
    EXPECT_TRUE(tree->Remove("/LEVEL"));
    EXPECT_EQ(removed, 1);
    EXPECT_EQ(changed, 0);
    EXPECT_THAT(listener.codes(), ElementsAre(TChangeCode::Removed));
    EXPECT_FALSE(tree->Remove("/LEVEL"));
}

TEST_F(TreeOfValues, AnObserverMayRemoveItselfWhileTheValueLeaves)
{
    Actor leaver([&](TChangeCode) { level->RemoveObserver(&leaver); });
    level->AddObserver(&leaver);
    EXPECT_TRUE(tree->Remove("/LEVEL"));
}

TEST_F(TreeOfValues, AValueThatLeavesIsNotFoundAndCannotBeRemovedTwice)
{
    bool removedTwice = true;
    Actor remover([&](TChangeCode) { removedTwice = tree->Remove("/LEVEL"); });
    level->AddObserver(&remover);
    EXPECT_TRUE(tree->Remove("/LEVEL"));
    EXPECT_FALSE(removedTwice);
}

TEST_F(TreeOfValues, AValueIsDestroyedEvenWhenAnObserverFails)
{
    ValuePtr<Number> pointer;
    pointer.Attach("/LEVEL");
    Actor failing([](TChangeCode) { throw std::runtime_error("no"); });
    pointer->AddObserver(&failing);
    EXPECT_THROW(tree->Remove("/LEVEL"), std::runtime_error);
    EXPECT_FALSE(pointer.isAttached());
    EXPECT_EQ(tree->Size(), 0U);
}

TEST_F(TreeOfValues, ItsEndTellsTheObserversOfEveryValue)
{
    level->AddObserver(&listener);
    insert<ValueSelection>("/", "b")->AddObserver(&listener);
    tree.reset();
    EXPECT_THAT(listener.codes(), ElementsAre(TChangeCode::Removed, TChangeCode::Removed));
}

TEST_F(TreeOfValues, AtItsEndAnObserverMayRemoveOtherValues)
{
    insert<Number>("/", "b")->AddObserver(&listener);
    bool removed = false;
    Actor remover([&](TChangeCode) { removed = Tree::Instance()->Remove("/b"); });
    insert<Number>("/", "a")->AddObserver(&remover);
    tree.reset();
    EXPECT_TRUE(removed);
    EXPECT_THAT(listener.codes(), ElementsAre(TChangeCode::Removed));
}

TEST_F(TreeOfValues, AtItsEndNothingCanBeInserted)
{
    ValuePtr<Number> late;
    Actor attacher([&](TChangeCode) { late.Attach("/late"); });
    level->AddObserver(&attacher);
    tree.reset();
    EXPECT_TRUE(late.isAttached());
}

TEST_F(TreeOfValues, AtItsEndAFailingObserverStopsNothing)
{
    Actor failing([](TChangeCode) { throw std::runtime_error("no"); });
    insert<Number>("/", "a")->AddObserver(&failing);
    insert<Number>("/", "b")->AddObserver(&listener);
    tree.reset();
    EXPECT_THAT(listener.codes(), ElementsAre(TChangeCode::Removed));
}

TEST_F(ValuePointer, FindsTheValueOfItsTypeUntilTheTreeEnds)
{
    ValuePtr<Number> pointer;
    EXPECT_FALSE(pointer);
    pointer.Attach("/LEVEL");
    EXPECT_EQ(pointer.get(), level);
    EXPECT_EQ(tree->Size(), 1U);
    tree.reset();
    EXPECT_FALSE(pointer);
}

TEST_F(ValuePointer, CreatesTheValueThatIsNotThereWhichStaysWhenThePointerGoes)
{
    for (const char* path : {"/Devices/RecStatus/REC_FILENAME", "REC_FILENAME"}) {
        {
            ValuePtr<Text> pointer;
            pointer.Attach(path);
            ASSERT_TRUE(pointer) << path;
            EXPECT_EQ(tree->Find(path), pointer.get());
            EXPECT_EQ(pointer->GetName(), "REC_FILENAME");
        }
        EXPECT_NE(tree->Find(path), nullptr) << path;
    }
}

TEST_F(ValuePointer, AttachesOnlyToExactlyItsType)
{
    auto* frequency = insert<NumberWithOffset>("/", "FREQUENCY");
    ValuePtr<Number> pointer;
    pointer.Attach("/FREQUENCY");
    ASSERT_TRUE(pointer);
    EXPECT_NE(static_cast<values::ValueBase*>(pointer.get()), frequency);
    EXPECT_EQ(tree->Find("/FREQUENCY"), frequency);
}

TEST_F(ValuePointer, OwnsTheValueThatTheTreeRefuses)
{
    ValuePtr<Text> refused;
    refused.Attach("/LEVEL");
    ValuePtr<Text> unnamed;
    unnamed.Attach("/x/");
    refused->SetValue("usable all the same");
    unnamed->SetValue("too");
    EXPECT_EQ(tree->Size(), 1U);
    refused.Detach();
    EXPECT_FALSE(refused);
}

TEST_F(ValuePointer, OwnsItsValueWhileThereIsNoTree)
{
    tree.reset();
    ValueObservingPtr<Flag> pointer(nullptr);
    pointer.Attach("/x");
    ASSERT_TRUE(pointer);
    pointer->SetValue(true);
    EXPECT_TRUE(pointer->GetValue());
}

TEST_F(ValuePointer, IsNullOnceTheValueIsGone)
{
    ValuePtr<Number> first;
    ValuePtr<Number> second;
    ValuePtr<Number> third;
    for (auto* pointer : {&first, &second, &third}) {
        pointer->Attach("/x");
    }
    second.Detach();
    tree->Remove("/x");
    EXPECT_FALSE(first);
    EXPECT_FALSE(third);
}

TEST_F(ValuePointer, AttachedElsewhereLeavesTheValueBefore)
{
    ValueObservingPtr<Number> pointer(&listener);
    pointer.Attach("/a");
    auto* before = pointer.get();
    pointer.Attach("/b");
    before->SetValue(1);
    EXPECT_THAT(listener.codes(), ElementsAre());
    pointer->SetValue(1);
    EXPECT_THAT(listener.codes(), ElementsAre(TChangeCode::ValueChanged));
}

TEST_F(ValuePointer, RegistersItsObserverWhileItIsAttached)
{
    {
        ValueObservingPtr<Number> pointer(&listener);
        pointer.Attach("/LEVEL");
        EXPECT_TRUE(level->IsObservedBy(&listener));
    }
    EXPECT_FALSE(level->IsObservedBy(&listener));
}

TEST_F(ValuePointer, MayGoInARoundOfItsValue)
{
    std::unique_ptr<ValueObservingPtr<Number>> pointer;
    Actor dropper([&](TChangeCode) { pointer.reset(); });
    level->AddObserver(&dropper);
    pointer = std::make_unique<ValueObservingPtr<Number>>(&listener);
    pointer->Attach("/LEVEL");
    level->SetValue(1);
    EXPECT_THAT(listener.codes(), ElementsAre());
    level->RemoveObserver(&dropper);
}

}  // namespace
