// kdrcore/runtime/MultiRefObject.h - intrusive reference counting and its scope guards
#ifndef KDRCORE_RUNTIME_MULTIREFOBJECT_H
#define KDRCORE_RUNTIME_MULTIREFOBJECT_H

#include "kdrcore/KDRExport.h"

/// Base of objects shared by several owners, owned by its reference count. A new object has
/// count 0 and is owned by nobody: whoever made it destroys it unless it was referenced. The count
/// is a plain signed integer: nothing is atomic, nothing tests for a negative count.
class KDRCORE_API MultiRefObject {
public:
    class AutoRefUnref;

    /// Count + 1.
    void ref() const { ++m_refCount; }
    /// Count - 1; the object is never deleted, also when the count reaches 0.
    void unrefNoDelete() const { --m_refCount; }
    /// Count - 1; exactly when the new count is 0 the object deletes itself through its virtual
    /// destructor. Any other result, -1 included, deletes nothing.
    void unref() const;
    /// The current count.
    int getRefCount() const { return m_refCount; }

protected:
    MultiRefObject() : m_refCount(0) {}
    virtual ~MultiRefObject();

private:
    mutable int m_refCount;
};

/// Scope guard that takes a reference at construction and releases it at the end of the scope.
/// Null objects are accepted and never looked at. Copies are member-wise: each copy releases again
/// at its end.
class KDRCORE_API AutoRefUnref {
public:
    /// What the guard does at the end of its scope.
    enum e_deleteMode : int {
        e_noDelete = 0, ///< count - 1, never deletes
        e_delete = 1,   ///< count - 1, deletes when the count reaches 0
        e_deleteIfReferenced =
            2 ///< e_delete when the count is not 0 at construction, else e_noDelete
    };

    /// Stores both; with a non-null object resolves e_deleteIfReferenced by the count before the
    /// increment, then increments the count. A mode outside the table still takes the reference,
    /// and the destructor then releases nothing.
    AutoRefUnref(MultiRefObject const * object, e_deleteMode mode);
    ~AutoRefUnref();

private:
    MultiRefObject const * m_object;
    e_deleteMode m_mode;
};

/// The same guard as ::AutoRefUnref, nested in the class it guards. Copies are member-wise: each
/// copy releases again at its end.
class KDRCORE_API MultiRefObject::AutoRefUnref {
public:
    /// What the guard does at the end of its scope; values as in ::AutoRefUnref.
    enum e_deleteMode : int { e_noDelete = 0, e_delete = 1, e_deleteIfReferenced = 2 };

    /// As ::AutoRefUnref: resolves e_deleteIfReferenced, then takes a reference.
    AutoRefUnref(MultiRefObject const * object, e_deleteMode mode);
    ~AutoRefUnref();

private:
    MultiRefObject const * m_object;
    e_deleteMode m_mode;
};

/// Scope guard that takes over a reference the caller already counted and releases it at the end
/// of the scope. Null objects are accepted and never looked at. Copies are member-wise: each copy
/// releases again at its end.
class KDRCORE_API AutoUnref {
public:
    /// What the guard does at the end of its scope; values as in ::AutoRefUnref.
    enum e_deleteMode : int { e_noDelete = 0, e_delete = 1, e_deleteIfReferenced = 2 };

    /// Stores both and resolves e_deleteIfReferenced by the object's count now; the count itself
    /// is not touched.
    AutoUnref(MultiRefObject const * object, e_deleteMode mode);
    ~AutoUnref();

private:
    MultiRefObject const * m_object;
    e_deleteMode m_mode;
};

/// Null-tolerant base of counted smart pointers, which client headers define on it.
class KDRCORE_API CountedPtrBase {
protected:
    /// Null: nothing. Else count + 1.
    void ref(MultiRefObject const * object) {
        if (object != nullptr)
            object->ref();
    }
    /// Null: nothing. Else as MultiRefObject::unref, which may delete the object.
    void unref(MultiRefObject const * object) {
        if (object != nullptr)
            object->unref();
    }
};

#endif // KDRCORE_RUNTIME_MULTIREFOBJECT_H
