// The stand-ins of MegaCli and storcli.
#include <gmock/gmock.h>

#include "SimFixture.h"

namespace qortest {
namespace {

using testing::ElementsAre;

constexpr const char* MEGACLI = "/opt/tarmica/qor/provider/RAID/tool/MegaCli";
constexpr const char* STORCLI = "/opt/tarmica/qor/provider/RAID/tool/storcli";

class CLsiUtilityTest : public CSimFixture {
protected:
    // The report's lines that hold the text.
    static CStrings LinesWith(const std::string& host, const CStrings& command,
                              const std::string& text) {
        const CEnd end = RunOn(host, command);
        EXPECT_EQ(end.status, 0);
        CStrings found;
        for (const std::string& line : Lines(end.out)) {
            if (line.find(text) != std::string::npos) {
                found.push_back(line);
            }
        }
        return found;
    }
};

TEST_F(CLsiUtilityTest, MegaCliReportOfSmallHost) {
    ExpectGolden("small/megacli.txt", RunOn("small", {MEGACLI, "-AdpAllInfo", "-aALL"}).out);
}

TEST_F(CLsiUtilityTest, StorcliReportOfSmallHost) {
    ExpectGolden("small/storcli.txt", RunOn("small", {STORCLI, "/call", "show"}).out);
}

TEST_F(CLsiUtilityTest, MegaCliCountsEveryAdaptersDisksAtTheLineStart) {
    EXPECT_THAT(LinesWith("large", {MEGACLI, "-AdpAllInfo", "-aALL"}, "Disks"),
                ElementsAre("  Disks           : 60", "  Disks           : 60",
                            "  Disks           : 60", "  Disks           : 60"));
}

TEST_F(CLsiUtilityTest, StorcliCountsEveryControllersDrivesAtTheLineStart) {
    EXPECT_THAT(LinesWith("large", {STORCLI, "/call", "show"}, "Physical Drives"),
                ElementsAre("Physical Drives = 60", "Physical Drives = 60", "Physical Drives = 60",
                            "Physical Drives = 60"));
}

TEST_F(CLsiUtilityTest, NoControllerGivesNoCount) {
    const std::string host = WriteProfile({{"tool", {{"version", "7.0"}}}});
    EXPECT_THAT(LinesWith(host, {MEGACLI, "-AdpAllInfo", "-aALL"}, "Disks"), ElementsAre());
    EXPECT_THAT(LinesWith(host, {STORCLI, "/call", "show"}, "Physical Drives"), ElementsAre());
}

TEST_F(CLsiUtilityTest, UnknownCommandLinesAreRefused) {
    const std::pair<CStrings, const char*> cases[] = {
        {{MEGACLI}, "MegaCli"},
        {{MEGACLI, "-AdpAllInfo"}, "-AdpAllInfo"},
        {{MEGACLI, "-AdpAllInfo", "-aAll"}, "-aAll"},
        {{MEGACLI, "-aALL", "-AdpAllInfo"}, "-aALL"},
        {{MEGACLI, "-AdpAllInfo", "-aALL", "-NoLog"}, "-NoLog"},
        {{STORCLI}, "storcli"},
        {{STORCLI, "/call"}, "/call"},
        {{STORCLI, "/c0", "show"}, "/c0"},
        {{STORCLI, "/call", "show", "J"}, "J"},
    };
    for (const auto& [command, token] : cases) {
        const CEnd end = RunOn("small", command);
        EXPECT_EQ(end.status, 1);
        EXPECT_EQ(end.out, std::string("Error - Invalid input at or near token ") + token + "\n");
    }
}

}  // namespace
}  // namespace qortest
