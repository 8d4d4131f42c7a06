// Events of a host: the tools render the state for the time since the server's start.
#include <gmock/gmock.h>

#include <ctime>
#include <filesystem>

#include "SimFixture.h"

namespace qortest {
namespace {

using nlohmann::json;
using testing::HasSubstr;

constexpr const char* START = "/opt/tarmica/krz/started";

class CTimelineTest : public CSimFixture {
protected:
    static json Event(const json& second, const json& patch) {
        return {{"after_s", second}, {"patch", patch}};
    }

    // A list of one element in braces would be the element itself.
    static json Patch(const json& operation) { return json::array({operation}); }

    static json Replace(const std::string& pointer, const json& value) {
        return Patch({{"op", "replace"}, {"path", pointer}, {"value", value}});
    }

    // The small host with these events.
    std::string HostWith(const json& events) const {
        return WriteProfile({{"extends", "small"}, {"events", events}});
    }

    static std::string VersionAt(const std::string& host, const std::string& second) {
        const CEnd end = Qorsim({"show", host, "--start-at", second, "--report", "krzcli -v"});
        EXPECT_EQ(end.status, 0) << end.err;
        const std::string key = "Product Version : ";
        const size_t begin = end.out.find(key) + key.size();
        return end.out.substr(begin, end.out.find('\n', begin) - begin);
    }

    static void ExpectRefused(const std::string& path, const std::string& reason) {
        const CEnd end = Qorsim({"validate", path});
        EXPECT_EQ(end.status, 1);
        EXPECT_EQ(end.out, "");
        EXPECT_EQ(end.err, "qorsim: " + path + ": " + reason + "\n");
    }
};

TEST_F(CTimelineTest, EventHappensInItsSecond) {
    const std::string host = HostWith({Event(10, Replace("/tool/version", "8.0")),
                                       Event(10, Replace("/tool/version", "8.1")),
                                       Event(4294967295, Replace("/tool/version", "9.0"))});
    EXPECT_EQ(VersionAt(host, "0"), "7.0");
    EXPECT_EQ(VersionAt(host, "9"), "7.0");
    EXPECT_EQ(VersionAt(host, "10"), "8.1");
    EXPECT_EQ(VersionAt(host, "4294967294"), "8.1");
    EXPECT_EQ(VersionAt(host, "4294967295"), "9.0");
}

TEST_F(CTimelineTest, EventOfSecond0HasHappenedAtTheStart) {
    EXPECT_THAT(Krzcli(HostWith(json::array({Event(0, Replace("/tool/version", "8.0"))})), {"-v"}),
                HasSubstr("Product Version : 8.0\n"));
}

TEST_F(CTimelineTest, RunStartsAtTheGivenSecond) {
    const std::string host =
        HostWith(json::array({Event(100000, Replace("/tool/version", "8.0"))}));
    const std::string krzcli = "/opt/tarmica/krz/cli/krzcli";
    EXPECT_THAT(Qorsim({"run", "--host", host, "--", krzcli, "-v"}).out,
                HasSubstr("Product Version : 7.0\n"));
    EXPECT_THAT(Qorsim({"run", "--host", host, "--start-at", "100000", "--", krzcli, "-v"}).out,
                HasSubstr("Product Version : 8.0\n"));
}

// A test cannot wait; moving the server's start into the past is the same to its tools.
TEST_F(CTimelineTest, TimePassesWhileTheServerRuns) {
    const std::string host =
        HostWith(json::array({Event(100000, Replace("/tool/version", "8.0"))}));
    const CEnd end =
        RunShellOn(host, "krzcli=/opt/tarmica/krz/cli/krzcli; start=" + std::string(START) +
                             "; $krzcli -v | grep Version; echo $(($(cat $start) - 100000)) "
                             "> $start; $krzcli -v | grep Version");
    EXPECT_EQ(end.out, "Product Version : 7.0\nProduct Version : 8.0\n");
}

TEST_F(CTimelineTest, StartIsKeptInSecondsOfTheClock) {
    const std::time_t before = std::time(nullptr);
    const std::time_t start =
        std::stol(Qorsim({"run", "--host", "small", "--start-at", "500", "--", "cat", START}).out) +
        500;
    EXPECT_GE(start, before);
    EXPECT_LE(start, std::time(nullptr));
}

TEST_F(CTimelineTest, ClockThatWasSetBackIsTheStart) {
    const std::string host = HostWith(json::array({Event(1, Replace("/tool/version", "8.0"))}));
    EXPECT_THAT(RunShellOn(host, "echo 99999999999 > " + std::string(START) +
                                     "; /opt/tarmica/krz/cli/krzcli -v")
                    .out,
                HasSubstr("Product Version : 7.0\n"));
}

TEST_F(CTimelineTest, DamagedStartIsReported) {
    for (const std::string text : {"", "soon", "-1", "1 2", "99999999999999999999"}) {
        const CEnd end = RunShellOn(
            "small", "printf %s '" + text + "' > " + START + "; /opt/tarmica/krz/cli/krzcli -v");
        EXPECT_EQ(end.status, 96) << text;
        EXPECT_EQ(end.out, "");
        EXPECT_EQ(end.err, "krzcli: no simulated host: " + std::string(START) +
                               ": must be a number of seconds since 1970\n");
    }
}

TEST_F(CTimelineTest, UtilitiesSeeTheEventsToo) {
    const std::string host = HostWith(
        json::array({Event(5, Patch({{"op", "remove"}, {"path", "/controllers/0/drives/8"}}))}));
    const CEnd end = Qorsim({"show", host, "--start-at", "5", "--report", "storcli /call show"});
    EXPECT_THAT(end.out, HasSubstr("\nPhysical Drives = 8\n"));
}

TEST_F(CTimelineTest, ShownStateHasNoEvents) {
    const std::string host = HostWith(json::array({Event(5, Replace("/tool/version", "8.0"))}));
    const json state = json::parse(Qorsim({"show", host, "--start-at", "5"}).out);
    json expected = ShippedProfile("small");
    expected["tool"]["version"] = "8.0";
    EXPECT_EQ(state, expected);
    EXPECT_TRUE(json::parse(Qorsim({"show", host}).out).contains("events"));
}

TEST_F(CTimelineTest, EventsAreInheritedAndCanBeTakenAway) {
    EXPECT_EQ(json::parse(Qorsim({"show", WriteProfile({{"extends", "lifecycle"}})}).out)["events"]
                  .size(),
              5U);
    EXPECT_FALSE(
        json::parse(
            Qorsim({"show", WriteProfile({{"extends", "lifecycle"}, {"events", nullptr}})}).out)
            .contains("events"));
}

TEST_F(CTimelineTest, MistakesAreReportedWithTheirPlace) {
    const json nothing = json::array();
    const std::pair<json, const char*> cases[] = {
        {json::object(), "/events: must be an array, is object"},
        {json::array({7}), "/events/0: must be an object, is number"},
        {json::array({{{"patch", nothing}}}), "/events/0: \"after_s\" is missing"},
        {json::array({{{"after_s", 1}}}), "/events/0: \"patch\" is missing"},
        {json::array({{{"after_s", 1}, {"patch", nothing}, {"set", 1}}}),
         "/events/0: unknown key \"set\" (known: after_s, note, patch)"},
        {json::array({{{"after_s", 1}, {"patch", nothing}, {"note", 1}}}),
         "/events/0/note: must be a string, is number"},
        {json::array({Event(-1, nothing)}), "/events/0/after_s: must be 0 to 4294967295, is -1"},
        {json::array({Event(1.5, nothing)}),
         "/events/0/after_s: must be a whole number, is number"},
        {json::array({Event(2, nothing), Event(1, nothing)}),
         "/events/1: \"after_s\" is 1, before the event above it"},
        {json::array({Event(1, Patch({{"op", "remove"}, {"path", "/tool/no"}}))}),
         "/events/0/patch/0: key 'no' not found"},
        {json::array({Event(1, nothing), Event(2, Replace("/controllers/0/drives/3/status", 7))}),
         "/events/1/patch: leaves no host: /controllers/0/drives/3/status: must be a string, is "
         "number"},
        {json::array({Event(1, Patch({{"op", "remove"}, {"path", "/controllers/0/drives/3"}}))}),
         "/events/0/patch: leaves no host: /controllers/0/groups/1/drives/1: the controller has no "
         "drive 3"},
        {json::array({Event(1, Replace("", 7))}),
         "/events/0/patch: leaves no host: /: must be an object, is number"},
    };
    for (const auto& [events, reason] : cases) {
        ExpectRefused(HostWith(events), reason);
    }
}

// Files and links are made once; a change of them would be seen by nobody.
TEST_F(CTimelineTest, WhatIsLaidOutCannotChange) {
    const std::pair<json, const char*> cases[] = {
        {Replace("/pciDevices/0/revision", "06"), "/pciDevices"},
        {Patch({{"op", "add"}, {"path", "/tool/missing"}, {"value", json::array({"krzcli"})}}),
         "/tool/missing"},
        {Patch({{"op", "add"}, {"path", "/events"}, {"value", json::array()}}), "/events"},
        {Patch({{"op", "add"}, {"path", "/extends"}, {"value", "large"}}), "/extends"},
        {Patch({{"op", "add"}, {"path", "/patch"}, {"value", json::array()}}), "/patch"},
    };
    for (const auto& [patch, place] : cases) {
        ExpectRefused(HostWith(json::array({Event(1, patch)})),
                      "/events/0/patch: changes " + std::string(place) +
                          ", which stays as it is at the start");
    }
}

TEST_F(CTimelineTest, StartAtDemandsSeconds) {
    for (const std::string text : {"-1", "soon", "4294967296"}) {
        const CEnd end = Qorsim({"run", "--host", "small", "--start-at", text, "--", "true"});
        EXPECT_NE(end.status, 0);
        EXPECT_THAT(end.err, HasSubstr("--start-at: "));
    }
}

struct CStage {
    const char* second;
    const char* failed;  // drive 3's header and status
    const char* spare;   // drive 7's header, status and the line behind it
    const char* state;   // of the group's LDs
};

TEST_F(CTimelineTest, LifecycleFailsRebuildsAndRecovers) {
    const CStage stages[] = {
        {"0", "LD1 ONLINE", "DHS RG1 HOT SPARE Media Error Count : 0", "Optimal"},
        {"9", "LD1 ONLINE", "DHS RG1 HOT SPARE Media Error Count : 0", "Optimal"},
        {"10", "LD1 FAILED", "DHS RG1 HOT SPARE Media Error Count : 0", "Degraded"},
        {"20", "Unassigned FAILED", "LD1 REBUILD Progress : 10%", "Degraded"},
        {"30", "Unassigned FAILED", "LD1 REBUILD Progress : 50%", "Degraded"},
        {"40", "Unassigned FAILED", "LD1 REBUILD Progress : 90%", "Degraded"},
        {"50", "Unassigned FAILED", "LD1 ONLINE Media Error Count : 0", "Optimal"},
        {"100000", "Unassigned FAILED", "LD1 ONLINE Media Error Count : 0", "Optimal"},
    };
    for (const CStage& stage : stages) {
        const auto report = [&](const std::string& command) {
            return Qorsim({"show", "lifecycle", "--start-at", stage.second, "--report", command})
                .out;
        };
        const std::string drives = report("krzcli -pdinfo -nosmart -a0");
        const auto drive = [&](const std::string& head) {
            const size_t begin = drives.find(head) + head.size();
            const size_t status = drives.find("PD Status : ", begin) + 12;
            const CStrings lines = Lines(drives.substr(status, 100));
            return drives.substr(begin, drives.find(')', begin) - begin) + " " + lines[0] + " " +
                   lines[1];
        };
        EXPECT_THAT(drive("PD3("), testing::StartsWith(stage.failed)) << stage.second;
        EXPECT_EQ(drive("PD7("), stage.spare) << stage.second;
        EXPECT_THAT(report("krzcli -ldpdinfo -a0"),
                    HasSubstr("(Data, 4.000TB, " + std::string(stage.state) + ")"))
            << stage.second;
    }
}

TEST_F(CTimelineTest, PluginSeesTheRebuild) {
    const CEnd end =
        Qorsim({"run", "--host", "lifecycle", "--start-at", "100000", "--", "qorctl", "raid"});
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_THAT(end.out, HasSubstr(": FAILED\n"));
    EXPECT_THAT(end.out, testing::Not(HasSubstr(": REBUILD\n")));
}

}  // namespace
}  // namespace qortest
