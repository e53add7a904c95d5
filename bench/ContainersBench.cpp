// bench/ContainersBench.cpp - BinarySort, KDRBoolArray and IDGenerator beside the standard
// library containers a host would use instead
#include "BenchSupport.h"

#include "kdrcore/containers/BinarySort.h"
#include "kdrcore/containers/IDGenerator.h"
#include "kdrcore/containers/KDRBoolArray.h"

#include <algorithm>
#include <bitset>
#include <cstring>
#include <memory>
#include <numeric>
#include <set>
#include <string>
#include <vector>

#if KDRCORE_BENCH_HAVE_BOOST
#include <boost/dynamic_bitset.hpp>
#endif

namespace kdrbench {
namespace {

// ---- BinarySort: rows of `cols` random bytes, the first byte most significant.

template <int Cols>
void addStableSort(std::string const & op, std::vector<unsigned char> data, int rows) {
    add(op, "std::stable_sort", 1, [data, order = std::vector<int>(rows)]() mutable {
        std::iota(order.begin(), order.end(), 0);
        unsigned char const * const d = data.data();
        std::stable_sort(order.begin(), order.end(), [d](int a, int b) {
            return std::memcmp(d + static_cast<std::size_t>(a) * Cols,
                               d + static_cast<std::size_t>(b) * Cols, Cols) < 0;
        });
    });
}

void registerSorts() {
    for (int rows : {10000, 1000000}) {
        for (int cols : {1, 4, 8}) {
            std::vector<unsigned char> data(static_cast<std::size_t>(rows) *
                                            static_cast<std::size_t>(cols));
            for (unsigned char & c : data)
                c = static_cast<unsigned char>(uniformInt(0, 255));
            std::string const op = std::string("BinarySort ") + (rows == 10000 ? "1e4" : "1e6") +
                                   " rows x " + std::to_string(cols) + " cols";
            add(op, KDRCORE, 1, [data, rows, cols, order = std::vector<int>(rows)]() mutable {
                BinarySort sorter;
                sorter.addItem(data.data(), static_cast<unsigned int>(cols));
                sorter.sort(rows, order.data());
            });
            if (cols == 1)
                addStableSort<1>(op, data, rows);
            else if (cols == 4)
                addStableSort<4>(op, data, rows);
            else
                addStableSort<8>(op, data, rows);
        }
    }
}

// ---- KDRBoolArray against std::vector<bool>, and at 1e6 bits std::bitset and
// boost::dynamic_bitset, each searched the way its own interface offers.

// count, findFirst (every set bit in turn) and union for a bit set `B` with `first(b)` and
// `next(b, i)`; `half` and `sparse` are shared, since a std::bitset of 1e6 bits is 125 kB.
template <class B, class First, class Next>
void addBitPeer(std::string const & peer, std::shared_ptr<B const> half,
                std::shared_ptr<B const> sparse, First first, Next next) {
    add("KDRBoolArray count 1e6", peer, 1, [half]() { benchmark::DoNotOptimize(half->count()); });
    add("KDRBoolArray findFirst 1e6", peer, 1, [sparse, first, next]() {
        int found = 0;
        for (std::size_t i = first(*sparse); i < sparse->size(); i = next(*sparse, i))
            ++found;
        benchmark::DoNotOptimize(found);
    });
    add("KDRBoolArray union 1e6", peer, 1, [half, into = std::make_shared<B>(*sparse)]() {
        *into |= *half;
        benchmark::DoNotOptimize(into->size());
    });
}

void registerBits() {
    for (int bits : {1000, 1000000}) {
        std::string const size = bits == 1000 ? "1e3" : "1e6";
        // Half the bits set, at random.
        KDRBoolArray half(bits, false);
        std::vector<bool> vhalf(static_cast<std::size_t>(bits), false);
        // About one bit in 500 set: the searches step from one to the next.
        KDRBoolArray sparse(bits, false);
        std::vector<bool> vsparse(static_cast<std::size_t>(bits), false);
        for (int i = 0; i < bits; ++i) {
            if (uniformInt(0, 1) == 1) {
                half.set(i);
                vhalf[static_cast<std::size_t>(i)] = true;
            }
            if (uniformInt(0, 499) == 0) {
                sparse.set(i);
                vsparse[static_cast<std::size_t>(i)] = true;
            }
        }

        add("KDRBoolArray count " + size, KDRCORE, 1,
            [half]() { benchmark::DoNotOptimize(half.getNumberOfBitSet()); });
        add("KDRBoolArray count " + size, "std::vector<bool>", 1,
            [vhalf]() { benchmark::DoNotOptimize(std::count(vhalf.begin(), vhalf.end(), true)); });

        // Every set bit in turn, each found by a search from the one before.
        add("KDRBoolArray findFirst " + size, KDRCORE, 1, [sparse]() {
            int found = 0;
            for (int i = sparse.findFirst(true, 0); i >= 0; i = sparse.findFirst(true, i + 1))
                ++found;
            benchmark::DoNotOptimize(found);
        });
        add("KDRBoolArray findFirst " + size, "std::vector<bool>", 1, [vsparse]() {
            int found = 0;
            for (auto it = std::find(vsparse.begin(), vsparse.end(), true); it != vsparse.end();
                 it = std::find(it + 1, vsparse.end(), true))
                ++found;
            benchmark::DoNotOptimize(found);
        });

        // Union into a copy of the sparse array (the same result at every repetition).
        add("KDRBoolArray union " + size, KDRCORE, 1, [half, into = sparse]() mutable {
            into.set(half);
            benchmark::DoNotOptimize(into.size());
        });
        add("KDRBoolArray union " + size, "std::vector<bool>", 1,
            [vhalf, into = vsparse]() mutable {
                for (std::size_t i = 0; i < into.size(); ++i)
                    into[i] = into[i] || vhalf[i];
                benchmark::DoNotOptimize(into.size());
            });

        if (bits == 1000000) {
            using Std = std::bitset<1000000>;
            auto toStd = [](std::vector<bool> const & v) {
                auto b = std::make_shared<Std>();
                for (std::size_t i = 0; i < v.size(); ++i)
                    b->set(i, v[i]);
                return std::shared_ptr<Std const>(b);
            };
            // libstdc++'s own search members.
            addBitPeer<Std>(
                "std::bitset", toStd(vhalf), toStd(vsparse),
                [](Std const & b) { return b._Find_first(); },
                [](Std const & b, std::size_t i) { return b._Find_next(i); });
#if KDRCORE_BENCH_HAVE_BOOST
            using Dyn = boost::dynamic_bitset<>;
            auto toDyn = [](std::vector<bool> const & v) {
                auto b = std::make_shared<Dyn>(v.size());
                for (std::size_t i = 0; i < v.size(); ++i)
                    b->set(i, v[i]);
                return std::shared_ptr<Dyn const>(b);
            };
            addBitPeer<Dyn>(
                "boost::dynamic_bitset", toDyn(vhalf), toDyn(vsparse),
                [](Dyn const & b) { return b.find_first(); },
                [](Dyn const & b, std::size_t i) { return b.find_next(i); });
#endif
        }
    }
}

// ---- IDGenerator against a std::set<int> of the ids in use

// Ids by std::set<int>: the ids in use (which freeing checks against) and the ids given back,
// which are handed out again lowest first before any new one.
class SetIds {
public:
    int generate() {
        int id;
        if (m_free.empty()) {
            id = m_next++;
        } else {
            id = *m_free.begin();
            m_free.erase(m_free.begin());
        }
        m_used.insert(id);
        return id;
    }
    bool release(int id) {
        if (m_used.erase(id) == 0)
            return false;
        m_free.insert(id);
        return true;
    }

private:
    std::set<int> m_used;
    std::set<int> m_free;
    int m_next = 1;
};

constexpr int IDS = 1000000;

void registerIds() {
    add("IDGenerator generateID x1e6", KDRCORE, IDS, []() {
        IDGenerator ids;
        for (int i = 0; i < IDS; ++i)
            benchmark::DoNotOptimize(ids.generateID());
    });
    add("IDGenerator generateID x1e6", "std::set<int>", IDS, []() {
        SetIds ids;
        for (int i = 0; i < IDS; ++i)
            benchmark::DoNotOptimize(ids.generate());
    });

    // 1e6 ids given out, then all given back in ascending order.
    add("IDGenerator generate+free x1e6", KDRCORE, 2 * IDS, []() {
        IDGenerator ids;
        for (int i = 0; i < IDS; ++i)
            ids.generateID();
        for (int i = 1; i <= IDS; ++i)
            benchmark::DoNotOptimize(ids.freeID(i));
    });
    add("IDGenerator generate+free x1e6", "std::set<int>", 2 * IDS, []() {
        SetIds ids;
        for (int i = 0; i < IDS; ++i)
            ids.generate();
        for (int i = 1; i <= IDS; ++i)
            benchmark::DoNotOptimize(ids.release(i));
    });

    // 1e4 ids in use; one at random is given back and the lowest free one taken, 1e5 times.
    std::vector<int> victims(100000);
    for (int & v : victims)
        v = uniformInt(1, 10000);
    add("IDGenerator free+regenerate x1e5", KDRCORE, 100000, [victims]() {
        IDGenerator ids;
        for (int i = 0; i < 10000; ++i)
            ids.generateID();
        for (int v : victims) {
            ids.freeID(v);
            benchmark::DoNotOptimize(ids.generateID());
        }
    });
    add("IDGenerator free+regenerate x1e5", "std::set<int>", 100000, [victims]() {
        SetIds ids;
        for (int i = 0; i < 10000; ++i)
            ids.generate();
        for (int v : victims) {
            ids.release(v);
            benchmark::DoNotOptimize(ids.generate());
        }
    });
}

} // namespace

void registerContainerBenchmarks() {
    registerSorts();
    registerBits();
    registerIds();
}

} // namespace kdrbench
