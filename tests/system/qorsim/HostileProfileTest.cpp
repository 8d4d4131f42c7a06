// Profiles that somebody else made: what they name is not followed, and nothing grows without end.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "SimFixture.h"

namespace fs = std::filesystem;

namespace qortest {
namespace {

using nlohmann::json;
using testing::EndsWith;
using testing::HasSubstr;

constexpr const char* LINK = "it is a symbolic link, or behind one";

class CHostileProfileTest : public CSimFixture, public testing::WithParamInterface<EKernel> {
protected:
    std::string Profile() const { return Folder() / "set/host.json"; }

    void SetUp() override {
        CSimFixture::SetUp();
        WriteFile(Folder() / "outside.json", R"({"tool": {"version": "5.5"}})");
        WriteFile(Folder() / "set/base.json", R"({"tool": {"version": "5.5"}})");
    }

    static CEnd Show(const std::string& host) {
        return RunProgram({"timeout", "-k", "1", "20", QORSIM_PROGRAM, "show", host}, GetParam());
    }

    static void ExpectRefused(const std::string& host, const std::string& message) {
        const CEnd end = Show(host);
        EXPECT_EQ(end.status, 1) << host;
        EXPECT_EQ(end.out, "");
        EXPECT_EQ(end.err, "qorsim: " + message + "\n");
    }

    void ExpectRefusedBase(const json& base, const std::string& problem) const {
        WriteFile(Profile(), json{{"extends", base}}.dump());
        ExpectRefused(Profile(), Profile() + ": /extends: " + problem);
    }

    void ExpectRefusedProfile(const json& profile, const std::string& problem) const {
        WriteFile(Profile(), profile.dump());
        ExpectRefused(Profile(), Profile() + ": " + problem);
    }
};

INSTANTIATE_TEST_SUITE_P(Kernels, CHostileProfileTest,
                         testing::Values(EKernel::WHOLE, EKernel::WITHOUT_OPENAT2),
                         [](const auto& row) {
                             return row.param == EKernel::WHOLE ? "Whole" : "WithoutOpenat2";
                         });

TEST_P(CHostileProfileTest, WhatIsNoFileIsRefusedAtOnce) {
    const fs::path fifo = Folder() / "fifo.json";
    const fs::path large = Folder() / "large.json";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0666), 0);
    WriteFile(large, "");
    fs::resize_file(large, 1U << 30);
    const std::pair<std::string, const char*> rows[] = {
        {"/dev/zero", "it is no regular file"}, {"/dev/null", "it is no regular file"},
        {fifo, "it is no regular file"},        {Folder(), "it is a directory"},
        {large, "it is larger than 16 MiB"},
    };
    for (const auto& [host, reason] : rows) {
        ExpectRefused(host, "cannot read " + host + ": " + reason);
    }
}

// The user's own words may lead anywhere.
TEST_P(CHostileProfileTest, LinkThatTheUserNamesIsFollowed) {
    fs::create_symlink("set/base.json", Folder() / "link.json");
    EXPECT_EQ(Show(Folder() / "link.json").status, 0);
}

TEST_P(CHostileProfileTest, BaseIsBelowTheProfile) {
    WriteFile(Folder() / "set/below/base.json", R"({"extends": "./more.json"})");
    WriteFile(Folder() / "set/below/more.json", R"({"tool": {"version": "5.5"}})");
    for (const std::string base : {"base.json", "./base.json", "below/base.json"}) {
        WriteFile(Profile(), json{{"extends", base}}.dump());
        EXPECT_EQ(Show(Profile()).status, 0) << base;
    }
}

TEST_P(CHostileProfileTest, BaseElsewhereIsRefused) {
    const std::string name("./base.json\0x", 13);
    for (const std::string& base :
         {std::string("../outside.json"), (Folder() / "outside.json").string(),
          std::string("below/../../outside.json"), std::string("/dev/zero"),
          std::string(".json/.."), std::string("./"), std::string("below//base.json")}) {
        ExpectRefusedBase(
            base, "must be a shipped host or a path below this profile, is \"" + base + "\"");
    }
    ExpectRefusedBase(name, "must not hold control characters");
}

TEST_P(CHostileProfileTest, BaseIsARegularFileOfBoundedSize) {
    const fs::path set = Folder() / "set";
    fs::create_symlink("../outside.json", set / "link.json");
    fs::create_symlink("..", set / "up");
    ASSERT_EQ(mkfifo((set / "fifo.json").c_str(), 0666), 0);
    fs::create_directory(set / "folder.json");
    WriteFile(set / "large.json", "");
    fs::resize_file(set / "large.json", 1U << 30);
    const std::pair<const char*, const char*> rows[] = {
        {"link.json", LINK},
        {"up/outside.json", LINK},
        {"fifo.json", "it is no regular file"},
        {"folder.json", "it is a directory"},
        {"large.json", "it is larger than 16 MiB"},
    };
    for (const auto& [name, reason] : rows) {
        ExpectRefusedBase(name, "cannot read " + (set / name).string() + ": " + reason);
    }
}

TEST_P(CHostileProfileTest, ChainHasAnEnd) {
    const auto path = [&](int i) { return Folder() / "set" / (std::to_string(i) + ".json"); };
    for (int i = 0; i < 17; ++i) {
        WriteFile(path(i), json{{"extends", std::to_string(i + 1) + ".json"}}.dump());
    }
    WriteFile(path(17), R"({"tool": {"version": "5.5"}})");
    EXPECT_EQ(Show(path(2)).status, 0);
    ExpectRefused(path(1), path(16).string() + ": /extends: there are more than 16 profiles");
}

// What a chain of large profiles takes together is bounded like one.
TEST_P(CHostileProfileTest, SizeOfAChainIsBounded) {
    const std::string blanks(9U << 20, ' ');
    WriteFile(Folder() / "set/base.json", R"({"tool": {"version": "5.5"}})" + blanks);
    WriteFile(Profile(), R"({"extends": "base.json"})");
    EXPECT_EQ(Show(Profile()).status, 0);
    WriteFile(Profile(), R"({"extends": "base.json"})" + blanks);
    ExpectRefused(Profile(),
                  Profile() + ": /extends: the profiles together are larger than 16 MiB");
}

json Copies(size_t count, const std::string& from, const std::string& below) {
    json patch = json::array();
    for (size_t i = 0; i < count; ++i) {
        patch.push_back({{"op", "copy"}, {"from", from}, {"path", below + std::to_string(i)}});
    }
    return patch;
}

constexpr const char* TOO_MANY_COPIES =
    "what patches copy and move must not be more than 100000 values and bytes";

// Each copy of the whole doubles it.
TEST_P(CHostileProfileTest, CopiesDoNotFillTheMemory) {
    json profile = ShippedProfile("small");
    profile["patch"] = Copies(60, "/driveModels", "/driveModels/copy");
    const CEnd end = Show((WriteFile(Profile(), profile.dump()), Profile()));
    EXPECT_EQ(end.status, 1);
    EXPECT_THAT(end.err, HasSubstr(TOO_MANY_COPIES));
}

TEST_P(CHostileProfileTest, CopiesOfEventsDoNotFillTheMemory) {
    json profile = ShippedProfile("small");
    profile["description"] = std::string(1000, 'x');
    profile["events"] =
        json::array({{{"after_s", 1}, {"patch", Copies(60, "/driveModels", "/driveModels/copy")}}});
    const CEnd end = Show((WriteFile(Profile(), profile.dump()), Profile()));
    EXPECT_EQ(end.status, 1);
    EXPECT_THAT(end.err, HasSubstr(TOO_MANY_COPIES));
}

// A value that is moved into itself again and again would become so deep that the stack ends.
TEST_P(CHostileProfileTest, PatchesDoNotNestWithoutEnd) {
    json patch = json::array({{{"op", "add"}, {"path", "/x"}, {"value", json::object()}}});
    std::string place = "/x";
    for (int i = 0; i < 1000; ++i) {
        place += "/a";
        patch.push_back({{"op", "add"}, {"path", place}, {"value", json::object()}});
    }
    ExpectRefusedProfile({{"tool", {{"version", "5.5"}}}, {"patch", patch}},
                         "/patch/63: nests the profile deeper than 64 levels");
    patch = json::array({{{"op", "add"}, {"path", "/x"}, {"value", json::object()}}});
    for (int i = 0; i < 100; ++i) {
        patch.push_back({{"op", "copy"}, {"from", ""}, {"path", "/x"}});
    }
    ExpectRefusedProfile({{"tool", {{"version", "5.5"}}}, {"patch", patch}},
                         "/patch/63: nests the profile deeper than 64 levels");
}

TEST_P(CHostileProfileTest, NumberOfOperationsIsBounded) {
    json patch = json::array();
    for (int i = 0; i < 10001; ++i) {
        patch.push_back({{"op", "test"}, {"path", "/tool/version"}, {"value", "5.5"}});
    }
    json profile = {{"tool", {{"version", "5.5"}}}, {"patch", patch}};
    ExpectRefusedProfile(profile, "/patch/10000: there are more than 10000 operations");
    profile["events"] = json::array({{{"after_s", 1}, {"patch", json::array({patch[0]})}}});
    profile["patch"].erase(10000);
    ExpectRefusedProfile(profile, "/events/0/patch/0: there are more than 10000 operations");
}

TEST_P(CHostileProfileTest, EventsOfALargeHostAreBounded) {
    json profile = ShippedProfile("large");
    profile["events"] = json::array();
    for (int i = 0; i < 100000; ++i) {
        profile["events"].push_back({{"after_s", 1}, {"patch", json::array()}});
    }
    WriteFile(Profile(), profile.dump());
    const CEnd end = Show(Profile());
    EXPECT_EQ(end.status, 1);
    EXPECT_THAT(end.err, HasSubstr(": there are too many events for a host of this size\n"));
}

json SmartRows(size_t count) {
    json rows = json::array();
    for (size_t i = 0; i < count; ++i) {
        rows.push_back({{"name", "row " + std::to_string(i)}, {"value", "1"}, {"threshold", "1"}});
    }
    return rows;
}

// The profile with `count` drives of its first drive's model, which has `rows` SMART rows.
json HostOfManyRows(json profile, size_t count, size_t rows) {
    json& controller = profile["controllers"][0];
    controller["groups"] = json::array();
    json drive = controller["drives"][0];
    drive.erase("smart");
    drive["use"] = "Unassigned";
    profile["driveModels"][drive["model"].get<std::string>()]["smart"] = SmartRows(rows);
    controller["drives"] = json::array();
    for (size_t i = 0; i < count; ++i) {
        drive["no"] = i;
        drive["slot"] = i;
        controller["drives"].push_back(drive);
    }
    return profile;
}

// Each drive has the rows of its model for itself: a small profile would take gigabytes.
TEST_P(CHostileProfileTest, RowsOfModelsDoNotFillTheMemory) {
    const json profile = HostOfManyRows(ShippedProfile("small"), 1, 256);
    const auto model = profile["controllers"][0]["drives"][0]["model"].get<std::string>();
    ExpectRefusedProfile(profile, "/driveModels/" + model + ": there are more than 255 SMART rows");
    ExpectRefusedProfile(HostOfManyRows(ShippedProfile("small"), 1961, 255),
                         "/controllers/0/drives/1960/model: the drives have more than 500000 SMART "
                         "rows together");
    WriteFile(Profile(), HostOfManyRows(ShippedProfile("small"), 100, 255).dump());
    EXPECT_EQ(Show(Profile()).status, 0);
}

// What is added to a report stands in it for each drive.
TEST_P(CHostileProfileTest, AdditionsDoNotFillTheMemory) {
    json profile = HostOfManyRows(ShippedProfile("small"), 1000, 1);
    json keys = json::object();
    for (int i = 0; i < 1000; ++i) {
        keys["key " + std::to_string(i)] = std::string(100, 'x');
    }
    profile["tool"]["additions"] =
        json::array({{{"report", "pdinfo"}, {"section", "General Information"}, {"keys", keys}}});
    WriteFile(Profile(), profile.dump());
    const CEnd end = Qorsim({"show", Profile(), "--report", "krzcli -pdinfo -aAll"});
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.out, "Error - The report is longer than 64 MiB.\n");
}

TEST_P(CHostileProfileTest, NumberOfValuesIsBounded) {
    ExpectRefusedProfile({{"tool", json(1000000, 0)}}, "must not hold more than 1000000 values");
}

TEST_P(CHostileProfileTest, NamesAreMadeVisible) {
    ExpectRefusedProfile(
        {{"\x1b]0;x\x07\u009b", 1}},
        "/: unknown key \"\\x1b]0;x\\x07\\xc2\\x9b\" (known: $schema, description, extends, patch, "
        "events, tool, pciDevices, driveModels, controllers, pcieSsds)");
    const std::string path = Folder() / "set/\x1b[2J.json";
    WriteFile(path, R"({"tool": {"version": "5.5"}})");
    EXPECT_EQ(Qorsim({"validate", path}).out,
              (Folder() / "set/").string() + "\\x1b[2J.json: valid\n");
}

TEST_P(CHostileProfileTest, ProfileIsShownSafelyOnATerminal) {
    json profile = ShippedProfile("small");
    profile["description"] = "\u009b31m \u202e \U000e0041 \ufe0f \u3164 caf\u00e9";
    profile["tool"]["version"] = "7.0\u009b2J";
    WriteFile(Profile(), profile.dump());
    const auto show = [&](const std::string& options) {
        return RunProgram({"script", "-qec", QORSIM_PROGRAM " show " + Profile() + options,
                           Folder() / "typescript"})
            .out;
    };
    EXPECT_THAT(show(""), HasSubstr("\"\\xc2\\x9b31m \\xe2\\x80\\xae \\xf3\\xa0\\x81\\x81 "
                                    "\\xef\\xb8\\x8f \\xe3\\x85\\xa4 caf\u00e9\""));
    EXPECT_THAT(show(" --report 'krzcli -v'"), HasSubstr("Product Version : 7.0\\xc2\\x9b2J\r\n"));
    EXPECT_EQ(Qorsim({"show", Profile()}).out, profile.dump(2) + "\n");
}

// A program that is not told where it stands does not look for its data where it is called.
TEST_P(CHostileProfileTest, CurrentFolderIsNotTakenForTheShippedData) {
    const std::string view = geteuid() == 0 ? "unshare -m" : "unshare -U -m --map-root-user";
    WriteFile(Folder() / "share/qor/hosts/small.json", R"({"tool": {"version": "9.9"}})");
    const CEnd end =
        RunProgram({"sh", "-c",
                    "cd " + Folder().string() + " && exec " + view +
                        " sh -c 'mount -t tmpfs none /proc && exec " QORSIM_PROGRAM " show small'"},
                   GetParam());
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_EQ(json::parse(end.out, nullptr, false), ShippedProfile("small"));
}

TEST_P(CHostileProfileTest, LongNameIsCutInAMessage) {
    WriteFile(Profile(), json{{std::string(1000000, 'x'), 1}}.dump());
    const CEnd end = Show(Profile());
    EXPECT_LT(end.err.size(), 3000U);
    EXPECT_THAT(end.err, EndsWith("xxx...\n"));
}

}  // namespace
}  // namespace qortest
