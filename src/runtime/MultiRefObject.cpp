// MultiRefObject.cpp - reference counting and the release rule shared by the three guards
#include "kdrcore/runtime/MultiRefObject.h"

namespace {

// Modes as stored by every guard: 0 releases without deleting, 1 releases and may delete, any
// other value releases nothing.
int resolveMode(MultiRefObject const * object, int mode) {
    if (object != nullptr && mode == 2)
        return object->getRefCount() != 0 ? 1 : 0;
    return mode;
}

void release(MultiRefObject const * object, int mode) {
    if (object == nullptr)
        return;
    if (mode == 0)
        object->unrefNoDelete();
    else if (mode == 1)
        object->unref();
}

} // namespace

MultiRefObject::~MultiRefObject() = default;

void MultiRefObject::unref() const {
    if (--m_refCount == 0)
        delete this;
}

AutoRefUnref::AutoRefUnref(MultiRefObject const * object, e_deleteMode mode)
    : m_object(object), m_mode(static_cast<e_deleteMode>(resolveMode(object, mode))) {
    if (m_object != nullptr)
        m_object->ref();
}

AutoRefUnref::~AutoRefUnref() {
    release(m_object, m_mode);
}

MultiRefObject::AutoRefUnref::AutoRefUnref(MultiRefObject const * object, e_deleteMode mode)
    : m_object(object), m_mode(static_cast<e_deleteMode>(resolveMode(object, mode))) {
    if (m_object != nullptr)
        m_object->ref();
}

MultiRefObject::AutoRefUnref::~AutoRefUnref() {
    release(m_object, m_mode);
}

AutoUnref::AutoUnref(MultiRefObject const * object, e_deleteMode mode)
    : m_object(object), m_mode(static_cast<e_deleteMode>(resolveMode(object, mode))) {}

AutoUnref::~AutoUnref() {
    release(m_object, m_mode);
}
