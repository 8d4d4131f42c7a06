#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "format/Csv.h"
#include "model/ObjectNames.h"

namespace {

using qorctl::CInventory;
using testing::HasSubstr;

constexpr const char* HEADER =
    "kind,controller,number,enclosure,slot,bus,raid_group,role,logical_drive,status,status_detail,"
    "temperature_celsius,media_error_count,other_error_count,predictive_failure_count,"
    "capacity_bytes,interface_type,media_type,vendor,product,serial,wwn,revision,power,"
    "speed_bits_per_second,power_on_time_hours,used_percent,written_bytes,health,problems\r\n";

std::string Csv(const CInventory& inventory,
                const std::vector<qorctl::CHealthFinding>& findings = {}) {
    return qorctl::FormatCsv(inventory, qorctl::CProblemMarks(findings));
}

CInventory OneDrive(const std::string& product) {
    CInventory inventory;
    inventory.physicalDrives.emplace_back().product = product;
    return inventory;
}

TEST(CsvReportTest, NothingIsTheHeaderLine) {
    EXPECT_EQ(Csv({}), HEADER);
}

TEST(CsvReportTest, DriveIsARowWithNumbersInBaseUnits) {
    CInventory inventory;
    qorctl::CPhysicalDrive& drive = inventory.physicalDrives.emplace_back();
    drive.controller = 0;
    drive.number = 3;
    drive.place = {.enclosure = 252, .slot = 4};
    drive.group = "RG1";
    drive.role = qorctl::EDriveRole::MEMBER;
    drive.logicalDrive = 1;
    drive.status = "NO ERROR";
    drive.statusDetail = "ONLINE";
    drive.temperature = {{"31C", 31}};
    drive.mediaErrors = {{"?", std::nullopt}};
    drive.capacity = {{"1KB", 1024}};
    drive.serial = "S1";
    EXPECT_EQ(Csv(inventory),
              std::string(HEADER) +
                  "physical_drive,0,3,252,4,,RG1,member,1,NO ERROR,ONLINE,31,,,,1024,,,,,S1"
                  ",,,,,,,,OK,\r\n");
}

TEST(CsvReportTest, PcieSsdIsARow) {
    CInventory inventory;
    qorctl::CPcieSsd& ssd = inventory.pcieSsds.emplace_back();
    ssd.bus = 177;
    ssd.status = "Healthy";
    ssd.used = {{"12%", 12}};
    ssd.written = {{"1KB", 1000}};
    EXPECT_EQ(Csv(inventory),
              std::string(HEADER) + "pcie_ssd,,,,,177,,,,,Healthy,,,,,,,,,,,,,,,,12,1000,OK,\r\n");
}

TEST(CsvReportTest, RowHasTheWorstSeverityAndEveryProblem) {
    CInventory inventory;
    qorctl::CPhysicalDrive& drive = inventory.physicalDrives.emplace_back();
    drive.controller = 0;
    drive.number = 3;
    const std::string name = qorctl::ObjectName(drive);
    EXPECT_THAT(Csv(inventory, {{qorctl::EHealth::CRITICAL, "drive-failed", name, "FAILED"},
                                {qorctl::EHealth::WARNING, "drive-media-errors", name, "=2"},
                                {qorctl::EHealth::WARNING, "drive-bad", "another", "x"}}),
                testing::EndsWith(",CRITICAL,\"FAILED,' =2\"\r\n"));
}

TEST(CsvReportTest, SeparatorsAndQuotesAreQuoted) {
    EXPECT_THAT(Csv(OneDrive("a,b")), HasSubstr(",\"a,b\","));
    EXPECT_THAT(Csv(OneDrive("a\"b")), HasSubstr(",\"a\"\"b\","));
}

TEST(CsvReportTest, FormulasAreMadeTexts) {
    for (const char* begin : {"=", "+", "-", "@", "\uFF1D", "\uFF0B", "\uFF0D", "\uFF20"}) {
        const std::string text = begin + std::string("1");
        EXPECT_THAT(Csv(OneDrive(text)), HasSubstr(",'" + text + ",")) << begin;
    }
    EXPECT_THAT(Csv(OneDrive("=1,2")), HasSubstr(",\"'=1,2\","));
    EXPECT_THAT(Csv(OneDrive(" =1")), HasSubstr(",' =1,"));
    EXPECT_THAT(Csv(OneDrive("a=1")), HasSubstr(",a=1,"));
    EXPECT_THAT(Csv(OneDrive("a - b; c")), HasSubstr(",a - b; c,"));
}

// A spreadsheet may be told to take another separator than the comma.
TEST(CsvReportTest, FormulasBehindAnySeparatorAreMadeTexts) {
    const struct {
        const char* text;
        const char* cell;
    } rows[] = {
        {"a;=1", ",a;'=1,"},
        {"a;-1;+1;@x", ",a;'-1;'+1;'@x,"},
        {"a|=1", ",a|'=1,"},
        {"a:=1", ",a:'=1,"},
        {"a,=1", ",\"a,'=1\","},
        {"a; =1", ",a;' =1,"},
        {"a;\"=1\"", ",\"a;'\"\"=1\"\"\","},
        {"a;'=1", ",a;'=1,"},
        {"a;\uFF1D1", ",a;'\uFF1D1,"},
        {"a;b;", ",a;b;,"},
    };
    for (const auto& row : rows) {
        EXPECT_THAT(Csv(OneDrive(row.text)), HasSubstr(row.cell));
    }
}

TEST(CsvReportTest, WhatIsNoPrintableTextIsMadeVisible) {
    EXPECT_THAT(Csv(OneDrive("\xff\x1b")), HasSubstr(",\\xff\\x1b,"));
    EXPECT_THAT(Csv(OneDrive("a\tb\r\nc")), HasSubstr(",a\\tb\\r\\nc,"));
    EXPECT_THAT(Csv(OneDrive("\x7f\u009B\u202E\uFEFF")),
                HasSubstr(",\\x7f\\xc2\\x9b\\xe2\\x80\\xae\\xef\\xbb\\xbf,"));
    EXPECT_THAT(Csv(OneDrive("25 \u00B0C")), HasSubstr(",25 \u00B0C,"));
}

TEST(CsvReportTest, NegativeTemperatureStaysANumber) {
    CInventory inventory;
    inventory.physicalDrives.emplace_back().temperature = {{"-5C", -5}};
    EXPECT_THAT(Csv(inventory), HasSubstr(",-5,"));
}

}  // namespace
