// The names of result files can be foretold. What somebody put there before, or a directory that is
// not the host's alone, must not get at the host.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <functional>
#include <string>

#include "LoadedPluginFixture.h"

namespace {

namespace fs = std::filesystem;
using qortest::CAnswer;
using qortest::CLoadedPlugin;
using qortest::CStandInTool;
using qortest::RESULT_DIR;

constexpr const char* VICTIM = "/opt/tarmica/victim";
constexpr const char* VICTIMS_TEXT = "what root has\n";

class ResultDirectory : public qortest::CLoadedPluginFixture {
protected:
    void SetUp() override {
        CLoadedPluginFixture::SetUp();
        fs::create_directory(RESULT_DIR);
        fs::permissions(RESULT_DIR, fs::perms::owner_all);
        qortest::WriteFile(VICTIM, VICTIMS_TEXT);
    }

    // The files of the first requests of a plug-in that was just loaded.
    static void PrepareNames(const std::function<void(const fs::path&)>& put) {
        for (int count = 0; count < 8; ++count) {
            std::array<char, 64> name = {};
            std::snprintf(name.data(), name.size(), "%08x_%08x_MngSrvRaid.txt", gettid(), count);
            put(fs::path(RESULT_DIR) / name.data());
        }
    }
    static void RemoveNames() {
        PrepareNames([](const fs::path& path) { fs::remove(path); });
    }

    static void ExpectTheWholeAnswer() {
        CStandInTool tool;
        PlayOneController(tool);
        const CLoadedPlugin plugin;
        CAnswer answer = GetRAIDInfo(plugin);
        EXPECT_EQ(answer.result, 1);
        EXPECT_EQ(answer.errorCode + answer.noticeCode, "");
        EXPECT_FALSE(answer.items.empty());
        plugin->FreeItemList(&answer.items);
    }

    // The tool is never started, so that the version cannot be told either.
    static void ExpectRefusal() {
        const CStandInTool tool;
        const CLoadedPlugin plugin;
        const CAnswer answer = GetRAIDInfo(plugin);
        EXPECT_EQ(answer.result, 0);
        EXPECT_EQ(answer.errorCode, "01");
        EXPECT_EQ(answer.noticeCode, "01");
        EXPECT_TRUE(Traced("ExecForeignModule open Error 0000000d."));
    }
};

TEST_F(ResultDirectory, PipesThatStandInTheWayHangNoRequest) {
    PrepareNames([](const fs::path& path) { ASSERT_EQ(mkfifo(path.c_str(), 0666), 0); });
    ExpectTheWholeAnswer();
    RemoveNames();
}

TEST_F(ResultDirectory, LinksThatStandInTheWayAreNotFollowed) {
    PrepareNames([](const fs::path& path) { fs::create_symlink(VICTIM, path); });
    ExpectTheWholeAnswer();
    EXPECT_EQ(qortest::ReadFile(VICTIM), VICTIMS_TEXT);
    RemoveNames();
}

TEST_F(ResultDirectory, SecondNamesOfAFileThatStandInTheWayAreNotWrittenTo) {
    PrepareNames([](const fs::path& path) { fs::create_hard_link(VICTIM, path); });
    ExpectTheWholeAnswer();
    EXPECT_EQ(qortest::ReadFile(VICTIM), VICTIMS_TEXT);
    RemoveNames();
}

TEST_F(ResultDirectory, FileThatSomebodyElseHoldsOpenIsNotWrittenTo) {
    int held = -1;
    PrepareNames([&](const fs::path& path) {
        const int file = open(path.c_str(), O_RDONLY | O_CREAT | O_CLOEXEC, 0666);
        held < 0 ? held = file : close(file);
    });
    ExpectTheWholeAnswer();
    EXPECT_EQ(lseek(held, 0, SEEK_END), 0);
    close(held);
    RemoveNames();
}

TEST_F(ResultDirectory, ThatOthersMayWriteIntoIsRefused) {
    chmod(RESULT_DIR, 01777);
    ExpectRefusal();
}

TEST_F(ResultDirectory, OfAnotherUserIsRefused) {
    if (chown(RESULT_DIR, 12345, 12345) != 0) {
        GTEST_SKIP() << "only root can give a directory away";
    }
    ExpectRefusal();
}

TEST_F(ResultDirectory, LinkOfAnotherUserIsRefused) {
    fs::rename(RESULT_DIR, "/opt/tarmica/elsewhere");
    fs::create_directory_symlink("/opt/tarmica/elsewhere", RESULT_DIR);
    if (lchown(RESULT_DIR, 12345, 12345) != 0) {
        GTEST_SKIP() << "only root can give a link away";
    }
    ExpectRefusal();
}

TEST_F(ResultDirectory, LinkOfTheHostsOwnUserIsFollowed) {
    fs::rename(RESULT_DIR, "/opt/tarmica/elsewhere");
    fs::create_directory_symlink("/opt/tarmica/elsewhere", RESULT_DIR);
    ExpectTheWholeAnswer();
}

TEST_F(ResultDirectory, UtilityIsNotRunIntoOneThatOthersMayWriteInto) {
    CStandInTool utility("/opt/tarmica/qor/provider/RAID/tool/storcli");
    chmod(RESULT_DIR, 0777);
    const CLoadedPlugin plugin;
    const CAnswer answer = GetRAIDInfo(plugin);
    EXPECT_EQ(answer.result, 1);
    EXPECT_EQ(answer.noticeCode, "02");
    EXPECT_TRUE(Traced("LSI RAID Utilty command Exit Code: 0x01"));
}

// The host's own choice: slot 10 writes wherever the host says.
TEST_F(ResultDirectory, FileThatTheHostNamesIsOpenedAsItStands) {
    chmod(RESULT_DIR, 01777);
    const fs::path link = fs::path(RESULT_DIR) / "hosts.txt";
    fs::create_symlink(VICTIM, link);
    CStandInTool tool;
    tool.Play("-v", {.out = "Product Version : 7.0\n"});
    const CLoadedPlugin plugin;
    unsigned long exitCode = 1;
    EXPECT_EQ(plugin->KRZExecCli("krzcli -v", &exitCode, link), 0U);
    EXPECT_EQ(qortest::ReadFile(VICTIM), "Product Version : 7.0\n");
    fs::remove(link);
}

}  // namespace
