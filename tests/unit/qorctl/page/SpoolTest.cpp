#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cerrno>
#include <csignal>
#include <string>

#include "page/Spool.h"

namespace {

using qorctl::CSpool;

std::string TextOf(CSpool& spool) {
    std::string text;
    EXPECT_TRUE(spool.Give([&text](std::string_view piece) {
        text += piece;
        return true;
    }));
    return text;
}

TEST(SpoolTest, TextIsWhatWasAppended) {
    CSpool spool;
    EXPECT_EQ(TextOf(spool), "");
    std::string expected;
    for (int i = 0; i < 300000; ++i) {
        const std::string part = std::to_string(i) + ' ';
        spool.Append(part);
        expected += part;
        if (i % 100000 == 5) {
            EXPECT_EQ(TextOf(spool), expected);
        }
    }
    EXPECT_EQ(TextOf(spool), expected);
    EXPECT_EQ(TextOf(spool), expected);
}

TEST(SpoolTest, PieceThatIsNotTakenEndsIt) {
    CSpool spool;
    spool.Append(std::string(3 << 20, 'a'));
    int pieces = 0;
    EXPECT_FALSE(spool.Give([&pieces](std::string_view) { return ++pieces < 2; }));
    EXPECT_EQ(pieces, 2);
}

// A page without one of its servers would be worse than none.
TEST(SpoolTest, TextThatNoDiskTakesIsAFailure) {
    const auto fill = [] {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit = {1 << 20, 1 << 20};
        setrlimit(RLIMIT_FSIZE, &limit);
        CSpool spool;
        spool.Append(std::string(3 << 20, 'a'));
        spool.Append("b");
        const bool isGiven = spool.Give([](std::string_view) { return true; });
        _exit(!isGiven && errno == EFBIG ? 0 : 1);
    };
    EXPECT_EXIT(fill(), testing::ExitedWithCode(0), "");
}

}  // namespace
