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

int main(int argc, char ** argv) {
    std::vector<std::filesystem::path> files;
    for (int a = 1; a < argc; ++a) {
        std::filesystem::path const arg(argv[a]);
        if (!std::filesystem::is_directory(arg))
            files.push_back(arg);
        else
            for (auto const & entry : std::filesystem::directory_iterator(arg))
                if (entry.is_regular_file())
                    files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    int unreadable = 0;
    for (auto const & file : files) {
        std::ifstream in(file, std::ios::binary);
        if (!in) {
            std::fprintf(stderr, "replay: cannot read %s\n", file.c_str());
            ++unreadable;
            continue;
        }
        std::vector<std::uint8_t> const bytes{std::istreambuf_iterator<char>(in),
                                              std::istreambuf_iterator<char>()};
        std::fprintf(stderr, "replay: %s\n", file.c_str());
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
    std::printf("replay: %zu inputs, %d unreadable\n", files.size(), unreadable);
    return unreadable == 0 && !files.empty() ? 0 : 1;
}
