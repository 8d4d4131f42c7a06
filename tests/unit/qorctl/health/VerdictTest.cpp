#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "health/Verdict.h"

namespace {

using qorctl::CAnswer;
using qorctl::CVerdict;
using qorctl::EHealth;
using testing::ElementsAre;
using testing::IsEmpty;

void AddDrive(CAnswer& answer, long long controller, long long enclosure,
              const std::string& state) {
    qorctl::CPhysicalDrive& drive = answer.inventory.physicalDrives.emplace_back();
    drive.controller = controller;
    drive.number = static_cast<long long>(answer.inventory.physicalDrives.size());
    drive.place = {.enclosure = enclosure, .slot = 0};
    drive.statusDetail = state;
}

CAnswer TwoControllers() {
    CAnswer answer;
    answer.outcome = qorctl::EOutcome::ANSWERED;
    for (const long long number : {0, 1}) {
        answer.inventory.controllers.emplace_back().number = number;
    }
    AddDrive(answer, 0, 8, "Unconfig BAD");
    AddDrive(answer, 0, 9, "Odd");
    AddDrive(answer, 1, 9, "FAILED");
    AddDrive(answer, 1, 9, "ONLINE");
    return answer;
}

std::vector<EHealth> Severities(const CVerdict& verdict) {
    std::vector<EHealth> severities;
    for (const qorctl::CHealthFinding& finding : verdict.health.findings) {
        severities.push_back(finding.health);
    }
    return severities;
}

std::vector<std::string> Codes(const CAnswer& answer) {
    std::vector<std::string> codes;
    for (const qorctl::CMessage& message : answer.messages) {
        codes.push_back(message.code);
    }
    return codes;
}

TEST(VerdictTest, WorstFindingsComeFirst) {
    CAnswer answer = TwoControllers();
    answer.gaps.push_back({"report-incomplete", "controller 0", "states 3 drives", ""});
    const CVerdict verdict = qorctl::JudgeAnswer(answer);
    EXPECT_EQ(verdict.status, EHealth::CRITICAL);
    EXPECT_THAT(Severities(verdict), ElementsAre(EHealth::CRITICAL, EHealth::UNKNOWN,
                                                 EHealth::UNKNOWN, EHealth::WARNING));
}

TEST(VerdictTest, WithoutADeviceNothingIsKnown) {
    CAnswer answer;
    answer.outcome = qorctl::EOutcome::ANSWERED;
    answer.reason = qorctl::REASON_NO_HARDWARE;
    EXPECT_EQ(qorctl::JudgeAnswer(answer).status, EHealth::UNKNOWN);
}

TEST(VerdictTest, PlaceTakesItsFindingsGapsAndMessagesAlong) {
    CAnswer answer = TwoControllers();
    AddGaps(answer, {{"report-incomplete", "controller 0", "states 3 drives", ""},
                     {"no-pcie-ssd", "", "an SSD", ""},
                     {"no-controller", "", "a card", ""}});
    CVerdict verdict = qorctl::JudgeAnswer(answer);
    Narrow(answer, verdict, {.controller = 1});
    EXPECT_EQ(answer.inventory.controllers.size(), 1U);
    EXPECT_EQ(answer.inventory.physicalDrives.size(), 2U);
    EXPECT_THAT(Severities(verdict), ElementsAre(EHealth::CRITICAL, EHealth::UNKNOWN));
    EXPECT_THAT(Codes(answer), ElementsAre("no-controller"));
    EXPECT_EQ(answer.gaps.size(), 1U);
}

TEST(VerdictTest, EnclosureOfEveryController) {
    CAnswer answer = TwoControllers();
    CVerdict verdict = qorctl::JudgeAnswer(answer);
    Narrow(answer, verdict, {.enclosure = 8});
    EXPECT_EQ(verdict.status, EHealth::WARNING);
    EXPECT_EQ(answer.inventory.controllers.size(), 1U);
    EXPECT_TRUE(answer.IsWhole());
}

TEST(VerdictTest, PlaceThatIsNotReportedIsAGap) {
    CAnswer answer = TwoControllers();
    CVerdict verdict = qorctl::JudgeAnswer(answer);
    Narrow(answer, verdict, {.enclosure = 7});
    EXPECT_EQ(verdict.status, EHealth::UNKNOWN);
    EXPECT_FALSE(answer.IsWhole());
    EXPECT_THAT(Codes(answer), ElementsAre("no-such-enclosure"));
    EXPECT_EQ(answer.messages[0].text, "no enclosure 7 is reported; there is 8, 9");
}

TEST(VerdictTest, PlaceOnAServerWithoutHardwareIsAGapToo) {
    CAnswer answer;
    answer.outcome = qorctl::EOutcome::ANSWERED;
    answer.reason = qorctl::REASON_NO_HARDWARE;
    CVerdict verdict = qorctl::JudgeAnswer(answer);
    Narrow(answer, verdict, {.controller = 1});
    EXPECT_EQ(verdict.status, EHealth::UNKNOWN);
    EXPECT_FALSE(answer.IsWhole());
    EXPECT_THAT(Severities(verdict), ElementsAre(EHealth::UNKNOWN));
    EXPECT_THAT(Codes(answer), ElementsAre("no-such-controller"));
}

// A list of a group's members may be without their places.
TEST(VerdictTest, GroupOfADriveInTheEnclosureStays) {
    CAnswer answer = TwoControllers();
    answer.inventory.physicalDrives[3].group = "RG0";
    qorctl::CRaidGroup& group = answer.inventory.raidGroups.emplace_back();
    group.controller = 1;
    group.name = "RG0";
    group.members = {{.drive = 4, .place = {}}};
    qorctl::CLogicalDrive& drive = answer.inventory.logicalDrives.emplace_back();
    drive.controller = 1;
    drive.number = 0;
    drive.group = "RG0";
    drive.state = "Offline";
    CVerdict verdict = qorctl::JudgeAnswer(answer);
    Narrow(answer, verdict, {.enclosure = 9});
    EXPECT_EQ(answer.inventory.logicalDrives.size(), 1U);
    EXPECT_EQ(answer.inventory.raidGroups.size(), 1U);
    EXPECT_EQ(Severities(verdict).front(), EHealth::CRITICAL);
    EXPECT_EQ(verdict.health.findings.front().rule, "logical-drive-offline");
}

// Nothing to complain of where nothing is would be a false OK.
TEST(VerdictTest, EnclosureOfAnotherControllerIsAGap) {
    CAnswer answer = TwoControllers();
    CVerdict verdict = qorctl::JudgeAnswer(answer);
    Narrow(answer, verdict, {.controller = 1, .enclosure = 8});
    EXPECT_EQ(verdict.status, EHealth::UNKNOWN);
    EXPECT_THAT(Codes(answer), ElementsAre("no-such-enclosure"));
    EXPECT_EQ(answer.messages[0].text, "no enclosure 8 of controller 1 is reported; there is 9");
}

TEST(VerdictTest, ProblemsStayWithWhatTheyBelongTo) {
    CAnswer answer = TwoControllers();
    CVerdict verdict = qorctl::JudgeAnswer(answer);
    Narrow(answer, verdict, {.problems = true});
    EXPECT_EQ(answer.inventory.physicalDrives.size(), 3U);
    EXPECT_EQ(answer.inventory.controllers.size(), 2U);
    EXPECT_EQ(verdict.status, EHealth::CRITICAL);
}

TEST(VerdictTest, AnswerThatIsNoneStaysAsItIs) {
    CAnswer answer = qorctl::NotAsked("plugin-not-loaded", "no such file");
    CVerdict verdict = qorctl::JudgeAnswer(answer);
    Narrow(answer, verdict, {.controller = 3, .problems = true});
    EXPECT_EQ(answer.sentence, "no such file");
    EXPECT_THAT(answer.gaps, IsEmpty());
}

}  // namespace
