#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

#include "OutputFile.h"
#include "PrivateServerTest.h"

namespace fs = std::filesystem;

namespace {

using qorctl::EFileMode;
using qorctl::WriteOutputFile;

class OutputFileTest : public qortest::CPrivateServerTest {
protected:
    void SetUp() override {
        CPrivateServerTest::SetUp();
        fs::create_directories(m_Folder);
    }

    bool Write(const fs::path& path, const std::string& text = "new\n") {
        return WriteOutputFile(path, text, EFileMode::KEPT, m_Problem);
    }

    size_t FilesInFolder() const {
        return static_cast<size_t>(
            std::distance(fs::directory_iterator(m_Folder), fs::directory_iterator()));
    }

    static mode_t Mode(const fs::path& path) {
        struct stat status = {};
        EXPECT_EQ(stat(path.c_str(), &status), 0);
        return status.st_mode & 07777;
    }

    const fs::path m_Folder = "/opt/tarmica/out";
    const fs::path m_File = m_Folder / "report";
    std::string m_Problem;
};

TEST_F(OutputFileTest, NewFileHasTheModeThatTheUmaskLeaves) {
    const mode_t before = umask(027);
    EXPECT_TRUE(Write(m_File));
    umask(before);
    EXPECT_EQ(qortest::ReadFile(m_File), "new\n");
    EXPECT_EQ(Mode(m_File), 0640U);
    EXPECT_EQ(FilesInFolder(), 1U);
}

TEST_F(OutputFileTest, OldFileIsReplacedAndItsModeKept) {
    qortest::WriteFile(m_File, "old, and longer than the new one\n");
    fs::permissions(m_File, fs::perms::owner_read);
    EXPECT_TRUE(Write(m_File));
    EXPECT_EQ(qortest::ReadFile(m_File), "new\n");
    EXPECT_EQ(Mode(m_File), 0400U);
}

TEST_F(OutputFileTest, ReaderOfTheOldFileKeepsIt) {
    qortest::WriteFile(m_File, "old\n");
    fs::create_hard_link(m_File, m_Folder / "other");
    EXPECT_TRUE(Write(m_File));
    EXPECT_EQ(qortest::ReadFile(m_Folder / "other"), "old\n");
}

TEST_F(OutputFileTest, SymbolicLinkStaysAndItsTargetIsReplaced) {
    fs::create_directory(m_Folder / "target");
    qortest::WriteFile(m_Folder / "target/file", "old\n");
    fs::create_symlink("target/file", m_File);
    EXPECT_TRUE(Write(m_File));
    EXPECT_TRUE(fs::is_symlink(m_File));
    EXPECT_EQ(qortest::ReadFile(m_Folder / "target/file"), "new\n");
}

TEST_F(OutputFileTest, RelativeNameIsInTheWorkingDirectory) {
    const fs::path before = fs::current_path();
    fs::current_path(m_Folder);
    EXPECT_TRUE(Write("report"));
    fs::current_path(before);
    EXPECT_EQ(qortest::ReadFile(m_File), "new\n");
}

TEST_F(OutputFileTest, DeviceIsWrittenInPlace) {
    EXPECT_TRUE(Write("/dev/null"));
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
    EXPECT_FALSE(Write("/dev/full"));
    EXPECT_EQ(m_Problem, "/dev/full could not be written: No space left on device");
}

TEST_F(OutputFileTest, MissingDirectoryIsAFailure) {
    EXPECT_FALSE(Write(m_Folder / "none/report"));
    EXPECT_EQ(m_Problem,
              "/opt/tarmica/out/none/report could not be written: No such file or directory");
}

TEST_F(OutputFileTest, DirectoryIsNoFile) {
    EXPECT_FALSE(Write(m_Folder));
    EXPECT_EQ(m_Problem, "/opt/tarmica/out could not be written: Is a directory");
}

TEST_F(OutputFileTest, FailureLeavesTheOldFileAndNothingElse) {
    qortest::WriteFile(m_File, "old\n");
    rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit limit = {.rlim_cur = 1000, .rlim_max = before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const bool written = Write(m_File, std::string(5000, 'x'));
    std::signal(SIGXFSZ, handler);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    EXPECT_FALSE(written);
    EXPECT_EQ(m_Problem, "/opt/tarmica/out/report could not be written: File too large");
    EXPECT_EQ(qortest::ReadFile(m_File), "old\n");
    EXPECT_EQ(FilesInFolder(), 1U);
}

}  // namespace
