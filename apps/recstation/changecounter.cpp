// Observing every value of the tree, and counting the recorders that observe it too.
#include "changecounter.h"

namespace RecStation {

void ChangeCounter::Update(void* subject, TChangeCode code)
{
    const auto* value = static_cast<const values::ValueBase*>(subject);
    if (code == TChangeCode::Removed && value->QueryChange(code) == 1) {
        --m_followed;
        return;
    }
    ++m_changes;
    if (code != TChangeCode::Removed) {           // a deleted item is not recorded
        m_records += value->ObserverCount() - 1;  // all but this counter are recorders
    }
}

void ChangeCounter::follow(const values::Tree& tree)
{
    if (tree.Size() == m_followed) {
        return;
    }
    const QStringList paths = tree.Paths();
    for (const QString& path : paths) {
        observe(tree, path);
    }
    m_followed = tree.Size();
}

// Looking through the whole tree for every value that is created would take long where many are.
void ChangeCounter::follow(const values::Tree& tree, const QString& created)
{
    if (tree.Size() == m_followed + 1) {
        observe(tree, created);
        ++m_followed;
    }
}

void ChangeCounter::observe(const values::Tree& tree, const QString& path)
{
    if (!path.contains(QStringLiteral("/REC_"))) {
        tree.Find(path)->AddObserver(this);
    }
}

}  // namespace RecStation
