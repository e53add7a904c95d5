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

TEST(KDRTimer, LapsAndFindTimeCompareNamesByContents) {
    KDRTimer timer;
    int index = 7;
    std::vector<unsigned short> const load = text16::make("load");
    EXPECT_EQ(timer.m_times.size(), 0);
    EXPECT_EQ(timer.findTime(load.data(), index, 0), 0.0);
    EXPECT_EQ(index, -1);

    std::vector<unsigned short> const draw = text16::make("draw");
    std::vector<unsigned short> const loadAgain = text16::make("load");
    std::vector<unsigned short> const empty = text16::make("");
    timer.pushTime(draw.data());
    waitALittle();
    timer.pushTime(load.data());
    waitALittle();
    timer.pushTime(loadAgain.data());
    timer.pushTime(empty.data());
    ASSERT_EQ(timer.m_times.size(), 4);
    ASSERT_EQ(timer.m_names.size(), 4);
    EXPECT_EQ(timer.m_names[1], load.data()); // the pointer is kept, not a copy

    // Another pointer to the same characters finds the first lap of that name.
    std::vector<unsigned short> const probe = text16::make("load");
    EXPECT_EQ(timer.findTime(probe.data(), index, 12345), timer.m_times[1]);
    EXPECT_EQ(index, 1);
    EXPECT_GT(timer.m_times[1], timer.m_resetTime); // since the time base, not since the reset
    EXPECT_EQ(timer.findTime(empty.data(), index, 0), timer.m_times[3]);
    EXPECT_EQ(index, 3);
    std::vector<unsigned short> const prefix = text16::make("loa");
    std::vector<unsigned short> const longer = text16::make("loads");
    timer.findTime(prefix.data(), index, 0);
    EXPECT_EQ(index, -1);
    timer.findTime(longer.data(), index, 0);
    EXPECT_EQ(index, -1);
}

TEST(KDRTimer, ResetWithANameStartsASeriesAndPlainResetKeepsTheLaps) {
    KDRTimer timer;
    std::vector<unsigned short> const lap = text16::make("lap");
    std::vector<unsigned short> const series = text16::make("series");
    timer.pushTime(lap.data());
    waitALittle();
    double const firstOrigin = timer.m_resetTime;
    timer.reset();
    EXPECT_GT(timer.m_resetTime, firstOrigin);
    EXPECT_EQ(timer.m_times.size(), 1);

    timer.reset(series.data());
    EXPECT_EQ(timer.m_name, series.data());
    EXPECT_EQ(timer.m_times.size(), 0);
    EXPECT_EQ(timer.m_names.size(), 0);
    // Room for 15 laps is there: the first 15 appends keep the storage where it is.
    const double * const times = timer.m_times.data();
    const unsigned short * const * const names = timer.m_names.data();
    for (int i = 0; i < 15; ++i)
        timer.pushTime(lap.data());
    EXPECT_EQ(timer.m_times.data(), times);
    EXPECT_EQ(timer.m_names.data(), names);
    timer.pushTime(lap.data()); // 15 is no limit
    EXPECT_EQ(timer.m_times.size(), 16);
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
    // findTime gives times since the base: minus the origin, the first printed number.
    int index = -1;
    double const solve = timer.findTime(names[1].data(), index, 0);
    EXPECT_EQ(printedLines[1].find(" = " + fixed5(solve - timer.m_resetTime) + "  ["),
              std::string("1: solve").size() + 1);

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
