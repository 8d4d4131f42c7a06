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
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.err, HasSubstr("nothing to report: "));
    EXPECT_THAT(outcome.err, EndsWith("; but this user may not read " +
                                      std::string(qortest::DEVICE_LIST) + ", run as root\n"));
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
