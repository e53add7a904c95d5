// Tests of the process services: the debug file, the exit registry, the host version record,
// the activity manager and the open flag.
#include "kdrcore/runtime/KDRActivityMgr.h"
#include "kdrcore/runtime/KDRDebugFile.h"
#include "kdrcore/runtime/KDRExit.h"
#include "kdrcore/runtime/KDROSVersion.h"
#include "kdrcore/runtime/VersionForOrvane.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

// Read while this program starts, before any test ran.
eKDROSVersion const osVersionAtStart = KDROSVersion::getOSVersion();
// The four version tests as bits 0 to 3.
int osTests() {
    return KDROSVersion::isOS9() | KDROSVersion::isOSX() << 1 | KDROSVersion::isOSXJaguar() << 2 |
           KDROSVersion::isOSXPanther() << 3;
}
int const osTestsAtStart = osTests();

std::string contents(fs::path const & file) {
    std::ifstream in(file, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::vector<int> exitLog;

class CountingManager : public KDRActivityMgr { // counts the notifications it receives
public:
    int calls = 0;

protected:
    void onStart() override { ++calls; }
    void onSignal() override { ++calls; }
    void onEnd() override { ++calls; }
};

} // namespace

// The debug file is opened once per process, so this one test makes the first opening, in a
// fresh temporary directory: first while "debug-file.txt" there is a directory, so that the
// open fails, then with an old file of that name in its place.
TEST(KDRDebugFile, EmptiedOnceThenAppendedInFlushedLines) {
    std::string pattern = (fs::temp_directory_path() / "kdrcore-debugfile-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    const fs::path dir = pattern, file = dir / "debug-file.txt", original = fs::current_path();
    fs::current_path(dir);
    fs::create_directory(file);
    EXPECT_EQ(KDRDebugFile::getDebugFile(), nullptr);
    KDRDebugFile::writeDebugFile("dropped\n");
    fs::remove(file);
    std::ofstream(file) << "old line\n";
    EXPECT_NE(KDRDebugFile::getDebugFile(), nullptr); // the next call tries again
    fs::current_path(original);
    EXPECT_EQ(contents(file), ""); // the old line is gone, the dropped text never came
    EXPECT_EQ(KDRDebugFile::getDebugFile(), KDRDebugFile::getDebugFile());

    // Each text is cut to 4095 bytes, then its last byte becomes a line feed unless it is one:
    // the line feed is never added behind it. Each line is in the file at once (flushed), read
    // through a stream of its own.
    const std::string exact = std::string(4094, 'b') + "\n";
    // clang-format off
    const std::string texts[][2] = {
        {"four\n", "four\n"}, {"four", "fou\n"}, {"x", "\n"}, {"two\nlines", "two\nline\n"}, {"", ""},
        {std::string(4095, 'a'), std::string(4094, 'a') + "\n"}, {exact, exact}, {exact + "d", exact},
        {std::string(5000, 'c'), std::string(4094, 'c') + "\n"}};
    // clang-format on
    std::string expected;
    for (auto const & t : texts) {
        KDRDebugFile::writeDebugFile(t[0].c_str());
        expected += t[1];
        ASSERT_EQ(contents(file), expected) << "after " << t[0].substr(0, 10);
    }
    KDRDebugFile::writeDebugFile(nullptr);
    EXPECT_EQ(contents(file), expected);
    fs::remove_all(dir);
}

TEST(KDRExit, RunsLastAddedFirstEachOnce) {
    exitLog.clear();
    KDRExit::exit(); // nothing registered: nothing happens
    void (*const one)() = [] { exitLog.push_back(1); };
    KDRExit::addExitFun(one);
    KDRExit::addExitFun([] { // calls exit from inside, which does nothing
        exitLog.push_back(2);
        KDRExit::exit();
    });
    KDRExit::addExitFun(one); // duplicates run once per addition
    KDRExit::addExitFun([] {  // adds a function, which runs next
        exitLog.push_back(4);
        KDRExit::addExitFun([] { exitLog.push_back(5); });
    });
    KDRExit::exit();
    KDRExit::exit();
    KDRExit::addExitFun(one); // after exit a new registry starts, and a later exit runs it
    KDRExit::exit();
    EXPECT_EQ(exitLog, (std::vector<int>{4, 5, 1, 2, 1, 1}));
}

TEST(KDROSVersion, UnsetUntilInitThenExactTests) {
    EXPECT_EQ(osVersionAtStart, eKDROSUnknown);
    EXPECT_EQ(osTestsAtStart, 0);
    // Each value makes exactly its own test true: isOSX() is false for Jaguar and Panther.
    for (int v = 4; v >= 1; --v) { // init may be called again
        KDROSVersion::init(static_cast<eKDROSVersion>(v));
        EXPECT_EQ(KDROSVersion::getOSVersion(), v);
        EXPECT_EQ(osTests(), 1 << (v - 1)) << v;
    }
    KDROSVersion::init(eKDROSUnknown);
}

TEST(KDRActivityMgrAndOpenFlag, NothingIsWired) {
    CountingManager manager;
    KDRActivityMgr::setCurrentActivityManager(&manager);
    KDRActivityMgr::start();
    KDRActivityMgr::signal();
    KDRActivityMgr::end();
    EXPECT_EQ(manager.calls, 0);
    EXPECT_FALSE(KDRActivityMgr::isActivityMgrListening());
    KDRActivityMgr::setCurrentActivityManager(nullptr);
    VersionForOrvane::beforeOpen();
    EXPECT_TRUE(VersionForOrvane::canChangeView());
    VersionForOrvane::afterOpen();
    EXPECT_TRUE(VersionForOrvane::canChangeView());
}
