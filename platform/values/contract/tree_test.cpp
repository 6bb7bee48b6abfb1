// The value tree: paths, removal, its end, and the pointers that attach to its values.
#include "listeners.h"

namespace {

using testing::ElementsAre;
using values::Tree;
using values::ValueObservingPtr;
using values::ValuePtr;
using values::ValueSelection;

template <typename T>
T* insert(Tree& tree, const QString& parent, const QString& name)
{
    auto value = std::make_unique<T>();
    value->SetName(name);
    tree.Insert(parent, value.get());
    return value.release();
}

TEST(Tree, IsInForceWhileItLives)
{
    EXPECT_EQ(Tree::Instance(), nullptr);
    {
        const Tree tree;
        EXPECT_EQ(Tree::Instance(), &tree);
    }
    EXPECT_EQ(Tree::Instance(), nullptr);
}

TEST(Tree, ASecondOneIsRefusedAndTheFirstStays)
{
    const Tree tree;
    EXPECT_THROW(Tree(), VKException);
    EXPECT_EQ(Tree::Instance(), &tree);
}

TEST(Tree, FindsValuesByTheirExactPath)
{
    Tree tree;
    auto* level = insert<Number>(tree, "/Devices/Rx1/", "LEVEL");
    EXPECT_EQ(tree.Find("/Devices/Rx1/LEVEL"), level);
    EXPECT_EQ(level->GetPath(), "/Devices/Rx1/LEVEL");
    EXPECT_EQ(tree.Find("/devices/rx1/level"), nullptr);
    EXPECT_EQ(tree.Find("/Devices//Rx1/LEVEL"), nullptr);
    EXPECT_EQ(tree.Find("/Devices/Rx1/LEVEL/"), nullptr);
    EXPECT_EQ(tree.Find(QString()), nullptr);
}

TEST(Tree, ListsItsPathsSorted)
{
    Tree tree;
    insert<Number>(tree, "/", "b");
    insert<Number>(tree, "/", "a");
    insert<Number>(tree, "", "c");
    EXPECT_THAT(tree.Paths(), ElementsAre("/a", "/b", "c"));
    EXPECT_EQ(tree.Size(), 3U);
}

TEST(Tree, RefusesTakenPathsEmptyNamesAndValuesInTheTree)
{
    Tree tree;
    auto* level = insert<Number>(tree, "/", "LEVEL");
    Flag taken;
    taken.SetName("LEVEL");
    EXPECT_THROW(tree.Insert("/", &taken), VKException);
    Flag unnamed;
    EXPECT_THROW(tree.Insert("/", &unnamed), VKException);
    EXPECT_THROW(tree.Insert("/x/", level), VKException);
    EXPECT_THROW(tree.Insert("/", nullptr), VKException);
    EXPECT_EQ(tree.Size(), 1U);
    EXPECT_EQ(taken.GetPath(), "LEVEL");
}

TEST(Tree, AValueInItCannotBeRenamed)
{
    Tree tree;
    auto* level = insert<Number>(tree, "/", "LEVEL");
    EXPECT_THROW(level->SetName("OTHER"), VKException);
    EXPECT_EQ(level->GetName(), "LEVEL");
}

TEST(Tree, RemovingTellsTheObserversAndTheQueryAnswersOne)
{
    Tree tree;
    auto* level = insert<Number>(tree, "/", "LEVEL");
    std::int32_t removed = -1;
    std::int32_t changed = -1;
    Actor asker([&](TChangeCode) {
        removed = level->QueryChange(TChangeCode::Removed);
        changed = level->QueryChange(TChangeCode::ValueChanged);
    });
    Listener listener;
    level->AddObserver(&asker);
    level->AddObserver(&listener);
    EXPECT_TRUE(tree.Remove("/LEVEL"));
    EXPECT_EQ(removed, 1);
    EXPECT_EQ(changed, 0);
    EXPECT_THAT(listener.codes(), ElementsAre(TChangeCode::Removed));
    EXPECT_FALSE(tree.Remove("/LEVEL"));
}

TEST(Tree, AnObserverMayRemoveItselfWhileTheValueLeaves)
{
    Tree tree;
    auto* level = insert<Number>(tree, "/", "LEVEL");
    Actor leaver([&](TChangeCode) { level->RemoveObserver(&leaver); });
    level->AddObserver(&leaver);
    EXPECT_TRUE(tree.Remove("/LEVEL"));
}

TEST(Tree, AValueThatLeavesIsNotFoundAndCannotBeRemovedTwice)
{
    Tree tree;
    auto* level = insert<Number>(tree, "/", "LEVEL");
    bool removedTwice = true;
    Actor remover([&](TChangeCode) { removedTwice = tree.Remove("/LEVEL"); });
    level->AddObserver(&remover);
    EXPECT_TRUE(tree.Remove("/LEVEL"));
    EXPECT_FALSE(removedTwice);
}

TEST(Tree, AValueIsDestroyedEvenWhenAnObserverFails)
{
    Tree tree;
    ValuePtr<Number> pointer;
    pointer.Attach("/LEVEL");
    Actor failing([](TChangeCode) { throw std::runtime_error("no"); });
    pointer->AddObserver(&failing);
    EXPECT_THROW(tree.Remove("/LEVEL"), std::runtime_error);
    EXPECT_FALSE(pointer.isAttached());
    EXPECT_EQ(tree.Size(), 0U);
}

TEST(Tree, ItsEndTellsTheObserversOfEveryValue)
{
    Listener listener;
    {
        Tree tree;
        insert<Number>(tree, "/", "a")->AddObserver(&listener);
        insert<ValueSelection>(tree, "/", "b")->AddObserver(&listener);
    }
    EXPECT_THAT(listener.codes(), ElementsAre(TChangeCode::Removed, TChangeCode::Removed));
}

TEST(Tree, AtItsEndAnObserverMayRemoveOtherValues)
{
    Listener listener;
    auto tree = std::make_unique<Tree>();
    auto* first = insert<Number>(*tree, "/", "a");
    insert<Number>(*tree, "/", "b")->AddObserver(&listener);
    bool removed = false;
    Actor remover([&](TChangeCode) { removed = Tree::Instance()->Remove("/b"); });
    first->AddObserver(&remover);
    tree.reset();
    EXPECT_TRUE(removed);
    EXPECT_THAT(listener.codes(), ElementsAre(TChangeCode::Removed));
}

TEST(Tree, AtItsEndNothingCanBeInserted)
{
    ValuePtr<Number> late;
    auto tree = std::make_unique<Tree>();
    Actor attacher([&](TChangeCode) { late.Attach("/late"); });
    insert<Number>(*tree, "/", "a")->AddObserver(&attacher);
    tree.reset();
    EXPECT_TRUE(late.isAttached());
}

TEST(Tree, AtItsEndAFailingObserverStopsNothing)
{
    Listener listener;
    auto tree = std::make_unique<Tree>();
    Actor failing([](TChangeCode) { throw std::runtime_error("no"); });
    insert<Number>(*tree, "/", "a")->AddObserver(&failing);
    insert<Number>(*tree, "/", "b")->AddObserver(&listener);
    tree.reset();
    EXPECT_THAT(listener.codes(), ElementsAre(TChangeCode::Removed));
}

TEST(ValuePtr, FindsTheValueOfItsType)
{
    Tree tree;
    auto* level = insert<Number>(tree, "/", "LEVEL");
    ValuePtr<Number> pointer;
    EXPECT_FALSE(pointer);
    pointer.Attach("/LEVEL");
    EXPECT_EQ(pointer.get(), level);
    EXPECT_EQ(tree.Size(), 1U);
}

TEST(ValuePtr, CreatesTheValueThatIsNotThere)
{
    Tree tree;
    ValuePtr<Text> pointer;
    pointer.Attach("/Devices/RecStatus/REC_FILENAME");
    ASSERT_TRUE(pointer);
    EXPECT_EQ(tree.Find("/Devices/RecStatus/REC_FILENAME"), pointer.get());
    EXPECT_EQ(pointer->GetName(), "REC_FILENAME");
}

TEST(ValuePtr, APathWithoutASlashIsALeafName)
{
    Tree tree;
    ValuePtr<Text> pointer;
    pointer.Attach("alone");
    EXPECT_EQ(tree.Find("alone"), pointer.get());
}

TEST(ValuePtr, TheValueStaysInTheTreeWhenThePointerGoes)
{
    Tree tree;
    {
        ValuePtr<Text> pointer;
        pointer.Attach("/x");
    }
    EXPECT_NE(tree.Find("/x"), nullptr);
}

TEST(ValuePtr, AttachesOnlyToExactlyItsType)
{
    Tree tree;
    auto* frequency = insert<NumberWithOffset>(tree, "/", "FREQUENCY");
    ValuePtr<Number> pointer;
    pointer.Attach("/FREQUENCY");
    ASSERT_TRUE(pointer);
    EXPECT_NE(static_cast<values::ValueBase*>(pointer.get()), frequency);
    EXPECT_EQ(tree.Find("/FREQUENCY"), frequency);
}

TEST(ValuePtr, OwnsTheValueThatTheTreeRefuses)
{
    Tree tree;
    insert<Flag>(tree, "/", "x");
    ValuePtr<Text> refused;
    refused.Attach("/x");
    ValuePtr<Text> unnamed;
    unnamed.Attach("/x/");
    refused->SetValue("usable all the same");
    unnamed->SetValue("too");
    EXPECT_EQ(tree.Size(), 1U);
    refused.Detach();
    EXPECT_FALSE(refused);
}

TEST(ValuePtr, OwnsItsValueWhileThereIsNoTree)
{
    ValueObservingPtr<Flag> pointer(nullptr);
    pointer.Attach("/x");
    ASSERT_TRUE(pointer);
    pointer->SetValue(true);
    EXPECT_TRUE(pointer->GetValue());
}

TEST(ValuePtr, IsNullOnceTheValueIsGone)
{
    Tree tree;
    ValuePtr<Number> first;
    ValuePtr<Number> second;
    ValuePtr<Number> third;
    for (auto* pointer : {&first, &second, &third}) {
        pointer->Attach("/x");
    }
    second.Detach();
    tree.Remove("/x");
    EXPECT_FALSE(first);
    EXPECT_FALSE(third);
}

TEST(ValuePtr, OutlivesTheTree)
{
    ValuePtr<Number> pointer;
    {
        const Tree tree;
        pointer.Attach("/x");
    }
    EXPECT_FALSE(pointer);
}

TEST(ValuePtr, AttachingElsewhereLeavesTheValueBefore)
{
    Tree tree;
    Listener listener;
    ValueObservingPtr<Number> pointer(&listener);
    pointer.Attach("/a");
    auto* before = pointer.get();
    pointer.Attach("/b");
    before->SetValue(1);
    EXPECT_THAT(listener.codes(), ElementsAre());
    pointer->SetValue(1);
    EXPECT_THAT(listener.codes(), ElementsAre(TChangeCode::ValueChanged));
}

TEST(ValueObservingPtr, ItsObserverIsRegisteredWhileItIsAttached)
{
    Tree tree;
    auto* level = insert<Number>(tree, "/", "LEVEL");
    Listener listener;
    {
        ValueObservingPtr<Number> pointer(&listener);
        pointer.Attach("/LEVEL");
        EXPECT_TRUE(level->IsObservedBy(&listener));
    }
    EXPECT_FALSE(level->IsObservedBy(&listener));
}

TEST(ValueObservingPtr, MayGoInARoundOfItsValue)
{
    Listener listener;
    std::unique_ptr<ValueObservingPtr<Number>> pointer;
    Actor dropper([&](TChangeCode) { pointer.reset(); });
    Tree tree;
    auto* level = insert<Number>(tree, "/", "LEVEL");
    level->AddObserver(&dropper);
    pointer = std::make_unique<ValueObservingPtr<Number>>(&listener);
    pointer->Attach("/LEVEL");
    level->SetValue(1);
    EXPECT_THAT(listener.codes(), ElementsAre());
}

}  // namespace
