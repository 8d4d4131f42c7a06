// The shipped hosts: what the plug-in (through qorctl) and the tools say of each.
#include <gmock/gmock.h>

#include <algorithm>
#include <set>

#include "SimFixture.h"

namespace qortest {
namespace {

using nlohmann::json;
using testing::HasSubstr;

constexpr const char* NO_TOOL =
    "qorctl: error code 02: the RAID tool is not installed\n"
    "  Install the RAID management tool: there is no /opt/tarmica/krz/cli/krzcli.\n";
constexpr const char* OLD_VERSION =
    "qorctl: notice code 01: the RAID tool's version is older than 4.4, or could not be read\n"
    "  It is version ";
constexpr const char* NO_DISKS =
    "qorctl: notice code 02: no physical drive is attached to the RAID controller\n"
    "  Nothing needs to be done, unless drives should be there: then check their cables and "
    "power.\n";
constexpr const char* NOTHING =
    "qorctl: nothing to report: no RAID controller with something to show was found on this "
    "server\n";

class CHostTest : public CSimFixture {
protected:
    static CEnd Qorctl(const std::string& host) { return RunOn(host, {"qorctl", "raid"}); }

    // What qorctl shows; demands success without a message.
    static std::string Tree(const std::string& host) {
        const CEnd end = Qorctl(host);
        EXPECT_EQ(end.status, 0);
        EXPECT_EQ(end.err, "");
        return end.out;
    }

    static std::string Report(const std::string& host, const std::string& commandLine) {
        const CEnd end = Qorsim({"show", host, "--report", commandLine});
        EXPECT_EQ(end.status, 0) << end.err;
        return end.out;
    }

    // Demands that qorctl shows nothing, ends so and says exactly this.
    static void ExpectNothing(const std::string& host, int status, const std::string& message) {
        const CEnd end = Qorctl(host);
        EXPECT_EQ(end.status, status);
        EXPECT_EQ(end.out, "");
        EXPECT_EQ(end.err, message);
    }
};

// How often a text stands in another one.
size_t Count(const std::string& text, const std::string& part) {
    size_t count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

// The part of a tree, or of a report on drives, from one text up to the next one after it.
std::string Cut(const std::string& text, const std::string& from, const std::string& upTo) {
    const size_t begin = text.find(from);
    if (begin == std::string::npos) {
        ADD_FAILURE() << from << " is not in " << text;
        return "";
    }
    return text.substr(begin, text.find(upTo, begin + 1) - begin);
}

TEST_F(CHostTest, EveryHostHasADescriptionOfItsOwn) {
    std::set<std::string> descriptions;
    for (const std::string& host : ShippedHosts()) {
        EXPECT_TRUE(descriptions.insert(ShippedProfile(host).value("description", "")).second)
            << host;
        EXPECT_EQ(Qorsim({"show", host}).status, 0);
    }
    EXPECT_EQ(descriptions.count(""), 0U);
}

TEST_F(CHostTest, SmallAndLargeShowAllTheirDrives) {
    EXPECT_EQ(Count(Tree("small"), "Physical Drive Information\n"), 9U);
    const std::string large = Tree("large");
    EXPECT_EQ(Count(large, "Controller Information\n"), 4U);
    EXPECT_EQ(Count(large, "Physical Drive Information\n"), 240U);
}

TEST_F(CHostTest, SataHostHasSataDrivesWithSmartTables) {
    const std::string tree = Tree("sata");
    EXPECT_EQ(Count(tree, ": SATA\n"), 9U);
    EXPECT_EQ(Count(tree, ": SAS\n"), 0U);
    const std::string report = Report("sata", "krzcli -pdinfo -a0");
    EXPECT_EQ(Count(report, "\nID  Attribute "), 9U);
}

TEST_F(CHostTest, SasHostHasSasDrivesWithSmartTables) {
    const std::string tree = Tree("sas");
    EXPECT_EQ(Count(tree, ": SAS\n"), 7U);
    EXPECT_EQ(Count(tree, ": SATA\n"), 0U);
    EXPECT_THAT(tree, HasSubstr(": sRG1\n"));
    EXPECT_EQ(Count(Report("sas", "krzcli -pdinfo -a0"), "\nAttribute "), 7U);
}

TEST_F(CHostTest, PcieSsdHostHasNothingForRaid) {
    ExpectNothing("pssd-only", 0, NOTHING);
    EXPECT_EQ(Report("pssd-only", "krzcli -ctrlinfo -aAll"),
              "Error - No RAID controller is found.\n");
    const std::string ssds = Report("pssd-only", "krzcli -pssdinfo -aAll");
    EXPECT_THAT(ssds, HasSubstr("Bus : 177\n"));
    EXPECT_THAT(ssds, HasSubstr("Bus : 178\n"));
    EXPECT_THAT(ssds, HasSubstr("Percentage Used : 101%\n"));
}

TEST_F(CHostTest, RebuildingHostShowsTheSpareAndItsProgress) {
    const std::string tree = Tree("rebuilding");
    const std::string spare = Cut(tree, ": PD7\n│  ├─ RG No.", "\n\n");
    EXPECT_THAT(spare, HasSubstr(": RG1\n"));
    EXPECT_THAT(spare, HasSubstr("PD Status(Detail)        : REBUILD\n"));
    EXPECT_THAT(spare, HasSubstr("PD Status                : REBUILD\n"));
    EXPECT_THAT(spare, HasSubstr("Progress                 : 37%\n"));
    EXPECT_EQ(Count(tree, ": Degraded\n"), 2U);
}

TEST_F(CHostTest, DegradedHostLacksADriveAndShowsNoError) {
    const std::string tree = Tree("degraded");
    EXPECT_EQ(Count(tree, "Physical Drive Information\n"), 7U);
    EXPECT_EQ(Count(tree, ": Degraded\n"), 2U);
    EXPECT_EQ(Count(tree, ": ERROR\n"), 0U);
}

TEST_F(CHostTest, FailedDriveIsAnError) {
    const std::string tree = Tree("failed-drive");
    const std::string failed = Cut(tree, ": PD3\n│  ├─ RG No.", "\n\n");
    EXPECT_THAT(failed, HasSubstr(": ERROR\n"));
    EXPECT_THAT(failed, HasSubstr(": FAILED\n"));
    EXPECT_THAT(failed, HasSubstr("Temperature              : (not reported)\n"));
    EXPECT_EQ(Count(tree, ": ERROR\n"), 1U);
    EXPECT_THAT(Report("failed-drive", "krzcli -pdinfo -pd[252:5] -a0"),
                HasSubstr("\nPredictive Failure : Yes\n"));
}

TEST_F(CHostTest, ForeignDrivesHaveAnUnknownStatus) {
    const std::string tree = Tree("foreign");
    EXPECT_EQ(Count(tree, ": Foreign\n"), 2U);
    EXPECT_EQ(Count(tree, ": UNKNOWN\n"), 3U);
    EXPECT_EQ(Count(tree, ": Unconfig BAD\n"), 1U);
    EXPECT_EQ(Count(tree, "LD No.                   : None\n"), 5U);
}

TEST_F(CHostTest, ControllerWithoutDrivesIsShownAlone) {
    const std::string tree = Tree("no-drives");
    EXPECT_EQ(Count(tree, "Controller Information\n"), 1U);
    EXPECT_EQ(Count(tree, "Drive Information\n"), 0U);
    EXPECT_EQ(Report("no-drives", "krzcli -pdinfo -a0"), "RAID Controller : 0\n\n");
}

TEST_F(CHostTest, HostWithoutControllerHasNothing) {
    ExpectNothing("no-controller", 0, NOTHING);
    EXPECT_EQ(Report("no-controller", "krzcli -pssdinfo -aAll"), "Error - No PCIe SSD is found.\n");
}

// Only one of the utilities is there, so that it is the one that found the drives.
TEST_F(CHostTest, MissingToolWithDrivesIsAFailure) {
    for (const auto& [host, utility] :
         {std::pair("no-tool-megacli", "MegaCli"), std::pair("no-tool-storcli", "storcli")}) {
        ExpectNothing(host, 1, std::string(NO_TOOL) + "qorctl: the request failed\n");
        EXPECT_EQ(RunShellOn(host,
                             "ls /opt/tarmica/krz/cli "
                             "/opt/tarmica/qor/provider/RAID/tool | grep -v /")
                      .out,
                  "\n" + std::string(utility) + "\n");
    }
}

TEST_F(CHostTest, MissingToolWithoutDrivesIsANotice) {
    ExpectNothing("no-tool-no-disks", 0, std::string(NO_TOOL) + NO_DISKS + NOTHING);
}

TEST_F(CHostTest, OldVersionsAreNoticed) {
    for (const std::string host : {"tool-3.9", "tool-4.3", "tool-7.02.00"}) {
        const CEnd end = Qorctl(host);
        EXPECT_EQ(end.status, 0);
        EXPECT_EQ(end.err, OLD_VERSION + host.substr(5) + ". Update the RAID tool.\n") << host;
        EXPECT_EQ(Count(end.out, "Physical Drive Information\n"), 9U);
        EXPECT_THAT(Report(host, "krzcli -v"),
                    HasSubstr("\nProduct Version : " + host.substr(5) + "\n"));
    }
}

TEST_F(CHostTest, RecentVersionsAreNotNoticed) {
    for (const std::string host : {"tool-4.4", "tool-6.8"}) {
        EXPECT_EQ(Count(Tree(host), "Physical Drive Information\n"), 9U);
        EXPECT_THAT(Report(host, "krzcli -v"),
                    HasSubstr("\nProduct Version : " + host.substr(5) + "\n"));
    }
}

TEST_F(CHostTest, OldestToolRefusesNoSmart) {
    EXPECT_EQ(Qorsim({"show", "tool-3.9", "--report", "krzcli -pdinfo -nosmart -a0"}).status, 1);
    EXPECT_THAT(Report("tool-3.9", "krzcli -ctrlinfo -a0"), HasSubstr("\nSubVendor ID : "));
}

TEST_F(CHostTest, PcieSsdsAreReportedFromVersion7Only) {
    const CEnd old = Qorsim({"show", "tool-6.8", "--report", "krzcli -pssdinfo -aAll"});
    EXPECT_EQ(old.status, 1);
    EXPECT_EQ(old.out, "Error - Invalid input at or near token -pssdinfo\n");
    EXPECT_THAT(Report("tool-7.02.00", "krzcli -pssdinfo -aAll"), HasSubstr("Bus : 177\n"));
}

TEST_F(CHostTest, FutureToolsAdditionsBecomeItems) {
    const std::string tree = Tree("future");
    EXPECT_EQ(Count(tree, "Physical Drive Information\n"), 9U);
    EXPECT_THAT(tree, HasSubstr("├─ Board Revision      : C3\n"));
    EXPECT_THAT(tree, HasSubstr("├─ [Security Information]\n"
                                "│  ├─ Attestation : Passed: SPDM 1.3\n"
                                "│  └─ Key Store   : Sealed\n"));
    EXPECT_EQ(Count(tree, "├─ Deduplication "), 3U);
    EXPECT_EQ(Count(tree, "[Snapshot Information]\n"), 3U);
    EXPECT_EQ(Count(tree, "├─ Carbon Footprint "), 9U);
    EXPECT_EQ(Count(tree, "[Endurance Information]\n"), 9U);
    EXPECT_THAT(Report("future", "krzcli -pssdinfo -aAll"),
                HasSubstr("\n\n### Namespace Information ###\n# of Namespace : 1\n\n"));
}

// A host whose devices are on no list would be a host without anything.
TEST_F(CHostTest, EveryControllersDeviceIsOnTheList) {
    const std::string list = ReadFile(std::string(QORSIM_SOURCE_DATA_DIR) + "/RaidVCFac.ini");
    for (const std::string& host : ShippedHosts()) {
        const json profile = json::parse(Qorsim({"show", host}).out);
        for (const json& controller : profile.value("controllers", json::array())) {
            for (const json& device : profile["pciDevices"]) {
                if (device["address"] == controller["pci"]) {
                    std::string id = device["device"];
                    std::transform(id.begin(), id.end(), id.begin(), toupper);
                    EXPECT_THAT(list, HasSubstr("=DEV_" + id + "\n")) << host;
                }
            }
        }
    }
}

}  // namespace
}  // namespace qortest
