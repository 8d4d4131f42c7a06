// Faults as the real plug-in meets them, through qorctl.
#include <gmock/gmock.h>

#include "SimFixture.h"

namespace qortest {
namespace {

using testing::HasSubstr;

class CFaultPluginTest : public CSimFixture {
protected:
    static CEnd Raid(const CStrings& faults) {
        CStrings whole = {QORSIM_PROGRAM, "run", "--host", "small"};
        for (const std::string& fault : faults) {
            whole.insert(whole.end(), {"--fault", fault});
        }
        whole.insert(whole.end(), {"--", QORCTL_PROGRAM, "raid", "--plugin", QOR_PLUGIN_PATH});
        return RunProgram(whole);
    }
};

TEST_F(CFaultPluginTest, HarmlessFaultsChangeNothing) {
    const CEnd plain = Raid({});
    EXPECT_EQ(plain.status, 0);
    EXPECT_EQ(plain.err, "");
    EXPECT_THAT(plain.out, HasSubstr("Controller Information"));
    for (const std::string fault :
         {"crlf", "no-newline", "hang-child", "stderr", "exit=3@-ldpdinfo#1", "delay=1"}) {
        const CEnd end = Raid({fault});
        EXPECT_EQ(end.status, 0) << fault;
        EXPECT_TRUE(end.out == plain.out) << fault;
        EXPECT_EQ(end.err, "") << fault;
    }
}

TEST_F(CFaultPluginTest, FailuresOfTheToolAreToldWithTheirCommand) {
    const std::pair<const char*, const char*> rows[] = {
        {"error@-pdinfo", "krzcli -pdinfo -nosmart -a0"},
        {"bad-token@-ctrlinfo", "krzcli -ctrlinfo -aAll"},
        {"kill@-ldpdinfo", "krzcli -ldpdinfo -a0"},
        {"exit=3@-ctrlinfo -a0", "krzcli -ctrlinfo -a0"},
        {"vanish@-v", "krzcli -ctrlinfo -aAll"},
        {"not-executable", "krzcli -ctrlinfo -aAll"},
        {"result-dir-unwritable", "krzcli -ctrlinfo -aAll"},
    };
    for (const auto& [fault, command] : rows) {
        const CEnd end = Raid({fault});
        EXPECT_EQ(end.status, 1) << fault;
        EXPECT_EQ(end.out, "") << fault;
        EXPECT_THAT(end.err, HasSubstr("qorctl: error code 01: ")) << fault;
        EXPECT_THAT(end.err, HasSubstr(std::string("the command that failed: ") + command + "\n"));
    }
}

TEST_F(CFaultPluginTest, UnreadableDeviceListIsAFailure) {
    const CEnd end = Raid({"unreadable-device-list"});
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(end.out, "");
    EXPECT_THAT(end.err, testing::StartsWith(
                             "qorctl: it is not known whether a RAID card is in this server: "
                             "/opt/tarmica/qor/kam/work/devices.tmp is no regular file\n"));
}

TEST_F(CFaultPluginTest, UnreadableVersionGivesANotice) {
    for (const std::string fault : {"empty@-v", "truncate=10@-v", "error@-v", "nul=3@-v"}) {
        const CEnd end = Raid({fault});
        EXPECT_EQ(end.status, 0) << fault;
        EXPECT_THAT(end.err, testing::StartsWith("qorctl: notice code 01: ")) << fault;
    }
}

// Whatever the reports hold, the plug-in answers; a crash would end otherwise.
TEST_F(CFaultPluginTest, DamagedReportsEndInAnAnswer) {
    for (int seed = 1; seed <= 20; ++seed) {
        const CEnd end = Raid({"mutate=" + std::to_string(seed)});
        EXPECT_TRUE(end.status == 0 || end.status == 1) << seed << ": " << end.status;
        EXPECT_THAT(end.err, testing::Not(HasSubstr("Sanitizer"))) << seed;
    }
}

}  // namespace
}  // namespace qortest
