#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "format/Json.h"
#include "format/JsonDocument.h"

namespace {

using qorctl::CAnswer;
using qorctl::CInventory;
using qorctl::CJson;

CAnswer Answer(const CInventory& inventory) {
    CAnswer answer;
    answer.outcome = qorctl::EOutcome::ANSWERED;
    answer.inventory = inventory;
    return answer;
}

CJson Parsed(const CAnswer& answer) {
    return CJson::parse(FormatJson(answer, {}, "raid"));
}

CJson Parsed(const CInventory& inventory) {
    return Parsed(Answer(inventory));
}

TEST(JsonReportTest, EmptyInventoryHasEveryList) {
    EXPECT_EQ(
        qorctl::FormatJson(Answer({}), {.status = qorctl::EHealth::OK, .health = {}}, "storage"),
        "{\n"
        "  \"schema_version\": 2,\n"
        "  \"command\": \"storage\",\n"
        "  \"result\": \"success\",\n"
        "  \"messages\": [],\n"
        "  \"health\": {\n"
        "    \"status\": \"OK\",\n"
        "    \"findings\": []\n"
        "  },\n"
        "  \"controllers\": [],\n"
        "  \"raid_groups\": [],\n"
        "  \"logical_drives\": [],\n"
        "  \"physical_drives\": [],\n"
        "  \"pcie_ssds\": [],\n"
        "  \"others\": []\n"
        "}\n");
}

TEST(JsonReportTest, FailureHasCodesDetailAndMessages) {
    CAnswer answer;
    answer.outcome = qorctl::EOutcome::FAILED;
    answer.texts = {.errorCode = "01", .noticeCode = "01", .detail = "krzcli -v"};
    answer.toolVersion = "7.0";
    answer.messages = {{qorctl::ESeverity::ERROR, "error-01", "broken", "mend it"},
                       {qorctl::ESeverity::WARNING, "notice-01", "old", ""}};
    const CJson json = Parsed(answer);
    EXPECT_EQ(json["result"], "failure");
    EXPECT_EQ(json["error_code"], "01");
    EXPECT_EQ(json["notice_code"], "01");
    EXPECT_EQ(json["error_detail"], "krzcli -v");
    EXPECT_EQ(json["tool_version"], "7.0");
    EXPECT_EQ(json["messages"][0].dump(),
              R"({"severity":"error","code":"error-01","text":"broken","remedy":"mend it"})");
    EXPECT_EQ(json["messages"][1].dump(),
              R"({"severity":"warning","code":"notice-01","text":"old"})");
}

TEST(JsonReportTest, DetailThatSaysNoneIsAbsent) {
    CAnswer answer = Answer({});
    answer.texts.detail = "none";
    EXPECT_FALSE(Parsed(answer).contains("error_detail"));
}

TEST(JsonReportTest, NumbersStandBesideTheirTexts) {
    CInventory inventory;
    qorctl::CPhysicalDrive& drive = inventory.physicalDrives.emplace_back();
    drive.temperature = {{"31C", 31}};
    drive.capacity = {{"1 box", std::nullopt}};
    drive.mediaErrors = {{"2", 2}};
    const CJson json = Parsed(inventory)["physical_drives"][0];
    EXPECT_EQ(
        json.dump(),
        R"({"health":{"status":"OK","findings":[]},"temperature":"31C","temperature_celsius":31,"media_error_count":2,)"
        R"("capacity":"1 box","sections":{}})");
}

TEST(JsonReportTest, FindingsStandForTheServerAndForEachObject) {
    CInventory inventory;
    qorctl::CController& controller = inventory.controllers.emplace_back();
    controller.number = 0;
    const qorctl::CVerdict verdict = {
        .status = qorctl::EHealth::CRITICAL,
        .health = {.findings = {{qorctl::EHealth::CRITICAL, "a-rule", "controller 0", "bad"},
                                {qorctl::EHealth::WARNING, "battery-status", "controller 0 battery",
                                 "Low"}},
                   .notReported = {},
                   .notes = {}}};
    const CJson json = CJson::parse(qorctl::FormatJson(Answer(inventory), verdict, "raid"));
    EXPECT_EQ(json["health"]["status"], "CRITICAL");
    EXPECT_EQ(json["health"]["findings"][0].dump(),
              R"({"severity":"CRITICAL","rule":"a-rule","object":"controller 0","message":"bad",)"
              R"("sentence":"Controller 0: bad."})");
    const CJson& own = json["controllers"][0]["health"];
    EXPECT_EQ(own["status"], "CRITICAL");
    EXPECT_EQ(own["findings"][1].dump(),
              R"({"severity":"WARNING","rule":"battery-status","message":"Low","sentence":)"
              R"("Controller 0 battery is Low: the controller may write without its cache; )"
              R"(check the battery."})");
}

TEST(JsonReportTest, SectionsHoldTextsPlaceholdersAndGroups) {
    CInventory inventory;
    qorctl::CController& controller = inventory.controllers.emplace_back();
    controller.sections = {
        {"General Information",
         {{"Product", "X", false, {}},
          {"Serial", std::nullopt, false, {}},
          {"Port", std::nullopt, true, {{"No.", "0"}}},
          {"Speed", "", false, {}},
          {"Port", std::nullopt, true, {{"No.", "1"}, {"No.", "2"}, {"State", std::nullopt}}}}}};
    EXPECT_EQ(
        Parsed(inventory)["controllers"][0].dump(),
        R"j({"health":{"status":"OK","findings":[]},"sections":{"General Information":{"Product":"X","Serial":null,)j"
        R"j("Port":[{"No.":"0"},{"No.":"1","No. (2)":"2","State":null}],"Speed":""}}})j");
}

TEST(JsonReportTest, NamesThatRepeatAreNumbered) {
    CInventory inventory;
    inventory.others = {{0,
                         "R",
                         "",
                         {{"S",
                           {{"K (2)", "0", false, {}},
                            {"K", "1", false, {}},
                            {"K", "2", false, {}},
                            {"K", std::nullopt, true, {}}}},
                          {"S", {}}}}};
    EXPECT_EQ(Parsed(inventory)["others"][0]["sections"].dump(),
              R"j({"S":{"K (2)":"0","K":"1","K (3)":"2","K (4)":[{}]},"S (2)":{}})j");
}

CInventory WithKeys(const std::vector<std::string>& keys) {
    CInventory inventory;
    qorctl::CSection& section = inventory.others.emplace_back().sections.emplace_back();
    for (const std::string& key : keys) {
        section.entries.push_back({key, "", false, {}});
    }
    return inventory;
}

// Parsed without regard to the order, which looks names up fast.
nlohmann::json KeysOf(const CInventory& inventory) {
    return nlohmann::json::parse(
        qorctl::FormatJson(Answer(inventory), {}, "raid"))["others"][0]["sections"][""];
}

TEST(JsonReportTest, NameWhoseNumbersAreAllTakenGetsTheNextOne) {
    std::vector<std::string> keys;
    for (int number = 2; number <= 60'001; ++number) {
        keys.push_back("A (" + std::to_string(number) + ")");
    }
    keys.insert(keys.end(), {"A", "A"});
    const nlohmann::json json = KeysOf(WithKeys(keys));
    EXPECT_EQ(json.size(), keys.size());
    EXPECT_TRUE(json.contains("A (60002)"));
}

TEST(JsonReportTest, EqualNamesInGreatNumbersAreNumbered) {
    const nlohmann::json json = KeysOf(WithKeys(std::vector<std::string>(60'001, "A")));
    EXPECT_EQ(json.size(), 60'001U);
    EXPECT_TRUE(json.contains("A (60001)"));
}

TEST(JsonReportTest, NamesThatDifferInBytesThatAreNotUtf8StayApart) {
    const std::string text =
        qorctl::FormatJson(Answer(WithKeys({"A\xff", "A\xfe", "B\xe2\x82"})), {}, "raid");
    EXPECT_NE(text.find("\"A\uFFFD\": "), std::string::npos);
    EXPECT_NE(text.find("\"A\uFFFD (2)\": "), std::string::npos);
    EXPECT_NE(text.find("\"B\uFFFD\": "), std::string::npos);
}

TEST(JsonReportTest, WhatATerminalObeysOrHidesIsEscaped) {
    CInventory inventory;
    inventory.physicalDrives.emplace_back().product =
        "\x7f\u009B1m\u202E\uFEFF\U000E0041\u00B0\U0001F600";
    const std::string text = qorctl::FormatJson(Answer(inventory), {}, "raid");
    EXPECT_NE(text.find("\"\\u007f\\u009b1m\\u202e\\ufeff\\udb40\\udc41\u00B0\U0001F600\""),
              std::string::npos)
        << text;
    EXPECT_EQ(CJson::parse(text)["physical_drives"][0]["product"],
              *inventory.physicalDrives[0].product);
}

TEST(JsonReportTest, BytesThatAreNotUtf8BecomeReplacementCharacters) {
    CInventory inventory;
    inventory.physicalDrives.emplace_back().product = "a\xff\xc3(\x1b\"";
    EXPECT_NE(qorctl::FormatJson(Answer(inventory), {}, "raid")
                  .find("\"product\": \"a\uFFFD\uFFFD(\\u001b\\\"\""),
              std::string::npos);
}

}  // namespace
