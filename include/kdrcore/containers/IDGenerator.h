// kdrcore/containers/IDGenerator.h - allocation of integer identifiers by free ranges
#ifndef KDRCORE_CONTAINERS_IDGENERATOR_H
#define KDRCORE_CONTAINERS_IDGENERATOR_H

#include "kdrcore/KDRExport.h"

/// One range of free ids: m_start to m_start + m_count - 1.
struct s_IDRange {
    int m_start;
    int m_count;
    s_IDRange * m_next;
};

/// Hands out positive integer ids and takes them back, keeping the free ids as a list of ranges,
/// so that memory grows with the number of holes, not of ids. A new generator has the ids 1 to
/// 2147483646 free.
///
/// Invariant: the ranges ascend by m_start and do not overlap; adjacent ranges may touch (they are
/// never merged). Only the last range may be empty: it then marks that all its ids were given
/// out, and generateID() gives -1 while it is the only range. The generator owns its ranges.
/// One thread at a time.
class KDRCORE_API IDGenerator {
public:
    IDGenerator();
    IDGenerator(IDGenerator const & other);
    ~IDGenerator();
    /// Replaces the ranges with a copy of other's. Assigning a generator to itself changes nothing.
    IDGenerator const & operator=(IDGenerator const & other);

    /// The lowest free id, or -1 when none is left. Constant time.
    int generateID() {
        s_IDRange * const first = m_freeRanges;
        if (first != nullptr && first->m_count > 1) {
            --first->m_count;
            return first->m_start++;
        }
        return generateIDSlow();
    }

    /// `requested` when it is free; otherwise, as generateID(), the lowest free id (so compare the
    /// result with `requested` when it matters). Linear in the number of ranges.
    int generateID(int requested);

    /// Gives `id` back. True when it joined the free ids; false when it is negative, already
    /// free, or above the end of the last range. Any other id is accepted, also one that was
    /// never given out: 0, and 2147483647, which joins the top of the last range. Linear in the
    /// number of ranges.
    bool freeID(int id);

    /// Makes the generator as new: one full range, every id free (ids in use are forgotten).
    void clear();

private:
    int generateIDSlow();

    s_IDRange * m_freeRanges;
};

#endif // KDRCORE_CONTAINERS_IDGENERATOR_H
