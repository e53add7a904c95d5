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
#include <system_error>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;

namespace {

// Read while this program starts, before any test ran.
const eKDROSVersion osVersionAtStart = KDROSVersion::getOSVersion();
const bool anyOSTestAtStart = KDROSVersion::isOS9() || KDROSVersion::isOSX() ||
                              KDROSVersion::isOSXJaguar() || KDROSVersion::isOSXPanther();

// The debug file is opened once per process, so every debug-file test shares one first opening,
// made in a fresh temporary directory: first while "debug-file.txt" there is a directory, so that
// the open fails, then with an old file of that name in its place.
struct DebugFileStart {
    fs::path file;
    bool nullWhileUnopenable = false;
    bool nothingCreatedByDroppedText = false;
    bool openedOnRetry = false;
    std::uintmax_t sizeAfterOpen = 1;

    DebugFileStart() {
        std::string pattern = (fs::temp_directory_path() / "kdrcore-debugfile-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr)
            return;
        fs::path const dir = pattern;
        file = dir / "debug-file.txt";
        fs::path const original = fs::current_path();
        fs::current_path(dir);

        fs::create_directory(file);
        nullWhileUnopenable = KDRDebugFile::getDebugFile() == nullptr;
        KDRDebugFile::writeDebugFile("dropped\n");
        nothingCreatedByDroppedText = fs::is_empty(file);
        fs::remove(file);

        std::ofstream(file) << "old line\n";
        openedOnRetry = KDRDebugFile::getDebugFile() != nullptr;
        sizeAfterOpen = fs::file_size(file);
        fs::current_path(original);
    }
    ~DebugFileStart() {
        std::error_code ignored;
        if (!file.empty())
            fs::remove_all(file.parent_path(), ignored);
    }
};

const DebugFileStart & debugFileStart() {
    static const DebugFileStart start;
    return start;
}

std::string debugFileContents() {
    std::ifstream in(debugFileStart().file, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// What one writeDebugFile(text) adds to the file; read back through a stream of its own, which
// sees the bytes only because each line is flushed at once.
std::string appendedBy(const std::string & text) {
    std::string const before = debugFileContents();
    KDRDebugFile::writeDebugFile(text.c_str());
    std::string const after = debugFileContents();
    EXPECT_EQ(after.compare(0, before.size(), before), 0) << "earlier lines changed";
    return after.substr(before.size());
}

std::vector<int> exitLog;

// Exit functions: each records its number.
void exitOne() {
    exitLog.push_back(1);
}
void exitTwo() {
    exitLog.push_back(2);
}
void exitThree() {
    exitLog.push_back(3);
}

// Empties the process-wide registry of whatever earlier tests left in it.
void freshExitRegistry() {
    KDRExit::exit();
    exitLog.clear();
}

// Counts the notifications it receives.
class CountingManager : public KDRActivityMgr {
public:
    int calls = 0;

protected:
    void onStart() override { ++calls; }
    void onSignal() override { ++calls; }
    void onEnd() override { ++calls; }
};

} // namespace

TEST(KDRDebugFile, EmptiedOnceThenAppendedInFlushedLines) {
    DebugFileStart const & start = debugFileStart();
    ASSERT_FALSE(start.file.empty()) << "no temporary directory";
    EXPECT_TRUE(start.nullWhileUnopenable);
    EXPECT_TRUE(start.nothingCreatedByDroppedText);
    ASSERT_TRUE(start.openedOnRetry);
    EXPECT_EQ(start.sizeAfterOpen, 0u); // the old line is gone
    EXPECT_EQ(KDRDebugFile::getDebugFile(), KDRDebugFile::getDebugFile());

    // The line feed replaces the last byte; it is never added behind it.
    EXPECT_EQ(appendedBy("four\n"), "four\n");
    EXPECT_EQ(appendedBy("four"), "fou\n");
    EXPECT_EQ(appendedBy("x"), "\n");
    EXPECT_EQ(appendedBy("two\nlines"), "two\nline\n");
    EXPECT_EQ(appendedBy(""), "");
    KDRDebugFile::writeDebugFile(nullptr);
    // Later calls append: what was written stays.
    EXPECT_NE(debugFileContents().find("four\nfou\n\ntwo\nline\n"), std::string::npos);
}

TEST(KDRDebugFile, TextsAreCutAt4095Bytes) {
    ASSERT_TRUE(debugFileStart().openedOnRetry);
    EXPECT_EQ(appendedBy(std::string(4095, 'a')), std::string(4094, 'a') + "\n");
    std::string const exact = std::string(4094, 'b') + "\n";
    EXPECT_EQ(appendedBy(exact), exact);
    EXPECT_EQ(appendedBy(std::string(5000, 'c')), std::string(4094, 'c') + "\n");
    // The cut comes first: a line feed at byte 4095 survives, the byte after it does not.
    EXPECT_EQ(appendedBy(exact + "d"), exact);
}

TEST(KDRExit, RunsLastAddedFirstEachOnce) {
    freshExitRegistry();
    KDRExit::exit(); // nothing registered: nothing happens
    KDRExit::addExitFun(exitOne);
    KDRExit::addExitFun(exitTwo);
    KDRExit::addExitFun(exitThree);
    KDRExit::addExitFun(exitTwo); // duplicates run once per addition
    KDRExit::exit();
    EXPECT_EQ(exitLog, (std::vector<int>{2, 3, 2, 1}));
    KDRExit::exit();
    EXPECT_EQ(exitLog.size(), 4u);

    // After exit a new registry starts, and a later exit runs it.
    exitLog.clear();
    KDRExit::addExitFun(exitThree);
    KDRExit::addExitFun(exitOne);
    KDRExit::exit();
    EXPECT_EQ(exitLog, (std::vector<int>{1, 3}));
}

TEST(KDRExit, ExitFunctionsMayAddOthersButNotReenter) {
    freshExitRegistry();
    KDRExit::addExitFun(exitOne);
    KDRExit::addExitFun([] { // calls exit from inside
        exitLog.push_back(20);
        KDRExit::exit();
    });
    KDRExit::addExitFun([] { // adds a function, which runs next
        exitLog.push_back(10);
        KDRExit::addExitFun(exitThree);
    });
    KDRExit::exit();
    EXPECT_EQ(exitLog, (std::vector<int>{10, 3, 20, 1}));
    exitLog.clear();
    KDRExit::exit();
    EXPECT_TRUE(exitLog.empty());
}

TEST(KDROSVersion, UnsetUntilInitThenExactTests) {
    EXPECT_EQ(osVersionAtStart, eKDROSUnknown);
    EXPECT_FALSE(anyOSTestAtStart);
    // Each value makes exactly its own test true: isOSX() is false for Jaguar and Panther.
    for (int v = 4; v >= 1; --v) { // init may be called again
        KDROSVersion::init(static_cast<eKDROSVersion>(v));
        EXPECT_EQ(KDROSVersion::getOSVersion(), v);
        EXPECT_EQ(KDROSVersion::isOS9(), v == 1) << v;
        EXPECT_EQ(KDROSVersion::isOSX(), v == 2) << v;
        EXPECT_EQ(KDROSVersion::isOSXJaguar(), v == 3) << v;
        EXPECT_EQ(KDROSVersion::isOSXPanther(), v == 4) << v;
    }
    KDROSVersion::init(eKDROSUnknown);
}

TEST(KDRActivityMgr, NotificationsAreNotWired) {
    CountingManager manager;
    KDRActivityMgr::setCurrentActivityManager(&manager);
    KDRActivityMgr::start();
    KDRActivityMgr::signal();
    KDRActivityMgr::end();
    EXPECT_EQ(manager.calls, 0);
    EXPECT_FALSE(KDRActivityMgr::isActivityMgrListening());
    KDRActivityMgr::setCurrentActivityManager(nullptr);
}

TEST(VersionForOrvane, ViewCanAlwaysChange) {
    VersionForOrvane::beforeOpen();
    EXPECT_TRUE(VersionForOrvane::canChangeView());
    VersionForOrvane::afterOpen();
    EXPECT_TRUE(VersionForOrvane::canChangeView());
}
