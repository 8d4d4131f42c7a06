// The units for systemd, in its own tools, and what they start.
#include <gmock/gmock.h>

#include <regex>

#include "SimFixture.h"

namespace qortest {
namespace {

using testing::HasSubstr;

class UnitsTest : public CSimFixture {
protected:
    // The service as it is installed, with the built program in place of the installed one.
    std::string Service() const {
        const std::string text = ReadFile(UNITS_DIR "/qor-metrics.service");
        return std::regex_replace(text, std::regex("ExecStart=\\S+"), "ExecStart=" QORCTL_PROGRAM);
    }

    CEnd Analyze(const CStrings& arguments) const {
        WriteFile(Folder() / "qor-metrics.service", Service());
        WriteFile(Folder() / "qor-metrics.timer", ReadFile(UNITS_SOURCE_DIR "/qor-metrics.timer"));
        CStrings command = {"systemd-analyze"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return RunProgram(command);
    }
};

TEST_F(UnitsTest, SystemdFindsNothingWrong) {
    const CEnd end = Analyze(
        {"verify", "--man=no", Folder() / "qor-metrics.service", Folder() / "qor-metrics.timer"});
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_EQ(end.err, "");
}

TEST_F(UnitsTest, ServiceIsAsShutAsThePageSays) {
    const CEnd end = Analyze({"security", "--offline=true", "--no-pager", "--threshold=30",
                              Folder() / "qor-metrics.service"});
    EXPECT_EQ(end.status, 0) << end.out;
}

// Each of these lets systemd deny the devices that it does not name, the controllers' among them.
// ProtectClock= does by its DeviceAllow= of the clocks; what else it does is here without it.
TEST_F(UnitsTest, ServiceReachesTheControllers) {
    const std::string service = Service();
    for (const std::string setting :
         {"PrivateDevices=yes", "ProtectClock=yes", "DeviceAllow=", "DevicePolicy="}) {
        EXPECT_THAT(service, testing::Not(HasSubstr("\n" + setting))) << setting;
    }
    EXPECT_THAT(service, testing::Not(HasSubstr("CAP_SYS_TIME")));
    EXPECT_THAT(service, HasSubstr("\nSystemCallFilter=@system-service @raw-io\n"));
}

// systemd puts the variables in and leaves out what is empty, as a shell does here.
TEST_F(UnitsTest, CommandOfTheServiceWritesTheMetrics) {
    std::smatch match;
    const std::string service = Service();
    ASSERT_TRUE(std::regex_search(service, match, std::regex("ExecStart=(.*)\n")));
    const std::string file = Folder() / "qor.prom";
    const CEnd end =
        RunShellOn("small", "export QOR_PLUGIN=" QOR_PLUGIN_PATH " QOR_METRICS_FILE=" + file +
                                " QOR_METRICS_TIMEOUT=50; " + match[1].str());
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_THAT(ReadFile(file), HasSubstr("\nqor_collection_success 1\n"));
}

// Whatever the example says is a variable of the service.
TEST_F(UnitsTest, ExampleNamesWhatTheServiceReads) {
    const std::string service = Service();
    size_t variables = 0;
    for (const std::string& line : Lines(ReadFile(UNITS_SOURCE_DIR "/qor.default"))) {
        std::smatch match;
        if (std::regex_match(line, match, std::regex("#(QOR_METRICS\\w+)=.*"))) {
            ++variables;
            EXPECT_THAT(service, HasSubstr(match[1].str()));
        }
    }
    EXPECT_EQ(variables, 3U);
}

}  // namespace
}  // namespace qortest
