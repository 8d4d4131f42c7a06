#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <filesystem>

#include "PrivateServerFixture.h"
#include "health/StateFile.h"

namespace fs = std::filesystem;

namespace {

using qorctl::CStateFile;
using testing::HasSubstr;

class StateFileTest : public qortest::CPrivateServerFixture {
protected:
    void SetUp() override {
        CPrivateServerFixture::SetUp();
        fs::create_directories(m_Folder);
    }

    mode_t ModeOf(const fs::path& path) const {
        struct stat status = {};
        EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
        return status.st_mode & 07777;
    }

    size_t CountFiles() const {
        return static_cast<size_t>(
            std::distance(fs::directory_iterator(m_Folder), fs::directory_iterator()));
    }

    const fs::path m_Folder = "/opt/tarmica/state";
    const std::string m_Path = m_Folder / "health.json";
};

TEST_F(StateFileTest, MissingFileIsNoFailure) {
    CStateFile file(m_Path);
    ASSERT_EQ(file.Lock(), CStateFile::ELock::TAKEN);
    std::string text;
    EXPECT_EQ(file.Read(text), CStateFile::ERead::MISSING);
}

TEST_F(StateFileTest, WrittenTextIsReadBackAndNobodyElsesToRead) {
    const mode_t mask = umask(0);
    CStateFile file(m_Path);
    ASSERT_EQ(file.Lock(), CStateFile::ELock::TAKEN);
    EXPECT_TRUE(file.Write("first"));
    EXPECT_TRUE(file.Write("second"));
    umask(mask);
    std::string text = "before";
    EXPECT_EQ(file.Read(text), CStateFile::ERead::DONE);
    EXPECT_EQ(text, "second");
    EXPECT_EQ(ModeOf(m_Path), 0600U);
    EXPECT_EQ(ModeOf(m_Path + ".lock"), 0600U);
    EXPECT_EQ(CountFiles(), 2U);
}

TEST_F(StateFileTest, SecondUserIsTurnedAwayUntilTheFirstOneIsDone) {
    CStateFile second(m_Path);
    {
        CStateFile first(m_Path);
        ASSERT_EQ(first.Lock(), CStateFile::ELock::TAKEN);
        CStateFile other(m_Path);
        EXPECT_EQ(other.Lock(), CStateFile::ELock::BUSY);
        EXPECT_EQ(other.Problem(), m_Path + ": another process is using it");
    }
    EXPECT_EQ(second.Lock(), CStateFile::ELock::TAKEN);
}

TEST_F(StateFileTest, FolderThatIsMissingIsNamed) {
    CStateFile file(m_Folder / "none/health.json");
    EXPECT_EQ(file.Lock(), CStateFile::ELock::FAILED);
    EXPECT_EQ(file.Problem(),
              "/opt/tarmica/state/none/health.json.lock: No such file or directory");
}

TEST_F(StateFileTest, FolderThatCannotBeWrittenKeepsTheOldFile) {
    CStateFile file(m_Path);
    ASSERT_EQ(file.Lock(), CStateFile::ELock::TAKEN);
    ASSERT_TRUE(file.Write("old"));
    ASSERT_EQ(mount(m_Folder.c_str(), m_Folder.c_str(), "none", MS_BIND, nullptr), 0);
    ASSERT_EQ(mount("none", m_Folder.c_str(), "none", MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr),
              0);
    CStateFile other(m_Path);
    EXPECT_EQ(other.Lock(), CStateFile::ELock::FAILED);
    EXPECT_THAT(other.Problem(), HasSubstr("health.json.lock: Read-only file system"));
    CStateFile unlocked(m_Path);
    EXPECT_FALSE(unlocked.Write("new"));
    EXPECT_EQ(unlocked.Problem(), m_Path + " could not be written: Read-only file system");
    ASSERT_EQ(umount2(m_Folder.c_str(), MNT_DETACH), 0);
    EXPECT_EQ(qortest::ReadFile(m_Path), "old");
}

TEST_F(StateFileTest, NameThatCannotBeReplacedLeavesNoTemporaryFile) {
    fs::create_directories(fs::path(m_Path) / "inside");
    CStateFile file(m_Path);
    EXPECT_FALSE(file.Write("text"));
    EXPECT_EQ(file.Problem(), m_Path + " could not be written: Is a directory");
    EXPECT_EQ(CountFiles(), 1U);
}

TEST_F(StateFileTest, OnlyARegularFileIsRead) {
    std::string text;
    fs::create_directories(m_Path);
    CStateFile file(m_Path);
    EXPECT_EQ(file.Read(text), CStateFile::ERead::FAILED);
    EXPECT_EQ(file.Problem(), m_Path + ": not a regular file");
    fs::remove(m_Path);
    ASSERT_EQ(mkfifo(m_Path.c_str(), 0600), 0);
    EXPECT_EQ(file.Read(text), CStateFile::ERead::FAILED);
    EXPECT_EQ(file.Problem(), m_Path + ": not a regular file");
}

TEST_F(StateFileTest, FileThatIsTooLargeIsNotRead) {
    qortest::WriteFile(m_Path, "");
    fs::resize_file(m_Path, CStateFile::MAX_SIZE + 1);
    CStateFile file(m_Path);
    std::string text;
    EXPECT_EQ(file.Read(text), CStateFile::ERead::FAILED);
    EXPECT_EQ(file.Problem(), m_Path + ": File too large");
}

TEST_F(StateFileTest, WhatCouldNotBeReadAgainIsNotWritten) {
    CStateFile file(m_Path);
    ASSERT_TRUE(file.Write("old"));
    EXPECT_FALSE(file.Write(std::string(CStateFile::MAX_SIZE + 1, 'x')));
    EXPECT_EQ(file.Problem(), m_Path + ": File too large");
    EXPECT_EQ(qortest::ReadFile(m_Path), "old");
    EXPECT_TRUE(file.Write(std::string(CStateFile::MAX_SIZE, 'x')));
    std::string text;
    EXPECT_EQ(file.Read(text), CStateFile::ERead::DONE);
}

// Root gives a file away; nobody else can.
TEST_F(StateFileTest, WhatAnotherUserPutThereIsNotBelieved) {
    if (geteuid() != 0) {
        CStateFile other("/usr/health.json");  // root's, who is another user in this namespace
        std::string text;
        EXPECT_EQ(other.Read(text), CStateFile::ERead::FAILED);
        EXPECT_THAT(other.Problem(), HasSubstr("it belongs to another user"));
        return;
    }
    constexpr uid_t SOMEBODY = 12345;
    qortest::WriteFile(m_Path, "prepared");
    qortest::WriteFile(m_Path + ".lock", "");
    ASSERT_EQ(chown(m_Path.c_str(), SOMEBODY, SOMEBODY), 0);
    ASSERT_EQ(chown((m_Path + ".lock").c_str(), SOMEBODY, SOMEBODY), 0);
    CStateFile file(m_Path);
    EXPECT_EQ(file.Lock(), CStateFile::ELock::TAKEN);
    struct stat status = {};
    ASSERT_EQ(stat((m_Path + ".lock").c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 0U);
    std::string text;
    EXPECT_EQ(file.Read(text), CStateFile::ERead::FAILED);
    EXPECT_EQ(file.Problem(), m_Path + ": it belongs to another user");
    ASSERT_EQ(chown(m_Folder.c_str(), SOMEBODY, SOMEBODY), 0);
    CStateFile second(m_Path);
    EXPECT_EQ(second.Lock(), CStateFile::ELock::FAILED);
    EXPECT_EQ(second.Problem(),
              m_Path + ".lock: its directory is not safe: it belongs to another user");
}

TEST_F(StateFileTest, FileWithTwoNamesHasOneLock) {
    const std::string link = m_Folder / "link.json";
    fs::create_symlink(m_Path, link);
    CStateFile first(m_Path);
    ASSERT_EQ(first.Lock(), CStateFile::ELock::TAKEN);
    CStateFile second(link);
    EXPECT_EQ(second.Lock(), CStateFile::ELock::BUSY);
    EXPECT_EQ(second.Problem(), link + ": another process is using it");
}

TEST_F(StateFileTest, LinkIntoADirectoryThatOthersMayWriteIntoIsNotRead) {
    const fs::path open = "/opt/tarmica/open";
    qortest::WriteFile(open / "health.json", "prepared");
    fs::permissions(open, fs::perms(0775));
    fs::create_symlink(open / "health.json", m_Path);
    CStateFile file(m_Path);
    EXPECT_EQ(file.Lock(), CStateFile::ELock::FAILED);
    EXPECT_EQ(file.Problem(),
              m_Path + ".lock: its directory is not safe: other users may write in it");
    std::string text;
    EXPECT_EQ(file.Read(text), CStateFile::ERead::FAILED);
    EXPECT_EQ(file.Problem(), m_Path + ": its directory is not safe: other users may write in it");
}

// An output may go into a device, a state would be gone.
TEST_F(StateFileTest, WhatIsNoFileIsNotWritten) {
    fs::create_symlink("/dev/null", m_Path);
    CStateFile file(m_Path);
    EXPECT_FALSE(file.Write("state"));
    EXPECT_EQ(file.Problem(), m_Path + " could not be written: not a regular file");
    std::array<int, 2> ends = {};
    ASSERT_EQ(pipe(ends.data()), 0);
    EXPECT_FALSE(CStateFile("/proc/self/fd/" + std::to_string(ends[1])).Write("state"));
    close(ends[1]);
    char byte = 0;
    EXPECT_EQ(read(ends[0], &byte, 1), 0);
    close(ends[0]);
}

TEST_F(StateFileTest, FolderThatOthersMayWriteIntoByNowIsNotWrittenTo) {
    CStateFile file(m_Path);
    ASSERT_EQ(file.Lock(), CStateFile::ELock::TAKEN);
    ASSERT_TRUE(file.Write("old"));
    fs::permissions(m_Folder, fs::perms(0775));
    EXPECT_FALSE(file.Write("new"));
    EXPECT_EQ(file.Problem(),
              m_Path +
                  " could not be written: its directory is not safe: other users may write "
                  "in it");
    EXPECT_EQ(qortest::ReadFile(m_Path), "old");
}

TEST_F(StateFileTest, WhatIsKeptBesideIsNamedWhereItIs) {
    qortest::WriteFile("/opt/tarmica/real/file", "corrupt");
    fs::create_symlink("/opt/tarmica/real/file", m_Path);
    CStateFile file(m_Path);
    std::string aside;
    ASSERT_TRUE(file.KeepBeside(".corrupt", aside)) << file.Problem();
    EXPECT_EQ(aside, "/opt/tarmica/real/file.corrupt");
    EXPECT_EQ(qortest::ReadFile(aside), "corrupt");
}

TEST_F(StateFileTest, LockThatAGroupOrOthersMayOpenIsMadeAnew) {
    for (const mode_t mode : {0640U, 0620U, 0610U, 0604U, 0602U, 0601U}) {
        qortest::WriteFile(m_Path + ".lock", "");
        ASSERT_EQ(chmod((m_Path + ".lock").c_str(), mode), 0);
        CStateFile file(m_Path);
        EXPECT_EQ(file.Lock(), CStateFile::ELock::TAKEN);
        EXPECT_EQ(ModeOf(m_Path + ".lock"), 0600U) << mode;
    }
}

TEST_F(StateFileTest, LinkInPlaceOfTheLockIsNotFollowed) {
    fs::create_symlink("/opt/tarmica/victim", m_Path + ".lock");
    CStateFile file(m_Path);
    EXPECT_EQ(file.Lock(), CStateFile::ELock::FAILED);
    EXPECT_FALSE(fs::exists("/opt/tarmica/victim"));
}

}  // namespace
