// The verdict and the state of a server on a screen, and the filters of what is shown.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "Rights.h"
#include "ServerFixture.h"

namespace {

using nlohmann::json;
using qortest::CEnd;
using testing::AllOf;
using testing::Each;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

class StatusCommandTest : public qortest::CServerFixture {
protected:
    static json Parsed(const std::string& host, const std::string& command) {
        return json::parse(Shell(host, command).out, nullptr, false);
    }

    // The values of one member of each object in an array.
    static std::vector<json> Column(const json& array, const std::string& name) {
        std::vector<json> values;
        for (const json& object : array) {
            values.push_back(object.value(name, json()));
        }
        return values;
    }
};

constexpr const char* FAILED_DRIVE =
    R"(CRITICAL: 1 controller, 3 logical drives, 8 drives, 0 PCIe SSDs

Controller 0 logical drive LD1 is Degraded: redundancy is lost or reduced; replace what failed.
Controller 0 logical drive LD2 is Degraded: redundancy is lost or reduced; replace what failed.
Controller 0 drive 252:3 (PD3, serial K4H1R12B, KESTREL K2000NX0253 1.819TB) is FAILED: it is out of service; replace it.
Controller 0 drive 252:5 (PD5, serial K4H1R1QC, KESTREL K2000NX0253 1.819TB) has 2 media errors: it may be failing; look at its SMART data.

    NAME                    STATE     DETAILS
!!  controller 0            CRITICAL  TRC 3108-8i 1GB, 2 RAID groups, 8 drives, battery Normal 98%
      RG0 RAID 1            Optimal   LD0 System 558.406GB, 2 drives
!!    RG1 RAID 5            Degraded  LD1 Data 4.000TB, LD2 Backup, weekly 1.457TB, 4 drives
!!      LD1 Data            Degraded  4.000TB
!!      LD2 Backup, weekly  Degraded  1.457TB
!!      252:3 PD3           FAILED    serial K4H1R12B, 120 media errors, 6 other errors, 2 predictive failures, KESTREL K2000NX0253 1.819TB
!       252:5 PD5           ONLINE    serial K4H1R1QC, 2 media errors, 1 predictive failure, KESTREL K2000NX0253 1.819TB
      no RAID group                   1 global spare, 1 unassigned
)";

TEST_F(StatusCommandTest, VerdictWhatToDoAndTheStateOfEverything) {
    const CEnd end = Shell("failed-drive", "LC_ALL=C.UTF-8 qorctl status");
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_EQ(end.out, FAILED_DRIVE);
    EXPECT_EQ(end.err, "");
}

TEST_F(StatusCommandTest, ProgramAloneShowsIt) {
    EXPECT_EQ(Shell("failed-drive", "LC_ALL=C.UTF-8 qorctl").out, FAILED_DRIVE);
}

TEST_F(StatusCommandTest, FailureIsAVerdictToo) {
    const std::string log = Folder() / "status";
    const CEnd end =
        qortest::RunProgram({QORSIM_PROGRAM, "run", "--host", "small", "--fault", "error@-pdinfo",
                             "--", QORCTL_PROGRAM, "status", "--output", log});
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(qortest::ReadFile(log),
              "UNKNOWN: no answer: the RAID tool reported an error, or could not be run: Error - "
              "Simulated fault. (krzcli "
              "-pdinfo -nosmart -a0)\n");
    EXPECT_THAT(end.err, HasSubstr("error code 01"));
}

TEST_F(StatusCommandTest, AllFormsAreThere) {
    EXPECT_THAT(Shell("small", "qorctl status --format tree").out, StartsWith("Controller Inform"));
    EXPECT_EQ(Parsed("small", "qorctl status --format json")["command"], "status");
    EXPECT_THAT(Shell("small", "qorctl raid --format status").out, StartsWith("WARNING: "));
    EXPECT_THAT(Shell("small", "qorctl drive 0 252 5 --format status").out,
                AllOf(StartsWith("WARNING: 0 controllers"), HasSubstr("252:5 PD5")));
}

TEST_F(StatusCommandTest, ControllerIsAllThatIsShown) {
    const json document = Parsed("large", "qorctl storage --controller 1 --format json");
    EXPECT_THAT(Column(document["controllers"], "number"), testing::ElementsAre(1));
    for (const char* list : {"raid_groups", "logical_drives", "physical_drives"}) {
        EXPECT_THAT(Column(document[list], "controller"), AllOf(Not(IsEmpty()), Each(json(1))))
            << list;
    }
    EXPECT_TRUE(document["pcie_ssds"].empty());
    for (const json& finding : document["health"]["findings"]) {
        EXPECT_THAT(finding["object"].get<std::string>(), StartsWith("controller 1 "));
    }
    EXPECT_EQ(document["health"]["status"], "CRITICAL");
}

TEST_F(StatusCommandTest, EnclosureIsItsDrivesAndWhatTheyBelongTo) {
    const json document = Parsed("large", "qorctl raid --controller 1 --enclosure 1 --format json");
    EXPECT_THAT(Column(document["physical_drives"], "enclosure"),
                AllOf(Not(IsEmpty()), Each(json(1))));
    EXPECT_THAT(Column(document["controllers"], "number"), testing::ElementsAre(1));
    for (const json& group : document["raid_groups"]) {
        EXPECT_THAT(Column(group["members"], "enclosure"), testing::Contains(json(1)));
    }
}

TEST_F(StatusCommandTest, ProblemsAreAllThatIsShown) {
    const json document = Parsed("failed-drive", "qorctl raid --problems --format json");
    EXPECT_THAT(Column(document["physical_drives"], "slot"), testing::ElementsAre(3, 5));
    EXPECT_THAT(Column(document["logical_drives"], "number"), testing::ElementsAre(1, 2));
    EXPECT_THAT(Column(document["raid_groups"], "name"), testing::ElementsAre("RG1"));
    EXPECT_EQ(document["controllers"].size(), 1U);
    const std::string tree = Shell("failed-drive", "qorctl raid --problems").out;
    EXPECT_THAT(tree, AllOf(StartsWith("Controller Information"), HasSubstr(": PD3"),
                            HasSubstr(": PD5"), Not(HasSubstr("K4H1R0PZ"))));
    EXPECT_THAT(Shell("sas", "qorctl status --problems").out, StartsWith("OK: 0 controllers"));
}

TEST_F(StatusCommandTest, CheckJudgesWhatIsAskedFor) {
    EXPECT_EQ(Shell("large", "qorctl check --controller 0").status, 1);
    EXPECT_EQ(Shell("large", "qorctl check --controller 1").status, 2);
    const CEnd all = Shell("small", "qorctl check");
    const CEnd problems = Shell("small", "qorctl check --problems");
    EXPECT_EQ(all.out.substr(0, all.out.find('\n')),
              problems.out.substr(0, problems.out.find('\n')));
    EXPECT_THAT(all.out, HasSubstr("not reported: "));
    EXPECT_THAT(problems.out, AllOf(HasSubstr("WARNING: "), Not(HasSubstr("not reported: "))));
}

// Nothing to complain of where nothing is would be a false OK.
TEST_F(StatusCommandTest, PlaceThatIsNotThereIsUnknown) {
    const CEnd check = Shell("large", "qorctl check --controller 7");
    EXPECT_EQ(check.status, 3);
    EXPECT_THAT(check.out, StartsWith("RAID UNKNOWN - no controller 7 is reported, there is 0, 1, "
                                      "2, 3|"));
    const CEnd status = Shell("large", "qorctl status --enclosure 9 --controller 2");
    EXPECT_EQ(status.status, 1);
    EXPECT_THAT(status.out, StartsWith("UNKNOWN: 0 controllers"));
    EXPECT_THAT(status.err,
                StartsWith("qorctl: no enclosure 9 of controller 2 is reported; there is 0, 1"));
}

TEST_F(StatusCommandTest, PluginsOwnDocumentIsWholeOrRefused) {
    const CEnd end = Shell("small", "qorctl raid --format xml --problems");
    EXPECT_GT(end.status, 1);
    EXPECT_EQ(end.out, "");
    EXPECT_THAT(end.err, HasSubstr("--format xml is the plug-in's own document"));
}

TEST_F(StatusCommandTest, CardOrSsdThatIsNotReportedIsNotWell) {
    const std::string again =
        "devices=/opt/tarmica/qor/kam/work/devices.tmp; cp $devices copy; cat copy >> $devices; ";
    const CEnd check =
        Shell("sas", "cd " + Folder().string() + "; " + again + "qorctl check --no-hardware ok");
    EXPECT_EQ(check.status, 3);
    EXPECT_THAT(check.out,
                StartsWith("RAID UNKNOWN - 2 supported RAID cards are in this server, but the RAID "
                           "tool reported 1 controller|"));
    const CEnd ssd = Shell("tool-6.8", "qorctl storage --format table");
    EXPECT_EQ(ssd.status, 1);
    EXPECT_THAT(ssd.err, StartsWith("qorctl: a supported PCIe SSD is in this server, but the RAID "
                                    "tool reported no PCIe SSD\n  The RAID tool reports PCIe SSDs "
                                    "from version 7.0 on: update an older one."));
    EXPECT_EQ(Shell("tool-6.8", "qorctl raid --format table").status, 0);
}

// The plug-in counts the drives then, and takes the tool for missing.
TEST_F(StatusCommandTest, ToolThatThisUserMayNotSeeIsNotMissing) {
    const CEnd check = Shell("sas", "chmod 0 /opt/tarmica/krz/cli; " + qortest::WithoutRights() +
                                        QORCTL_PROGRAM " check");
    EXPECT_EQ(check.status, 3);
    EXPECT_EQ(check.out,
              "RAID UNKNOWN - /opt/tarmica/krz/cli/krzcli is out of reach: this user may not "
              "search /opt/tarmica/krz/cli\n");
}

// Half an answer.
TEST_F(StatusCommandTest, DrivesThatAreNotReportedAreToldInEveryForm) {
    for (const std::string form : {"status", "tree", "table", "json", "csv", "xml"}) {
        const CEnd end = qortest::RunProgram({QORSIM_PROGRAM, "run", "--host", "sas", "--fault",
                                              "truncate=1500@-pdinfo", "--", QORCTL_PROGRAM, "raid",
                                              "--format", form});
        EXPECT_EQ(end.status, 1) << form;
        EXPECT_NE(end.out, "") << form;
        EXPECT_THAT(end.err, testing::ContainsRegex("controller 0 states 7 drives, [0-9] reported"))
            << form;
        if (form == "json") {
            const json document = json::parse(end.out);
            EXPECT_EQ(document["result"], "failure");
            EXPECT_EQ(document["messages"].back()["code"], "report-incomplete");
            EXPECT_EQ(document["controllers"][0]["health"]["status"], "UNKNOWN");
        }
    }
}

}  // namespace
