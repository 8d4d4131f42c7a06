#include <fcntl.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "cli/UniqueFd.h"

namespace {

TEST(UniqueFd, ClosesItsDescriptor) {
    const int fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
    {
        const CUniqueFd owner(fd);
        EXPECT_TRUE(owner.IsValid());
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
    { EXPECT_TRUE(CUniqueFd(STDIN_FILENO).IsValid()); }
    EXPECT_EQ(fcntl(STDIN_FILENO, F_GETFD), -1);
    if (copy >= 0) {
        dup2(copy, STDIN_FILENO);
        close(copy);
    }
}

TEST(UniqueFd, MinusOneStandsForNone) {
    errno = 0;
    { EXPECT_FALSE(CUniqueFd(-1).IsValid()); }
    EXPECT_EQ(errno, 0);
}

}  // namespace
