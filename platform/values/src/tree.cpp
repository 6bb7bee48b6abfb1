// Values put into the tree, found and removed, and pointers that lose theirs in time.
#include <values/tree.h>

#include <exception>
#include <utility>

#include <vkbase/trace.h>
#include <vkbase/vkexception.h>

namespace values {

namespace {

const char* const TreeSource = "platform\\values\\tree";

Tree*& inForce()
{
    static Tree* tree = nullptr;
    return tree;
}

[[noreturn]] void refuse(const QString& reason, const char* function, std::int32_t line)
{
    throw VKException(reason.toStdString(), TreeSource, function, line);
}

}  // namespace

Tree* Tree::Instance()
{
    return inForce();
}

Tree::Tree()
{
    if (inForce() != nullptr) {
        refuse(QStringLiteral("There is a value tree already"), "Tree::Tree", __LINE__);
    }
    inForce() = this;
}

Tree::~Tree()
{
    m_closing = true;
    // A snapshot: observers may remove other values meanwhile.
    for (const QString& path : Paths()) {
        try {
            Remove(path);
        } catch (const std::exception& exception) {
            _Q_Trace(QStringLiteral("An observer failed at the end of %1: %2")
                         .arg(path, QString::fromUtf8(exception.what())),
                     QString::fromLatin1(TreeSource), __LINE__);
        }
    }
    inForce() = nullptr;
}

ValueBase* Tree::Find(const QString& path) const
{
    return m_values.value(path, nullptr);
}

void Tree::Insert(const QString& parentPath, ValueBase* value)
{
    if (m_closing) {
        refuse(QStringLiteral("The value tree is closing"), "Tree::Insert", __LINE__);
    }
    if (value == nullptr || value->m_inTree) {
        refuse(QStringLiteral("No value, or one that is in the tree already"), "Tree::Insert", __LINE__);
    }
    if (value->GetName().isEmpty()) {
        refuse(QStringLiteral("A value without a name cannot be inserted under '%1'").arg(parentPath), "Tree::Insert",
               __LINE__);
    }
    const QString path = parentPath + value->GetName();
    if (m_values.contains(path)) {
        refuse(QStringLiteral("There is a value '%1' already").arg(path), "Tree::Insert", __LINE__);
    }
    m_values.insert(path, value);
    value->m_path = path;
    value->m_inTree = true;
}

bool Tree::Remove(const QString& path)
{
    // Out of the table first, so that nobody finds or removes a value that is on its way out.
    const std::unique_ptr<ValueBase> value(m_values.take(path));
    if (value == nullptr) {
        return false;
    }
    value->m_leavingTree = true;
    value->NotifyChange(TChangeCode::Removed, nullptr);
    return true;
}

QStringList Tree::Paths() const
{
    QStringList paths = m_values.keys();
    paths.sort();
    return paths;
}

std::size_t Tree::Size() const
{
    return static_cast<std::size_t>(m_values.size());
}

VtTransaction::VtTransaction([[maybe_unused]] bool exclusive)
{
}

VtTransaction::~VtTransaction() = default;

ValuePtrBase::ValuePtrBase(IObserver* observer) : m_observer(observer)
{
}

ValuePtrBase::~ValuePtrBase()
{
    Detach();
}

void ValuePtrBase::Detach()
{
    if (m_value != nullptr) {
        if (m_observer != nullptr) {
            m_value->RemoveObserver(m_observer);
        }
        Unlink();
    }
    m_refused.reset();
}

void ValuePtrBase::AttachTo(const QString& path, const std::type_info& type, ValueBase* (*make)())
{
    Detach();
    Tree* const tree = Tree::Instance();
    if (ValueBase* found = tree != nullptr ? tree->Find(path) : nullptr; found != nullptr && typeid(*found) == type) {
        Link(found);
        return;
    }
    std::unique_ptr<ValueBase> made(make());
    ValueBase* const value = made.get();
    const int leaf = path.lastIndexOf(QLatin1Char('/')) + 1;
    value->SetName(path.mid(leaf));
    m_refused = std::move(made);
    Link(value);
    if (tree != nullptr) {
        try {
            tree->Insert(path.left(leaf), value);
            static_cast<void>(m_refused.release());  // the tree's now
        } catch (const VKException&) {  // NOLINT(bugprone-empty-catch): refused, the pointer keeps the value
        }
    }
}

void ValuePtrBase::Link(ValueBase* value)
{
    m_value = value;
    m_previous = nullptr;
    m_next = value->m_pointers;
    if (m_next != nullptr) {
        m_next->m_previous = this;
    }
    value->m_pointers = this;
    if (m_observer != nullptr) {
        value->AddObserver(m_observer);
    }
}

void ValuePtrBase::Unlink()
{
    (m_previous != nullptr ? m_previous->m_next : m_value->m_pointers) = m_next;
    if (m_next != nullptr) {
        m_next->m_previous = m_previous;
    }
    m_next = nullptr;
    m_previous = nullptr;
    m_value = nullptr;
}

void ValuePtrBase::ValueDestroyed()
{
    Unlink();
}

}  // namespace values
