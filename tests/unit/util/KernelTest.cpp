#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <thread>

#include "ComLibFixture.h"
#include "util/Kernel.h"
#include "util/UniqueFd.h"

namespace {

namespace fs = std::filesystem;
using util::GetLinkStatus;
using util::GetStatus;

class KernelTest : public qortest::CComLibFixture {
protected:
    void SetUp() override {
        CComLibFixture::SetUp();
        m_File = Scratch() / "file";
        m_Link = Scratch() / "link";
        qortest::WriteFile(m_File, "123");
        fs::create_symlink(m_File, m_Link);
        chmod(m_File.c_str(), 0640);
        constexpr timespec TIMES[] = {{1, 2}, {1'700'000'000, 999'999'999}};
        utimensat(AT_FDCWD, m_File.c_str(), TIMES, 0);
    }

    fs::path m_File;
    fs::path m_Link;
};

// Every byte, the unused ones too.
void ExpectSame(const struct stat& ours, const struct stat& theirs) {
    EXPECT_EQ(std::memcmp(&ours, &theirs, sizeof(ours)), 0);
}

TEST_F(KernelTest, StatusIsTheCLibrarys) {
    struct stat theirs = {};
    ASSERT_EQ(stat(m_File.c_str(), &theirs), 0);
    EXPECT_EQ(theirs.st_size, 3);
    EXPECT_EQ(theirs.st_mtim.tv_nsec, 999'999'999);
    for (const fs::path& path : {m_File, m_Link}) {
        struct stat ours = {};
        EXPECT_TRUE(GetStatus(path.c_str(), ours));
        ExpectSame(ours, theirs);
    }
}

TEST_F(KernelTest, StatusOfALinkIsTheCLibrarys) {
    struct stat theirs = {};
    ASSERT_EQ(lstat(m_Link.c_str(), &theirs), 0);
    struct stat ours = {};
    EXPECT_TRUE(GetLinkStatus(m_Link.c_str(), ours));
    EXPECT_TRUE(S_ISLNK(ours.st_mode));
    ExpectSame(ours, theirs);
}

TEST_F(KernelTest, StatusOfADescriptorIsTheCLibrarys) {
    const util::CUniqueFd fd(open(m_File.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat theirs = {};
    ASSERT_EQ(fstat(fd.Get(), &theirs), 0);
    struct stat ours = {};
    EXPECT_TRUE(GetStatus(fd.Get(), ours));
    ExpectSame(ours, theirs);
}

TEST_F(KernelTest, FailureIsTold) {
    struct stat status = {};
    EXPECT_FALSE(GetStatus((Scratch() / "missing").c_str(), status));
    EXPECT_EQ(errno, ENOENT);
    EXPECT_FALSE(GetStatus((m_File / "below").c_str(), status));
    EXPECT_EQ(errno, ENOTDIR);
    EXPECT_FALSE(GetLinkStatus("", status));
    EXPECT_EQ(errno, ENOENT);
    EXPECT_FALSE(GetStatus(-1, status));
    EXPECT_EQ(errno, EBADF);
}

TEST(Kernel, ThreadIdIsTheCLibrarys) {
    EXPECT_EQ(util::ThreadId(), gettid());
    std::thread([] { EXPECT_EQ(util::ThreadId(), gettid()); }).join();
}

}  // namespace
