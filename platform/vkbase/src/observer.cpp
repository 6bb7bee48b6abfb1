// The list of observers, and the rounds that survive its changes and its end.
#include <vkbase/observer.h>

#include <algorithm>
#include <exception>

#include <vkbase/trace.h>

namespace {

void TraceLostException(const std::exception_ptr& failure)
{
    QString what = QStringLiteral("unknown exception");
    try {
        std::rethrow_exception(failure);
    } catch (const std::exception& exception) {
        what = QString::fromUtf8(exception.what());
    } catch (...) {
        // The text chosen above is all that can be said about it.
    }
    _Q_Trace(QStringLiteral("An observer failed in a round that its observable did not survive: ") + what,
             QStringLiteral("vkbase\\observer"), __LINE__);
}

}  // namespace

IObserver::~IObserver() = default;

/// One call of NotifyObservers. It lives on the stack, so that it can be asked after the observable is gone.
struct Observable::Round {
    Round* outer;
    bool observableDestroyed = false;
};

Observable::~Observable()
{
    for (Round* round = m_round; round != nullptr; round = round->outer) {
        round->observableDestroyed = true;
    }
}

void Observable::AddObserver(IObserver* observer)
{
    if (observer != nullptr && !IsObservedBy(observer)) {
        m_observers.push_back(observer);
    }
}

void Observable::RemoveObserver(IObserver* observer)
{
    if (observer == nullptr) {
        return;
    }
    const auto found = std::find(m_observers.begin(), m_observers.end(), observer);
    if (found == m_observers.end()) {
        return;
    }
    if (m_round == nullptr) {
        m_observers.erase(found);
    } else {
        *found = nullptr;  // rounds under way count on their indexes
    }
}

bool Observable::IsObservedBy(const IObserver* observer) const
{
    return observer != nullptr && std::find(m_observers.begin(), m_observers.end(), observer) != m_observers.end();
}

std::size_t Observable::ObserverCount() const
{
    return static_cast<std::size_t>(std::count_if(m_observers.begin(), m_observers.end(),
                                                  [](const IObserver* observer) { return observer != nullptr; }));
}

bool Observable::NotifyObservers(void* subject, TChangeCode code, const IObserver* originator)
{
    Round round{m_round};
    m_round = &round;
    std::exception_ptr failure;
    // Observers that are added meanwhile stand after this end.
    const std::size_t end = m_observers.size();
    for (std::size_t index = 0; index < end; ++index) {
        IObserver* const observer = m_observers[index];
        if (observer == nullptr || observer == originator) {
            continue;
        }
        try {
            observer->Update(subject, code);
        } catch (...) {
            if (!failure) {
                failure = std::current_exception();
            }
        }
        if (round.observableDestroyed) {
            if (failure) {
                TraceLostException(failure);
            }
            return false;
        }
    }
    m_round = round.outer;
    Compact();
    if (failure) {
        std::rethrow_exception(failure);
    }
    return true;
}

void Observable::Compact()
{
    if (m_round == nullptr) {
        m_observers.erase(std::remove(m_observers.begin(), m_observers.end(), nullptr), m_observers.end());
    }
}
