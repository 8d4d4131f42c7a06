// The folders that the page on the architecture lists are those of the tree.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <string>

namespace {

namespace fs = std::filesystem;

// The folders below `parent` that stand at the beginning of a row of the page's tables.
std::set<std::string> ListedBelow(const std::string& parent) {
    const std::string head = "| `" + parent + "/";
    std::set<std::string> listed;
    std::ifstream page(fs::path(DOCS_DIR) / "architecture.md");
    for (std::string line; std::getline(page, line);) {
        if (line.starts_with(head)) {
            const std::string name = line.substr(head.size(), line.find('`', 3) - head.size());
            EXPECT_TRUE(listed.insert(name).second) << line;
        }
    }
    return listed;
}

std::set<std::string> FoldersBelow(const std::string& parent) {
    std::set<std::string> folders;
    for (const fs::directory_entry& entry : fs::directory_iterator(fs::path(SOURCE_DIR) / parent)) {
        if (entry.is_directory()) {
            folders.insert(entry.path().filename());
        }
    }
    return folders;
}

size_t FilesIn(const std::string& folder) {
    size_t files = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator(fs::path(SOURCE_DIR) / folder)) {
        files += entry.is_regular_file() ? 1U : 0U;
    }
    return files;
}

TEST(FoldersTest, PageListsThoseOfTheLibraries) {
    EXPECT_EQ(ListedBelow("src"), FoldersBelow("src"));
}

TEST(FoldersTest, PageListsThoseOfTheTerminalProgram) {
    EXPECT_EQ(ListedBelow("apps/qorctl"), FoldersBelow("apps/qorctl"));
    EXPECT_LE(FilesIn("apps/qorctl"), 6U) << "every file has its storey";
}

TEST(FoldersTest, UnitTestsMirrorTheTerminalProgram) {
    const std::set<std::string> storeys = FoldersBelow("apps/qorctl");
    for (const std::string& folder : FoldersBelow("tests/unit/qorctl")) {
        EXPECT_TRUE(storeys.contains(folder)) << folder;
    }
}

}  // namespace
