// Selections: items added, chosen and deleted, their recording texts, and the cost of many items.
#include <chrono>

#include "listeners.h"

namespace {

using testing::ElementsAre;
using values::SelectionItem;
using values::ValueSelection;

class Selection : public testing::Test {
protected:
    void SetUp() override
    {
        m_selection.AddItem(new SelectionItem("Off", 0.0, 0));
        m_selection.AddItem(new SelectionItem("On", 1.5, 23));
        m_selection.AddObserver(&m_listener);
    }
    static void expectOn(const ValueSelection& selection)
    {
        EXPECT_EQ(selection.GetText(), "On");
        EXPECT_EQ(selection.GetCurrentKey(), 23);
        EXPECT_EQ(selection.GetCurrentValue(), 1.5);
    }
    ValueSelection m_selection;
    Listener m_listener;
};

TEST_F(Selection, NothingIsSelectedAtFirst)
{
    EXPECT_EQ(m_selection.GetCurrentItem(), nullptr);
    EXPECT_EQ(m_selection.GetCurrentKey(), 0);
    EXPECT_EQ(m_selection.GetCurrentValue(), 0);
    EXPECT_EQ(m_selection.GetText(), QString());
}

TEST_F(Selection, SelectingAnotherItemNotifiesValueChangedAndTheSelectedOneSelectedAgain)
{
    EXPECT_TRUE(m_selection.Select("On"));
    EXPECT_THAT(m_listener.codes(), ElementsAre(TChangeCode::ValueChanged));
    expectOn(m_selection);
    m_listener.forget();
    EXPECT_TRUE(m_selection.Select("On"));
    EXPECT_TRUE(m_selection.SelectKey(23));
    EXPECT_THAT(m_listener.codes(), ElementsAre(TChangeCode::SelectedAgain, TChangeCode::SelectedAgain));
}

TEST_F(Selection, AnUnknownNameOrKeyIsRefused)
{
    EXPECT_FALSE(m_selection.Select("Standby"));
    EXPECT_FALSE(m_selection.SelectKey(7));
    EXPECT_THAT(m_listener.codes(), ElementsAre());
}

TEST_F(Selection, AKeySelectsTheFirstItemThatHasIt)
{
    m_selection.AddItem(new SelectionItem("Again", 2.0, 23));
    EXPECT_TRUE(m_selection.SelectKey(23));
    EXPECT_EQ(m_selection.GetText(), "On");
}

TEST_F(Selection, AddingAnItemNotifiesValueChanged)
{
    m_selection.AddItem(new SelectionItem("Standby", 2.0, 2));
    EXPECT_THAT(m_listener.codes(), ElementsAre(TChangeCode::ValueChanged));
    EXPECT_EQ(m_selection.GetItems().size(), 3U);
}

TEST_F(Selection, AnItemWhoseNameIsTakenChangesNothing)
{
    m_selection.AddItem(new SelectionItem("On", 9.0, 9));
    EXPECT_THAT(m_listener.codes(), ElementsAre());
    m_selection.Select("On");
    EXPECT_EQ(m_selection.GetCurrentKey(), 23);
}

TEST_F(Selection, DeletingAnItemNotifiesRemovedAndTheQueryAnswersZero)
{
    std::int32_t answer = -1;
    Actor asker([&](TChangeCode code) { answer = m_selection.QueryChange(code); });
    m_selection.AddObserver(&asker);
    EXPECT_TRUE(m_selection.DeleteItem("On"));
    EXPECT_THAT(m_listener.codes(), ElementsAre(TChangeCode::Removed));
    EXPECT_EQ(answer, 0);
    EXPECT_FALSE(m_selection.DeleteItem("On"));
}

TEST_F(Selection, DeletingTheSelectedItemLeavesNothingSelected)
{
    m_selection.Select("On");
    m_selection.DeleteItem("On");
    EXPECT_EQ(m_selection.GetCurrentItem(), nullptr);
}

TEST_F(Selection, DeletingAllItemsNotifiesOnceIfThereWereAny)
{
    m_selection.DeleteItems();
    m_selection.DeleteItems();
    EXPECT_THAT(m_listener.codes(), ElementsAre(TChangeCode::Removed));
}

TEST_F(Selection, TheOriginatorIsNotTold)
{
    m_selection.AddItem(new SelectionItem("Standby", 2.0, 2), &m_listener);
    m_selection.Select("On", &m_listener);
    m_selection.SelectKey(23, &m_listener);
    m_selection.DeleteItem("Off", &m_listener);
    m_selection.DeleteItems(&m_listener);
    EXPECT_THAT(m_listener.codes(), ElementsAre());
}

TEST_F(Selection, SelectedAgainCarriesTheSelectionInItsText)
{
    m_selection.Select("On");
    const TextRecorder recorder(m_selection);
    m_selection.Select("On");
    EXPECT_EQ(recorder.last(), "5;23,1.5,On");
}

TEST_F(Selection, AppliedToAnEmptySelectionTheItemIsAdded)
{
    m_selection.Select("On");
    ValueSelection target;
    Listener listener(target);
    EXPECT_TRUE(target.ApplyRecordedState(m_selection.GetObjectStateStringForRecording(), 0, true));
    expectOn(target);
    EXPECT_THAT(listener.codes(), ElementsAre(TChangeCode::ValueChanged));
}

TEST_F(Selection, AnItemOfTheNameTakesOverTheRecordedKeyAndValue)
{
    EXPECT_TRUE(m_selection.ApplyRecordedState("5;42,-3,On", 0, true));
    EXPECT_EQ(m_selection.GetItems().size(), 2U);
    EXPECT_EQ(m_selection.GetCurrentKey(), 42);
    EXPECT_EQ(m_selection.GetCurrentValue(), -3);
}

TEST_F(Selection, NothingSelectedIsAStateOfItsOwn)
{
    m_selection.Select("On");
    EXPECT_TRUE(m_selection.ApplyRecordedState(ValueSelection().GetObjectStateStringForRecording(), 0, true));
    EXPECT_EQ(m_selection.GetCurrentItem(), nullptr);
    EXPECT_EQ(m_selection.GetItems().size(), 2U);
}

TEST_F(Selection, ApplyingTheSameStateAgainTellsNobody)
{
    m_selection.Select("On");
    m_listener.forget();
    EXPECT_TRUE(m_selection.ApplyRecordedState("5;23,1.5,On", 0, true));
    EXPECT_THAT(m_listener.codes(), ElementsAre());
}

TEST_F(Selection, AnItemWithAnEmptyNameIsNotNothing)
{
    m_selection.AddItem(new SelectionItem(QString(), 0.0, 0));
    m_selection.Select(QString());
    ValueSelection target;
    EXPECT_TRUE(target.ApplyRecordedState(m_selection.GetObjectStateStringForRecording(), 0, true));
    EXPECT_NE(target.GetCurrentItem(), nullptr);
}

TEST_F(Selection, MalformedTextsAreRefusedAndChangeNothing)
{
    m_selection.Select("On");
    for (const char* text : {"5;1", "5;x,1,On", "5;1,x,Off", "5;1,2,\\", "5;1,2,Off|", "5;99999999999,1,Off"}) {
        EXPECT_FALSE(m_selection.ApplyRecordedState(text, 0, true)) << text;
    }
    EXPECT_EQ(m_selection.GetObjectStateStringForRecording(), "5;23,1.5,On");
}

TEST_F(Selection, ADeletedItemIsFoundByNothingAndItsNameIsFree)
{
    m_selection.AddItem(new SelectionItem("Standby", 2.0, 23));
    EXPECT_TRUE(m_selection.DeleteItem("On"));
    EXPECT_FALSE(m_selection.Select("On"));
    EXPECT_TRUE(m_selection.SelectKey(23));
    EXPECT_EQ(m_selection.GetText(), "Standby");
    m_selection.AddItem(new SelectionItem("On", 3.0, 23));
    ASSERT_EQ(m_selection.GetItems().size(), 3U);
    EXPECT_EQ(m_selection.GetItems()[2]->GetName(), "On") << "added last, so it is the last";
    EXPECT_TRUE(m_selection.SelectKey(23));
    EXPECT_EQ(m_selection.GetText(), "Standby") << "the first with that key";
    EXPECT_TRUE(m_selection.DeleteItem("Standby"));
    EXPECT_EQ(m_selection.GetCurrentItem(), nullptr);
}

TEST_F(Selection, AnItemThatARecordedStateChangesIsFoundByItsNewKey)
{
    ValueSelection recorded;
    recorded.AddItem(new SelectionItem("On", 2.5, 77));
    recorded.Select("On");
    ASSERT_TRUE(m_selection.ApplyRecordedState(recorded.GetObjectStateStringForRecording(), 0, true));
    EXPECT_FALSE(m_selection.SelectKey(23));
    EXPECT_TRUE(m_selection.Select("Off"));
    EXPECT_TRUE(m_selection.SelectKey(77));
    EXPECT_EQ(m_selection.GetCurrentValue(), 2.5);
}

// Seconds would be minutes if any of these looked through the items.
TEST(SelectionOfManyItems, CostsTheSameForEachItem)
{
    constexpr int items = 100'000;
    const auto begin = std::chrono::steady_clock::now();
    ValueSelection selection;
    for (int i = 0; i < items; ++i) {
        selection.AddItem(new SelectionItem(QString::number(i), i, i));
    }
    for (int i = 0; i < items; ++i) {
        ASSERT_TRUE(selection.Select(QString::number(items - 1 - i)));
        ASSERT_TRUE(selection.SelectKey(i));
    }
    for (int i = 0; i < items; ++i) {
        ASSERT_TRUE(selection.DeleteItem(QString::number(i)));
    }
    EXPECT_TRUE(selection.GetItems().empty());
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
}

}  // namespace
