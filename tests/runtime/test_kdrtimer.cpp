// Tests of KDRTimer: the time base, laps, findTime and the printed lines.
#include "Text16Helpers.h"

#include "kdrcore/runtime/KDRTimer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <regex>
#include <string>
#include <thread>
#include <vector>

namespace {

// Read while this program starts, before any test could have made a timer.
const bool initDoneAtStart = KDRTimer::timingInitDone;
const double elapsedAtStart = KDRTimer::getElapsedTime();

std::vector<std::string> printedLines;
std::vector<std::size_t> printedLengths;

void collectLine(const unsigned short * line) {
    std::size_t n = 0;
    while (line[n] != 0)
        ++n;
    printedLengths.push_back(n);
    printedLines.push_back(text16::narrow(line, n));
}

// Installs collectLine for one test and removes it afterwards.
class KDRTimerPrint : public ::testing::Test {
protected:
    void SetUp() override {
        printedLines.clear();
        printedLengths.clear();
        KDRTimer::m_outFunction = collectLine;
    }
    void TearDown() override { KDRTimer::m_outFunction = nullptr; }
};

std::string fixed5(double seconds) {
    char text[64];
    std::snprintf(text, sizeof text, "%.5f", seconds);
    return text;
}

void waitALittle() {
    std::this_thread::sleep_for(std::chrono::milliseconds(3));
}

} // namespace

TEST(KDRTimer, TimeBaseIsSetOnceAndShared) {
    EXPECT_FALSE(initDoneAtStart);
    EXPECT_EQ(elapsedAtStart, 0.0); // no time base yet: seconds per tick is still 0

    EXPECT_TRUE(KDRTimer::initTimingTools());
    EXPECT_TRUE(KDRTimer::timingInitDone);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    double const before = KDRTimer::getElapsedTime();
    EXPECT_GE(before, 0.02); // seconds, not ticks or milliseconds
    EXPECT_LT(before, 3600.0);
    // Neither a repeated initialisation nor a new timer moves the base back to zero.
    EXPECT_TRUE(KDRTimer::initTimingTools());
    KDRTimer const second;
    EXPECT_GE(second.m_resetTime, before);
    EXPECT_GE(KDRTimer::getElapsedTime(), second.m_resetTime);
    EXPECT_GE(second.getElapsedTimeFromReset(), 0.0);
}

TEST(KDRTimer, LapsFindTimeByContentsAndResets) {
    KDRTimer timer;
    int index = 7;
    std::vector<unsigned short> const load = text16::make("load"), draw = text16::make("draw"),
                                      loadAgain = text16::make("load"), empty = text16::make(""),
                                      prefix = text16::make("loa");
    EXPECT_EQ(timer.findTime(load.data(), index, 0), 0.0);
    EXPECT_EQ(index, -1);
    timer.pushTime(draw.data());
    waitALittle();
    timer.pushTime(loadAgain.data());
    timer.pushTime(load.data());
    timer.pushTime(empty.data());
    ASSERT_EQ(timer.m_names.size(), 4);
    // Another pointer to the same characters finds the first lap of that name; its time counts
    // from the time base, not from the reset.
    EXPECT_EQ(timer.findTime(load.data(), index, 12345), timer.m_times[1]);
    EXPECT_EQ(index, 1);
    EXPECT_GT(timer.m_times[1], timer.m_resetTime);
    timer.findTime(empty.data(), index, 0);
    EXPECT_EQ(index, 3);
    timer.findTime(prefix.data(), index, 0);
    EXPECT_EQ(index, -1);

    double const firstOrigin = timer.m_resetTime;
    timer.reset(); // moves the origin only
    EXPECT_GT(timer.m_resetTime, firstOrigin);
    EXPECT_EQ(timer.m_times.size(), 4);
    timer.reset(load.data()); // a new series, with room for 15 laps
    EXPECT_EQ(timer.m_name, load.data());
    EXPECT_EQ(timer.m_times.size(), 0);
    EXPECT_EQ(timer.m_names.size(), 0);
    EXPECT_GE(timer.m_times.capacity(), 15u);
    EXPECT_GE(timer.m_names.capacity(), 15u);
}

TEST_F(KDRTimerPrint, OneLinePerLapInTheFixedFormat) {
    KDRTimer timer;
    timer.print();
    EXPECT_TRUE(printedLines.empty()); // no laps, no lines

    std::vector<unsigned short> const names[3] = {text16::make("parse"), text16::make("solve"),
                                                  text16::make("draw")};
    for (const auto & name : names) {
        waitALittle();
        timer.pushTime(name.data());
    }
    KDRTimer::m_outFunction = nullptr;
    KDRTimer const before = timer;
    timer.print(); // no output function: nothing happens
    EXPECT_TRUE(printedLines.empty());
    KDRTimer::m_outFunction = collectLine;

    timer.print();
    ASSERT_EQ(printedLines.size(), 3u);
    std::regex const shape(R"( (\d+): (\w+) = (-?\d+\.\d{5})  \[(-?\d+\.\d{5})\])");
    for (int i = 0; i < 3; ++i) {
        std::smatch m;
        std::string const & line = printedLines[static_cast<std::size_t>(i)];
        ASSERT_TRUE(std::regex_match(line, m, shape)) << line;
        EXPECT_EQ(m[1].str(), std::to_string(i)) << line;
        EXPECT_EQ(m[2].str(), text16::narrow(names[i].data())) << line;
        // First number: from the origin to the lap; in brackets: from the lap before.
        double const t = timer.m_times[static_cast<std::size_t>(i)];
        double const previous =
            i == 0 ? timer.m_resetTime : timer.m_times[static_cast<std::size_t>(i - 1)];
        EXPECT_EQ(m[3].str(), fixed5(t - timer.m_resetTime)) << line;
        EXPECT_EQ(m[4].str(), fixed5(t - previous)) << line;
        if (i == 0)
            EXPECT_EQ(m[3].str(), m[4].str()) << line;
        else
            EXPECT_NE(m[3].str(), m[4].str()) << line; // each lap lies 3 ms after the one before
    }
    // print changes nothing in the timer.
    EXPECT_EQ(timer.m_times, before.m_times);
    EXPECT_EQ(timer.m_names, before.m_names);
    EXPECT_EQ(timer.m_resetTime, before.m_resetTime);
}

TEST_F(KDRTimerPrint, LapsBeforeAPlainResetPrintNegativeAndLongLinesAreCut) {
    KDRTimer timer;
    std::string const longName(150, 'n');
    std::vector<unsigned short> const name = text16::make(longName);
    timer.pushTime(name.data());
    waitALittle();
    timer.reset();
    timer.print();
    ASSERT_EQ(printedLines.size(), 1u);
    // 99 units and the terminator fill the buffer of 100: the numbers are cut away.
    EXPECT_EQ(printedLengths[0], 99u);
    EXPECT_EQ(printedLines[0], " 0: " + longName.substr(0, 95));

    printedLines.clear();
    std::vector<unsigned short> const shortName = text16::make("old");
    timer.m_names[0] = shortName.data();
    timer.print();
    ASSERT_EQ(printedLines.size(), 1u);
    EXPECT_EQ(printedLines[0].rfind(" 0: old = -", 0), 0u) << printedLines[0];
}
