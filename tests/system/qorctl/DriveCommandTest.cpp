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

const char* const ROOT = "Physical Drive Information";
const char* const GENERAL = "### General Information ###";
const char* const ENCLOSURE = "### Enclosure Properties Information ###";

void AddController(std::vector<qortest::CRecord>& answer, const char* number) {
    answer.push_back({"item", "", "Controller Information", "", "TRUE"});
    answer.push_back({"item", "Controller Information", GENERAL, "", "TRUE"});
    answer.push_back({"item", GENERAL, "Controller No.", number, "TRUE"});
}

void AddDrive(std::vector<qortest::CRecord>& answer, const char* number, const char* slot,
              const char* serial) {
    answer.push_back({"item", "", ROOT, "", "TRUE"});
    answer.push_back({"item", ROOT, GENERAL, "", "TRUE"});
    answer.push_back({"item", GENERAL, "PD No.", number, "TRUE"});
    answer.push_back({"item", GENERAL, "Serial Number", serial, "TRUE"});
    answer.push_back({"item", GENERAL, "WWN", std::string("5000") + serial, "TRUE"});
    answer.push_back({"item", ROOT, ENCLOSURE, "", "TRUE"});
    answer.push_back({"item", ENCLOSURE, "Enclosure ID", "252", "TRUE"});
    answer.push_back({"item", ENCLOSURE, "Slot No.", slot, "TRUE"});
}

// Two controllers with drives in the same slots.
std::vector<qortest::CRecord> TwoControllers() {
    std::vector<qortest::CRecord> answer;
    AddController(answer, "0");
    AddDrive(answer, "PD7", "0", "ABC1");
    AddDrive(answer, "PD8", "1", "ABC2");
    AddController(answer, "1");
    AddDrive(answer, "PD7", "0", "ABC3");
    return answer;
}

TEST_F(DriveCommandTest, DriveIsFoundByPlaceNumberSerialNumberOrWwn) {
    for (const char* word :
         {"252:1", "PD8", "pd8", "8", "ABC2", "abc2", "5000ABC2", "0x5000abc2"}) {
        std::filesystem::remove(m_Folder / "log");
        EXPECT_EQ(RunDrive({word}, TwoControllers()).status, 0) << word;
        EXPECT_THAT(Log(), HasSubstr("of 0 [252:1]\nGetPDInfo")) << word;
    }
    EXPECT_EQ(RunDrive({"ABC3"}, TwoControllers()).status, 0);
    EXPECT_THAT(Log(), HasSubstr("of 1 [252:0]\nGetPDInfo"));
}

TEST_F(DriveCommandTest, AmbiguousDriveListsItsCandidates) {
    for (const char* word : {"252:0", "PD7"}) {
        const CEnd outcome = RunDrive({word}, TwoControllers());
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.err, std::string("qorctl: ") + word +
                                   " may be any of these drives; ask for one:\n"
                                   "  qorctl drive 0 252 0: controller 0 drive 252:0 (PD7, serial "
                                   "ABC1)\n"
                                   "  qorctl drive 1 252 0: controller 1 drive 252:0 (PD7, serial "
                                   "ABC3)\n");
    }
    EXPECT_THAT(Log(), testing::Not(HasSubstr("GetPDInfo")));
}

TEST_F(DriveCommandTest, DriveThatIsNotThereSaysWhatIs) {
    const CEnd outcome = RunDrive({"252:9"}, TwoControllers());
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err,
              "qorctl: no drive is 252:9; there are:\n"
              "  qorctl drive 0 252 0: controller 0 drive 252:0 (PD7, serial ABC1)\n"
              "  qorctl drive 0 252 1: controller 0 drive 252:1 (PD8, serial ABC2)\n"
              "  qorctl drive 1 252 0: controller 1 drive 252:0 (PD7, serial ABC3)\n");
    EXPECT_THAT(RunDrive({"252:9"}, {}).err,
                HasSubstr("no drive is 252:9; there is none at all\n"));
    const CEnd json = RunDrive({"252:9", "--format", "json"}, TwoControllers());
    EXPECT_THAT(json.out, HasSubstr("\"code\": \"no-such-drive\""));
}

TEST_F(DriveCommandTest, RequestForTheDrivesThatFailsIsExplained) {
    const CEnd outcome = RunDrive({"ABC2"}, {{"result", "0"}, {"error", "02"}});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("error code 02: the RAID tool is not installed"));
}

TEST_F(DriveCommandTest, AddressThatIsNoneIsAUsageError) {
    const std::vector<std::vector<std::string>> wrong = {{},
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
