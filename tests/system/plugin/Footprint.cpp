#include "Footprint.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/wait.h>

#include <cerrno>
#include <filesystem>
#include <iterator>
#include <string>

#include "PrivateServerFixture.h"

namespace fs = std::filesystem;

namespace qortest {
namespace {

size_t CountEntries(const char* folder) {
    const fs::directory_iterator entries(folder);
    return static_cast<size_t>(std::distance(begin(entries), end(entries)));
}

// Bytes in use.
size_t Heap() {
    const struct mallinfo2 heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
}

struct CFootprint {
    size_t openFiles = CountEntries("/proc/self/fd");
    size_t threads = CountEntries("/proc/self/task");
    size_t heap = Heap();
};

}  // namespace

void ExpectVisitsLeaveNothing(const std::function<void()>& visit, int times) {
    constexpr int WARM_UP = 10;
    constexpr size_t HEAP_NOISE = 4096;
    for (int i = 0; i < WARM_UP; ++i) {
        visit();
    }
    const CFootprint before;
    for (int i = 0; i < times; ++i) {
        visit();
    }
    const CFootprint after;
    EXPECT_EQ(after.openFiles, before.openFiles);
    EXPECT_EQ(after.threads, before.threads);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child was left";
    EXPECT_EQ(errno, ECHILD);
    EXPECT_LE(after.heap, before.heap + HEAP_NOISE);
    EXPECT_EQ(ReadFile("/proc/self/maps").find("libqor_"), std::string::npos);
}

}  // namespace qortest
