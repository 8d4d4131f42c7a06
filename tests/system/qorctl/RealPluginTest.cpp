// The verbs with the plug-in that is shipped, and a RAID tool that plays a small controller.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "RealPluginFixture.h"

namespace {

using qortest::CEnd;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

// An ordinary user who runs the tests has none of those rights, and may not give any up either.
class RealPluginTest : public qortest::CRealPluginFixture {
protected:
    CEnd RunWithoutRootsRights(const std::vector<std::string>& arguments) const {
        if (geteuid() != 0) {
            return Run(arguments);
        }
        std::vector<std::string> words = {"--bounding-set", "-dac_override,-dac_read_search",
                                          "--inh-caps", "-dac_override,-dac_read_search",
                                          QORCTL_PROGRAM};
        words.insert(words.end(), arguments.begin(), arguments.end());
        return qortest::RunCommand(
            {.program = "/usr/bin/setpriv", .arguments = words, .environment = m_Environment});
    }
};

TEST_F(RealPluginTest, StorageIsShown) {
    const CEnd outcome = RunOnWholeController({"storage"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_THAT(outcome.out, StartsWith("Controller Information\n├─ [General Information]\n"));
}

TEST_F(RealPluginTest, UserWhoMayNotReadTheDeviceListIsToldSo) {
    qortest::PutRaidCard();
    std::filesystem::permissions(qortest::DEVICE_LIST, std::filesystem::perms::none);
    const CEnd outcome = RunWithoutRootsRights({"raid"});
    const std::string sentence = "it is not known whether a RAID card is in this server: " +
                                 std::string(qortest::DEVICE_LIST) +
                                 " may not be read by this user";
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err,
              "qorctl: " + sentence + "\n  Run it as root, or as the user of the server.\n");
    const CEnd check = RunWithoutRootsRights({"check", "--no-hardware", "ok"});
    EXPECT_EQ(check.status, 3);
    EXPECT_EQ(check.out, "RAID UNKNOWN - " + sentence + "\n");
}

TEST_F(RealPluginTest, FolderThatMayNotBeSearchedIsNamed) {
    qortest::PutRaidCard();
    std::filesystem::permissions("/opt/tarmica/qor/kam", std::filesystem::perms::none);
    const CEnd outcome = RunWithoutRootsRights({"check", "--no-hardware", "ok"});
    std::filesystem::permissions("/opt/tarmica/qor/kam", std::filesystem::perms::owner_all);
    EXPECT_EQ(outcome.status, 3);
    EXPECT_THAT(outcome.out, EndsWith(std::string(qortest::DEVICE_LIST) +
                                      " is out of reach: this user may not search "
                                      "/opt/tarmica/qor/kam\n"));
}

// Without it the plug-in would count the disks, and find none.
TEST_F(RealPluginTest, ToolThatThisUserMayNotSeeIsNotMissing) {
    qortest::PutRaidCard();
    const qortest::CStandInTool tool;
    std::filesystem::permissions(qortest::TOOL_DIR, std::filesystem::perms::none);
    const CEnd check = RunWithoutRootsRights({"check", "--no-hardware", "ok"});
    const CEnd raid = RunWithoutRootsRights({"raid"});
    std::filesystem::permissions(qortest::TOOL_DIR, std::filesystem::perms::owner_all);
    const std::string sentence =
        "/opt/tarmica/krz/cli/krzcli is out of reach: this user may not search "
        "/opt/tarmica/krz/cli";
    EXPECT_EQ(check.status, 3);
    EXPECT_EQ(check.out, "RAID UNKNOWN - " + sentence + "\n");
    EXPECT_EQ(raid.status, 1);
    EXPECT_THAT(raid.err, HasSubstr("qorctl: " + sentence +
                                    "\n  Run it as root, or as the user of the server.\n"));
}

TEST_F(RealPluginTest, ListOfSupportedCardsThatIsMissingIsNoServerWithoutHardware) {
    qortest::PutRaidCard();
    std::filesystem::remove(qortest::RAID_INI);
    const CEnd outcome = Run({"check", "--no-hardware", "ok"});
    EXPECT_EQ(outcome.status, 3);
    EXPECT_EQ(outcome.out,
              "RAID UNKNOWN - it is not known whether a RAID card is in this server: " +
                  std::string(qortest::RAID_INI) +
                  " is missing, \"qorctl doctor\" says what is missing\n");
}

TEST_F(RealPluginTest, DocumentHasTheComponentAndEveryDrive) {
    const CEnd outcome = RunOnWholeController({"xml", "--component", "disks"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_THAT(outcome.out, StartsWith("<dispdata><component>disks</component><item>"
                                        "<name>Controller Information</name>"));
    EXPECT_THAT(outcome.out, EndsWith("</item></dispdata>\n"));
    EXPECT_THAT(outcome.out, HasSubstr("<item><name>PD No.</name><val>PD8</val>"));
}

TEST_F(RealPluginTest, FormIsDecodedWithoutNotes) {
    const CEnd digits = RunOnWholeController({"svp"});
    EXPECT_EQ(digits.status, 0);
    EXPECT_EQ(digits.err, "");
    qortest::WriteFile(m_Folder / "form", digits.out);
    const CEnd form = Run({"svp", "--decode", m_Folder / "form"});
    EXPECT_EQ(form.status, 0);
    EXPECT_EQ(form.err, "");
    EXPECT_THAT(form.out, HasSubstr("      13    number of drives           : 9\n"));
    EXPECT_THAT(form.out, HasSubstr("    Serial Number            : S0M2L1T3\n"));
    EXPECT_THAT(form.out, testing::Not(HasSubstr("note: ")));
}

TEST_F(RealPluginTest, DriveIsShownWithItsSmartTable) {
    qortest::CStandInTool tool;
    tool.Play("-ldpdinfo -a0", {.out = qortest::Golden("smart/groups.txt")});
    tool.Play("-pdinfo -pd[252:5] -a0", {.out = qortest::Golden("smart/sata.txt")});
    const CEnd outcome = Run({"drive", "0", "252", "5"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_THAT(outcome.out, HasSubstr("SMART Detail(SATA)\n"));
}

TEST_F(RealPluginTest, MalformedSmartTableIsAnExceptionThatIsReported) {
    qortest::CStandInTool tool;
    tool.Play("-ldpdinfo -a0", {.out = qortest::Golden("smart/groups.txt")});
    tool.Play("-pdinfo -pd[252:5] -a0",
              {.out = qortest::GoldenBad("smart/sata_row_ends_in_name.txt")});
    const CEnd outcome = Run({"drive", "0", "252", "5"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err, StartsWith("qorctl: the request ended with an exception: "));
}

TEST_F(RealPluginTest, ServerWithoutACardHasNoDocumentAndAnEmptyForm) {
    const CEnd document = Run({"xml", "--of", "storage"});
    EXPECT_EQ(document.status, 0);
    EXPECT_EQ(document.out, "");
    EXPECT_THAT(document.err, StartsWith("qorctl: nothing to report: "));
    const CEnd form = Run({"svp"});
    EXPECT_EQ(form.status, 0);
    EXPECT_EQ(form.out, "00000000000000001000000000000000\n");
}

TEST_F(RealPluginTest, DriveWithoutTheToolIsAFailure) {
    const CEnd outcome = Run({"drive", "0", "252", "5"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, StartsWith("qorctl: error code 02: the RAID tool is not installed"));
}

}  // namespace
