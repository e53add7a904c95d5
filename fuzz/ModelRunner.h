// fuzz/ModelRunner.h - the one runner of the model-based fuzz targets
//
// A target keeps its real objects and their models in a State and lists its operations in a
// table: a name, and a function that decodes the operation's arguments from the input, applies
// it to the real object and to the model, and checks what the call returned. The runner decodes
// the index of an operation, applies it, then has the State compare everything observable with
// its model (State::check), until the input runs out.
#ifndef KDRCORE_FUZZ_MODELRUNNER_H
#define KDRCORE_FUZZ_MODELRUNNER_H

#include "FuzzCheck.h"

#include <cstddef>
#include <fuzzer/FuzzedDataProvider.h>

namespace fuzz {

template <class State> struct Operation {
    char const * name;
    void (*apply)(State & state, FuzzedDataProvider & in, int step);
};

template <class State, std::size_t N>
void runModel(State & state, FuzzedDataProvider & in, Operation<State> const (&ops)[N],
              int maxSteps) {
    for (int step = 0; step < maxSteps && in.remaining_bytes() > 0; ++step) {
        Operation<State> const & op = ops[in.ConsumeIntegralInRange<std::size_t>(0, N - 1)];
        op.apply(state, in, step);
        state.check(op.name, step);
    }
}

} // namespace fuzz

#endif // KDRCORE_FUZZ_MODELRUNNER_H
