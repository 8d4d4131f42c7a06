#include <gtest/gtest.h>
#include <sys/mount.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "FakeComLib.h"
#include "PrivateServerFixture.h"
#include "RaidHost.h"
#include "StandInTool.h"
#include "TraceText.h"
#include "presence/CMSRAID_MegaStorCLI.h"

using namespace qortest;
namespace fs = std::filesystem;

namespace {

constexpr const char* UTILITY_DIR = "/opt/tarmica/qor/provider/RAID/tool";
constexpr const char* MEGACLI = "/opt/tarmica/qor/provider/RAID/tool/MegaCli";
constexpr const char* STORCLI = "/opt/tarmica/qor/provider/RAID/tool/storcli";
constexpr const char* MEGACLI_ARGUMENTS = "-AdpAllInfo -aALL";
constexpr const char* STORCLI_ARGUMENTS = "/call show";
constexpr const char* MEGACLI_LINE =
    "1: Execute LSI RAID Utilty command. "
    "\"/opt/tarmica/qor/provider/RAID/tool/MegaCli\" -AdpAllInfo -aALL\n";
constexpr const char* STORCLI_LINE =
    "1: Execute LSI RAID Utilty command. "
    "\"/opt/tarmica/qor/provider/RAID/tool/storcli\" /call show\n";
const DevicePCIID NEWER_CARD = {"VEN_1000", "DEV_005D"};

std::string CountLine(const std::string& count) {
    return "1: CMSRAID_InterFace::IsPresentRAIDPhysDisk diskNum=" + count + "\n";
}

class MegaStorCLI : public CPrivateServerFixture {
protected:
    void SetUp() override {
        CPrivateServerFixture::SetUp();
        ResetFakeComLib();
        fs::create_directories(UTILITY_DIR);
    }

    static bool RunMegaCli(const CToolStep& step) {
        fs::remove_all(UTILITY_DIR);
        CStandInTool utility(MEGACLI);
        utility.Play(MEGACLI_ARGUMENTS, step);
        return CMSRAID_MegaStorCLI::IsPresentRAIDPhysDisk({});
    }
    static bool RunStorcli(const CToolStep& step) {
        fs::remove_all(UTILITY_DIR);
        CStandInTool utility(STORCLI);
        utility.Play(STORCLI_ARGUMENTS, step);
        return CMSRAID_MegaStorCLI::IsPresentRAIDPhysDisk({NEWER_CARD});
    }
    static std::vector<fs::path> ResultFiles() {
        return {fs::directory_iterator(RESULT_DIR), fs::directory_iterator()};
    }
};

TEST_F(MegaStorCLI, UtilityIsChosenByTheCards) {
    struct CRow {
        const char* name;
        std::list<DevicePCIID> cards;
        bool isMegaCli;
    };
    const std::vector<CRow> rows = {
        {"no card", {}, true},
        {"Intel, any device", {{"VEN_8086", "DEV_FFFF"}}, true},
        {"005B", {{"VEN_1000", "DEV_005B"}}, true},
        {"0073", {{"VEN_1000", "DEV_0073"}}, true},
        {"0079", {{"VEN_1000", "DEV_0079"}}, true},
        {"all older", {{"VEN_1000", "DEV_0079"}, {"VEN_8086", ""}, {"VEN_1000", "DEV_005B"}}, true},
        {"newer", {NEWER_CARD}, false},
        {"Intel, then newer", {{"VEN_8086", "DEV_0001"}, NEWER_CARD}, false},
        {"newer, then older", {NEWER_CARD, {"VEN_1000", "DEV_005B"}}, false},
        {"lower-case vendor", {{"ven_8086", "DEV_0001"}}, false},
        {"lower-case device", {{"VEN_1000", "DEV_005b"}}, false},
        {"part of a vendor", {{"8086", "DEV_0001"}}, false},
        {"older device of another vendor", {{"VEN_1AED", "DEV_005B"}}, false},
    };
    for (const CRow& row : rows) {
        fs::remove_all(UTILITY_DIR);
        ResetFakeComLib();
        CStandInTool utility(row.isMegaCli ? MEGACLI : STORCLI);
        utility.Play(row.isMegaCli ? MEGACLI_ARGUMENTS : STORCLI_ARGUMENTS, {});
        EXPECT_FALSE(CMSRAID_MegaStorCLI::IsPresentRAIDPhysDisk(row.cards)) << row.name;
        EXPECT_EQ(TraceTextWithoutFlow(),
                  (row.isMegaCli ? MEGACLI_LINE : STORCLI_LINE) + CountLine("0"))
            << row.name;
    }
}

TEST_F(MegaStorCLI, TracesInOrder) {
    EXPECT_TRUE(RunMegaCli({.out = "  Disks           : 4\n"}));
    EXPECT_EQ(TraceText(), std::string("4: CMSRAID_InterFace::IsPresentRAIDPhysDisk [START]\n") +
                               MEGACLI_LINE + CountLine("4") +
                               "4: CMSRAID_InterFace::IsPresentRAIDPhysDisk [END]\n");
}

TEST_F(MegaStorCLI, MegaCliCountsAreAddedUp) {
    const std::vector<std::pair<std::string, std::string>> rows = {
        {"  Disks           : 4\n", "4"},
        {"  Disks           : 2\nother\n  Disks           : 3\r\n", "5"},
        {"  Disks           : 4", "4"},
        {"  Disks           :4 disks\n", "4"},
        {"  Disks           : 0\n", "0"},
        {"  Disks           : -3\n  Disks           : 2\n", "-1"},
        {"  Disks           : none\n", "0"},
        {"  Disks           :\n", "0"},
        {" Disks           : 4\n", "0"},
        {"  Disks            : 4\n", "0"},
        {"  disks           : 4\n", "0"},
        {"Physical Drives = 4\n", "0"},
        // The number is read at the place where it stands in a line that begins with the key.
        {"ab  Disks           : 4\n", "0"},
        {"x  Disks           :4\n", "0"},
        {"0123456789012345678 7   Disks           : 4\n", "7"},
        {"", "0"},
    };
    for (const auto& [report, count] : rows) {
        ResetFakeComLib();
        EXPECT_EQ(RunMegaCli({.out = report}), std::stoi(count) > 0) << report;
        EXPECT_EQ(TraceTextWithoutFlow(), MEGACLI_LINE + CountLine(count)) << report;
    }
}

TEST_F(MegaStorCLI, StorcliCountsAreAddedUp) {
    const std::vector<std::pair<std::string, std::string>> rows = {
        {"Physical Drives = 4\n", "4"},   {"Physical Drives = 2\n\nPhysical Drives = 3\n", "5"},
        {"Physical Drives =\n", "0"},     {"  Physical Drives = 4\n", "0"},
        {"  Disks           : 4\n", "0"},
    };
    for (const auto& [report, count] : rows) {
        ResetFakeComLib();
        EXPECT_EQ(RunStorcli({.out = report}), std::stoi(count) > 0) << report;
        EXPECT_EQ(TraceTextWithoutFlow(), STORCLI_LINE + CountLine(count)) << report;
    }
}

TEST_F(MegaStorCLI, HugeCountsKeepTheirSign) {
    const std::string huge = "Physical Drives = 9223372036854775807\n";
    const std::string hugeNegative = "Physical Drives = -9223372036854775808\n";
    EXPECT_TRUE(RunStorcli({.out = huge}));
    EXPECT_TRUE(RunStorcli({.out = huge + huge}));
    EXPECT_TRUE(RunStorcli({.out = huge + huge + huge}));
    EXPECT_TRUE(RunStorcli({.out = "Physical Drives = 4294967296\n"}));
    EXPECT_TRUE(RunStorcli({.out = "Physical Drives = 99999999999999999999999\n"}));
    EXPECT_FALSE(RunStorcli({.out = hugeNegative}));
    EXPECT_FALSE(RunStorcli({.out = hugeNegative + hugeNegative}));
    EXPECT_FALSE(RunStorcli({.out = hugeNegative + "Physical Drives = -1\n"}));
}

TEST_F(MegaStorCLI, HugeCountIsTracedByItsLow32Bits) {
    EXPECT_TRUE(RunStorcli({.out = "Physical Drives = 4294967297\n"}));
    EXPECT_EQ(TraceTextWithoutFlow(), STORCLI_LINE + CountLine("1"));
}

TEST_F(MegaStorCLI, ReportWithNulsAndLongLinesIsRead) {
    using namespace std::string_literals;
    EXPECT_TRUE(RunStorcli(
        {.out = "a\0b\n"s + std::string(100000, 'x') + "\n" + "Physical Drives = 1\0 2\n"s}));
    EXPECT_EQ(TraceTextWithoutFlow(), STORCLI_LINE + CountLine("1"));
}

TEST_F(MegaStorCLI, StandardErrorIsNotRead) {
    EXPECT_FALSE(RunStorcli({.err = "Physical Drives = 4\n"}));
}

TEST_F(MegaStorCLI, UtilityRunsInItsFixedDirectory) {
    EXPECT_FALSE(RunStorcli({.run = "pwd > /opt/tarmica/directory"}));
    EXPECT_EQ(ReadFile("/opt/tarmica/directory"), std::string(UTILITY_DIR) + "\n");
}

TEST_F(MegaStorCLI, UtilityIsLocatedBelowTheInstallPath) {
    FakeComLib().installPath = "/opt/tarmica/other place";
    CStandInTool utility("/opt/tarmica/other place/RAID/tool/storcli");
    utility.Play(STORCLI_ARGUMENTS,
                 {.out = "Physical Drives = 1\n", .run = "pwd > /opt/tarmica/directory"});
    EXPECT_TRUE(CMSRAID_MegaStorCLI::IsPresentRAIDPhysDisk({NEWER_CARD}));
    EXPECT_EQ(ReadFile("/opt/tarmica/directory"), std::string(UTILITY_DIR) + "\n");
    EXPECT_EQ(TraceTextWithoutFlow(),
              "1: Execute LSI RAID Utilty command. "
              "\"/opt/tarmica/other place/RAID/tool/storcli\" /call show\n" +
                  CountLine("1"));
}

TEST_F(MegaStorCLI, MissingInstallPathIsTracedBehindTheCommand) {
    ASSERT_EQ(mount("test", "/tmp", "tmpfs", 0, "mode=1777"), 0);
    FakeComLib().installPath = "";
    EXPECT_FALSE(CMSRAID_MegaStorCLI::IsPresentRAIDPhysDisk({}));
    EXPECT_EQ(TraceTextWithoutFlow(),
              "1: Execute LSI RAID Utilty command. \"/RAID/tool/MegaCli\" -AdpAllInfo -aALL\n"
              "2: Failed to get INSTALLPATH_CIM.\n"
              "2: LSI RAID Utilty command Exit Code: 0x7F\n" +
                  CountLine("0"));
    EXPECT_TRUE(fs::is_empty("/tmp/MSRAID"));
    EXPECT_EQ(umount2("/tmp", MNT_DETACH), 0);
}

TEST_F(MegaStorCLI, UtilityIsAwaitedWithoutALimit) {
    EXPECT_TRUE(RunStorcli({.out = "Physical Drives = 1\n", .run = "sleep 0.2"}));
    EXPECT_TRUE(FakeComLib().sleeps.empty()) << "a limit is counted in sleeps";
}

TEST_F(MegaStorCLI, NonZeroExitCountsNothing) {
    EXPECT_FALSE(RunStorcli({.out = "Physical Drives = 4\n", .status = 3}));
    EXPECT_EQ(TraceTextWithoutFlow(), std::string(STORCLI_LINE) +
                                          "2: LSI RAID Utilty command Exit Code: 0x03\n" +
                                          CountLine("0"));
    EXPECT_EQ(ResultFiles().size(), 0U);
}

TEST_F(MegaStorCLI, SmallestExitCodeCountsNothing) {
    EXPECT_FALSE(RunStorcli({.out = "Physical Drives = 4\n", .status = 1}));
    EXPECT_EQ(TraceTextWithoutFlow(), std::string(STORCLI_LINE) +
                                          "2: LSI RAID Utilty command Exit Code: 0x01\n" +
                                          CountLine("0"));
}

TEST_F(MegaStorCLI, ExitCodeIsTracedInHexadecimal) {
    EXPECT_FALSE(RunStorcli({.status = 171}));
    EXPECT_EQ(FakeComLib().Traces(2),
              std::vector<std::string>{"LSI RAID Utilty command Exit Code: 0xAB"});
}

TEST_F(MegaStorCLI, MissingUtilityIsAnExitCode) {
    EXPECT_FALSE(CMSRAID_MegaStorCLI::IsPresentRAIDPhysDisk({NEWER_CARD}));
    EXPECT_EQ(FakeComLib().Traces(2),
              std::vector<std::string>{"LSI RAID Utilty command Exit Code: 0x7F"});
}

TEST_F(MegaStorCLI, KilledUtilityLeavesItsResultFile) {
    ExpectLeftovers();
    EXPECT_FALSE(RunStorcli({.run = std::string("echo 'Physical Drives = 4'\n") + KILL_TOOL}));
    EXPECT_EQ(TraceTextWithoutFlow(), std::string(STORCLI_LINE) +
                                          "2: Failed to execute LSI RAID Utilty command. "
                                          "(ExecForeignModule() error 1).\n" +
                                          CountLine("0"));
    const std::vector<fs::path> files = ResultFiles();
    ASSERT_EQ(files.size(), 1U);
    EXPECT_TRUE(files[0].filename().string().ends_with("_MngSrvRaid.txt"));
    EXPECT_EQ(ReadFile(files[0]), "Physical Drives = 4\n");
}

TEST_F(MegaStorCLI, MissingWorkingDirectoryIsARunnerFailure) {
    fs::remove_all(UTILITY_DIR);
    FakeComLib().installPath = "/opt/tarmica/other";
    const CStandInTool utility("/opt/tarmica/other/RAID/tool/storcli");
    EXPECT_FALSE(CMSRAID_MegaStorCLI::IsPresentRAIDPhysDisk({NEWER_CARD}));
    EXPECT_EQ(FakeComLib().Traces(2),
              std::vector<std::string>{"Failed to execute LSI RAID Utilty command. "
                                       "(ExecForeignModule() error 1)."});
}

TEST_F(MegaStorCLI, ResultFileThatIsGoneCountsNothing) {
    EXPECT_FALSE(RunStorcli(
        {.out = "Physical Drives = 4\n", .run = "rm -f /opt/tarmica/qor/provider/tmp/MSRAID/*"}));
    EXPECT_EQ(
        TraceTextWithoutFlow(),
        std::string(STORCLI_LINE) + "2: Failed to delete file(RESULTFILE).\n" + CountLine("0"));
}

TEST_F(MegaStorCLI, DisksInAHugeReportAreNotCounted) {
    EXPECT_FALSE(RunStorcli(
        {.out = "Physical Drives = 4\n", .run = "truncate -s 16777217 /proc/self/fd/1"}));
}

// ---- the shell takes the path of the utility as it is ----

TEST_F(MegaStorCLI, NothingInAPathIsRunOrReplaced) {
    for (const char* name :
         {"a $(touch ran) b", "`touch ran`", "$HOME", "a\"b", "a\\b", "a\\", "!x"}) {
        SCOPED_TRACE(name);
        FakeComLib().installPath = std::string("/opt/tarmica/") + name;
        fs::create_directories(FakeComLib().installPath + "/tmp");
        fs::create_directories(UTILITY_DIR);
        CStandInTool utility(FakeComLib().installPath + "/RAID/tool/storcli");
        utility.Play(STORCLI_ARGUMENTS, {.out = "Physical Drives = 4\n"});
        EXPECT_TRUE(CMSRAID_MegaStorCLI::IsPresentRAIDPhysDisk({NEWER_CARD}));
        EXPECT_FALSE(fs::exists(std::string(UTILITY_DIR) + "/ran"));
    }
}

}  // namespace
