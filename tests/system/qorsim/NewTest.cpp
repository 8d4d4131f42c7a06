// "qorsim new": generated hosts.
#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <utility>

#include "SimFixture.h"

namespace fs = std::filesystem;

namespace qortest {
namespace {

using nlohmann::json;
using testing::HasSubstr;

class CNewTest : public CSimFixture {
protected:
    static CEnd New(const std::string& controllers, const std::string& drives,
                    const std::string& seed) {
        return Qorsim({"new", "--controllers", controllers, "--drives", drives, "--seed", seed});
    }

    // The file of a generated host.
    std::string Write(const std::string& controllers, const std::string& drives) const {
        std::string path = Folder() / "host.json";
        const CEnd end = Qorsim({"new", "--controllers", controllers, "--drives", drives, "--seed",
                                 "1", "--output", path});
        EXPECT_EQ(end.status, 0) << end.err;
        EXPECT_EQ(end.out, "");
        return path;
    }
};

TEST_F(CNewTest, SameSeedGivesTheSameBytes) {
    const CEnd first = New("3", "100", "7");
    EXPECT_EQ(first.status, 0);
    EXPECT_EQ(New("3", "100", "7").out, first.out);
    EXPECT_NE(New("3", "100", "8").out, first.out);
}

TEST_F(CNewTest, SeedIsDrawnAndTold) {
    const CStrings command = {"new", "--controllers", "2", "--drives", "20"};
    const CEnd first = Qorsim(command);
    EXPECT_EQ(first.status, 0);
    std::smatch told;
    ASSERT_TRUE(std::regex_match(
        first.err, told,
        std::regex("qorsim: the seed is ([0-9]+): --seed \\1 makes the same host again\n")))
        << first.err;
    EXPECT_EQ(New("2", "20", told[1]).out, first.out);
    EXPECT_EQ(New("2", "20", told[1]).err, "");
    const std::set<std::string> hosts = {first.out, Qorsim(command).out, Qorsim(command).out};
    EXPECT_GT(hosts.size(), 1U);
}

// On every machine and with every library: a change of these bytes changes everybody's tests.
TEST_F(CNewTest, SmallGeneratedHostIsAsEver) {
    ExpectGolden("generated/2-20-1.json", New("2", "20", "1").out);
}

TEST_F(CNewTest, OutputFileHoldsTheSameBytes) {
    EXPECT_EQ(ReadFile(Write("3", "100")), New("3", "100", "1").out);
}

// In a directory like /tmp somebody else may have put it there.
TEST_F(CNewTest, PreparedOutputFileIsNotWrittenTo) {
    const std::string file = Folder() / "host.json";
    const std::string precious = Folder() / "precious";
    const std::pair<std::string, std::string> rows[] = {
        {"ln -s precious host.json", "it is a symbolic link"},
        {"ln precious host.json", "it has a second name"},
        {"mkfifo host.json", "No such device or address"},
        {"mkfifo host.json; exec 3<> host.json", "it is no regular file"},
    };
    for (const auto& [prepare, problem] : rows) {
        WriteFile(precious, "precious");
        const CEnd end = RunProgram({"sh", "-c",
                                     "cd \"$0\" && rm -f host.json && " + prepare +
                                         " && exec timeout 20 " QORSIM_PROGRAM
                                         " new --controllers 1 --drives 1 --seed 1 --output \"$1\"",
                                     Folder().string(), file});
        EXPECT_EQ(end.status, 1) << prepare;
        EXPECT_EQ(end.err, "qorsim: cannot write " + file + ": " + problem + "\n");
        EXPECT_EQ(ReadFile(precious), "precious") << prepare;
    }
}

TEST_F(CNewTest, OutputFileOfAnotherUserIsNotWrittenTo) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can give a file away";
    }
    const std::string file = Folder() / "host.json";
    WriteFile(file, "prepared");
    ASSERT_EQ(chown(file.c_str(), 65534, 65534), 0);
    const CEnd end =
        Qorsim({"new", "--controllers", "1", "--drives", "1", "--seed", "1", "--output", file});
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(end.err, "qorsim: cannot write " + file + ": it belongs to another user\n");
    EXPECT_EQ(ReadFile(file), "prepared");
}

TEST_F(CNewTest, CurrentDirectoryThatWasRemovedIsAFailure) {
    const CEnd end =
        RunProgram({"sh", "-c",
                    "cd \"$0\" && mkdir gone && cd gone && rmdir ../gone && exec " QORSIM_PROGRAM
                    " new --controllers 1 --drives 1 --seed 1 --output host.json",
                    Folder().string()});
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(end.err, "qorsim: cannot write host.json: No such file or directory\n");
}

TEST_F(CNewTest, OutputFileMayBeInTheCurrentDirectory) {
    const CEnd end = qortest::RunProgram({"sh", "-c",
                                          "cd \"$0\" && " QORSIM_PROGRAM
                                          " new --controllers 1 --drives 1 --seed 1 "
                                          "--output host.json",
                                          Folder().string()});
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_EQ(ReadFile(Folder() / "host.json"), New("1", "1", "1").out);
}

TEST_F(CNewTest, UnwritableOutputIsNamed) {
    const CEnd end = Qorsim({"new", "--controllers", "1", "--drives", "1", "--seed", "1",
                             "--output", Folder().string()});
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(end.err, "qorsim: cannot write " + Folder().string() + ": Is a directory\n");
}

TEST_F(CNewTest, EverySizeIsValid) {
    const std::pair<const char*, const char*> sizes[] = {
        {"0", "0"}, {"1", "0"},    {"1", "1"},   {"1", "2"},       {"1", "3"},    {"2", "5"},
        {"5", "3"}, {"1", "1000"}, {"127", "0"}, {"127", "10000"}, {"1", "10000"}};
    for (const auto& [controllers, drives] : sizes) {
        const CEnd end = Qorsim({"validate", Write(controllers, drives)});
        EXPECT_EQ(end.status, 0) << end.err;
        const json profile = json::parse(ReadFile(Folder() / "host.json"));
        EXPECT_EQ(profile["controllers"].size(), std::stoul(controllers));
        size_t count = 0;
        for (const json& controller : profile["controllers"]) {
            count += controller["drives"].size();
        }
        EXPECT_EQ(count, std::stoul(drives));
    }
}

TEST_F(CNewTest, SerialNumbersAndAddressesAreUnique) {
    std::set<std::string> known;
    size_t count = 0;
    const auto note = [&](const json& text) {
        known.insert(text);
        ++count;
    };
    const json profile = json::parse(New("127", "5000", "3").out);
    for (const json& controller : profile["controllers"]) {
        note(controller["serial"]);
        note(controller["sasAddress"]);
        for (const json& drive : controller["drives"]) {
            note(drive["serial"]);
            note(drive["wwn"]);
        }
    }
    EXPECT_EQ(known.size(), count);
    EXPECT_EQ(count, 2U * 127 + 2U * 5000);
}

TEST_F(CNewTest, LargeHostHasAllKindsOfGroupsSparesAndStates) {
    std::map<std::string, int> levels;
    std::map<std::string, int> uses;
    std::map<std::string, int> statuses;
    const json profile = json::parse(New("8", "960", "1").out);
    for (const json& controller : profile["controllers"]) {
        for (const json& group : controller["groups"]) {
            ++levels[group["level"]];
        }
        for (const json& drive : controller["drives"]) {
            ++uses[drive["use"].get<std::string>().substr(0, 3)];
            ++statuses[drive["status"]];
        }
    }
    for (const char* level : {"RAID 1", "RAID 5", "RAID 6", "RAID 10"}) {
        EXPECT_GT(levels[level], 0) << level;
    }
    for (const char* use : {"LD0", "GHS", "DHS", "Una"}) {
        EXPECT_GT(uses[use], 0) << use;
    }
    for (const char* status :
         {"HOT SPARE", "Unconfig GOOD", "Unconfig BAD", "Foreign", "FAILED", "REBUILD"}) {
        EXPECT_GT(statuses[status], 0) << status;
        EXPECT_LT(statuses[status], 200) << status;
    }
    EXPECT_GT(statuses["ONLINE"], 700);
}

TEST_F(CNewTest, PluginReadsAGeneratedHost) {
    const CEnd end = RunOn(Write("3", "100"), {"qorctl", "raid"});
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.err, "");
    size_t drives = 0;
    for (const std::string& line : Lines(end.out)) {
        drives += line == "Physical Drive Information" ? 1U : 0U;
    }
    EXPECT_EQ(drives, 100U);
}

TEST_F(CNewTest, DrivesWithoutAControllerAreRefused) {
    const CEnd end = New("0", "1", "1");
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(end.out, "");
    EXPECT_EQ(end.err, "qorsim: drives need a controller: give --controllers 1 or more\n");
}

TEST_F(CNewTest, NumbersBeyondTheLimitsAreRefused) {
    EXPECT_THAT(New("128", "1", "1").err,
                HasSubstr("--controllers: must be a number from 0 to 127, is 128\n"));
    EXPECT_THAT(New("1", "10001", "1").err,
                HasSubstr("--drives: must be a number from 0 to 10000, is 10001\n"));
    EXPECT_THAT(New("1", "1", "one").err, HasSubstr("--seed"));
    EXPECT_EQ(New("1", "1", "18446744073709551615").status, 0);
    EXPECT_EQ(New("1", "1", "010").out, New("1", "1", "10").out);
    EXPECT_THAT(New("1", "1", "0x10").err,
                HasSubstr("must be a number from 0 to 18446744073709551615, is 0x10\n"));
}

}  // namespace
}  // namespace qortest
