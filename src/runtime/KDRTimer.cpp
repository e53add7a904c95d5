// KDRTimer.cpp - the process-wide time base and the laps
#include "kdrcore/runtime/KDRTimer.h"

#include "WideFormat.h"

#include <chrono>
#include <cstdint>

bool KDRTimer::timingInitDone = false;
void (*KDRTimer::m_outFunction)(unsigned short const *) = nullptr;

namespace {

// The counter is the steady clock, read in nanoseconds: a frequency of 1e9 ticks per second.
using Ticks = std::chrono::nanoseconds;

std::int64_t startCount = 0; // the counter at the time base
double secondsPerTick = 0.0; // 0 until the time base is set, so that all times read 0.0

bool queryFrequency(std::int64_t & frequency) {
    frequency = Ticks::period::den / Ticks::period::num;
    return frequency != 0;
}

bool queryCounter(std::int64_t & count) {
    count = std::chrono::duration_cast<Ticks>(std::chrono::steady_clock::now().time_since_epoch())
                .count();
    return true;
}

unsigned short const emptyName[1] = {0};

constexpr kdrcore::detail::Text16 lineFormat(" %d: %s = %.5f  [%.5f]");
constexpr std::size_t lineRoom = 100; // 16-bit units, terminator included

bool sameText(unsigned short const * a, unsigned short const * b) {
    if (a == b)
        return true;
    if (a == nullptr || b == nullptr)
        return false;
    for (; *a == *b; ++a, ++b) {
        if (*a == 0)
            return true;
    }
    return false;
}

} // namespace

bool KDRTimer::initTimingTools() {
    if (timingInitDone)
        return true;
    std::int64_t frequency = 0;
    if (!queryFrequency(frequency) || frequency == 0)
        return false;
    secondsPerTick = 1.0 / static_cast<double>(frequency);
    if (!queryCounter(startCount))
        return false;
    timingInitDone = true;
    return true;
}

double KDRTimer::getElapsedTime() {
    std::int64_t now = 0;
    queryCounter(now);
    return static_cast<double>(now - startCount) * secondsPerTick;
}

KDRTimer::KDRTimer() : m_name(emptyName), m_resetTime(0.0) {
    initTimingTools();
    reset(emptyName);
}

void KDRTimer::reset() {
    m_resetTime = getElapsedTime();
}

void KDRTimer::reset(unsigned short const * name) {
    m_name = name;
    m_resetTime = getElapsedTime();
    m_times.clear();
    m_names.clear();
    m_times.reserve(15);
    m_names.reserve(15);
}

double KDRTimer::getElapsedTimeFromReset() const {
    return getElapsedTime() - m_resetTime;
}

void KDRTimer::pushTime(unsigned short const * name) {
    m_times.push_back(getElapsedTime());
    m_names.push_back(name);
}

double KDRTimer::findTime(unsigned short const * name, int & index, int) {
    for (int i = 0; i < m_names.size(); ++i) {
        if (sameText(m_names[static_cast<std::size_t>(i)], name)) {
            index = i;
            return m_times[static_cast<std::size_t>(i)];
        }
    }
    index = -1;
    return 0.0;
}

void KDRTimer::print() {
    if (m_outFunction == nullptr || m_times.size() == 0)
        return;
    double previous = m_resetTime;
    for (int i = 0; i < m_times.size(); ++i) {
        double const t = m_times[static_cast<std::size_t>(i)];
        unsigned short line[lineRoom];
        kdrcore::detail::formatWide(line, lineRoom, lineFormat.text, i,
                                    m_names[static_cast<std::size_t>(i)], t - m_resetTime,
                                    t - previous);
        m_outFunction(line);
        previous = t;
    }
}
