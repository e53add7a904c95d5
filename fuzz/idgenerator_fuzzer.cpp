// Fuzz target: IDGenerator against a model of its free ranges.
//
// The model keeps the sorted list of free ranges and applies the documented walks of
// generateID(), generateID(requested) and freeID to it, with the library's choices where the
// contract leaves one: an id that is free already cannot be freed again, clear() makes the
// generator as new, and the very last free id taken by request leaves an
// empty range as the mark of exhaustion. Ids come from both ends of the range, so that the top of
// the id space and the exhaustion mark are reached. Three generators take part, so that copies
// and assignments are checked to go on independently.
#include "FuzzCheck.h"

#include "kdrcore/containers/IDGenerator.h"

#include <climits>
#include <fuzzer/FuzzedDataProvider.h>
#include <utility>
#include <vector>

namespace {

struct Range {
    long long start;
    long long count;
};

constexpr long long FULL_START = 1;
constexpr long long FULL_COUNT = 0x7FFFFFFE;

struct Model {
    std::vector<Range> ranges{{FULL_START, FULL_COUNT}};

    int generate() {
        if (ranges.empty())
            ranges.push_back({FULL_START, FULL_COUNT});
        Range & first = ranges.front();
        if (first.count == 0)
            return -1;
        const long long id = first.start++;
        --first.count;
        if (first.count == 0 && ranges.size() > 1)
            ranges.erase(ranges.begin());
        return static_cast<int>(id);
    }

    int generate(int requested) {
        for (std::size_t i = 0; i < ranges.size(); ++i) {
            Range & r = ranges[i];
            if (r.start > requested)
                break;
            if (requested >= r.start + r.count)
                continue;
            const long long end = r.start + r.count;
            if (requested == r.start) {
                ++r.start;
                --r.count;
                if (r.count == 0 && ranges.size() > 1)
                    ranges.erase(ranges.begin() + static_cast<long>(i));
            } else if (requested == end - 1) {
                --r.count;
            } else {
                r.count = requested - r.start;
                ranges.insert(ranges.begin() + static_cast<long>(i) + 1,
                              Range{requested + 1LL, end - requested - 1});
            }
            return requested;
        }
        return generate();
    }

    bool isFree(long long id) const {
        for (const Range & r : ranges)
            if (id >= r.start && id < r.start + r.count)
                return true;
        return false;
    }

    bool free(int id) {
        if (id < 0 || ranges.empty() || isFree(id))
            return false;
        for (std::size_t i = 0; i < ranges.size(); ++i) {
            Range & r = ranges[i];
            if (id > r.start + r.count)
                continue;
            if (id == r.start + r.count) {
                ++r.count; // grows at the top, never merged with a range it touches
            } else if (id == r.start - 1) {
                --r.start;
                ++r.count;
            } else {
                ranges.insert(ranges.begin() + static_cast<long>(i), Range{id, 1});
            }
            return true;
        }
        return false;
    }
};

int consumeId(FuzzedDataProvider & in) {
    switch (in.ConsumeIntegralInRange(0, 3)) {
    case 0:
        return in.ConsumeIntegralInRange(-3, 40);
    case 1:
        return in.ConsumeIntegralInRange(INT_MAX - 12, INT_MAX);
    case 2:
        return in.ConsumeIntegralInRange(INT_MIN, INT_MIN + 2);
    default:
        return in.ConsumeIntegral<int>();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size) {
    FuzzedDataProvider in(data, size);
    IDGenerator generators[3];
    Model models[3];
    for (int step = 0; in.remaining_bytes() > 0 && step < 400; ++step) {
        const int which = in.ConsumeIntegralInRange(0, 2);
        IDGenerator & g = generators[which];
        Model & m = models[which];
        const int other = (which + 1 + in.ConsumeIntegralInRange(0, 1)) % 3;
        switch (in.ConsumeIntegralInRange(0, 9)) {
        case 0:
        case 1:
        case 2:
        case 3:
        case 4:
        case 5:
        case 6:
        case 7: { // generateID(), generateID(requested), freeID(id)
            const int kind = in.ConsumeIntegralInRange(0, 2), id = consumeId(in);
            const int expected = kind == 0 ? m.generate() : kind == 1 ? m.generate(id) : m.free(id);
            const int got = kind == 0   ? g.generateID()
                            : kind == 1 ? g.generateID(id)
                                        : g.freeID(id);
            FUZZ_CHECK(got == expected, "step %d: %s(%d) %d, expected %d", step,
                       kind == 2 ? "freeID" : "generateID", id, got, expected);
            break;
        }
        case 8: {
            const int kind = in.ConsumeIntegralInRange(0, 2);
            if (kind == 0) {
                g = generators[other];
            } else if (kind == 1) {
                IDGenerator copy(generators[other]);
                g = copy; // the copy dies here: g must not share its ranges
            } else {
                IDGenerator & self = g;
                g = self;
                break;
            }
            m = models[other];
            break;
        }
        default:
            g.clear();
            m = Model();
            break;
        }
    }
    // Drain a few ids from each: the generators must agree with their models to the end.
    for (int k = 0; k < 3; ++k)
        for (int i = 0; i < 8; ++i) {
            const int expected = models[k].generate();
            FUZZ_CHECK(generators[k].generateID() == expected, "final drain of %d", k);
        }
    return 0;
}
