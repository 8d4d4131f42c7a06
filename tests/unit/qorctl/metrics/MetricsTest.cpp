#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "MetricsReading.h"
#include "metrics/Metrics.h"

namespace {

using qorctl::CCollection;
using qorctl::CInventory;
using qorctl::CPhysicalDrive;
using qorctl::EOutcome;
using qortest::CMetricsReading;
using testing::HasSubstr;
using testing::Not;

CCollection Answered(const CInventory& inventory) {
    CCollection collection;
    collection.answer.outcome = EOutcome::ANSWERED;
    collection.answer.inventory = inventory;
    return collection;
}

// The text, which is as a reader wants it.
std::string Text(const CCollection& collection) {
    std::string text = qorctl::FormatMetrics(collection);
    EXPECT_EQ(qortest::ReadMetrics(text).problem, "") << text;
    return text;
}

CMetricsReading Read(const CCollection& collection) {
    return qortest::ReadMetrics(Text(collection));
}

CPhysicalDrive& AddDrive(CInventory& inventory, long long slot) {
    CPhysicalDrive& drive = inventory.physicalDrives.emplace_back();
    drive.controller = 0;
    drive.number = slot;
    drive.place = {.enclosure = 252, .slot = slot};
    drive.statusDetail = "ONLINE";
    return drive;
}

CCollection WithDrives(size_t count) {
    CInventory inventory;
    for (size_t slot = 0; slot < count; ++slot) {
        AddDrive(inventory, static_cast<long long>(slot));
    }
    return Answered(inventory);
}

TEST(MetricsTest, CollectionTellsOfItself) {
    CCollection collection = Answered({});
    collection.answer.reason = qorctl::REASON_NO_HARDWARE;
    collection.answer.texts.noticeCode = "01";
    collection.answer.toolVersion = "7.0";
    collection.answer.toolRuns = 3;
    collection.seconds = 0.25;
    collection.time = 1795381525.5;
    collection.version = "1.2.3";
    const CMetricsReading read = Read(collection);
    EXPECT_EQ(read.Value("qor_collection_success"), 1);
    EXPECT_EQ(read.Value("qor_collection_complete"), 1);
    EXPECT_EQ(read.Value("qor_collection_result_info",
                         {{"reason", "no-hardware"}, {"notice_code", "01"}}),
              1);
    EXPECT_EQ(read.Value("qor_collection_duration_seconds"), 0.25);
    EXPECT_EQ(read.Value("qor_collection_timestamp_seconds"), 1795381525.5);
    EXPECT_EQ(read.Value("qor_collection_tool_runs"), 3);
    EXPECT_EQ(read.Value("qor_build_info", {{"version", "1.2.3"}}), 1);
    EXPECT_EQ(read.Value("qor_tool_info", {{"version", "7.0"}}), 1);
    EXPECT_EQ(read.Value("qor_health", {{"status", "UNKNOWN"}}), 1);
}

TEST(MetricsTest, FailureTellsNothingOfDevices) {
    CCollection collection = WithDrives(1);
    collection.answer = qorctl::TimeIsOver(std::chrono::seconds(2), "krzcli -v");
    const std::string text = Text(collection);
    const CMetricsReading read = qortest::ReadMetrics(text);
    EXPECT_EQ(read.Value("qor_collection_success"), 0);
    EXPECT_EQ(read.Value("qor_collection_complete"), 0);
    EXPECT_EQ(read.Value("qor_collection_result_info", {{"reason", "time-over"}}), 1);
    EXPECT_EQ(read.Value("qor_health", {{"status", "UNKNOWN"}}), 1);
    for (const auto& [family, about] : read.families) {
        EXPECT_TRUE(family.starts_with("qor_collection_") || family == "qor_health") << family;
    }
}

TEST(MetricsTest, WhatIsLeftOutIsNoWholeAnswer) {
    CCollection collection = WithDrives(1);
    collection.answer.gaps.push_back(
        {.rule = "no-controller", .object = "", .text = "x", .remedy = ""});
    const CMetricsReading read = Read(collection);
    EXPECT_EQ(read.Value("qor_collection_success"), 1);
    EXPECT_EQ(read.Value("qor_collection_complete"), 0);
    EXPECT_EQ(read.Value("qor_finding",
                         {{"object", "server"}, {"rule", "no-controller"}, {"status", "UNKNOWN"}}),
              1);
}

TEST(MetricsTest, OneStateIsOneAndAllOthersAreZero) {
    const CMetricsReading read = Read(WithDrives(1));
    EXPECT_EQ(read.families.at("qor_physical_drive_state").series, 11U);
    EXPECT_EQ(
        read.Value("qor_physical_drive_state",
                   {{"controller", "0"}, {"enclosure", "252"}, {"slot", "0"}, {"state", "ONLINE"}}),
        1);
    for (const char* state : {"FAILED", "REBUILD", "HOT SPARE", "unknown"}) {
        EXPECT_EQ(read.Value("qor_physical_drive_state", {{"state", state}}), 0) << state;
    }
}

TEST(MetricsTest, StateWithoutAMeaningIsUnknownAndShown) {
    for (const std::string state : {"Sanitizing", "unknown", "online"}) {
        CCollection collection = WithDrives(1);
        collection.answer.inventory.physicalDrives[0].statusDetail = state;
        const CMetricsReading read = Read(collection);
        EXPECT_EQ(read.Value("qor_physical_drive_state", {{"state", "unknown"}}), 1) << state;
        EXPECT_EQ(read.Value("qor_physical_drive_state", {{"state", state}}), 1) << state;
        EXPECT_EQ(read.Value("qor_physical_drive_state", {{"state", "ONLINE"}}), 0) << state;
    }
}

// That there is a device at all is told by its info.
TEST(MetricsTest, WhatTheToolDidNotSayIsLeftOut) {
    CInventory inventory;
    inventory.controllers.emplace_back();
    inventory.logicalDrives.emplace_back();
    inventory.physicalDrives.emplace_back().temperature = {{"warm", std::nullopt}};
    inventory.pcieSsds.emplace_back();
    const CMetricsReading read = Read(Answered(inventory));
    std::vector<std::string> families;
    for (const auto& [family, about] : read.families) {
        if (!family.starts_with("qor_collection_")) {
            families.push_back(family);
        }
    }
    EXPECT_THAT(families, testing::ElementsAre(
                              "qor_controller_info", "qor_controller_logical_drives_reported",
                              "qor_controller_physical_drives_reported", "qor_finding",
                              "qor_health", "qor_logical_drive_info", "qor_object_health",
                              "qor_pcie_ssd_info", "qor_physical_drive_info"));
}

TEST(MetricsTest, MeasuresAreInBaseUnits) {
    CInventory inventory;
    CPhysicalDrive& drive = AddDrive(inventory, 3);
    drive.progress = {{"57%", 57}};
    drive.temperature = {{"-5C", -5}};
    drive.capacity = {{"1KB", 1024}};
    drive.mediaErrors = {{"9", 9}};
    inventory.pcieSsds.emplace_back().used = {{"104%", 104}};
    const std::string text = Text(Answered(inventory));
    for (const char* line :
         {"progress_ratio{controller=\"0\",enclosure=\"252\",slot=\"3\"} 0.57\n",
          "temperature_celsius{controller=\"0\",enclosure=\"252\",slot=\"3\"} -5",
          "size_bytes{controller=\"0\",enclosure=\"252\",slot=\"3\"} 1024\n",
          "media_errors_total{controller=\"0\",enclosure=\"252\",slot=\"3\"} 9",
          "qor_pcie_ssd_life_used_ratio 1.04\n"}) {
        EXPECT_THAT(text, HasSubstr(line));
    }
}

TEST(MetricsTest, SerialNumberIsOnTheInfoOnly) {
    CCollection collection = WithDrives(1);
    collection.answer.inventory.physicalDrives[0].serial = "S123";
    collection.answer.inventory.physicalDrives[0].statusDetail = "FAILED";
    size_t told = 0;
    for (const qortest::CMetricSeries& series : Read(collection).series) {
        told += series.labels.contains("serial") ? 1U : 0U;
        EXPECT_EQ(series.labels.contains("serial"), series.family == "qor_physical_drive_info");
    }
    EXPECT_EQ(told, 1U);
}

TEST(MetricsTest, TwoDevicesThatClaimOnePlaceAreToldApart) {
    CCollection collection = WithDrives(1);
    CInventory& inventory = collection.answer.inventory;
    AddDrive(inventory, 0).statusDetail = "FAILED";
    inventory.controllers.resize(2);
    inventory.logicalDrives.resize(2);
    inventory.pcieSsds.resize(2);
    const CMetricsReading read = Read(collection);
    EXPECT_EQ(read.families.at("qor_physical_drive_info").series, 2U);
    EXPECT_EQ(read.Value("qor_physical_drive_state", {{"twin", "2"}, {"state", "FAILED"}}), 1);
    EXPECT_EQ(read.families.at("qor_controller_physical_drives_reported").series, 2U);
}

TEST(MetricsTest, DriveWithoutAPlaceHasItsNumber) {
    CInventory inventory;
    for (const long long number : {3, 4, 4}) {
        AddDrive(inventory, number).place = {.enclosure = 252, .slot = std::nullopt};
    }
    const std::string text = Text(Answered(inventory));
    EXPECT_THAT(text, HasSubstr("info{controller=\"0\",enclosure=\"252\",pd=\"3\"} 1\n"));
    EXPECT_THAT(text, HasSubstr("info{controller=\"0\",enclosure=\"252\",pd=\"4\"} 1\n"));
    EXPECT_THAT(text, HasSubstr("info{controller=\"0\",enclosure=\"252\",pd=\"4\",twin=\"2\"} 1"));
}

TEST(MetricsTest, ObjectThatIsNotWellHasItsWorstStatusAndEachRule) {
    CCollection collection = WithDrives(2);
    CPhysicalDrive& drive = collection.answer.inventory.physicalDrives[1];
    drive.statusDetail = "FAILED";
    drive.mediaErrors = {{"2", 2}};
    const CMetricsReading read = Read(collection);
    EXPECT_EQ(read.Value("qor_health", {{"status", "CRITICAL"}}), 1);
    EXPECT_EQ(read.families.at("qor_object_health").series, 1U);
    EXPECT_EQ(read.Value("qor_object_health",
                         {{"object", "physical_drive"}, {"slot", "1"}, {"status", "CRITICAL"}}),
              1);
    EXPECT_EQ(read.Value("qor_finding", {{"slot", "1"}, {"rule", "drive-failed"}}), 1);
    EXPECT_EQ(read.Value("qor_finding", {{"slot", "1"}, {"rule", "drive-media-errors"}}), 1);
}

TEST(MetricsTest, BatteryIsAnObjectOfItsOwn) {
    CInventory inventory;
    qorctl::CController& controller = inventory.controllers.emplace_back();
    controller.number = 0;
    controller.batteryPresence = "Present";
    controller.batteryStatus = "Failed";
    const CMetricsReading read = Read(Answered(inventory));
    EXPECT_EQ(read.Value("qor_controller_battery_present", {{"controller", "0"}}), 1);
    EXPECT_EQ(read.Value("qor_controller_battery_state", {{"state", "Failed"}}), 1);
    EXPECT_EQ(read.Value("qor_object_health", {{"object", "battery"}, {"status", "WARNING"}}), 1);
}

TEST(MetricsTest, SmartTablesOfBothKinds) {
    CCollection collection = WithDrives(2);
    CInventory& inventory = collection.answer.inventory;
    qorctl::CSmart& sata = inventory.physicalDrives[0].smart.emplace();
    sata.powerOnTime = {{"2h", 2}};
    sata.predictiveFailure = "Yes";
    qorctl::CSmartAttribute& attribute = sata.attributes.emplace_back();
    attribute.id = 5;
    attribute.name = "Reallocated";
    attribute.current = {{"100", 100}};
    attribute.worst = {{"99", 99}};
    attribute.value = {{"7", 7}};
    attribute.threshold = {{"36", 36}};
    qorctl::CSmart& sas = inventory.physicalDrives[1].smart.emplace();
    sas.predictiveFailure = "Perhaps";
    qorctl::CSmartAttribute& counter = sas.attributes.emplace_back();
    counter.name = "Grown Defects";
    counter.value = {{"4", 4}};
    counter.threshold = {{"-", std::nullopt}};
    collection.smart = {.failures = 1, .toolRuns = 4};
    const CMetricsReading read = Read(collection);
    const std::string head = "qor_physical_drive_smart_";
    const std::map<std::string, std::string> labels = {
        {"slot", "0"}, {"id", "5"}, {"attribute", "Reallocated"}};
    EXPECT_EQ(read.Value(head + "attribute_current", labels), 100);
    EXPECT_EQ(read.Value(head + "attribute_worst", labels), 99);
    EXPECT_EQ(read.Value(head + "attribute_raw", labels), 7);
    EXPECT_EQ(read.Value(head + "attribute_threshold", labels), 36);
    EXPECT_EQ(read.Value(head + "events_total", {{"slot", "1"}, {"attribute", "Grown Defects"}}),
              4);
    EXPECT_FALSE(read.families.contains(head + "events_threshold"));
    EXPECT_EQ(read.Value(head + "failure_predicted"), 1);
    EXPECT_EQ(read.Value("qor_physical_drive_power_on_seconds_total"), 7200);
    EXPECT_EQ(read.Value("qor_collection_smart_drives"), 2);
    EXPECT_EQ(read.Value("qor_collection_smart_failures"), 1);
    EXPECT_EQ(read.Value("qor_collection_tool_runs"), 4);
}

TEST(MetricsTest, SmartIsToldWhereItWasAskedForOnly) {
    EXPECT_THAT(Text(WithDrives(2)), Not(HasSubstr("smart")));
}

}  // namespace
