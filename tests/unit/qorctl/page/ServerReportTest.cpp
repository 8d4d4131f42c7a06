#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "page/ServerReport.h"

namespace {

using qorctl::CServerReport;

using CMembers = nlohmann::json;

CMembers Document() {
    return {{"schema_version", 2},
            {"command", "storage"},
            {"result", "success"},
            {"messages", CMembers::array()},
            {"health", {{"status", "OK"}, {"findings", CMembers::array()}}},
            {"controllers", CMembers::array()},
            {"raid_groups", CMembers::array()},
            {"logical_drives", CMembers::array()},
            {"physical_drives", CMembers::array()},
            {"pcie_ssds", CMembers::array()},
            {"others", CMembers::array()}};
}

std::string ProblemOf(const CMembers& document) {
    return qorctl::ParseServerReport(document.dump()).problem;
}

std::string ProblemWith(const char* name, const CMembers& value) {
    CMembers document = Document();
    document[name] = value;
    return ProblemOf(document);
}

TEST(ServerReportTest, DocumentOfStorageIsAReport) {
    const CServerReport report = qorctl::ParseServerReport(Document().dump());
    EXPECT_EQ(report.problem, "");
    EXPECT_EQ(report.content, Document());
    EXPECT_EQ(report.json, Document().dump());
}

TEST(ServerReportTest, WhatIsNoReportSaysWhy) {
    const std::string deep(33, '[');
    const struct {
        std::string text;
        const char* problem;
    } rows[] = {
        {"", "empty"},
        {"hello", "not JSON, or not all of it"},
        {"{\"schema_version\": 2", "not JSON, or not all of it"},
        {"{\"command\": \"stor\xff\"}", "not JSON, or not all of it"},
        {deep + std::string(33, ']'), "not the JSON of qorctl storage: nested too deeply"},
        {std::string(1000000, '['), "not the JSON of qorctl storage: nested too deeply"},
        {"[]", "not the JSON of qorctl storage"},
        {"null", "not the JSON of qorctl storage"},
        {"{}", "not the JSON of qorctl storage"},
        {"{\"schema_version\": \"2\", \"command\": \"storage\"}", "not the JSON of qorctl storage"},
        {"{\"schema_version\": 2, \"command\": \"storage\"}",
         "not the JSON of qorctl storage: \"messages\" is no list of objects"},
    };
    for (const auto& row : rows) {
        const CServerReport report = qorctl::ParseServerReport(row.text);
        EXPECT_EQ(report.problem, row.problem);
        EXPECT_EQ(report.json, "") << row.problem;
    }
}

TEST(ServerReportTest, AnotherVersionOrCommandIsNamed) {
    EXPECT_EQ(ProblemWith("schema_version", 3),
              "written by a newer qorctl: its schema_version is 3, this one reads 2");
    EXPECT_EQ(ProblemWith("schema_version", 1),
              "written by an older qorctl: its schema_version is 1, this one reads 2");
    for (const std::string command : {"raid", "drive", "status", "check"}) {
        EXPECT_EQ(ProblemWith("command", command),
                  "the JSON of qorctl " + command + "; a page is made of that of qorctl storage");
    }
}

TEST(ServerReportTest, ListsAndHealthHaveToBeOfTheirKind) {
    EXPECT_EQ(ProblemWith("physical_drives", {1}),
              "not the JSON of qorctl storage: \"physical_drives\" is no list of objects");
    EXPECT_EQ(ProblemWith("pcie_ssds", nullptr),
              "not the JSON of qorctl storage: \"pcie_ssds\" is no list of objects");
    for (const CMembers& health : {CMembers(), CMembers("OK"), CMembers({{"status", "OK"}}),
                                   CMembers({{"status", "<b>"}, {"findings", CMembers::array()}}),
                                   CMembers({{"status", "OK"}, {"findings", {"a"}}})}) {
        EXPECT_EQ(ProblemWith("health", health),
                  "not the JSON of qorctl storage: it tells no health")
            << health;
    }
}

TEST(ServerReportTest, FieldIsATextOrAWholeNumber) {
    const CMembers object = {{"a", "text"}, {"b", 7}, {"c", 1.5}, {"d", nullptr}, {"e", {1}}};
    EXPECT_EQ(qorctl::FieldText(object, "a"), "text");
    EXPECT_EQ(qorctl::FieldText(object, "b"), "7");
    for (const char* name : {"c", "d", "e", "f"}) {
        EXPECT_EQ(qorctl::FieldText(object, name), "") << name;
    }
    EXPECT_EQ(qorctl::FieldText("text", "a"), "");
}

class ReportFileTest : public testing::Test {
protected:
    void SetUp() override {
        std::string folder = testing::TempDir() + "reportXXXXXX";
        ASSERT_NE(mkdtemp(folder.data()), nullptr);
        m_Folder = folder;
    }
    void TearDown() override { std::filesystem::remove_all(m_Folder); }

    std::string Put(const std::string& name, const std::string& text) const {
        std::ofstream(m_Folder / name, std::ios::binary) << text;
        return m_Folder / name;
    }

    std::filesystem::path m_Folder;
};

TEST_F(ReportFileTest, ServerIsNamedAfterItsFileAndDatedByIt) {
    const std::string path = Put("web01.json", Document().dump(2));
    const timespec times[] = {{.tv_sec = 1795789200, .tv_nsec = 0},
                              {.tv_sec = 1795789200, .tv_nsec = 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    const CServerReport report = qorctl::ReadServerReport(path);
    EXPECT_EQ(report.problem, "");
    EXPECT_EQ(report.name, "web01");
    EXPECT_EQ(report.file, path);
    EXPECT_EQ(report.time, "2026-11-27T14:20:00Z");
    EXPECT_EQ(qorctl::ReadServerReport(Put("plain", Document().dump())).name, "plain");
    EXPECT_EQ(qorctl::ReadServerReport(Put(".json", Document().dump())).name, ".json");
}

TEST_F(ReportFileTest, WhatCannotBeReadSaysWhy) {
    EXPECT_EQ(qorctl::ReadServerReport(m_Folder / "none").problem, "No such file or directory");
    EXPECT_EQ(qorctl::ReadServerReport(m_Folder).problem, "not a regular file");
    const std::string pipe = m_Folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(qorctl::ReadServerReport(pipe).problem, "not a regular file");
    EXPECT_EQ(qorctl::ReadServerReport("/dev/zero").problem, "not a regular file");
    const CServerReport bad = qorctl::ReadServerReport(Put("bad.json", "oops"));
    EXPECT_EQ(bad.problem, "not JSON, or not all of it");
    EXPECT_EQ(bad.name, "bad");
    EXPECT_NE(bad.time, "");
}

TEST_F(ReportFileTest, FileIsReadUpToItsLimit) {
    const std::string text = Document().dump();
    const std::string blanks(qorctl::MAX_REPORT_SIZE - text.size(), ' ');
    EXPECT_EQ(qorctl::ReadServerReport(Put("full.json", text + blanks)).problem, "");
    EXPECT_EQ(qorctl::ReadServerReport(Put("over.json", text + blanks + " ")).problem,
              "larger than 16 MiB");
}

}  // namespace
