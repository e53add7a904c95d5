// KDRExit.cpp - the registry of exit functions
#include "kdrcore/runtime/KDRExit.h"

namespace {

using ExitFunction = void (*)();

// Set while exit() runs the functions, so that an exit() from inside one of them does nothing.
bool running = false;

} // namespace

ExitFunction * KDRExit::m_exitFunctions = nullptr;
int KDRExit::m_numExitFunctions = 0;

void KDRExit::addExitFun(void (*function)()) {
    // -1 (exit has run) starts a new registry.
    int const count = m_numExitFunctions < 0 ? 0 : m_numExitFunctions;
    auto * const grown = new ExitFunction[static_cast<unsigned>(count) + 1];
    for (int i = 0; i < count; ++i)
        grown[i] = m_exitFunctions[i];
    grown[count] = function;
    delete[] m_exitFunctions;
    m_exitFunctions = grown;
    m_numExitFunctions = count + 1;
}

void KDRExit::exit() {
    if (running || m_numExitFunctions <= 0)
        return;
    struct Running {
        Running() { running = true; }
        ~Running() { running = false; }
    } const guard;
    // Array and count are read afresh after each call: a function may add another, which then
    // stands at the current count and runs next.
    while (m_numExitFunctions != 0) {
        --m_numExitFunctions;
        m_exitFunctions[m_numExitFunctions]();
    }
    m_numExitFunctions = -1;
    delete[] m_exitFunctions;
    m_exitFunctions = nullptr;
}
