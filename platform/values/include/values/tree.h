// The value tree that host and plug-ins share, and the pointers that attach to its values.
#pragma once

#include <cstddef>
#include <memory>
#include <typeinfo>

#include <QHash>
#include <QString>
#include <QStringList>

#include <values/value.h>
#include <values/valuebase.h>

namespace values {

/// Owns its values. Paths are case-sensitive and taken as they stand ("/LEVEL", "/Devices/Rx1/Scn/RfSpectrum").
class VALUES_EXPORT Tree {
public:
    /// The tree in force, null when the host has none.
    static Tree* Instance();

    Tree();  ///< Host: puts this tree in force; there is at most one (a second throws VKException).
    /// Every value leaves the tree, with its notification, and is destroyed. Nothing can be inserted meanwhile; what
    /// observers throw is traced.
    ~Tree();
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;

    [[nodiscard]] ValueBase* Find(const QString& path) const;  ///< null when there is none; not owned by the caller
    /// Inserts a value under a parent path (with its trailing slash) by its name and takes ownership.
    /// @throws VKException when the value is null or in a tree, its name is empty or the path is taken; the value then
    /// stays the caller's
    void Insert(const QString& parentPath, ValueBase* value);
    /// Tells the value's observers (Removed, QueryChange answers 1) and destroys it. False when there is none. The
    /// observers do not find it any more and must not destroy it. What they throw is thrown on after its end.
    bool Remove(const QString& path);
    [[nodiscard]] QStringList Paths() const;  ///< sorted
    [[nodiscard]] std::size_t Size() const;

private:
    QHash<QString, ValueBase*> m_values;
    bool m_closing = false;
};

/// Brackets changes that belong together. It marks a scope only: nothing is merged or delayed.
class VALUES_EXPORT VtTransaction {
public:
    explicit VtTransaction(bool exclusive);
    VtTransaction(const VtTransaction&) = delete;
    VtTransaction& operator=(const VtTransaction&) = delete;
    ~VtTransaction();  // NOLINT(performance-trivially-destructible): the end of a scope, whatever a library does there
};

/// What all value pointers share: they learn of the value's end and are then detached.
class VALUES_EXPORT ValuePtrBase {
public:
    ValuePtrBase(const ValuePtrBase&) = delete;
    ValuePtrBase& operator=(const ValuePtrBase&) = delete;
    virtual ~ValuePtrBase();

    [[nodiscard]] bool isAttached() const { return m_value != nullptr; }
    void Detach();  ///< destroys a value that the tree refused

protected:
    explicit ValuePtrBase(IObserver* observer = nullptr);
    /// Attaches to the value at the path if it is of exactly the type that the maker makes; otherwise a new one is
    /// made, named and inserted. One that the tree refuses (the path is taken by another type), or that is made while
    /// there is no tree, belongs to this pointer. An empty leaf name counts as refused.
    void AttachTo(const QString& path, const std::type_info& type, ValueBase* (*make)());

    ValueBase* m_value = nullptr;

private:
    friend class ValueBase;
    void Link(ValueBase* value);
    void Unlink();
    void ValueDestroyed();

    IObserver* m_observer;  // registered with the value while attached, may be null
    std::unique_ptr<ValueBase> m_refused;
    ValuePtrBase* m_next = nullptr;  // list of the pointers of one value
    ValuePtrBase* m_previous = nullptr;
};

/// Points to a value of the tree without owning it; null again when the value is destroyed.
template <typename T>
class ValuePtr : public ValuePtrBase {
public:
    ValuePtr() = default;
    /// Finds the value or creates it; detaches from the one before.
    void Attach(const QString& path)
    {
        AttachTo(path, typeid(T), []() -> ValueBase* { return new T; });
    }
    [[nodiscard]] T* get() const { return static_cast<T*>(m_value); }
    T* operator->() const { return get(); }
    explicit operator bool() const { return isAttached(); }

protected:
    explicit ValuePtr(IObserver* observer) : ValuePtrBase(observer) {}
};

/// The same, and its observer is registered with the value while it is attached.
template <typename T>
class ValueObservingPtr final : public ValuePtr<T> {
public:
    explicit ValueObservingPtr(IObserver* observer) : ValuePtr<T>(observer) {}
};

}  // namespace values
