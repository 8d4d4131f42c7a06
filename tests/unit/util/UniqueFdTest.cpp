#include <fcntl.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <utility>

#include "util/UniqueFd.h"

namespace {

TEST(UniqueFd, ClosesItsDescriptor) {
    const int fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
    {
        const util::CUniqueFd owner(fd);
        EXPECT_TRUE(owner.IsOpen());
        EXPECT_EQ(owner.Get(), fd);
        EXPECT_GE(fcntl(fd, F_GETFD), 0);
    }
    EXPECT_EQ(fcntl(fd, F_GETFD), -1);
    EXPECT_EQ(errno, EBADF);
}

TEST(UniqueFd, DescriptorZeroIsOne) {
    const int copy = fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3);
    close(STDIN_FILENO);
    ASSERT_EQ(open("/dev/null", O_RDONLY | O_CLOEXEC), STDIN_FILENO);
    { EXPECT_TRUE(util::CUniqueFd(STDIN_FILENO).IsOpen()); }
    EXPECT_EQ(fcntl(STDIN_FILENO, F_GETFD), -1);
    if (copy >= 0) {
        dup2(copy, STDIN_FILENO);
        close(copy);
    }
}

TEST(UniqueFd, MinusOneStandsForNone) {
    errno = 0;
    { EXPECT_FALSE(util::CUniqueFd(-1).IsOpen()); }
    EXPECT_EQ(errno, 0);
}

TEST(UniqueFd, OwnershipMoves) {
    const int fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
    util::CUniqueFd first(fd);
    util::CUniqueFd second(std::move(first));
    EXPECT_EQ(second.Get(), fd);
    first = std::move(second);
    EXPECT_EQ(first.Get(), fd);
    EXPECT_TRUE(first.Close());
    EXPECT_FALSE(first.IsOpen());
    EXPECT_TRUE(first.Close()) << "nothing to close";
}

TEST(UniqueFd, FailureToCloseIsTold) {
    const int fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
    util::CUniqueFd owner(fd);
    close(fd);
    EXPECT_FALSE(owner.Close());
    EXPECT_EQ(errno, EBADF);
}

}  // namespace
