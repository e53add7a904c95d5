// fuzz/ReplayMain.cpp - runs a fuzz target once over each file of the directories or files given
//
// The corpus replay that ctest runs with any compiler: a failing check aborts the program, and
// the name of the input is printed before it runs so that the failure names its file.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * data, std::size_t size);

namespace {

int replayFile(std::filesystem::path const & path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        std::fprintf(stderr, "replay: cannot read %s\n", path.c_str());
        return 1;
    }
    std::vector<std::uint8_t> const bytes{std::istreambuf_iterator<char>(in),
                                          std::istreambuf_iterator<char>()};
    std::fprintf(stderr, "replay: %s\n", path.c_str());
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    return 0;
}

} // namespace

int main(int argc, char ** argv) {
    int failures = 0;
    int inputs = 0;
    for (int a = 1; a < argc; ++a) {
        std::filesystem::path const arg(argv[a]);
        if (std::filesystem::is_directory(arg)) {
            std::vector<std::filesystem::path> files;
            for (auto const & entry : std::filesystem::directory_iterator(arg))
                if (entry.is_regular_file())
                    files.push_back(entry.path());
            std::sort(files.begin(), files.end());
            for (auto const & file : files) {
                failures += replayFile(file);
                ++inputs;
            }
        } else {
            failures += replayFile(arg);
            ++inputs;
        }
    }
    std::printf("replay: %d inputs, %d unreadable\n", inputs, failures);
    return failures == 0 && inputs > 0 ? 0 : 1;
}
