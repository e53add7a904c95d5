// Fuzz target: IDGenerator against a model of its free ranges.
//
// The model keeps the sorted list of free ranges and applies the documented walks of
// generateID(), generateID(requested) and freeID to it, with the library's choices where the
// contract leaves one: an id that is free already cannot be freed again, clear() makes the
// generator as new, and the very last free id taken by request leaves an empty range as the mark
// of exhaustion. Ids come from both ends of the range, so that the top of the id space and the
// exhaustion mark are reached. Three generators take part, so that copies and assignments are
// checked to go on independently; after each operation a copy of each generator must give the
// model's next id.
#include "Fuzz.h"

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
        long long const id = first.start++;
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
            long long const end = r.start + r.count;
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
        for (Range const & r : ranges)
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

struct State {
    IDGenerator generators[3];
    Model models[3];
    int which = 0, other = 1;

    IDGenerator & g() { return generators[which]; }
    Model & m() { return models[which]; }

    void check() const {
        for (int k = 0; k < 3; ++k) {
            IDGenerator copy(generators[k]);
            Model next = models[k];
            int const expected = next.generate();
            FUZZ_CHECK(copy.generateID() == expected, "generator %d, next id not %d", k, expected);
        }
    }
};

using In = FuzzedDataProvider;

void expectId(int got, int expected, char const * what, int id) {
    FUZZ_CHECK(got == expected, "%s(%d) %d, expected %d", what, id, got, expected);
}

fuzz::Operation<State> const OPS[] = {
    {"choose",
     [](State & s, In & in) {
         s.which = in.ConsumeIntegralInRange(0, 2);
         s.other = (s.which + 1 + in.ConsumeIntegralInRange(0, 1)) % 3;
     }},
    {"generateID()",
     [](State & s, In &) { expectId(s.g().generateID(), s.m().generate(), "generateID", 0); }},
    {"generateID(requested)",
     [](State & s, In & in) {
         int const id = consumeId(in);
         expectId(s.g().generateID(id), s.m().generate(id), "generateID", id);
     }},
    {"freeID",
     [](State & s, In & in) {
         int const id = consumeId(in);
         expectId(s.g().freeID(id), s.m().free(id), "freeID", id);
     }},
    {"operator=",
     [](State & s, In &) {
         s.g() = s.generators[s.other];
         s.m() = s.models[s.other];
     }},
    {"copy construction",
     [](State & s, In &) {
         IDGenerator copy(s.generators[s.other]);
         s.g() = copy; // the copy dies here: g must not share its ranges
         s.m() = s.models[s.other];
     }},
    {"self-assignment",
     [](State & s, In &) {
         IDGenerator & self = s.g();
         s.g() = self;
     }},
    {"clear",
     [](State & s, In &) {
         s.g().clear();
         s.m() = Model();
     }},
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * data, std::size_t size) {
    FuzzedDataProvider in(data, size);
    State state;
    fuzz::runModel(state, in, OPS, 400);
    return 0;
}
