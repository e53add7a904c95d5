// kdrcore/containers/KDRPtrList.h - singly and doubly linked lists of pointers with a cursor
#ifndef KDRCORE_CONTAINERS_KDRPTRLIST_H
#define KDRCORE_CONTAINERS_KDRPTRLIST_H

#include "kdrcore/KDRExport.h"

/// Element of KDRPtrList.
struct s_KDRPtrListElement {
    void * m_data;
    s_KDRPtrListElement * m_next; ///< null at the end
};

/// Element of KDRPtrDList.
struct s_KDRPtrDListElement {
    void * m_data;
    s_KDRPtrDListElement * m_prev; ///< null at the start
    s_KDRPtrDListElement * m_next; ///< null at the end
};

/// Singly linked list of untyped pointers with a cursor: one current element and its position.
/// Invariant: empty (all pointers null, position -1, size 0) or the cursor on a live element at
/// its true position. Operations that reach an element by position move the cursor there; the
/// cursor never refers to a freed element. The list owns its elements, never the data they point
/// to: no operation frees, copies or looks into the data. Null data are stored like any other.
///
/// Cursor after each operation:
///  - prepend, insert at 0: same element, position + 1; append: unchanged. The first element to
///    enter an empty list takes the cursor at position 0.
///  - insert elsewhere, the end included: on the new element.
///  - insertSorted: at an end as prepend / append; in the middle on the new element.
///  - getData, getElement, goToPosition, goToData: on the element reached; unchanged on failure.
///  - removeFirstData: on the new first element when it stood on the removed one, else same
///    element, position - 1. removeLastData: on the new last element.
///  - removeData in the middle: on the predecessor of the removed element; removeData(data)
///    without a match: on the last element.
///  - removeRange: see there. reverseList, copies: on the first element, position 0.
/// Failed allocations give false (insertSorted: -1) with the list unchanged; copies throw
/// std::bad_alloc.
class KDRCORE_API KDRPtrList {
public:
    KDRPtrList();
    /// Same data pointers, in order; the cursor on the first element.
    KDRPtrList(KDRPtrList const & other);
    /// As the copy constructor; assigning a list to itself changes nothing.
    KDRPtrList & operator=(KDRPtrList const & other);
    virtual ~KDRPtrList();

    /// New first element. Always true.
    bool prepend(void * data);
    /// New last element. Always true.
    bool append(void * data);
    /// Null on an empty list (as for null data).
    void * getFirstData() const;
    void * getLastData() const;
    /// Data of the current element; null on an empty list.
    void * getCurrentData() const;
    /// -1 on an empty list.
    int getCurrentPosition() const { return m_currentPosition; }
    int size() const { return m_size; }
    bool isEmpty() const { return m_size == 0; }

    /// Cursor on the first / last element; false on an empty list.
    bool goToStart();
    bool goToEnd();
    /// Cursor one on; false, cursor unchanged, when there is no next element.
    bool goToNext();
    /// Cursor on the first element holding `data` (pointer comparison). False, cursor unchanged,
    /// when there is none or `data` is null.
    bool goToData(void * data);
    /// Cursor on `position`, walking from the cursor when going forward, else from the start.
    /// False, cursor unchanged, for a position outside [0, size()).
    bool goToPosition(int position);
    /// goToPosition, then the data there; null on failure.
    void * getData(int position);
    /// goToPosition, then the element there; null on failure.
    s_KDRPtrListElement * getElement(int position);

    /// Inserts so that the new element is at `position`, 0 <= position <= size(). Refused (false,
    /// nothing changed) outside that range and on an empty list, even at position 0.
    bool insert(void * data, int position);
    /// Inserts into a list kept in ascending order of `compare(data, elementData)` (negative: data
    /// goes first). Ties with the first element go before it, ties with the last behind it, ties
    /// with the current element in the middle are refused; the cursor serves as the search's
    /// start hint. Returns the new element's position, or -1 when refused or `data` is null.
    int insertSorted(void * data, int (*compare)(void *, void *));

    /// False on an empty list.
    bool removeFirstData();
    bool removeLastData();
    /// False for a position outside [0, size()).
    bool removeData(int position);
    /// Removes the first element holding `data`. False when `data` is null or not found.
    bool removeData(void * data);
    /// Removes positions [from, to); false, nothing changed, unless 0 <= from < to <= size().
    /// A cursor before the range stays; one behind it keeps its element, position - (to - from);
    /// one inside moves to the element that followed the range, at position `from`, or, when
    /// the range reached the end, to the new last element.
    bool removeRange(int from, int to);
    /// Frees every element; `flag` has no effect, the data are never touched. False when the
    /// list was empty already.
    bool removeAll(bool flag = false);
    /// Reverses the order; cursor on the new first element. False, nothing changed, below two
    /// elements.
    bool reverseList();

protected:
    /// Sets the fields to the empty state; frees nothing.
    void init();
    /// removeAll, then one new element per element of `other`; cursor on the first.
    void copy(KDRPtrList const & other);

private:
    s_KDRPtrListElement * m_first;
    s_KDRPtrListElement * m_last;
    s_KDRPtrListElement * m_current; // null exactly when the list is empty
    int m_currentPosition;           // -1 exactly when the list is empty
    int m_size;
};

/// Doubly linked list of untyped pointers with a cursor. Same fields, invariant, ownership and
/// cursor rules as KDRPtrList, but for insert at position size(), which appends and leaves the
/// cursor where it was. goToPosition walks forward as in KDRPtrList: m_prev serves goToPrev,
/// removeLastData and the unlinking only.
class KDRCORE_API KDRPtrDList {
public:
    KDRPtrDList();
    /// Same data pointers, in order; the cursor on the first element.
    KDRPtrDList(KDRPtrDList const & other);
    /// As the copy constructor; assigning a list to itself changes nothing.
    KDRPtrDList & operator=(KDRPtrDList const & other);
    virtual ~KDRPtrDList();

    bool prepend(void * data);
    bool append(void * data);
    void * getFirstData() const;
    void * getLastData() const;
    /// Null on an empty list.
    void * getCurrentData() const;
    int getCurrentPosition() const { return m_currentPosition; }
    int size() const { return m_size; }
    bool isEmpty() const { return m_size == 0; }

    bool goToStart();
    bool goToEnd();
    bool goToNext();
    /// Cursor one back; false, cursor unchanged, when there is no previous element (and on an
    /// empty list).
    bool goToPrev();
    bool goToData(void * data);
    bool goToPosition(int position);
    void * getData(int position);
    s_KDRPtrDListElement * getElement(int position);

    /// As KDRPtrList::insert, except that position size() appends and keeps the cursor.
    bool insert(void * data, int position);

    bool removeFirstData();
    bool removeLastData();
    bool removeData(int position);
    bool removeData(void * data);
    /// Frees every element; `flag` has no effect. False when the list was empty already.
    bool removeAll(bool flag = false);
    bool reverseList();

protected:
    void init();
    void copy(KDRPtrDList const & other);

private:
    s_KDRPtrDListElement * m_first;
    s_KDRPtrDListElement * m_last;
    s_KDRPtrDListElement * m_current;
    int m_currentPosition;
    int m_size;
};

#endif // KDRCORE_CONTAINERS_KDRPTRLIST_H
