// Tests of KDRTimer: the time base, laps, findTime and the printed lines.
#include "kdrcore/runtime/KDRTimer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

namespace {

// Read while this program starts, before any test could have made a timer.
bool const initDoneAtStart = KDRTimer::timingInitDone;
double const elapsedAtStart = KDRTimer::getElapsedTime();

// Zero-terminated 16-bit copy of `ascii`; pass `.data()` where the timer takes a name.
std::vector<unsigned short> name16(std::string const & ascii) {
    std::vector<unsigned short> out(ascii.begin(), ascii.end());
    out.push_back(0);
    return out;
}

std::vector<std::string> printed; // the lines handed to m_outFunction, narrowed

void collectLine(unsigned short const * line) {
    printed.emplace_back();
    while (*line != 0)
        printed.back() += static_cast<char>(*line++);
}

} // namespace

TEST(KDRTimer, TimeBaseIsSetOnceAndShared) {
    EXPECT_FALSE(initDoneAtStart);
    EXPECT_EQ(elapsedAtStart, 0.0); // no time base yet: seconds per tick is still 0
    EXPECT_TRUE(KDRTimer::initTimingTools() && KDRTimer::timingInitDone);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    double const before = KDRTimer::getElapsedTime();
    EXPECT_TRUE(before >= 0.02 && before < 3600.0); // seconds, not ticks or milliseconds
    // Neither a repeated initialisation nor a new timer moves the base back to zero.
    EXPECT_TRUE(KDRTimer::initTimingTools());
    const KDRTimer second;
    EXPECT_GE(second.m_resetTime, before);
}

TEST(KDRTimer, LapsFindTimePrintAndResets) {
    KDRTimer::m_outFunction = collectLine;
    KDRTimer timer;
    int index = 7;
    char const * ascii[4] = {"draw", "load", "load", ""};
    const std::vector<unsigned short> names[4] = {name16(ascii[0]), name16(ascii[1]),
                                                  name16(ascii[2]), name16(ascii[3])},
                                      load = name16("load"), prefix = name16("loa");
    EXPECT_EQ(timer.findTime(load.data(), index, 0), 0.0);
    EXPECT_EQ(index, -1);
    timer.print(); // no laps, no lines
    for (auto const & name : names) {
        std::this_thread::sleep_for(std::chrono::milliseconds(3));
        timer.pushTime(name.data());
    }
    // Another pointer to the same characters finds the first lap of that name; its time counts
    // from the time base, not from the reset. An empty name finds an empty name.
    EXPECT_EQ(timer.findTime(load.data(), index, 12345), timer.m_times[1]);
    EXPECT_EQ(index, 1);
    timer.findTime(names[3].data(), index, 0);
    EXPECT_EQ(index, 3);
    timer.findTime(prefix.data(), index, 0);
    EXPECT_EQ(index, -1);

    const KDRTimer before = timer;
    KDRTimer::m_outFunction = nullptr;
    timer.print(); // no output function: nothing happens
    KDRTimer::m_outFunction = collectLine;
    timer.print();
    ASSERT_EQ(printed.size(), 4u);
    for (std::size_t i = 0; i < 4; ++i) { // from the origin to the lap, and from the lap before
        double const t = timer.m_times[i], previous = i ? timer.m_times[i - 1] : timer.m_resetTime;
        char line[256];
        std::snprintf(line, sizeof line, " %zu: %s = %.5f  [%.5f]", i, ascii[i],
                      t - timer.m_resetTime, t - previous);
        EXPECT_EQ(printed[i], line);
    }
    EXPECT_TRUE(timer.m_times == before.m_times && timer.m_names == before.m_names &&
                timer.m_resetTime == before.m_resetTime); // print changes nothing

    // reset() moves the origin only: earlier laps print negative. A line longer than the
    // buffer of 100 units is cut to 99 and terminated.
    printed.clear();
    const std::string longName(150, 'n');
    const std::vector<unsigned short> longName16 = name16(longName);
    timer.m_names[1] = longName16.data();
    timer.reset();
    EXPECT_GT(timer.m_resetTime, before.m_resetTime);
    timer.print();
    ASSERT_EQ(printed.size(), 4u);
    EXPECT_EQ(printed[0].rfind(" 0: draw = -", 0), 0u) << printed[0];
    EXPECT_EQ(printed[1], " 1: " + longName.substr(0, 95));
    timer.reset(load.data()); // a new series, with room for 15 laps
    EXPECT_TRUE(timer.m_name == load.data() && timer.m_times.size() == 0 &&
                timer.m_names.size() == 0);
    EXPECT_TRUE(timer.m_times.capacity() >= 15u && timer.m_names.capacity() >= 15u);
    KDRTimer::m_outFunction = nullptr;
}
