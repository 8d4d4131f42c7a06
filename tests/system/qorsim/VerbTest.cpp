// "qorsim list", "show", "validate" and the help of all verbs.
#include <gmock/gmock.h>

#include <filesystem>

#include "SimFixture.h"

namespace qortest {
namespace {

using nlohmann::json;
using testing::HasSubstr;

class CVerbTest : public CSimFixture {};

TEST_F(CVerbTest, ListHasALinePerHost) {
    const CEnd end = Qorsim({"list"});
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.err, "");
    const CStrings lines = Lines(end.out);
    const CStrings hosts = ShippedHosts();
    ASSERT_GT(lines.size(), hosts.size());
    EXPECT_EQ(lines[0], "Hosts, for --host:");
    for (size_t i = 0; i < hosts.size(); ++i) {
        std::string name = hosts[i];
        name.resize(16, ' ');
        EXPECT_EQ(lines[i + 1],
                  "  " + name + "  " + ShippedProfile(hosts[i])["description"].get<std::string>());
    }
}

TEST_F(CVerbTest, ListNamesTheFaults) {
    EXPECT_THAT(Qorsim({"list"}).out, HasSubstr("\n\nFaults, for --fault:\n  hang "));
}

TEST_F(CVerbTest, ShowPrintsTheProfile) {
    const CEnd end = Qorsim({"show", "small"});
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(json::parse(end.out), ShippedProfile("small"));
}

TEST_F(CVerbTest, ShownReportIsTheTools) {
    for (const CStrings& command :
         {CStrings{"-v"}, CStrings{"-ctrlinfo", "-a0"}, CStrings{"-pdinfo", "-pd[252:3]", "-a0"}}) {
        const CEnd end = Qorsim({"show", "small", "--report", "krzcli " + Joined(command, "  ")});
        EXPECT_EQ(end.status, 0);
        EXPECT_EQ(end.err, "");
        EXPECT_EQ(end.out, Krzcli("small", command));
    }
}

TEST_F(CVerbTest, ShownReportsStatusIsTheTools) {
    const CEnd end = Qorsim({"show", "small", "--report", "krzcli -nonsense"});
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(end.out, "Error - Invalid input at or near token -nonsense\n");
}

TEST_F(CVerbTest, ReportOfAToolThatTheHostHasNotIsRefused) {
    for (const auto& [host, command] :
         {std::pair("small", "lsblk -a"), std::pair("no-tool-megacli", "krzcli -v"),
          std::pair("small", " ")}) {
        const CEnd end = Qorsim({"show", host, "--report", command});
        EXPECT_EQ(end.status, 1);
        EXPECT_EQ(end.out, "");
        EXPECT_EQ(end.err, "qorsim: this host has no tool for \"" + std::string(command) +
                               "\": the tools are krzcli, MegaCli and storcli, less those that the "
                               "profile calls missing\n");
    }
}

// Its only purpose is to be usable where namespaces are forbidden.
// In a chroot nobody may have a user namespace; elsewhere the limit is set to none.
TEST_F(CVerbTest, ShowNeedsNoNamespace) {
    const std::string show = "setpriv --bounding-set=-all --inh-caps=-all " QORSIM_PROGRAM
                             " show small --report 'krzcli -v'";
    const bool chrooted = RunProgram({"unshare", "--user", "true"}).status != 0;
    const CEnd end = RunProgram(
        chrooted ? CStrings{"sh", "-c", show}
                 : CStrings{"unshare", "--user", "--map-root-user", "sh", "-c",
                            "echo 0 > /proc/sys/user/max_user_namespaces && exec " + show});
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_THAT(end.out, HasSubstr("Product Version : 7.0\n"));
}

TEST_F(CVerbTest, ValidateAcceptsEveryShippedHost) {
    CStrings command = {"validate"};
    std::string expected;
    for (const std::string& host : ShippedHosts()) {
        command.push_back(std::string(QORSIM_SOURCE_DATA_DIR) + "/hosts/" + host + ".json");
        expected += command.back() + ": valid\n";
    }
    const CEnd end = Qorsim(command);
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.out, expected);
    EXPECT_EQ(end.err, "");
}

TEST_F(CVerbTest, ValidateChecksAllFilesAndEndsWith1) {
    const std::string bad = Folder() / "bad.json";
    WriteFile(bad, R"({"tool": {"version": "7.0", "colour": 1}})");
    const std::string none = Folder() / "none.json";
    const CEnd end = Qorsim({"validate", bad, "small", none});
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(end.out, "small: valid\n");
    EXPECT_EQ(end.err, "qorsim: " + bad +
                           ": /tool: unknown key \"colour\" (known: version, missing, additions)\n"
                           "qorsim: cannot read " +
                           none + ": No such file or directory\n");
}

TEST_F(CVerbTest, EveryVerbHasHelpWithAnExample) {
    for (const std::string verb : {"run", "list", "show", "validate", "new", "install"}) {
        const CEnd end = Qorsim({verb, "--help"});
        EXPECT_EQ(end.status, 0);
        EXPECT_THAT(end.out, HasSubstr("Usage: qorsim " + verb));
        EXPECT_THAT(end.out, testing::ContainsRegex("\nExamples?:\n  qorsim " + verb));
        EXPECT_THAT(Qorsim({"--help"}).out, HasSubstr("\n  " + verb + " "));
    }
}

TEST_F(CVerbTest, VerbsWithoutTheirArgumentsAreRefused) {
    for (const CStrings& command :
         {CStrings{"show"}, CStrings{"validate"}, CStrings{"new", "--drives", "1", "--seed", "1"},
          CStrings{"install", "/tmp"}, CStrings{"install", "--host", "small"},
          CStrings{"list", "more"}}) {
        const CEnd end = Qorsim(command);
        EXPECT_GT(end.status, 1);
        EXPECT_EQ(end.out, "");
    }
}

}  // namespace
}  // namespace qortest
