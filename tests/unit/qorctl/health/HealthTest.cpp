// The rules of docs/health.md, a row each.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "health/Health.h"
#include "model/ObjectNames.h"

namespace {

using qorctl::CHealth;
using qorctl::CHealthFinding;
using qorctl::CInventory;
using qorctl::CMeasure;
using qorctl::CPerformanceValue;
using qorctl::CPhysicalDrive;
using qorctl::CQuantity;
using qorctl::CText;
using qorctl::EDriveRole;
using qorctl::EHealth;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

CMeasure Measure(long long number) {
    return CQuantity{std::to_string(number), number};
}

CPhysicalDrive GoodDrive(long long number = 3) {
    CPhysicalDrive drive;
    drive.controller = 0;
    drive.number = number;
    drive.role = EDriveRole::MEMBER;
    drive.statusDetail = "ONLINE";
    drive.serial = "SERIAL" + std::to_string(number);
    drive.temperature = CQuantity{"31C", 31};
    drive.mediaErrors = Measure(0);
    drive.otherErrors = Measure(0);
    drive.predictiveFailures = Measure(0);
    return drive;
}

CInventory With(const CPhysicalDrive& drive) {
    CInventory inventory;
    inventory.physicalDrives.push_back(drive);
    return inventory;
}

CInventory WithLogicalDrive(const CText& state) {
    CInventory inventory;
    qorctl::CLogicalDrive drive;
    drive.controller = 0;
    drive.number = 1;
    drive.state = state;
    inventory.logicalDrives.push_back(drive);
    return inventory;
}

CInventory WithBattery(const CText& presence, const CText& status) {
    CInventory inventory;
    qorctl::CController controller;
    controller.number = 2;
    controller.batteryPresence = presence;
    controller.batteryStatus = status;
    inventory.controllers.push_back(controller);
    return inventory;
}

CInventory WithSsd(const CText& status, const CMeasure& temperature, const CMeasure& used) {
    CInventory inventory;
    qorctl::CPcieSsd ssd;
    ssd.bus = 177;
    ssd.status = status;
    ssd.temperature = temperature;
    ssd.used = used;
    inventory.pcieSsds.push_back(ssd);
    return inventory;
}

// The only finding; OK without a rule when there is none.
CHealthFinding OnlyFinding(const CHealth& health) {
    EXPECT_LE(health.findings.size(), 1U);
    return health.findings.empty() ? CHealthFinding{} : health.findings.front();
}

void ExpectFinding(const CHealth& health, EHealth severity, std::string_view rule,
                   const std::string& object, const std::string& message) {
    const CHealthFinding finding = OnlyFinding(health);
    EXPECT_EQ(finding.health, severity) << message;
    EXPECT_EQ(finding.rule, rule) << message;
    EXPECT_EQ(finding.object, object) << message;
    EXPECT_EQ(finding.message, message);
    EXPECT_EQ(health.Overall(), severity);
}

struct CDriveRow {
    const char* state;
    EDriveRole role;
    EHealth severity;
    const char* rule;
};

TEST(HealthTest, DriveStatesHaveTheirSeverity) {
    const CDriveRow rows[] = {
        {"ONLINE", EDriveRole::MEMBER, EHealth::OK, ""},
        {"HOT SPARE", EDriveRole::GLOBAL_SPARE, EHealth::OK, ""},
        {"HOT SPARE", EDriveRole::DEDICATED_SPARE, EHealth::OK, ""},
        {"Unconfig GOOD", EDriveRole::UNASSIGNED, EHealth::OK, ""},
        {"JBOD", EDriveRole::UNASSIGNED, EHealth::OK, ""},
        {"REBUILD", EDriveRole::MEMBER, EHealth::WARNING, "drive-rebuild"},
        {"COPYBACK", EDriveRole::MEMBER, EHealth::WARNING, "drive-copyback"},
        {"Foreign", EDriveRole::UNASSIGNED, EHealth::WARNING, "drive-foreign"},
        {"Unconfig BAD", EDriveRole::UNASSIGNED, EHealth::WARNING, "drive-bad"},
        {"FAILED", EDriveRole::MEMBER, EHealth::CRITICAL, "drive-failed"},
        {"FAILED", EDriveRole::GLOBAL_SPARE, EHealth::CRITICAL, "drive-failed"},
        {"OFFLINE", EDriveRole::MEMBER, EHealth::CRITICAL, "drive-offline"},
        {"OFFLINE", EDriveRole::RLD, EHealth::CRITICAL, "drive-offline"},
        {"OFFLINE", EDriveRole::UNKNOWN, EHealth::CRITICAL, "drive-offline"},
        {"OFFLINE", EDriveRole::GLOBAL_SPARE, EHealth::WARNING, "drive-offline"},
        {"OFFLINE", EDriveRole::DEDICATED_SPARE, EHealth::WARNING, "drive-offline"},
        {"OFFLINE", EDriveRole::UNASSIGNED, EHealth::WARNING, "drive-offline"},
    };
    for (const CDriveRow& row : rows) {
        CPhysicalDrive drive = GoodDrive();
        drive.statusDetail = row.state;
        drive.role = row.role;
        const bool good = row.severity == EHealth::OK;
        ExpectFinding(JudgeHealth(With(drive), {}), row.severity, row.rule,
                      good ? "" : "controller 0 drive PD3 (serial SERIAL3)", good ? "" : row.state);
    }
}

TEST(HealthTest, KnownStatesAreThoseThatHaveASeverity) {
    EXPECT_THAT(qorctl::KnownStates("State"),
                testing::ElementsAre("Optimal", "Partially Degraded", "Degraded", "Offline"));
    EXPECT_EQ(qorctl::KnownStates("PD Status(Detail)").size(), 10U);
    EXPECT_THAT(qorctl::KnownStates("Temperature"), testing::IsEmpty());
}

TEST(HealthTest, DriveStateWithoutAKnownMeaningIsUnknown) {
    for (const char* state : {"Online", "ONLINE ", "Predicted Failure", ""}) {
        CPhysicalDrive drive = GoodDrive();
        drive.statusDetail = state;
        ExpectFinding(JudgeHealth(With(drive), {}), EHealth::UNKNOWN, "drive-state",
                      "controller 0 drive PD3 (serial SERIAL3)",
                      "unknown state \"" + std::string(state) + '"');
    }
}

TEST(HealthTest, MissingStatesAreUnknown) {
    CPhysicalDrive drive = GoodDrive();
    drive.statusDetail.reset();
    const char* const none = "the tool reports no state";
    ExpectFinding(JudgeHealth(With(drive), {}), EHealth::UNKNOWN, "drive-state",
                  "controller 0 drive PD3 (serial SERIAL3)", none);
    ExpectFinding(JudgeHealth(WithLogicalDrive(std::nullopt), {}), EHealth::UNKNOWN,
                  "logical-drive-state", "controller 0 logical drive LD1", none);
    ExpectFinding(JudgeHealth(WithSsd(std::nullopt, Measure(40), Measure(1)), {}), EHealth::UNKNOWN,
                  "ssd-status", "PCIe SSD 177", none);
}

TEST(HealthTest, LogicalDriveStatesHaveTheirSeverity) {
    const struct {
        const char* state;
        EHealth severity;
        const char* rule;
    } rows[] = {
        {"Partially Degraded", EHealth::WARNING, "logical-drive-degraded"},
        {"Degraded", EHealth::CRITICAL, "logical-drive-degraded"},
        {"Offline", EHealth::CRITICAL, "logical-drive-offline"},
    };
    EXPECT_THAT(JudgeHealth(WithLogicalDrive("Optimal"), {}).findings, IsEmpty());
    for (const auto& row : rows) {
        ExpectFinding(JudgeHealth(WithLogicalDrive(row.state), {}), row.severity, row.rule,
                      "controller 0 logical drive LD1", row.state);
    }
    ExpectFinding(JudgeHealth(WithLogicalDrive("optimal"), {}), EHealth::UNKNOWN,
                  "logical-drive-state", "controller 0 logical drive LD1",
                  "unknown state \"optimal\"");
}

TEST(HealthTest, DegradedLogicalDriveIsWhatTheOptionSays) {
    const qorctl::CHealthOptions options = {.degraded = EHealth::WARNING};
    EXPECT_EQ(JudgeHealth(WithLogicalDrive("Degraded"), options).Overall(), EHealth::WARNING);
    EXPECT_EQ(JudgeHealth(WithLogicalDrive("Offline"), options).Overall(), EHealth::CRITICAL);
}

TEST(HealthTest, BatteryStatesHaveTheirSeverity) {
    for (const char* status : {"Normal", "Optimal"}) {
        EXPECT_THAT(JudgeHealth(WithBattery("Present", status), {}).findings, IsEmpty());
    }
    for (const char* status : {"Charging", "Discharging", "Learning", "Degraded", "Failed", "Low",
                               "Missing", "Replace"}) {
        ExpectFinding(JudgeHealth(WithBattery("Present", status), {}), EHealth::WARNING,
                      "battery-status", "controller 2 battery", status);
    }
    ExpectFinding(JudgeHealth(WithBattery("Present", "Odd"), {}), EHealth::UNKNOWN,
                  "battery-status", "controller 2 battery", "unknown state \"Odd\"");
    ExpectFinding(JudgeHealth(WithBattery("Present", std::nullopt), {}), EHealth::UNKNOWN,
                  "battery-status", "controller 2 battery", "the tool reports no state");
}

// Only "Absent" says that there is none by design.
TEST(HealthTest, BatteryThatIsNeitherThereNorAbsentIsNotWell) {
    ExpectFinding(JudgeHealth(WithBattery("Missing", std::nullopt), {}), EHealth::WARNING,
                  "battery-status", "controller 2 battery", "Missing");
    ExpectFinding(JudgeHealth(WithBattery("present", std::nullopt), {}), EHealth::UNKNOWN,
                  "battery-status", "controller 2 battery", "unknown state \"present\"");
}

TEST(HealthTest, CountOfDrivesThatIsNoNumberIsUnknown) {
    CInventory inventory = WithBattery("Absent", std::nullopt);
    inventory.controllers[0].physicalDriveCount = CQuantity{"9 (8 shown)", std::nullopt};
    ExpectFinding(JudgeHealth(inventory, {}), EHealth::UNKNOWN, "unreadable-value", "controller 2",
                  "unreadable number of drives \"9 (8 shown)\"");
    inventory.controllers[0].physicalDriveCount.reset();
    inventory.controllers[0].logicalDriveCount = CQuantity{"many", std::nullopt};
    ExpectFinding(JudgeHealth(inventory, {}), EHealth::UNKNOWN, "unreadable-value", "controller 2",
                  "unreadable number of logical drives \"many\"");
}

TEST(HealthTest, ControllerWithoutABatteryIsNotJudged) {
    EXPECT_THAT(JudgeHealth(WithBattery("Absent", std::nullopt), {}).findings, IsEmpty());
    EXPECT_THAT(JudgeHealth(WithBattery(std::nullopt, std::nullopt), {}).findings, IsEmpty());
}

TEST(HealthTest, WhatTheReportLeavesOutIsUnknown) {
    CHealth health;
    qorctl::JudgeGaps({{"report-incomplete", "controller 2", "states 2 drives, 1 reported", ""}},
                      health);
    ExpectFinding(health, EHealth::UNKNOWN, "report-incomplete", "controller 2",
                  "states 2 drives, 1 reported");
}

TEST(HealthTest, SsdStatesHaveTheirSeverity) {
    const struct {
        const char* status;
        EHealth severity;
    } rows[] = {{"Warning", EHealth::WARNING},
                {"Critical", EHealth::CRITICAL},
                {"Failed", EHealth::CRITICAL}};
    EXPECT_THAT(JudgeHealth(WithSsd("Healthy", Measure(40), Measure(1)), {}).findings, IsEmpty());
    for (const auto& row : rows) {
        ExpectFinding(JudgeHealth(WithSsd(row.status, Measure(40), Measure(1)), {}), row.severity,
                      "ssd-status", "PCIe SSD 177", row.status);
    }
    ExpectFinding(JudgeHealth(WithSsd("Fine", Measure(40), Measure(1)), {}), EHealth::UNKNOWN,
                  "ssd-status", "PCIe SSD 177", "unknown state \"Fine\"");
}

struct CLimitRow {
    long long value;
    EHealth severity;
    const char* message;
};

TEST(HealthTest, DriveTemperaturesAlarmAboveTheirThresholds) {
    const CLimitRow rows[] = {{-10, EHealth::OK, ""},
                              {50, EHealth::OK, ""},
                              {51, EHealth::WARNING, "temperature 51, above 50"},
                              {60, EHealth::WARNING, "temperature 60, above 50"},
                              {61, EHealth::CRITICAL, "temperature 61, above 60"}};
    for (const CLimitRow& row : rows) {
        CPhysicalDrive drive = GoodDrive();
        drive.temperature = Measure(row.value);
        const bool good = row.severity == EHealth::OK;
        ExpectFinding(JudgeHealth(With(drive), {}), row.severity, good ? "" : "drive-temperature",
                      good ? "" : "controller 0 drive PD3 (serial SERIAL3)", row.message);
    }
}

TEST(HealthTest, ThresholdsAreOptions) {
    CPhysicalDrive drive = GoodDrive();
    drive.temperature = Measure(31);
    EXPECT_EQ(JudgeHealth(With(drive), {.driveTemperature = {30, 40}}).Overall(), EHealth::WARNING);
    const CInventory ssd = WithSsd("Healthy", Measure(31), Measure(31));
    EXPECT_EQ(JudgeHealth(ssd, {.ssdTemperature = {20, 30}}).Overall(), EHealth::CRITICAL);
    EXPECT_EQ(JudgeHealth(ssd, {.ssdWear = {20, 30}}).Overall(), EHealth::CRITICAL);
}

TEST(HealthTest, SsdTemperatureAndWearAlarmAboveTheirThresholds) {
    const CLimitRow temperatures[] = {{70, EHealth::OK, ""},
                                      {71, EHealth::WARNING, "temperature 71, above 70"},
                                      {81, EHealth::CRITICAL, "temperature 81, above 80"}};
    for (const CLimitRow& row : temperatures) {
        const bool good = row.severity == EHealth::OK;
        ExpectFinding(JudgeHealth(WithSsd("Healthy", Measure(row.value), Measure(1)), {}),
                      row.severity, good ? "" : "ssd-temperature", good ? "" : "PCIe SSD 177",
                      row.message);
    }
    const CLimitRow wears[] = {{80, EHealth::OK, ""},
                               {81, EHealth::WARNING, "wear 81, above 80"},
                               {100, EHealth::WARNING, "wear 100, above 80"},
                               {101, EHealth::CRITICAL, "wear 101, above 100"}};
    for (const CLimitRow& row : wears) {
        const bool good = row.severity == EHealth::OK;
        ExpectFinding(JudgeHealth(WithSsd("Healthy", Measure(40), Measure(row.value)), {}),
                      row.severity, good ? "" : "ssd-wear", good ? "" : "PCIe SSD 177",
                      row.message);
    }
}

TEST(HealthTest, MeasurementThatIsNoNumberIsUnknown) {
    CPhysicalDrive drive = GoodDrive();
    drive.temperature = CQuantity{"hot", std::nullopt};
    ExpectFinding(JudgeHealth(With(drive), {}), EHealth::UNKNOWN, "unreadable-value",
                  "controller 0 drive PD3 (serial SERIAL3)", "unreadable temperature \"hot\"");
    drive = GoodDrive();
    drive.mediaErrors = CQuantity{"many", std::nullopt};
    CHealth health;
    JudgeCounters(With(drive), health);
    ExpectFinding(health, EHealth::UNKNOWN, "unreadable-value",
                  "controller 0 drive PD3 (serial SERIAL3)",
                  "unreadable number of media errors \"many\"");
}

TEST(HealthTest, MissingMeasurementsAreStatedAndNotJudged) {
    CPhysicalDrive drive = GoodDrive();
    drive.temperature.reset();
    drive.otherErrors.reset();
    CHealth health = JudgeHealth(With(drive), {});
    JudgeCounters(With(drive), health);
    EXPECT_THAT(health.findings, IsEmpty());
    ASSERT_THAT(health.notReported, SizeIs(2));
    EXPECT_EQ(health.notReported[0].object, "controller 0 drive PD3 (serial SERIAL3)");
    EXPECT_EQ(health.notReported[0].what, "temperature");
    EXPECT_EQ(health.notReported[1].what, "other errors");
    const CHealth ssd = JudgeHealth(WithSsd("Healthy", {}, {}), {});
    ASSERT_THAT(ssd.notReported, SizeIs(2));
    EXPECT_EQ(ssd.notReported[0].what, "temperature");
    EXPECT_EQ(ssd.notReported[1].what, "wear");
}

TEST(HealthTest, EveryCounterOtherThanZeroIsAWarningByItself) {
    const struct {
        CMeasure CPhysicalDrive::*counter;
        const char* rule;
        const char* message;
    } rows[] = {
        {&CPhysicalDrive::mediaErrors, "drive-media-errors", "2 media errors"},
        {&CPhysicalDrive::otherErrors, "drive-other-errors", "2 other errors"},
        {&CPhysicalDrive::predictiveFailures, "drive-predictive-failure", "2 predictive failures"},
    };
    for (const auto& row : rows) {
        CPhysicalDrive drive = GoodDrive();
        drive.*row.counter = Measure(2);
        CHealth health;
        JudgeCounters(With(drive), health);
        ExpectFinding(health, EHealth::WARNING, row.rule, "controller 0 drive PD3 (serial SERIAL3)",
                      row.message);
    }
}

TEST(HealthTest, WorstFindingDecidesAndUnknownGoesBeforeAWarning) {
    const EHealth order[] = {EHealth::OK, EHealth::WARNING, EHealth::UNKNOWN, EHealth::CRITICAL};
    for (size_t i = 0; i < 4; ++i) {
        for (size_t k = 0; k < 4; ++k) {
            EXPECT_EQ(qorctl::Worse(order[i], order[k]), order[std::max(i, k)]);
        }
    }
    EXPECT_EQ(CHealth().Overall(), EHealth::OK);
}

TEST(HealthTest, SeveritiesHaveNames) {
    const std::pair<EHealth, const char*> rows[] = {{EHealth::OK, "OK"},
                                                    {EHealth::WARNING, "WARNING"},
                                                    {EHealth::CRITICAL, "CRITICAL"},
                                                    {EHealth::UNKNOWN, "UNKNOWN"}};
    for (const auto& [health, name] : rows) {
        EXPECT_EQ(qorctl::HealthName(health), name);
    }
}

TEST(HealthTest, NumbersThatTheToolDidNotSayAreNamedSo) {
    EXPECT_EQ(ObjectName(CPhysicalDrive()), "controller ? drive PD?");
    EXPECT_EQ(ObjectName(qorctl::CLogicalDrive()), "controller ? logical drive LD?");
    EXPECT_EQ(ObjectName(qorctl::CController()), "controller ?");
    EXPECT_EQ(ObjectName(qorctl::CPcieSsd()), "PCIe SSD ?");
}

// Growth of counters

class GrowthTest : public testing::Test {
protected:
    static constexpr int64_t HOLD = 3600;

    CHealth Judge(const CInventory& inventory, int64_t now) {
        CHealth health;
        JudgeCountersByGrowth(inventory, m_State, now, HOLD, health);
        return health;
    }

    static CPhysicalDrive Drive(long long mediaErrors, const char* serial = "A") {
        CPhysicalDrive drive = GoodDrive();
        drive.serial = serial;
        drive.mediaErrors = Measure(mediaErrors);
        return drive;
    }

    qorctl::CCounterHistory m_State;
};

TEST_F(GrowthTest, FirstLookIsTheBaselineAndNoted) {
    const CHealth health = Judge(With(Drive(2)), 1000);
    EXPECT_THAT(health.findings, IsEmpty());
    EXPECT_THAT(health.notes,
                ElementsAre("controller 0 drive PD3 (serial A): first seen with 2 media errors"));
}

TEST_F(GrowthTest, CounterThatStandsStillDoesNotAlarm) {
    Judge(With(Drive(2)), 1000);
    const CHealth health = Judge(With(Drive(2)), 1060);
    EXPECT_THAT(health.findings, IsEmpty());
    EXPECT_THAT(health.notes, IsEmpty());
}

TEST_F(GrowthTest, GrowthIsAWarningWithWhatCameOnTop) {
    Judge(With(Drive(2)), 1000);
    ExpectFinding(Judge(With(Drive(5)), 1060), EHealth::WARNING, "drive-media-errors",
                  "controller 0 drive PD3 (serial A)", "5 media errors, 3 more");
}

TEST_F(GrowthTest, ReplacedDriveStartsAnewInTheSamePlace) {
    Judge(With(Drive(2, "A")), 1000);
    const CHealth health = Judge(With(Drive(9, "B")), 1060);
    EXPECT_THAT(health.findings, IsEmpty());
    EXPECT_THAT(health.notes, SizeIs(1));
    EXPECT_EQ(m_State.Drives().size(), 2U);
}

TEST_F(GrowthTest, DriveIsKnownAgainInAnotherPlace) {
    Judge(With(Drive(2)), 1000);
    CPhysicalDrive moved = Drive(3);
    moved.number = 7;
    ExpectFinding(Judge(With(moved), 1060), EHealth::WARNING, "drive-media-errors",
                  "controller 0 drive PD7 (serial A)", "3 media errors, 1 more");
}

TEST_F(GrowthTest, DrivesOfTheSameSerialNumberAreKnownByTheirPlace) {
    CInventory inventory = With(Drive(1));
    inventory.physicalDrives.push_back(Drive(4));
    inventory.physicalDrives.back().number = 4;
    Judge(inventory, 1000);
    EXPECT_THAT(Judge(inventory, 1060).findings, IsEmpty());
    EXPECT_EQ(m_State.Drives().count("controller 0 drive PD3"), 1U);
    EXPECT_EQ(m_State.Drives().count("controller 0 drive PD4"), 1U);
}

TEST_F(GrowthTest, DriveWithoutASerialNumberIsKnownByItsPlace) {
    CPhysicalDrive drive = Drive(1);
    drive.serial.reset();
    Judge(With(drive), 1000);
    EXPECT_EQ(m_State.Drives().count("controller 0 drive PD3"), 1U);
}

TEST_F(GrowthTest, SerialNumberOfAnyBytesMakesAKeyThatTheFileCanHold) {
    Judge(With(Drive(1, "\xff\"\x1b")), 1000);
    EXPECT_TRUE(qorctl::CCounterHistory::Parse(m_State.Format()).has_value());
}

// Performance data

long long ValueOf(const std::vector<CPerformanceValue>& values, const std::string& label) {
    const auto found = std::find_if(values.begin(), values.end(),
                                    [&](const auto& value) { return value.label == label; });
    EXPECT_NE(found, values.end()) << label;
    return found == values.end() ? -1 : found->value;
}

TEST(HealthTest, DrivesAreCountedByState) {
    const char* const states[] = {"ONLINE",  "HOT SPARE", "Unconfig GOOD", "JBOD",
                                  "REBUILD", "COPYBACK",  "Foreign",       "Unconfig BAD",
                                  "OFFLINE", "FAILED",    "odd",           "odder"};
    CInventory inventory;
    for (const char* state : states) {
        inventory.physicalDrives.push_back(GoodDrive());
        inventory.physicalDrives.back().statusDetail = state;
    }
    const auto values = MeasureInventory(inventory, {});
    for (const char* label : {"online", "hot_spare", "unassigned", "jbod", "rebuild", "copyback",
                              "foreign", "bad", "offline", "failed"}) {
        EXPECT_EQ(ValueOf(values, std::string("drives_") + label), 1) << label;
    }
    EXPECT_EQ(ValueOf(values, "drives_unknown"), 2);
    EXPECT_EQ(ValueOf(values, "drives"), 12);
}

TEST(HealthTest, LogicalDrivesAreCountedByState) {
    CInventory inventory;
    for (const char* state : {"Optimal", "Degraded", "Partially Degraded", "Offline", "odd"}) {
        inventory.logicalDrives.push_back(WithLogicalDrive(state).logicalDrives.front());
    }
    const auto values = MeasureInventory(inventory, {});
    EXPECT_EQ(ValueOf(values, "logical_drives"), 5);
    EXPECT_EQ(ValueOf(values, "logical_drives_optimal"), 1);
    EXPECT_EQ(ValueOf(values, "logical_drives_degraded"), 2);
    EXPECT_EQ(ValueOf(values, "logical_drives_offline"), 1);
    EXPECT_EQ(ValueOf(values, "logical_drives_unknown"), 1);
}

TEST(HealthTest, ValuesThatAreNotReportedHaveNoPerformanceData) {
    CPhysicalDrive drive = GoodDrive();
    drive.temperature.reset();
    drive.mediaErrors = CQuantity{"many", std::nullopt};
    for (const CPerformanceValue& value : MeasureInventory(With(drive), {})) {
        EXPECT_NE(value.label, "c0_PD3_temperature");
        EXPECT_NE(value.label, "c0_PD3_media_errors");
    }
}

}  // namespace
