#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "PrivateServerFixture.h"
#include "terminal/OutputFile.h"

namespace fs = std::filesystem;

namespace {

using qorctl::EFileMode;
using qorctl::WriteOutputFile;

class OutputFileTest : public qortest::CPrivateServerFixture {
protected:
    void SetUp() override {
        CPrivateServerFixture::SetUp();
        fs::create_directories(m_Folder);
    }

    bool Write(const fs::path& path, const std::string& text = "new\n") {
        return WriteOutputFile(path, text, EFileMode::KEPT, m_Problem);
    }

    bool WriteReadable(const fs::path& path) {
        return WriteOutputFile(path, "new\n", EFileMode::READABLE, m_Problem);
    }

    size_t FilesInFolder() const {
        return static_cast<size_t>(
            std::distance(fs::directory_iterator(m_Folder), fs::directory_iterator()));
    }

    // Makes `path` another user's, which only root can; false when it stays as it is.
    static bool GiveAway(const fs::path& path) {
        constexpr uid_t SOMEBODY = 12345;
        const bool given = geteuid() == 0;
        EXPECT_TRUE(!given || lchown(path.c_str(), SOMEBODY, SOMEBODY) == 0);
        return given;
    }

    static uid_t Owner(const fs::path& path) {
        struct stat status = {};
        EXPECT_EQ(lstat(path.c_str(), &status), 0);
        return status.st_uid;
    }

    static mode_t Mode(const fs::path& path) {
        struct stat status = {};
        EXPECT_EQ(stat(path.c_str(), &status), 0);
        return status.st_mode & 07777;
    }

    // An access control list as the kernel takes it.
    struct CAclEntry {
        uint16_t tag = 0;
        uint16_t rights = 0;
        uint32_t user = UINT32_MAX;  // of USER
    };
    static constexpr uint16_t OWNER = 0x01;
    static constexpr uint16_t USER = 0x02;
    static constexpr uint16_t GROUP = 0x04;
    static constexpr uint16_t MASK = 0x10;
    static constexpr uint16_t OTHERS = 0x20;

    static void SetList(const fs::path& path, const char* name,
                        const std::vector<CAclEntry>& entries) {
        constexpr uint32_t VERSION = 2;
        std::string list(reinterpret_cast<const char*>(&VERSION), sizeof(VERSION));
        list.append(reinterpret_cast<const char*>(entries.data()),
                    entries.size() * sizeof(CAclEntry));
        ASSERT_EQ(setxattr(path.c_str(), name, list.data(), list.size(), 0), 0);
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

TEST_F(OutputFileTest, TextInPiecesReplacesTheFileWhenAllAreGiven) {
    const auto write = [this](bool isWhole) {
        return WriteOutputFile(
            m_Folder / "file",
            [isWhole](const qorctl::CTakePiece& take) {
                errno = ENOSPC;
                return take("one, ") && isWhole && take("two");
            },
            EFileMode::KEPT, m_Problem);
    };
    EXPECT_TRUE(write(true));
    EXPECT_EQ(qortest::ReadFile(m_Folder / "file"), "one, two");
    EXPECT_FALSE(write(false));
    EXPECT_THAT(m_Problem, testing::EndsWith("could not be written: No space left on device"));
    EXPECT_EQ(qortest::ReadFile(m_Folder / "file"), "one, two");
    EXPECT_EQ(FilesInFolder(), 1U);
}

TEST_F(OutputFileTest, ReadableFileIsReadableForAllWhateverWasThere) {
    const mode_t before = umask(077);
    EXPECT_TRUE(WriteReadable(m_File)) << m_Problem;
    umask(before);
    EXPECT_EQ(Mode(m_File), 0644U);
    for (const mode_t old : {0400U, 0666U}) {
        ASSERT_EQ(chmod(m_File.c_str(), old), 0);
        EXPECT_TRUE(WriteReadable(m_File)) << m_Problem;
        EXPECT_EQ(Mode(m_File), 0644U);
    }
}

TEST_F(OutputFileTest, SetUserIdAndWhatOthersMayWriteAreNotKept) {
    qortest::WriteFile(m_File, "old\n");
    ASSERT_EQ(chmod(m_File.c_str(), 06777), 0);
    EXPECT_TRUE(Write(m_File));
    EXPECT_EQ(Mode(m_File), 0755U);
}

TEST_F(OutputFileTest, ModeThatAnotherUserPreparedIsNotTaken) {
    fs::permissions(m_Folder, fs::perms(01777));
    qortest::WriteFile(m_File, "old\n");
    const bool given = GiveAway(m_File);
    ASSERT_EQ(chmod(m_File.c_str(), 06777), 0);
    EXPECT_TRUE(Write(m_File));
    EXPECT_EQ(Mode(m_File), given ? 0644U : 0755U);
    EXPECT_EQ(Owner(m_File), geteuid());
}

TEST_F(OutputFileTest, RightsOfTheOldGroupAreNotAnotherGroups) {
    qortest::WriteFile(m_File, "old\n");
    const bool given = GiveAway(m_File);
    ASSERT_EQ(lchown(m_File.c_str(), geteuid(), static_cast<gid_t>(-1)), 0);
    ASSERT_EQ(chmod(m_File.c_str(), 0640), 0);
    EXPECT_TRUE(Write(m_File));
    EXPECT_EQ(Mode(m_File), given ? 0600U : 0640U);
}

// What the directory says about new files takes the place of the umask.
TEST_F(OutputFileTest, NewFileHasTheRightsThatItsDirectoryGives) {
    const mode_t before = umask(022);
    SetList(m_Folder, "system.posix_acl_default", {{OWNER, 7}, {GROUP, 5}, {OTHERS, 0}});
    EXPECT_TRUE(Write(m_File)) << m_Problem;
    umask(before);
    EXPECT_EQ(Mode(m_File), 0640U);
}

// Where a list of users has rights, what looks like the group's are the most that the list gives.
TEST_F(OutputFileTest, RightsOfUsersThatAreListedAreNotTheGroups) {
    qortest::WriteFile(m_File, "old\n");
    ASSERT_EQ(chmod(m_File.c_str(), 0600), 0);
    SetList(m_File, "system.posix_acl_access",
            {{OWNER, 6}, {USER, 4, geteuid()}, {GROUP, 0}, {MASK, 4}, {OTHERS, 0}});
    ASSERT_EQ(Mode(m_File), 0640U);
    EXPECT_TRUE(Write(m_File)) << m_Problem;
    EXPECT_EQ(Mode(m_File), 0600U);
}

// The program is asked to end when the new file is there and the old one has not been replaced.
TEST_F(OutputFileTest, SignalToEndLeavesNoFileBehind) {
    qortest::WriteFile(m_File, "old\n");
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGXFSZ}) {
        const std::string text(4'000'000, 'x');
        const pid_t child = fork();
        if (child == 0) {
            _exit(Write(m_File, text) ? 0 : 1);
        }
        while (FilesInFolder() < 2 && waitpid(child, nullptr, WNOHANG) == 0) {
        }
        kill(child, signal);
        waitpid(child, nullptr, 0);
        EXPECT_EQ(FilesInFolder(), 1U) << signal;
        qortest::WriteFile(m_File, "old\n");
    }
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

TEST_F(OutputFileTest, LinkToWhatIsNotThereYetIsFilled) {
    fs::create_symlink("target", m_File);
    EXPECT_TRUE(Write(m_File));
    EXPECT_TRUE(fs::is_symlink(m_File));
    EXPECT_EQ(qortest::ReadFile(m_Folder / "target"), "new\n");
}

// A link that somebody else put there leads where that user likes.
TEST_F(OutputFileTest, LinkOfAnotherUserIsNotFollowed) {
    fs::create_directory(m_Folder / "target");
    fs::create_symlink("target/report", m_Folder / "link");
    fs::create_symlink("target", m_Folder / "folder");
    const bool given = GiveAway(m_Folder / "link") && GiveAway(m_Folder / "folder");
    EXPECT_EQ(Write(m_Folder / "link"), !given);
    EXPECT_EQ(m_Problem, given ? "/opt/tarmica/out/link could not be written: link is a symbolic "
                                 "link of another user"
                               : "");
    EXPECT_EQ(Write(m_Folder / "folder/report"), !given);
    EXPECT_EQ(fs::exists(m_Folder / "target/report"), !given);
}

TEST_F(OutputFileTest, LinksInACircleAreAFailure) {
    fs::create_symlink("report", m_File);
    EXPECT_FALSE(Write(m_File));
    EXPECT_EQ(m_Problem,
              "/opt/tarmica/out/report could not be written: Too many levels of symbolic links");
}

TEST_F(OutputFileTest, NameBelowAFileIsAFailure) {
    qortest::WriteFile(m_File, "old\n");
    EXPECT_FALSE(Write(m_File / "report"));
    EXPECT_EQ(m_Problem, "/opt/tarmica/out/report/report could not be written: Not a directory");
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

TEST_F(OutputFileTest, PipeWithoutAReaderIsNotWaitedFor) {
    ASSERT_EQ(mkfifo(m_File.c_str(), 0600), 0);
    EXPECT_FALSE(Write(m_File));
    EXPECT_EQ(m_Problem, "/opt/tarmica/out/report could not be written: No such device or address");
    EXPECT_TRUE(fs::is_fifo(m_File));
}

TEST_F(OutputFileTest, PipeWithAReaderGetsAll) {
    ASSERT_EQ(mkfifo(m_File.c_str(), 0600), 0);
    const int reader = open(m_File.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_EQ(fcntl(reader, F_SETFL, 0), 0);
    const std::string text(1'000'000, 'x');  // more than a pipe holds
    std::string got;
    std::thread thread([&] {
        std::array<char, 4096> buffer = {};
        while (got.size() < text.size()) {
            const ssize_t count = read(reader, buffer.data(), buffer.size());
            got.append(buffer.data(), count > 0 ? static_cast<size_t>(count) : 0);
        }
    });
    EXPECT_TRUE(Write(m_File, text)) << m_Problem;
    thread.join();
    close(reader);
    EXPECT_EQ(got, text);
}

TEST_F(OutputFileTest, PipeOfAnotherUserIsRefused) {
    ASSERT_EQ(mkfifo(m_File.c_str(), 0600), 0);
    const bool given = GiveAway(m_File);
    const int reader = open(m_File.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    EXPECT_EQ(Write(m_File), !given);
    EXPECT_EQ(m_Problem,
              given ? "/opt/tarmica/out/report could not be written: a pipe of another user" : "");
    close(reader);
}

TEST_F(OutputFileTest, NameOfADescriptorMeansThatDescriptor) {
    std::array<int, 2> ends = {};
    ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    for (const char* folder : {"/dev/fd/", "/proc/self/fd/"}) {
        EXPECT_TRUE(Write(folder + std::to_string(ends[1])));
    }
    std::array<char, 16> got = {};
    EXPECT_EQ(read(ends[0], got.data(), got.size()), 8);
    EXPECT_STREQ(got.data(), "new\nnew\n");
    close(ends[0]);
    close(ends[1]);
    EXPECT_FALSE(Write("/dev/fd/1000"));
    EXPECT_EQ(m_Problem, "/dev/fd/1000 could not be written: Bad file descriptor");
}

TEST_F(OutputFileTest, DescriptorMayBeASocket) {
    std::array<int, 2> ends = {};
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
    EXPECT_TRUE(Write("/dev/fd/" + std::to_string(ends[1]))) << m_Problem;
    std::array<char, 16> got = {};
    EXPECT_EQ(read(ends[0], got.data(), got.size()), 4);
    close(ends[0]);
    close(ends[1]);
}

TEST_F(OutputFileTest, FileThatADescriptorIsOpenOnGrows) {
    const int fd = open(m_File.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_EQ(write(fd, "old\n", 4), 4);
    EXPECT_TRUE(Write("/dev/fd/" + std::to_string(fd)));
    close(fd);
    EXPECT_EQ(qortest::ReadFile(m_File), "old\nnew\n");
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
