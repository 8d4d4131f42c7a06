// What a host sees, and what the trace says, when the surroundings fail.
#include <sys/mount.h>
#include <sys/stat.h>

#include <filesystem>
#include <random>
#include <string>

#include "LoadedPluginFixture.h"

namespace {

using qortest::CAnswer;
using qortest::CLoadedPlugin;
using qortest::CStandInTool;
using qortest::CToolStep;

class Failure : public qortest::CLoadedPluginFixture {
protected:
    static void ExpectFailure(const CAnswer& answer, const std::string& errorCode,
                              const std::string& errorDetail) {
        EXPECT_EQ(answer.result, 0);
        EXPECT_TRUE(answer.items.empty());
        EXPECT_EQ(answer.errorCode, errorCode);
        EXPECT_EQ(answer.errorDetail, errorDetail);
    }
};

// Cuts something out, puts something in, changes a byte or cuts the end off.
void Damage(std::string& text, std::mt19937& random) {
    text += '\n';
    const size_t at = random() % text.size();
    const size_t length = random() % 40;
    switch (random() % 4) {
        case 0:
            text.erase(at, length);
            break;
        case 1:
            text.insert(at, text.substr(random() % text.size(), length));
            break;
        case 2:
            text[at] = static_cast<char>(random());
            break;
        default:
            text.resize(at);
            break;
    }
}

TEST_F(Failure, NoSupportedCardRunsNothing) {
    qortest::WriteFile(qortest::DEVICE_LIST, "02:00.0_1000:ffff_0000_02\n");
    const CStandInTool tool;
    const CLoadedPlugin plugin;
    const CAnswer answer = GetRAIDInfo(plugin);
    EXPECT_EQ(answer.result, 1);
    EXPECT_TRUE(answer.items.empty());
    EXPECT_EQ(answer.errorCode + answer.noticeCode, "");
    EXPECT_EQ(answer.errorDetail, "none");
    EXPECT_TRUE(Traced("RAID Card is not present."));
}

TEST_F(Failure, MissingToolWithDisksIsError02) {
    CStandInTool utility("/opt/tarmica/qor/provider/RAID/tool/storcli");
    utility.Play("/call show", {.out = "Physical Drives = 4\n"});
    const CLoadedPlugin plugin;
    ExpectFailure(GetRAIDInfo(plugin), "02", "none");
}

TEST_F(Failure, MissingToolWithoutDisksIsNotice02) {
    CStandInTool utility("/opt/tarmica/qor/provider/RAID/tool/storcli");
    utility.Play("/call show", {.out = "Physical Drives = 0\n"});
    const CLoadedPlugin plugin;
    const CAnswer answer = GetRAIDInfo(plugin);
    EXPECT_EQ(answer.result, 1);
    EXPECT_EQ(answer.errorCode, "02");
    EXPECT_EQ(answer.noticeCode, "02");
}

TEST_F(Failure, ToolThatCannotBeExecutedIsError01) {
    qortest::WriteFile("/opt/tarmica/krz/cli/krzcli", "not a program\n");
    const CLoadedPlugin plugin;
    const CAnswer answer = GetRAIDInfo(plugin);
    ExpectFailure(answer, "01", "krzcli -ctrlinfo -aAll");
    EXPECT_TRUE(Traced("Failed to execute krzcli command.(krzcli -ctrlinfo -aAll,cliRtn=126)"));
}

TEST_F(Failure, UnwritableResultDirectoryIsError01AndTracedWithItsPlace) {
    std::filesystem::remove_all(std::string(qortest::INSTALL_DIR) + "/tmp");
    qortest::WriteFile(std::string(qortest::INSTALL_DIR) + "/tmp",
                       "a file where a directory is due");
    const CStandInTool tool;
    const CLoadedPlugin plugin;
    ExpectFailure(GetRAIDInfo(plugin), "01", "krzcli -ctrlinfo -aAll");
    EXPECT_TRUE(Traced("ExecForeignModule open Error 00000014.")) << "ENOTDIR";
    EXPECT_TRUE(Traced("Failed to delete file(/opt/tarmica/qor/provider/tmp/MSRAID/"));
}

TEST_F(Failure, FullDiskIsError01) {
    std::filesystem::create_directories(qortest::RESULT_DIR);
    ASSERT_EQ(mount("full", qortest::RESULT_DIR, "tmpfs", 0, "mode=0700,size=4k,nr_inodes=8"), 0);
    {
        std::string report;
        for (int i = 0; i < 1000; ++i) {
            report += "RAID Controller : 0\n";
        }
        CStandInTool tool;
        tool.Play("-v", {.out = "Product Version : 7.0\n"});
        tool.Play("-ctrlinfo -aAll", {.out = report, .run = "set -e"});
        const CLoadedPlugin plugin;
        ExpectFailure(GetRAIDInfo(plugin), "01", "krzcli -ctrlinfo -aAll");
        EXPECT_TRUE(Traced("Failed to execute krzcli command.(krzcli -ctrlinfo -aAll,cliRtn=1)"));
        EXPECT_TRUE(std::filesystem::is_empty(qortest::RESULT_DIR));
    }
    EXPECT_EQ(umount(qortest::RESULT_DIR), 0);
}

TEST_F(Failure, DiskWithoutRoomForAFileIsError01) {
    std::filesystem::create_directories(qortest::RESULT_DIR);
    ASSERT_EQ(mount("full", qortest::RESULT_DIR, "tmpfs", 0, "mode=0700,nr_inodes=1"), 0);
    {
        const CStandInTool tool;
        const CLoadedPlugin plugin;
        ExpectFailure(GetRAIDInfo(plugin), "01", "krzcli -ctrlinfo -aAll");
        EXPECT_TRUE(Traced("ExecForeignModule open Error 0000001c.")) << "ENOSPC";
    }
    EXPECT_EQ(umount(qortest::RESULT_DIR), 0);
}

TEST_F(Failure, ReportThatIsNotUnderstoodIsError04) {
    CStandInTool tool;
    tool.Play("-v", {.out = "Product Version : 7.0\n"});
    tool.Play("-ctrlinfo -aAll", {.out = "RAID Controller : 0\n"});
    tool.Play("-ctrlinfo -a0", {.out = "### General Information ###\n"});
    const CLoadedPlugin plugin;
    ExpectFailure(GetRAIDInfo(plugin), "04", "");
}

TEST_F(Failure, MissingDeviceListIsMadeFromTheRealBus) {
    std::filesystem::remove(qortest::DEVICE_LIST);
    const CLoadedPlugin plugin;
    const CAnswer answer = GetRAIDInfo(plugin);
    EXPECT_EQ(answer.result, 1);
    EXPECT_TRUE(std::filesystem::exists(qortest::DEVICE_LIST));
}

// One of the five reports is damaged in a random place; every answer is whole or empty.
TEST_F(Failure, MutatedReportsGiveItemsOrTheDocumentedFailure) {
    const std::vector<std::pair<std::string, std::string>> reports = {
        {"-v", "KRZ\nProduct Version : 7.0\n"},
        {"-ctrlinfo -aAll", qortest::Golden("whole/ctrlinfo.txt")},
        {"-ctrlinfo -a0", qortest::Golden("whole/ctrlinfo.txt")},
        {"-ldpdinfo -a0", qortest::Golden("whole/ldpdinfo.txt")},
        {"-pdinfo -nosmart -a0", qortest::Golden("whole/pdinfo.txt")},
    };
    std::mt19937 random(20261120);
    // A tool that answers by its arguments: a damaged report changes what is asked next.
    const std::string folder = "/opt/tarmica/reports/";
    qortest::WriteFile("/opt/tarmica/krz/cli/krzcli",
                       "#!/bin/sh\ncat \"" + folder + "$*\" 2>/dev/null || exit 0\n");
    std::filesystem::permissions("/opt/tarmica/krz/cli/krzcli", std::filesystem::perms(0755));
    int failures = 0;
    const CLoadedPlugin plugin;
    for (int round = 0; round < 150; ++round) {
        const size_t damaged = random() % reports.size();
        for (size_t i = 0; i < reports.size(); ++i) {
            std::string text = reports[i].second;
            for (int hit = 0; i == damaged && hit < 4; ++hit) {
                Damage(text, random);
            }
            qortest::WriteFile(folder + reports[i].first, text);
        }
        CAnswer answer;
        try {
            answer = GetRAIDInfo(plugin);
        } catch (const std::out_of_range&) {
            EXPECT_EQ(damaged, 0U) << "only a version line that ends at its colon may throw";
            continue;
        }
        if (answer.result == 0) {
            ++failures;
            EXPECT_TRUE(answer.items.empty());
            EXPECT_TRUE(answer.errorCode == "04" || answer.errorCode == "01") << answer.errorCode;
        }
        plugin->FreeItemList(&answer.items);
    }
    EXPECT_GT(failures, 0) << "the mutations hurt nothing";
}

}  // namespace
