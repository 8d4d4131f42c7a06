#include <sys/stat.h>
#include <unistd.h>

#include "FakeComLib.h"
#include "PrivateServerFixture.h"
#include "cli/ResultFile.h"
#include "plugin/ComLib.h"

namespace {

namespace fs = std::filesystem;
using namespace qortest;

const std::string FILE_PATH = "/opt/tarmica/run/report.txt";

class CResultFileTest : public CPrivateServerFixture {
protected:
    void SetUp() override {
        CPrivateServerFixture::SetUp();
        ResetFakeComLib();
    }
};

TEST_F(CResultFileTest, RemovesTheFileAtTheEndOfTheScope) {
    WriteFile(FILE_PATH, "text");
    {
        const CResultFile file(FILE_PATH);
        EXPECT_EQ(file.Path(), FILE_PATH);
        EXPECT_TRUE(fs::exists(FILE_PATH));
    }
    EXPECT_FALSE(fs::exists(FILE_PATH));
    EXPECT_TRUE(FakeComLib().traces.empty());
}

TEST_F(CResultFileTest, TracesAFileThatCannotBeRemoved) {
    { const CResultFile file(FILE_PATH); }
    EXPECT_EQ(FakeComLib().traces,
              (std::vector<CTraceLine>{{CTraceUtility::TRACE_DBG_FAILURE,
                                        "Failed to delete file(" + FILE_PATH + ")."}}));
}

TEST_F(CResultFileTest, KeptFileStays) {
    WriteFile(FILE_PATH, "text");
    {
        CResultFile file(FILE_PATH);
        file.Keep();
    }
    EXPECT_TRUE(fs::exists(FILE_PATH));
    EXPECT_TRUE(FakeComLib().traces.empty());
}

TEST_F(CResultFileTest, FirstLineIsComparedFromItsFirstByte) {
    struct {
        std::string text;
        bool begins;
    } const rows[] = {
        {"Error - no disk\n", true}, {"Error - ", true},
        {"Error -", false},          {"Error -\n ", false},
        {" Error - x\n", false},     {"error - x\n", false},
        {"\nError - x\n", false},    {"", false},
        {"ok\nError - x\n", false},  {"Error - \0x\n", true},
    };
    for (const auto& row : rows) {
        WriteFile(FILE_PATH, row.text);
        EXPECT_EQ(FirstLineBeginsWith(FILE_PATH, "Error - "), row.begins) << row.text;
    }
}

TEST_F(CResultFileTest, FileThatCannotBeReadBeginsWithNothing) {
    EXPECT_FALSE(FirstLineBeginsWith(FILE_PATH, "Error - "));
    EXPECT_FALSE(FirstLineBeginsWith("/opt/tarmica", "Error - "));
}

// ---- who can put another file in its place ----

TEST_F(CResultFileTest, FileIsOutOfReachWhereOnlyItsUserWrites) {
    const fs::path directory = fs::path(FILE_PATH).parent_path();
    fs::create_directory(directory);
    for (const mode_t mode : {0700U, 0755U, 0555U, 02750U, 01744U}) {
        fs::permissions(directory, fs::perms(mode));
        EXPECT_TRUE(IsOutOfOthersReach(FILE_PATH)) << mode;
    }
    for (const mode_t mode : {0777U, 01777U, 0770U, 0720U, 0702U}) {
        fs::permissions(directory, fs::perms(mode));
        EXPECT_FALSE(IsOutOfOthersReach(FILE_PATH)) << mode;
    }
}

// Links of root's are followed: what counts is who owns the place that they lead to.
TEST_F(CResultFileTest, LinkLeadsToADirectoryOfItsOwner) {
    constexpr uid_t NOBODY = 65534;
    const fs::path directory = "/opt/tarmica/place";
    fs::create_directory(directory);
    fs::create_symlink(directory, fs::path(FILE_PATH).parent_path());
    EXPECT_TRUE(IsOutOfOthersReach(FILE_PATH));
    if (chown(directory.c_str(), NOBODY, NOBODY) != 0) {
        GTEST_SKIP() << "only root can give a directory away";
    }
    EXPECT_FALSE(IsOutOfOthersReach(FILE_PATH));
}

TEST_F(CResultFileTest, SixteenMebibytesAreNotTooLarge) {
    constexpr off_t LIMIT = off_t{16} << 20;
    WriteFile(FILE_PATH, "");
    ASSERT_EQ(truncate(FILE_PATH.c_str(), LIMIT), 0);
    EXPECT_FALSE(IsTooLarge(FILE_PATH));
    ASSERT_EQ(truncate(FILE_PATH.c_str(), LIMIT + 1), 0);
    EXPECT_TRUE(IsTooLarge(FILE_PATH));
}

TEST_F(CResultFileTest, FileWithoutADirectoryIsNobodys) {
    EXPECT_TRUE(IsOutOfOthersReach(FILE_PATH));
    fs::create_symlink("nowhere", fs::path(FILE_PATH).parent_path());
    EXPECT_TRUE(IsOutOfOthersReach(FILE_PATH));
}

}  // namespace
