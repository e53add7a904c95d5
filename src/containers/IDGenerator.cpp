// IDGenerator.cpp - allocation of integer identifiers by free ranges
#include "kdrcore/containers/IDGenerator.h"

#include <climits>

namespace {

// The ids of a new generator: 1 to 2147483646.
constexpr int FULL_START = 1;
constexpr int FULL_COUNT = 0x7FFFFFFE;

// Deletes the list of ranges from `first` on (a generator owns its nodes).
void freeRanges(s_IDRange * first) {
    while (first != nullptr) {
        s_IDRange * const next = first->m_next;
        delete first;
        first = next;
    }
}

// A copy of the list from `first` on; on a failed allocation nothing is kept and it rethrows.
s_IDRange * copyRanges(s_IDRange const * first) {
    s_IDRange * head = nullptr;
    s_IDRange ** link = &head;
    try {
        for (s_IDRange const * r = first; r != nullptr; r = r->m_next) {
            *link = new s_IDRange{r->m_start, r->m_count, nullptr};
            link = &(*link)->m_next;
        }
    } catch (...) {
        freeRanges(head);
        throw;
    }
    return head;
}

} // namespace

// A range ends (m_start + m_count) at 2147483648 at most, once freeID has given 2147483647 back:
// that end is no int, so the code compares id - m_start with m_count and never forms the sum.
// When 2147483647 itself is given out from a range that stays as the empty mark, the range keeps
// the start 2147483647 (no id follows it). It holds no free id all the same, and freeID gives the
// result an empty range at 2147483648 would: 2147483647 joins at its top, 2147483646 at its bottom.

IDGenerator::IDGenerator() : m_freeRanges(new s_IDRange{FULL_START, FULL_COUNT, nullptr}) {}

IDGenerator::IDGenerator(IDGenerator const & other)
    : m_freeRanges(copyRanges(other.m_freeRanges)) {}

IDGenerator::~IDGenerator() {
    freeRanges(m_freeRanges);
}

IDGenerator const & IDGenerator::operator=(IDGenerator const & other) {
    if (this != &other) {
        // Copy first, so that a failed allocation leaves this generator as it was.
        s_IDRange * const copy = copyRanges(other.m_freeRanges);
        freeRanges(m_freeRanges);
        m_freeRanges = copy;
    }
    return *this;
}

void IDGenerator::clear() {
    s_IDRange * const full = new s_IDRange{FULL_START, FULL_COUNT, nullptr};
    freeRanges(m_freeRanges);
    m_freeRanges = full;
}

// The rare cases of generateID(): no range, a first range with one id left, or none.
int IDGenerator::generateIDSlow() {
    if (m_freeRanges == nullptr)
        m_freeRanges = new s_IDRange{FULL_START, FULL_COUNT, nullptr};
    s_IDRange * const first = m_freeRanges;
    if (first->m_count == 0)
        return -1;
    int const result = first->m_start;
    if (result < INT_MAX)
        ++first->m_start;
    --first->m_count;
    // An empty last range stays as the mark of exhaustion.
    if (first->m_count == 0 && first->m_next != nullptr) {
        m_freeRanges = first->m_next;
        delete first;
    }
    return result;
}

int IDGenerator::generateID(int requested) {
    s_IDRange ** link = &m_freeRanges;
    for (s_IDRange * r = *link; r != nullptr; link = &r->m_next, r = *link) {
        if (r->m_start > requested)
            break; // below this range and above the previous one: in use
        int const offset = requested - r->m_start; // >= 0: the range starts at or below it
        if (offset >= r->m_count)
            continue;
        if (offset == 0) {
            if (requested < INT_MAX)
                r->m_start = requested + 1;
            --r->m_count;
            // An emptied range goes, unless it is the only one: then it stays as the mark of
            // exhaustion, as after generateID().
            if (r->m_count == 0 && (r->m_next != nullptr || r != m_freeRanges)) {
                *link = r->m_next;
                delete r;
            }
        } else if (offset == r->m_count - 1) {
            --r->m_count;
        } else {
            r->m_next = new s_IDRange{requested + 1, r->m_count - offset - 1, r->m_next};
            r->m_count = offset;
        }
        return requested;
    }
    return generateID();
}

bool IDGenerator::freeID(int id) {
    if (id < 0 || m_freeRanges == nullptr)
        return false;
    // id and every m_start are at least 0, so id - m_start cannot overflow.
    s_IDRange ** link = &m_freeRanges;
    s_IDRange * r = *link;
    while (r != nullptr && id - r->m_start > r->m_count) {
        link = &r->m_next;
        r = *link;
    }
    if (r == nullptr)
        return false;
    if (id - r->m_start == r->m_count) {
        // A following range that touches this one may hold the id already.
        s_IDRange const * const next = r->m_next;
        if (next != nullptr && next->m_start == id && next->m_count > 0)
            return false;
        if (r->m_count == INT_MAX) // all of 0 to 2147483646: the top id gets a range of its own
            r->m_next = new s_IDRange{id, 1, r->m_next};
        else
            ++r->m_count; // grows at the top, not merged with a range it now touches
        return true;
    }
    if (id == r->m_start - 1 && r->m_count < INT_MAX) {
        r->m_start = id;
        ++r->m_count;
        return true;
    }
    if (id >= r->m_start)
        return false; // free already
    *link = new s_IDRange{id, 1, r};
    return true;
}
