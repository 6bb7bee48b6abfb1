// Rounds of notification: their order, and observers that come, go or fail meanwhile.
#include <functional>
#include <initializer_list>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include <vkbase/observer.h>
#include <vkbase/vkexception.h>

#include "vkbase/contract/allocationcount.h"

using testing::ElementsAre;

namespace {

class Subject : public Observable {
public:
    using Observable::NotifyObservers;

    bool Notify(const IObserver* originator = nullptr)
    {
        return NotifyObservers(this, TChangeCode::ValueChanged, originator);
    }
};

class Observer : public IObserver {
public:
    explicit Observer(std::function<void()> action = {}) : m_action(std::move(action)) {}

    void Update(void* subject, TChangeCode code) override
    {
        m_calls.emplace_back(subject, code);
        if (m_action) {
            m_action();
        }
    }

    [[nodiscard]] std::size_t Calls() const { return m_calls.size(); }
    [[nodiscard]] const auto& Log() const { return m_calls; }
    void SetAction(std::function<void()> action) { m_action = std::move(action); }
    void ReserveCalls(std::size_t count) { m_calls.reserve(count); }

private:
    std::vector<std::pair<void*, TChangeCode>> m_calls;
    std::function<void()> m_action;
};

void observe(Subject& subject, std::initializer_list<Observer*> observers)
{
    for (Observer* observer : observers) {
        subject.AddObserver(observer);
    }
}

}  // namespace

TEST(TChangeCode, HasTheNumbersOfTheStation)
{
    EXPECT_EQ(static_cast<int>(TChangeCode::Removed), 2);
    EXPECT_EQ(static_cast<int>(TChangeCode::ValueChanged), 3);
    EXPECT_EQ(static_cast<int>(TChangeCode::CommandsPending), 4);
    EXPECT_EQ(static_cast<int>(TChangeCode::SelectedAgain), 19);
}

TEST(Observable, HandsSubjectAndCodeToItsObservers)
{
    Subject subject;
    Observer observer;
    int changed = 0;
    subject.AddObserver(&observer);
    EXPECT_TRUE(subject.NotifyObservers(&changed, TChangeCode::SelectedAgain, nullptr));
    EXPECT_THAT(observer.Log(), ElementsAre(std::pair<void*, TChangeCode>(&changed, TChangeCode::SelectedAgain)));
}

TEST(Observable, WithoutObserversCompletesItsRound)
{
    Subject subject;
    EXPECT_TRUE(subject.Notify());
    EXPECT_EQ(subject.ObserverCount(), 0U);
}

TEST(Observable, TellsAnObserverThatWasAddedTwiceOnce)
{
    Subject subject;
    Observer observer;
    observe(subject, {&observer, &observer});
    EXPECT_EQ(subject.ObserverCount(), 1U);
    subject.Notify();
    EXPECT_EQ(observer.Calls(), 1U);
    subject.RemoveObserver(&observer);
    EXPECT_FALSE(subject.IsObservedBy(&observer));
    subject.Notify();
    EXPECT_EQ(observer.Calls(), 1U);
}

TEST(Observable, IgnoresNullAndObserversItDoesNotHave)
{
    Subject subject;
    const Observer stranger;
    Observer observer;
    subject.AddObserver(nullptr);
    subject.RemoveObserver(nullptr);
    subject.RemoveObserver(&observer);
    EXPECT_EQ(subject.ObserverCount(), 0U);
    EXPECT_FALSE(subject.IsObservedBy(nullptr));
    EXPECT_FALSE(subject.IsObservedBy(&stranger));
}

TEST(Observable, TellsEveryoneButTheOriginator)
{
    Subject subject;
    Observer originator;
    Observer other;
    observe(subject, {&originator, &other});
    subject.Notify(&originator);
    EXPECT_EQ(originator.Calls(), 0U);
    EXPECT_EQ(other.Calls(), 1U);
    subject.Notify();
    EXPECT_EQ(originator.Calls(), 1U);
    EXPECT_EQ(other.Calls(), 2U);
}

TEST(Observable, TellsObserversInTheOrderOfTheirAdding)
{
    Subject subject;
    std::vector<int> order;
    Observer first([&] { order.push_back(1); });
    Observer second([&] { order.push_back(2); });
    Observer third([&] { order.push_back(3); });
    observe(subject, {&second, &first, &third});
    subject.Notify();
    EXPECT_THAT(order, ElementsAre(2, 1, 3));
}

TEST(Observable, AnObserverAddedDuringARoundIsNotToldInThatRound)
{
    Subject subject;
    std::vector<std::unique_ptr<Observer>> late;
    Observer adder([&] {
        // Many of them, so that the set has to grow under the round.
        for (int count = 0; count < 100; ++count) {
            late.push_back(std::make_unique<Observer>());
            subject.AddObserver(late.back().get());
        }
    });
    subject.AddObserver(&adder);
    EXPECT_TRUE(subject.Notify());
    EXPECT_EQ(subject.ObserverCount(), 101U);
    for (const auto& observer : late) {
        EXPECT_EQ(observer->Calls(), 0U);
    }
    adder.SetAction({});
    EXPECT_TRUE(subject.Notify());
    for (const auto& observer : late) {
        EXPECT_EQ(observer->Calls(), 1U);
    }
}

TEST(Observable, AnObserverRemovedDuringARoundIsNotCalledAnyMore)
{
    Subject subject;
    Observer before;
    Observer after;
    Observer remover([&] {
        subject.RemoveObserver(&before);
        subject.RemoveObserver(&after);
    });
    observe(subject, {&before, &remover, &after});
    EXPECT_TRUE(subject.Notify());
    EXPECT_EQ(before.Calls(), 1U);
    EXPECT_EQ(after.Calls(), 0U);
    EXPECT_EQ(subject.ObserverCount(), 1U);
    EXPECT_TRUE(subject.Notify());
    EXPECT_EQ(before.Calls(), 1U);
    EXPECT_EQ(after.Calls(), 0U);
    EXPECT_EQ(remover.Calls(), 2U);
}

TEST(Observable, AnObserverMayRemoveAndDestroyItselfInItsUpdate)
{
    Subject subject;
    Observer after;
    auto passing = std::make_unique<Observer>();
    passing->SetAction([&] { subject.RemoveObserver(passing.get()); });
    subject.AddObserver(passing.get());
    subject.AddObserver(&after);
    EXPECT_TRUE(subject.Notify());
    passing.reset();
    EXPECT_TRUE(subject.Notify());
    EXPECT_EQ(after.Calls(), 2U);
}

TEST(Observable, AnObserverRemovedAndAddedAgainDuringARoundIsNotToldInThatRound)
{
    Subject subject;
    Observer moved;
    Observer mover([&] {
        subject.RemoveObserver(&moved);
        EXPECT_FALSE(subject.IsObservedBy(&moved));
        subject.AddObserver(&moved);
        EXPECT_TRUE(subject.IsObservedBy(&moved));
    });
    observe(subject, {&mover, &moved});
    EXPECT_TRUE(subject.Notify());
    EXPECT_EQ(moved.Calls(), 0U);
    EXPECT_EQ(subject.ObserverCount(), 2U);
    mover.SetAction({});
    EXPECT_TRUE(subject.Notify());
    EXPECT_EQ(moved.Calls(), 1U);
}

TEST(Observable, ARoundInsideARoundTellsEveryoneAndTheOuterRoundGoesOn)
{
    Subject subject;
    Observer last;
    Observer late;
    Observer nester;
    nester.SetAction([&] {
        if (nester.Calls() == 1) {
            subject.AddObserver(&late);
            EXPECT_TRUE(subject.Notify());  // a new round: it tells the one added before it began
            subject.RemoveObserver(&late);
        }
    });
    observe(subject, {&nester, &last});
    EXPECT_TRUE(subject.Notify());
    EXPECT_EQ(nester.Calls(), 2U);
    EXPECT_EQ(last.Calls(), 2U);
    EXPECT_EQ(late.Calls(), 1U);
    EXPECT_EQ(subject.ObserverCount(), 2U);
}

TEST(Observable, ARemovalInAnInnerRoundHoldsInTheOuterRound)
{
    Subject subject;
    Observer victim;
    Observer nester;
    nester.SetAction([&] {
        if (nester.Calls() == 1) {
            EXPECT_TRUE(subject.Notify());
        } else {
            subject.RemoveObserver(&victim);
        }
    });
    observe(subject, {&nester, &victim});
    EXPECT_TRUE(subject.Notify());
    EXPECT_EQ(victim.Calls(), 0U);
    EXPECT_EQ(subject.ObserverCount(), 1U);
}

TEST(Observable, DestroyedDuringARoundItEndsTheRound)
{
    auto subject = std::make_unique<Subject>();
    Observer destroyer([&] { subject.reset(); });
    Observer after;
    observe(*subject, {&destroyer, &after});
    EXPECT_FALSE(subject->Notify());
    EXPECT_EQ(after.Calls(), 0U);
}

TEST(Observable, DestroyedDuringAnInnerRoundItEndsAllRounds)
{
    auto subject = std::make_unique<Subject>();
    std::vector<bool> innerResults;
    Observer nester;
    Observer after;
    nester.SetAction([&] {
        if (nester.Calls() < 3) {
            innerResults.push_back(subject->Notify());
        } else {
            subject.reset();
        }
    });
    observe(*subject, {&nester, &after});
    EXPECT_FALSE(subject->Notify());
    EXPECT_THAT(innerResults, ElementsAre(false, false));
    EXPECT_EQ(after.Calls(), 0U);
}

TEST(Observable, AfterAnExceptionTheRestAreToldAndTheFirstIsThrownOn)
{
    Subject subject;
    Observer first([] { throw VKException("first", "source", "function", 1); });
    Observer second([] { throw std::runtime_error("second"); });
    Observer third;
    observe(subject, {&first, &second, &third});
    try {
        subject.Notify();
        FAIL() << "nothing was thrown";
    } catch (const VKException& exception) {
        EXPECT_STREQ(exception.what(), "first");
    }
    EXPECT_EQ(second.Calls(), 1U);
    EXPECT_EQ(third.Calls(), 1U);
}

TEST(Observable, IsUsableAfterAnException)
{
    Subject subject;
    Observer failing([] { throw 1; });
    Observer other;
    observe(subject, {&failing, &other});
    EXPECT_THROW(subject.Notify(), int);
    subject.RemoveObserver(&failing);
    EXPECT_EQ(subject.ObserverCount(), 1U);
    EXPECT_TRUE(subject.Notify());
    EXPECT_EQ(other.Calls(), 2U);
}

TEST(Observable, DestroyedDuringARoundItReportsThatRatherThanAnException)
{
    auto subject = std::make_unique<Subject>();
    Observer failing([] { throw std::runtime_error("lost"); });
    Observer destroyer([&] {
        subject.reset();
        throw 2;
    });
    observe(*subject, {&failing, &destroyer});
    EXPECT_FALSE(subject->Notify());
}

TEST(Observable, AllocatesNothingWhileNotifying)
{
    Subject subject;
    std::vector<Observer> observers(50);
    for (Observer& observer : observers) {
        observer.ReserveCalls(1);
        subject.AddObserver(&observer);
    }
    const std::size_t before = TestSupport::allocations();
    subject.Notify();
    EXPECT_EQ(TestSupport::allocations(), before);
    EXPECT_EQ(observers.back().Calls(), 1U);
}
