// Runs a fuzz target on every file of the directories that it is given, in the order of their
// names. A property that does not hold aborts; the last line printed names the input.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "Depth.h"
#include "Fuzz.h"

namespace fs = std::filesystem;

namespace {

std::vector<uint8_t> ReadInput(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<fs::path> FilesOf(const fs::path& directory) {
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(directory)) {
        files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace

int main(int argc, char** argv) {
    LLVMFuzzerInitialize(&argc, &argv);
    qorfuzz::LookAtAllBothWays();
    size_t count = 0;
    for (int i = 1; i < argc; ++i) {
        for (const fs::path& file : FilesOf(argv[i])) {
            std::printf("%s\n", file.c_str());
            std::fflush(stdout);
            const std::vector<uint8_t> input = ReadInput(file);
            LLVMFuzzerTestOneInput(input.data(), input.size());
            ++count;
        }
    }
    std::printf("%zu inputs\n", count);
    return count > 0 ? 0 : 1;
}
