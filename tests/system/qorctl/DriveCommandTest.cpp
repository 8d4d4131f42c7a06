// `qorctl drive` as a process, with a plug-in that answers as the test tells it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QorctlFixture.h"

namespace {

using qortest::CEnd;
using testing::HasSubstr;
using testing::StartsWith;

class DriveCommandTest : public qortest::CQorctlFixture {
protected:
    CEnd RunDrive(const std::vector<std::string>& address,
                  const std::vector<qortest::CRecord>& answer) const {
        Answer(answer);
        std::vector<std::string> arguments = {"drive", "--plugin", STAND_IN_PLUGIN};
        arguments.insert(arguments.end(), address.begin(), address.end());
        return Run(arguments);
    }
};

TEST_F(DriveCommandTest, DriveAtTheAddressIsShownAsATree) {
    const CEnd outcome =
        RunDrive({"1", "252", "03"},
                 {{"item", "", "Physical Drive Information", "", "TRUE"},
                  {"item", "Physical Drive Information", "### SMART Information ###", "", "TRUE"},
                  {"item", "### SMART Information ###", "SMART Detail(SAS)", "", "FALSE"}});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out,
              "Physical Drive Information\n"
              "└─ [SMART Information]\n"
              "   └─ SMART Detail(SAS) : (not reported)\n"
              "\n"
              "Controller 1 drive PD?: the tool reports no state.\n");
    EXPECT_EQ(Log(), "create\nof 1 [252:3]\nGetPDInfo 0\nFreeItemList 3\ndelete\nunload\n");
}

TEST_F(DriveCommandTest, DriveThatIsNotThereIsAFailure) {
    const CEnd outcome = RunDrive({"1", "252", "3"}, {});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err,
                StartsWith("qorctl: the RAID tool described no drive at [252:3] of controller 1\n"
                           "  "));
    const CEnd document = RunDrive({"1", "252", "3", "--format", "json"}, {});
    EXPECT_EQ(document.status, 1);
    EXPECT_THAT(document.out, HasSubstr("\"result\": \"failure\""));
    EXPECT_THAT(document.out, HasSubstr("\"code\": \"no-drive\""));
}

TEST_F(DriveCommandTest, FailedRequestIsExplained) {
    const CEnd outcome = RunDrive({"0", "0", "3"}, {{"result", "0"}, {"error", "02"}});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("error code 02: the RAID tool is not installed"));
}

TEST_F(DriveCommandTest, MalformedSmartTableIsAnExceptionThatIsReported) {
    const CEnd outcome = RunDrive(
        {"0", "0", "3"}, {{"item", "", "A", "", "TRUE"}, {"throw", "GetPDInfo", "out_of_range"}});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err,
              "qorctl: the request ended with an exception: position 9\\x1b[31m beyond the text; a "
              "line of the RAID tool's report is too short\n");
    EXPECT_EQ(Log(), "create\nof 0 [0:3]\nGetPDInfo 0\nFreeItemList 1\ndelete\nunload\n");
}

TEST_F(DriveCommandTest, AddressThatIsNoneIsAUsageError) {
    const std::vector<std::vector<std::string>> wrong = {{},
                                                         {"0"},
                                                         {"0", "1"},
                                                         {"0", "1", "2", "3"},
                                                         {"0", "1", "x"},
                                                         {"0", "-1", "2"},
                                                         {"0x1", "1", "2"},
                                                         {"0", "1", "2147483648"}};
    for (const std::vector<std::string>& address : wrong) {
        const CEnd outcome = RunDrive(address, {});
        EXPECT_GT(outcome.status, 1);
        EXPECT_EQ(outcome.out, "");
        EXPECT_NE(outcome.err, "");
    }
    EXPECT_FALSE(std::filesystem::exists(m_Folder / "log"));
}

}  // namespace
