// The stand-in of the RAID tool: its reports and what it refuses.
#include <gmock/gmock.h>

#include <algorithm>
#include <map>
#include <regex>
#include <set>

#include "SimFixture.h"

namespace qortest {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class CKrzcliTest : public CSimFixture {
protected:
    static CStrings LinesLike(const std::string& text, const std::string& expression) {
        CStrings found;
        for (const std::string& line : Lines(text)) {
            if (std::regex_search(line, std::regex(expression))) {
                found.push_back(line);
            }
        }
        return found;
    }

    // Runs krzcli and demands that it refuses the command line at the token.
    static void ExpectRefused(const std::string& host, const CStrings& arguments,
                              const std::string& token) {
        CStrings command = {"/opt/tarmica/krz/cli/krzcli"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        const CEnd end = RunOn(host, command);
        EXPECT_EQ(end.status, 1) << testing::PrintToString(arguments);
        EXPECT_EQ(end.out, "Error - Invalid input at or near token " + token + "\n");
        EXPECT_EQ(end.err, "");
    }

    std::string HostWithoutDevices() const {
        return WriteProfile({{"tool", {{"version", "7.0"}}}});
    }
};

struct CReportCase {
    const char* golden;
    CStrings arguments;
};

TEST_F(CKrzcliTest, ReportsOfSmallHost) {
    const CReportCase cases[] = {
        {"version.txt", {"-v"}},
        {"ctrlinfo.txt", {"-ctrlinfo", "-a0"}},
        {"ctrlinfo.txt", {"-ctrlinfo", "-aAll"}},
        {"ldpdinfo.txt", {"-ldpdinfo", "-a0"}},
        {"ldpdinfo.txt", {"-ldpdinfo", "-aAll"}},
        {"pdinfo.txt", {"-pdinfo", "-a0"}},
        {"pdinfo-nosmart.txt", {"-pdinfo", "-nosmart", "-a0"}},
        {"pdinfo-nosmart.txt", {"-pdinfo", "-nosmart", "-aAll"}},
        {"pd-sas.txt", {"-pdinfo", "-pd[252:0]", "-a0"}},
        {"pd-sata.txt", {"-pdinfo", "-pd[252:5]", "-a0"}},
    };
    for (const CReportCase& each : cases) {
        ExpectGolden(std::string("small/") + each.golden, Krzcli("small", each.arguments));
    }
}

TEST_F(CKrzcliTest, ReportsOfOldTool) {
    const std::string host = SmallHostOfVersion("3.9");
    const CReportCase cases[] = {
        {"version.txt", {"-v"}},
        {"ctrlinfo.txt", {"-ctrlinfo", "-a0"}},
        {"ldpdinfo.txt", {"-ldpdinfo", "-a0"}},
        {"pdinfo.txt", {"-pdinfo", "-a0"}},
    };
    for (const CReportCase& each : cases) {
        ExpectGolden(std::string("old/") + each.golden, Krzcli(host, each.arguments));
    }
}

TEST_F(CKrzcliTest, PcieSsdReportOfLargeHost) {
    ExpectGolden("large/pssdinfo.txt", Krzcli("large", {"-pssdinfo", "-aAll"}));
}

TEST_F(CKrzcliTest, VersionStandsInOneLineAmongOthers) {
    for (const std::string version : {"7.0", "4.3", "7.02.00", "4", ""}) {
        const std::string report = Krzcli(SmallHostOfVersion(version), {"-v"});
        EXPECT_THAT(LinesLike(report, "Product Version"),
                    ElementsAre("Product Version : " + version));
        EXPECT_GT(Lines(report).size(), 1U);
        EXPECT_THAT(report, Not(StartsWith("Error - ")));
    }
}

TEST_F(CKrzcliTest, KeyNamesFollowTheToolsGeneration) {
    struct CNames {
        CStrings arguments;
        const char* oldName;
        const char* currentName;
    };
    const CNames cases[] = {
        {{"-ctrlinfo", "-a0"}, "SubVendor ID : ", "Subsystem Vendor ID : "},
        {{"-ctrlinfo", "-a0"}, "SubDevice ID : ", "Subsystem ID : "},
        {{"-ldpdinfo", "-a0"}, "\nAccess Policy : ", "\nDefault Access Policy : "},
        {{"-pdinfo", "-a0"},
         "### Slot Information ###",
         "### Enclosure Properties Information ###"},
    };
    for (const auto& [arguments, oldName, currentName] : cases) {
        const std::string before = Krzcli(SmallHostOfVersion("3.9"), arguments);
        EXPECT_THAT(before, HasSubstr(oldName));
        EXPECT_THAT(before, Not(HasSubstr(currentName)));
        const std::string after = Krzcli(SmallHostOfVersion("4.0"), arguments);
        EXPECT_THAT(after, HasSubstr(currentName));
        EXPECT_THAT(after, Not(HasSubstr(oldName)));
    }
}

TEST_F(CKrzcliTest, OldToolDoesNotKnowNewValues) {
    const std::string host = SmallHostOfVersion("3.9");
    const std::string controller = Krzcli(host, {"-ctrlinfo", "-a0"});
    EXPECT_THAT(controller, Not(HasSubstr("Firmware Package Version")));
    EXPECT_THAT(controller, Not(HasSubstr("Reconstruction Rate")));
}

TEST_F(CKrzcliTest, NoSmartIsKnownFromVersion4) {
    ExpectRefused(SmallHostOfVersion("3.9"), {"-pdinfo", "-nosmart", "-a0"}, "-nosmart");
    EXPECT_THAT(Krzcli(SmallHostOfVersion("4.0"), {"-pdinfo", "-nosmart", "-a0"}),
                Not(HasSubstr("SMART")));
}

TEST_F(CKrzcliTest, PcieSsdsAreKnownFromVersion7) {
    nlohmann::json profile = ShippedProfile("large");
    profile["tool"]["version"] = "6.9";
    ExpectRefused(WriteProfile(profile), {"-pssdinfo", "-aAll"}, "-pssdinfo");
}

TEST_F(CKrzcliTest, UnknownCommandLinesAreRefused) {
    const std::pair<CStrings, const char*> cases[] = {
        {{}, "krzcli"},
        {{""}, ""},
        {{"-x"}, "-x"},
        {{"v"}, "v"},
        {{"-V"}, "-V"},
        {{"-v", "-a0"}, "-a0"},
        {{"-ctrlinfo"}, "-ctrlinfo"},
        {{"-ctrlinfo", "-a"}, "-a"},
        {{"-ctrlinfo", "-aall"}, "-aall"},
        {{"-ctrlinfo", "-a-1"}, "-a-1"},
        {{"-ctrlinfo", "-a0x"}, "-a0x"},
        {{"-ctrlinfo", "-a999999"}, "-a999999"},
        {{"-ctrlinfo", "-a0", "-a1"}, "-a1"},
        {{"-ctrlinfo", "-nosmart", "-a0"}, "-nosmart"},
        {{"-a0", "-ctrlinfo"}, "-a0"},
        {{"-ldpdinfo"}, "-ldpdinfo"},
        {{"-ldpdinfo", "-aNone"}, "-aNone"},
        {{"-pdinfo"}, "-pdinfo"},
        {{"-pdinfo", "-nosmart"}, "-nosmart"},
        {{"-pdinfo", "-a0", "-nosmart"}, "-nosmart"},
        {{"-pdinfo", "-pd[252:0]"}, "-pd[252:0]"},
        {{"-pdinfo", "-pd[252:0]", "-aAll"}, "-aAll"},
        {{"-pdinfo", "-pd[252]", "-a0"}, "-pd[252]"},
        {{"-pdinfo", "-pd[-1:0]", "-a0"}, "-pd[-1:0]"},
        {{"-pdinfo", "-nosmart", "-pd[252:0]", "-a0"}, "-pd[252:0]"},
        {{"-pssdinfo"}, "-pssdinfo"},
        {{"-pssdinfo", "-a0"}, "-a0"},
    };
    for (const auto& [arguments, token] : cases) {
        ExpectRefused("small", arguments, token);
    }
}

// Bad news about hardware stands in the first line, and the exit status is 0 all the same.
TEST_F(CKrzcliTest, NoControllerIsAnErrorLineWithStatus0) {
    const std::string host = HostWithoutDevices();
    const CStrings commands[] = {
        {"-ctrlinfo", "-aAll"}, {"-ctrlinfo", "-a0"},           {"-ldpdinfo", "-a0"},
        {"-pdinfo", "-a0"},     {"-pdinfo", "-nosmart", "-a0"}, {"-pdinfo", "-pd[0:0]", "-a0"},
    };
    for (const CStrings& arguments : commands) {
        EXPECT_EQ(Krzcli(host, arguments), "Error - No RAID controller is found.\n");
    }
}

TEST_F(CKrzcliTest, UnknownDevicesAreErrorLinesWithStatus0) {
    EXPECT_EQ(Krzcli("small", {"-ctrlinfo", "-a1"}), "Error - RAID controller 1 is not found.\n");
    EXPECT_EQ(Krzcli("small", {"-ldpdinfo", "-a7"}), "Error - RAID controller 7 is not found.\n");
    EXPECT_EQ(Krzcli("small", {"-pdinfo", "-nosmart", "-a1"}),
              "Error - RAID controller 1 is not found.\n");
    EXPECT_EQ(Krzcli("small", {"-pdinfo", "-pd[252:0]", "-a1"}),
              "Error - RAID controller 1 is not found.\n");
    EXPECT_EQ(Krzcli("small", {"-pdinfo", "-pd[252:99]", "-a0"}),
              "Error - Physical drive [252:99] is not found.\n");
    EXPECT_EQ(Krzcli("small", {"-pdinfo", "-pd[0:0]", "-a0"}),
              "Error - Physical drive [0:0] is not found.\n");
    EXPECT_EQ(Krzcli("small", {"-pssdinfo", "-aAll"}), "Error - No PCIe SSD is found.\n");
}

TEST_F(CKrzcliTest, ReportOnAllControllersIsTheReportsInOrder) {
    for (const CStrings& command : {CStrings{"-ctrlinfo"}, CStrings{"-ldpdinfo"},
                                    CStrings{"-pdinfo"}, CStrings{"-pdinfo", "-nosmart"}}) {
        std::string single;
        for (const std::string which : {"-a0", "-a1", "-a2", "-a3"}) {
            CStrings arguments = command;
            arguments.push_back(which);
            single += Krzcli("large", arguments);
        }
        CStrings arguments = command;
        arguments.push_back("-aAll");
        EXPECT_EQ(Krzcli("large", arguments), single);
    }
}

TEST_F(CKrzcliTest, EveryControllerHasItsHeader) {
    EXPECT_THAT(LinesLike(Krzcli("large", {"-ctrlinfo", "-aAll"}), "RAID Controller"),
                ElementsAre("RAID Controller : 0", "RAID Controller : 1", "RAID Controller : 2",
                            "RAID Controller : 3"));
}

// A blank line before the next title or header, and at the end.
TEST_F(CKrzcliTest, EverySectionIsClosedByABlankLine) {
    const CStrings commands[] = {{"-ctrlinfo", "-aAll"},
                                 {"-ldpdinfo", "-aAll"},
                                 {"-pdinfo", "-nosmart", "-aAll"},
                                 {"-pdinfo", "-aAll"},
                                 {"-pssdinfo", "-aAll"}};
    const std::regex opening("### .* ###|(s|sc)?RG[0-9]+|>>?(LD|PD).*|PD[0-9]+\\(.*");
    for (const CStrings& arguments : commands) {
        const CStrings lines = Lines(Krzcli("large", arguments));
        ASSERT_FALSE(lines.empty());
        EXPECT_EQ(lines.back(), "");
        for (size_t i = 1; i < lines.size(); ++i) {
            const bool sectionOfHeader = std::regex_match(lines[i], std::regex("### .*")) &&
                                         std::regex_match(lines[i - 1], std::regex("[>P].*"));
            if (std::regex_match(lines[i], opening) && !sectionOfHeader) {
                EXPECT_EQ(lines[i - 1], "") << "before line " << i << ": " << lines[i];
            }
        }
    }
}

TEST_F(CKrzcliTest, GroupsOfEveryKindHaveTheirHeaderAndNumber) {
    const std::string report = Krzcli("large", {"-ldpdinfo", "-a0"});
    EXPECT_THAT(LinesLike(report, "^(s|sc)?RG[0-9]+$"), ElementsAre("RG0", "sRG1", "RG2", "scRG0"));
    EXPECT_THAT(LinesLike(report, "^RG No\\."),
                ElementsAre("RG No. : RG0", "RG No. : sRG1", "RG No. : RG2", "RG No. : scRG0"));
}

TEST_F(CKrzcliTest, LdListLinesHoldNameCapacityAndState) {
    EXPECT_THAT(
        LinesLike(Krzcli("large", {"-ldpdinfo", "-a1"}), "^>LD"),
        ElementsAre(">LD0 (boot1, 1.090TB, Optimal)", ">LD1 (databases, 8.727TB, Optimal)",
                    ">LD2 (archive, cold, 120.000TB, Degraded)",
                    ">LD3 (snapshots, 40.072TB, Degraded)", ">LD4 (cache, 446.625GB, Optimal)"));
}

TEST_F(CKrzcliTest, CacheLdClosesWithTheLdsThatItSpeedsUp) {
    const std::string report = Krzcli("large", {"-ldpdinfo", "-a0"});
    EXPECT_THAT(report, HasSubstr(">LD4 (cache, 446.625GB, Optimal)\n"
                                  "### General Information ###\n"
                                  "LD Type : CacheCade\n"
                                  "# of PD : 2\n"
                                  "Associated CacheCade LD\n"
                                  "LD1 (databases, 8.727TB, Optimal)\n"
                                  "LD2 (archive, cold, 120.000TB, Optimal)\n"
                                  "\n"
                                  "### LD Settings Information ###\n"
                                  "Default Read Policy : "));
}

TEST_F(CKrzcliTest, EveryGroupMemberIsListed) {
    EXPECT_EQ(LinesLike(Krzcli("large", {"-ldpdinfo", "-aAll"}), "^>>PD[0-9]+ \\(.*\\)$").size(),
              4U * 44U);
}

TEST_F(CKrzcliTest, DriveHeadersTellWhatADriveIsFor) {
    EXPECT_THAT(LinesLike(Krzcli("small", {"-pdinfo", "-nosmart", "-a0"}), "^PD[0-9]"),
                ElementsAre("PD0(LD0)", "PD1(LD0)", "PD2(LD1)", "PD3(LD1)", "PD4(LD1)", "PD5(LD1)",
                            "PD6(GHS)", "PD7(DHS RG1)", "PD8(Unassigned)"));
    const CStrings large = LinesLike(Krzcli("large", {"-pdinfo", "-nosmart", "-a2"}), "^PD[0-9]");
    EXPECT_EQ(large.size(), 60U);
    EXPECT_THAT(large, testing::IsSupersetOf({"PD46(DHS sRG1)", "PD49(RLD2)"}));
}

TEST_F(CKrzcliTest, LargeHostHasDrivesInEveryState) {
    std::map<std::string, int> states;
    for (const std::string& line :
         LinesLike(Krzcli("large", {"-pdinfo", "-nosmart", "-aAll"}), "^PD Status : ")) {
        ++states[line.substr(12)];
    }
    for (const char* state : {"ONLINE", "COPYBACK", "Unconfig GOOD", "HOT SPARE", "OFFLINE",
                              "Unconfig BAD", "FAILED", "REBUILD", "Foreign"}) {
        EXPECT_GT(states[state], 0) << state;
    }
}

TEST_F(CKrzcliTest, OneDriveReportIsThatDriveAlone) {
    const nlohmann::json profile = ShippedProfile("small");
    for (const nlohmann::json& drive : profile["controllers"][0]["drives"]) {
        const std::string slot = std::to_string(drive["slot"].get<int>());
        const std::string report = Krzcli("small", {"-pdinfo", "-pd[252:" + slot + "]", "-a0"});
        EXPECT_THAT(LinesLike(report, "^PD[0-9]"),
                    ElementsAre("PD" + std::to_string(drive["no"].get<int>()) + "(" +
                                drive["use"].get<std::string>() + ")"));
        EXPECT_THAT(report, HasSubstr("Serial Number : " + drive["serial"].get<std::string>()));
        EXPECT_THAT(LinesLike(report, "^### SMART"), ElementsAre("### SMART Information ###"));
    }
}

// The name column of a SATA row is 40 characters wide from its first one, and what follows are
// single words.
TEST_F(CKrzcliTest, SataRowsHaveA40CharacterNameColumn) {
    const CStrings lines = Lines(Krzcli("small", {"-pdinfo", "-pd[252:2]", "-a0"}));
    const auto header = std::find_if(lines.begin(), lines.end(), [](const std::string& line) {
        return line.find("Attribute") != std::string::npos;
    });
    ASSERT_NE(header, lines.end());
    EXPECT_TRUE(
        std::regex_match(*header, std::regex("ID +Attribute +Current +Worst +Raw Data +Threshold")))
        << *header;
    EXPECT_TRUE(std::regex_match(*(header + 1), std::regex("[- ]+")));
    const std::regex row("[0-9]+ +(?=\\S).{40} +[0-9]+ +[0-9]+ +\\S+ +\\S+");
    size_t count = 0;
    for (auto line = header + 2; line != lines.end() && !line->empty(); ++line, ++count) {
        EXPECT_TRUE(std::regex_match(*line, row)) << *line;
        EXPECT_EQ(line->size(), line->find_last_not_of(' ') + 1) << "the last cell is not empty";
    }
    EXPECT_EQ(count, 11U);
}

TEST_F(CKrzcliTest, SasCellsStandUnderTheirHeader) {
    const CStrings lines = Lines(Krzcli("small", {"-pdinfo", "-pd[252:1]", "-a0"}));
    const auto header = std::find_if(lines.begin(), lines.end(), [](const std::string& line) {
        return line.find("Attribute") == 0;
    });
    ASSERT_NE(header, lines.end());
    const size_t value = header->find("Value");
    const size_t threshold = header->find("Threshold");
    CStrings heads;
    for (auto line = header + 2; line != lines.end() && !line->empty(); ++line) {
        if (line->rfind("[Head", 0) == 0) {
            heads.push_back(*line);
            continue;
        }
        ASSERT_GT(line->size(), threshold);
        for (const size_t column : {value, threshold}) {
            EXPECT_EQ((*line)[column - 1], ' ') << *line;
            EXPECT_NE((*line)[column], ' ') << *line;
        }
    }
    EXPECT_THAT(heads, ElementsAre("[Head Read]", "[Head Write]"));
}

TEST_F(CKrzcliTest, DrivesOwnSmartValuesReplaceItsModels) {
    EXPECT_THAT(Krzcli("small", {"-pdinfo", "-pd[252:5]", "-a0"}),
                HasSubstr("Current Pending Sector Count             100      100    2 "));
    EXPECT_THAT(Krzcli("small", {"-pdinfo", "-pd[252:2]", "-a0"}),
                HasSubstr("Current Pending Sector Count             100      100    0 "));
}

TEST_F(CKrzcliTest, UnknownTemperatureAndHoursAreLeftOut) {
    nlohmann::json profile = ShippedProfile("small");
    profile["controllers"][0]["drives"][0].erase("temperature");
    profile["controllers"][0]["drives"][0].erase("powerOnHours");
    const std::string report = Krzcli(WriteProfile(profile), {"-pdinfo", "-pd[252:0]", "-a0"});
    EXPECT_THAT(report, Not(HasSubstr("Temperature")));
    EXPECT_THAT(report, Not(HasSubstr("Power-On Time")));
}

TEST_F(CKrzcliTest, DriveWithoutSmartRowsHasNoTable) {
    const std::string report = Krzcli("large", {"-pdinfo", "-pd[1:20]", "-a0"});
    EXPECT_THAT(report, HasSubstr("### SMART Information ###"));
    EXPECT_THAT(report, Not(HasSubstr("Attribute")));
}

TEST_F(CKrzcliTest, ToolWithoutItsProfileSaysSo) {
    const CEnd end =
        RunShellOn("small", "rm /opt/tarmica/krz/host.json; /opt/tarmica/krz/cli/krzcli -v");
    EXPECT_EQ(end.status, 96);
    EXPECT_EQ(end.out, "");
    EXPECT_EQ(end.err,
              "krzcli: no simulated host: cannot read /opt/tarmica/krz/host.json: No such file or "
              "directory\n");
}

}  // namespace
}  // namespace qortest
