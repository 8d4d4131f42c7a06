// Profiles that change others.
#include <gmock/gmock.h>

#include <filesystem>

#include "SimFixture.h"

namespace fs = std::filesystem;

namespace qortest {
namespace {

using nlohmann::json;
using testing::StartsWith;

class CExtendsTest : public CSimFixture {
protected:
    std::string Write(const std::string& name, const json& profile) const {
        WriteFile(Folder() / name, profile.dump(2));
        return Folder() / name;
    }

    static json Shown(const std::string& host) {
        const CEnd end = Qorsim({"show", host});
        EXPECT_EQ(end.status, 0) << end.err;
        return json::parse(end.out, nullptr, false);
    }

    static void ExpectRefused(const std::string& path, const std::string& message) {
        for (const CStrings& command : {CStrings{"validate", path}, CStrings{"show", path}}) {
            const CEnd end = Qorsim(command);
            EXPECT_EQ(end.status, 1);
            EXPECT_EQ(end.out, "");
            EXPECT_EQ(end.err, "qorsim: " + message + "\n");
        }
    }
};

TEST_F(CExtendsTest, ObjectsAreMergedAndTheRestIsReplaced) {
    const json shown = Shown(Write("host.json", {{"extends", "small"},
                                                 {"tool", {{"missing", json::array({"storcli"})}}},
                                                 {"pcieSsds", json::array()}}));
    json expected = ShippedProfile("small");
    expected["tool"]["missing"] = json::array({"storcli"});
    EXPECT_EQ(shown, expected);
}

TEST_F(CExtendsTest, NullTakesAMemberAway) {
    const json shown = Shown(Write("host.json", {{"extends", "small"}, {"controllers", nullptr}}));
    EXPECT_FALSE(shown.contains("controllers"));
    EXPECT_TRUE(shown.contains("pciDevices"));
}

TEST_F(CExtendsTest, PatchIsCarriedOutAfterTheMerge) {
    const json patch = json::array(
        {{{"op", "add"}, {"path", "/tool/missing/-"}, {"value", "storcli"}},
         {{"op", "replace"}, {"path", "/controllers/0/drives/3/status"}, {"value", "FAILED"}}});
    const json shown = Shown(Write("host.json", {{"extends", "small"},
                                                 {"tool", {{"missing", json::array({"MegaCli"})}}},
                                                 {"patch", patch}}));
    EXPECT_EQ(shown["tool"]["missing"], json::array({"MegaCli", "storcli"}));
    EXPECT_EQ(shown["controllers"][0]["drives"][3]["status"], "FAILED");
    EXPECT_FALSE(shown.contains("extends"));
    EXPECT_FALSE(shown.contains("patch"));
}

TEST_F(CExtendsTest, ProfileWithoutABaseMayHaveAPatch) {
    const json patch =
        json::array({{{"op", "replace"}, {"path", "/tool/version"}, {"value", "6.0"}}});
    const std::string path = Write("host.json", {{"tool", {{"version", "7.0"}}}, {"patch", patch}});
    EXPECT_EQ(Shown(path)["tool"]["version"], "6.0");
}

TEST_F(CExtendsTest, PathIsRelativeToTheProfile) {
    fs::create_directories(Folder() / "a" / "b");
    Write("a/b/base.json", {{"tool", {{"version", "5.5"}}}});
    Write("a/middle.json", {{"extends", "b/base.json"}, {"description", "middle"}});
    const std::string path = Write("top.json", {{"extends", "a/middle.json"},
                                                {"tool", {{"missing", json::array({"krzcli"})}}}});
    EXPECT_EQ(Shown(path),
              (json{{"tool", {{"version", "5.5"}, {"missing", json::array({"krzcli"})}}},
                    {"description", "middle"}}));
}

// The file may be somebody else's, who has no say in what is read of this user's.
TEST_F(CExtendsTest, AbsolutePathIsRefused) {
    const std::string base = Write("base.json", {{"tool", {{"version", "5.5"}}}});
    const std::string path = Write("host.json", {{"extends", base}});
    ExpectRefused(path,
                  path + ": /extends: must be a shipped host or a path below this profile, is \"" +
                      base + "\"");
}

// The server has what it needs with it: its tools see neither the base nor where it was.
TEST_F(CExtendsTest, ToolsSeeTheEffectiveProfile) {
    const std::string path =
        Write("host.json", {{"extends", "small"}, {"tool", {{"version", "8.1"}}}});
    EXPECT_THAT(Krzcli(path, {"-v"}), testing::HasSubstr("\nProduct Version : 8.1\n"));
    EXPECT_EQ(json::parse(RunOn(path, {"cat", "/opt/tarmica/krz/host.json"}).out), Shown(path));
}

TEST_F(CExtendsTest, UnknownBaseIsNamed) {
    const std::string path = Write("host.json", {{"extends", "huge"}});
    ExpectRefused(path, path +
                            ": /extends: there is no host named \"huge\": the shipped ones are " +
                            Joined(ShippedHosts(), ", ") + "; write ./huge for a file");
}

TEST_F(CExtendsTest, MissingBaseIsNamed) {
    const std::string path = Write("host.json", {{"extends", "./none"}});
    ExpectRefused(path, path + ": /extends: cannot read " + (Folder() / "./none").string() +
                            ": No such file or directory");
}

TEST_F(CExtendsTest, BaseMustBeAText) {
    const std::string path = Write("host.json", {{"extends", json::array({"small"})}});
    ExpectRefused(path, path + ": /extends: must be a string, is array");
}

TEST_F(CExtendsTest, ProfileThatExtendsItselfIsRefused) {
    const std::string path = Write("host.json", {{"extends", "./host.json"}});
    const std::string again = Folder() / "./host.json";
    ExpectRefused(path, path + ": /extends: goes in a circle: " + path + ", " + again);
}

TEST_F(CExtendsTest, CircleIsRefusedWithItsFiles) {
    const std::string a = Write("a.json", {{"extends", "b.json"}});
    const std::string b = Write("b.json", {{"extends", "c.json"}});
    const std::string c = Write("c.json", {{"extends", "b.json"}});
    ExpectRefused(a, c + ": /extends: goes in a circle: " + b + ", " + c + ", " + b);
}

TEST_F(CExtendsTest, MistakeIsReportedInTheFileThatMadeIt) {
    const std::string base = Write("base.json", {{"tool", {{"version", 7}}}});
    ExpectRefused(Write("host.json", {{"extends", "base.json"}}),
                  base + ": /tool/version: must be a string, is number");
    const std::string path = Write("host.json", {{"extends", "small"}});
    ExpectRefused(
        Write("host.json", {{"extends", "small"}, {"driveModels", {{"sas-600", nullptr}}}}),
        path + ": /controllers/0/drives/0/model: \"driveModels\" has no model \"sas-600\"");
}

TEST_F(CExtendsTest, BasesSyntaxErrorIsReportedInTheBase) {
    const std::string base = Folder() / "base.json";
    WriteFile(base, "{");
    EXPECT_THAT(JsonProblem("{"), StartsWith("parse error at line 1, column 2: "));
    ExpectRefused(Write("host.json", {{"extends", "base.json"}}), base + ": " + JsonProblem("{"));
}

TEST_F(CExtendsTest, ArrayForAProfileIsRefused) {
    const std::string path = Write("host.json", json::array());
    ExpectRefused(path, path + ": /: must be an object, is array");
}

TEST_F(CExtendsTest, PatchesMistakesAreReportedAtTheirOperation) {
    const std::pair<json, const char*> cases[] = {
        {json::object(), "/patch: must be an array, is object"},
        {json::array({{{"op", "remove"}, {"path", "/tool/missing"}}}),
         "/patch/0: key 'missing' not found"},
        {json::array({{{"op", "test"}, {"path", "/tool/version"}, {"value", "7.0"}},
                      {{"op", "remove"}, {"path", "/controllers/1"}}}),
         "/patch/1: array index 1 is out of range"},
        {json::array({{{"op", "change"}, {"path", "/tool"}}}),
         "/patch/0: parse error: operation value 'change' is invalid"},
        {json::array({{{"op", "remove"}, {"path", "tool"}}}),
         "/patch/0: parse error at byte 1: JSON pointer must be empty or begin with '/' - was: "
         "'tool'"},
        {json::array({7}), "/patch/0: parse error: JSON patch must be an array of objects"},
        {json::array({{{"op", "add"}, {"path", "/tool/version"}, {"value", 8}}}),
         "/tool/version: must be a string, is number"},
        {json::array({{{"op", "replace"}, {"path", ""}, {"value", 8}}}),
         "/: must be an object, is number"},
    };
    for (const auto& [patch, reason] : cases) {
        const std::string path = Write("host.json", {{"extends", "small"}, {"patch", patch}});
        ExpectRefused(path, path + ": " + reason);
    }
}

}  // namespace
}  // namespace qortest
