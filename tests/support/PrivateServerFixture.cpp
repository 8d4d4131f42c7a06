#include "PrivateServerFixture.h"

#include <sys/wait.h>

#include <cerrno>
#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

namespace qortest {
namespace {

void EmptyDirectory(const fs::path& directory) {
    for (const fs::directory_entry& entry : fs::directory_iterator(directory)) {
        fs::remove_all(entry.path());
    }
}

size_t CountEntries(const fs::path& directory) {
    if (!fs::exists(directory)) {
        return 0;
    }
    const fs::directory_iterator entries(directory);
    return static_cast<size_t>(std::distance(begin(entries), end(entries)));
}

size_t CountOpenFiles() {
    return CountEntries("/proc/self/fd");
}

}  // namespace

void WriteFile(const fs::path& path, const std::string& text) {
    fs::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << text;
    file.close();
    ASSERT_TRUE(file) << "cannot write " << path;
}

std::string ReadFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << "cannot read " << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string Golden(const std::string& name) {
    return ReadFile(fs::path(QOR_TEST_DATA_DIR) / "golden" / name);
}

std::string GoldenBad(const std::string& name) {
    return ReadFile(fs::path(QOR_TEST_DATA_DIR) / "golden_bad" / name);
}

void CPrivateServerFixture::SetUp() {
    EmptyDirectory("/opt/tarmica");
    EmptyDirectory("/etc/opt/tarmica");
    fs::create_directories(fs::path(INSTALL_DIR) / "tmp");
    fs::create_directories(fs::path(DEVICE_LIST).parent_path());
    m_OpenFiles = CountOpenFiles();
}

void CPrivateServerFixture::TearDown() {
    if (m_LeftoversExpected) {
        return;
    }
    EXPECT_EQ(CountEntries(RESULT_DIR), 0U) << "a result file was left in " << RESULT_DIR;
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child process was left";
    EXPECT_EQ(errno, ECHILD);
    EXPECT_EQ(CountOpenFiles(), m_OpenFiles) << "a file descriptor was left open";
}

}  // namespace qortest
