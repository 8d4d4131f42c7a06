// `qorctl page`: on every shipped host, of files, and where it goes. What a browser makes of it is
// not tested here.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "ServerFixture.h"

namespace {

using qortest::CEnd;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

using CMembers = nlohmann::json;

// What stands between two texts.
std::string Between(const std::string& text, const std::string& begin, const std::string& end) {
    const size_t at = text.find(begin);
    EXPECT_NE(at, std::string::npos) << begin;
    const size_t from = at + begin.size();
    return text.substr(from, text.find(end, from) - from);
}

CMembers DataOf(const std::string& page, size_t index) {
    return CMembers::parse(Between(
        page, "<script type=\"application/json\" id=\"data-" + std::to_string(index) + "\">",
        "</script>"));
}

class PageCommandTest : public qortest::CServerFixture {
protected:
    // The page that a successful command wrote.
    static std::string Page(const std::string& host, const std::string& options = "") {
        const CEnd end = Shell(host, "qorctl page " + options);
        EXPECT_EQ(end.status, 0) << end.err;
        EXPECT_THAT(end.out, StartsWith("<!doctype html>\n"));
        EXPECT_THAT(end.out, EndsWith("</html>\n"));
        return end.out;
    }

    // As a Content-Security-Policy names it.
    std::string HashOf(const std::string& text) const {
        const std::string file = Folder() / "hashed";
        qortest::WriteFile(file, text);
        const CEnd end = qortest::RunCommand(
            {.program = PYTHON,
             .arguments = {"-c",
                           "import base64, hashlib, sys; print('sha256-' + base64.b64encode("
                           "hashlib.sha256(sys.stdin.buffer.read()).digest()).decode(), end='')"},
             .input = file});
        EXPECT_EQ(end.status, 0) << end.err;
        return end.out;
    }

    std::string Put(const std::string& name, const std::string& text) const {
        qortest::WriteFile(Folder() / name, text);
        return " " + (Folder() / name).string();
    }
};

TEST_F(PageCommandTest, EveryHostIsAPageWithItsReport) {
    for (const std::string& host : qortest::ShippedHosts()) {
        const CMembers report = CMembers::parse(Shell(host, "qorctl storage --format json").out);
        const std::string page = Page(host);
        EXPECT_EQ(DataOf(page, 0)["report"], report) << host;
        const std::string status = report["health"]["status"];
        EXPECT_THAT(page, HasSubstr("<strong>" + status + "</strong>")) << host;
        EXPECT_THAT(page, HasSubstr(": " + status + "</title>")) << host;
    }
}

TEST_F(PageCommandTest, BrowserIsAllowedThisScriptAndTheseStylesOnly) {
    const std::string page = Page("small");
    const std::string policy =
        Between(page, "<meta http-equiv=\"Content-Security-Policy\" content=\"", "\"");
    EXPECT_EQ(policy, "default-src 'none'; style-src '" +
                          HashOf(Between(page, "<style>", "</style>")) + "'; script-src '" +
                          HashOf(Between(page, "<script type=\"module\">", "</script>")) +
                          "'; base-uri 'none'; form-action 'none'");
}

TEST_F(PageCommandTest, ServerWithoutScriptsHasVerdictProblemsAndTables) {
    const std::string page = Page("failed-drive");
    const std::string plain = Between(page, "<main id=\"page\">", "</main>");
    EXPECT_THAT(plain, HasSubstr("<strong>CRITICAL</strong>"));
    EXPECT_THAT(plain, HasSubstr("1 controller, 3 logical drives, 8 drives, 0 PCIe SSDs"));
    EXPECT_THAT(plain, HasSubstr("Controller 0 drive 252:3 (PD3, serial K4H1R12B, KESTREL "
                                 "K2000NX0253 1.819TB) is FAILED: it is out of service; replace "
                                 "it."));
    for (const char* table : {"Controllers", "Logical drives", "Drives"}) {
        EXPECT_THAT(plain, HasSubstr(std::string("<h2>") + table + "</h2>"));
    }
    EXPECT_THAT(plain, Not(HasSubstr("<h2>PCIe SSDs</h2>")));
}

TEST_F(PageCommandTest, SmartIsAskedForOnDemand) {
    EXPECT_FALSE(DataOf(Page("sas"), 0)["report"]["physical_drives"][0].contains("smart"));
    const CMembers report = DataOf(Page("sas", "--smart"), 0)["report"];
    for (const CMembers& drive : report["physical_drives"]) {
        EXPECT_EQ(drive["smart"]["attributes"].size(), 6U);
    }
    const CMembers one = CMembers::parse(Shell("sas", "qorctl drive 0 252 0 --format json").out);
    EXPECT_EQ(report["physical_drives"][0]["smart"], one["physical_drives"][0]["smart"]);
}

TEST_F(PageCommandTest, FailedRequestIsAPageThatSaysSo) {
    const CEnd end = Qorsim({"run", "--host", "small", "--fault", "error=No such luck@-ctrlinfo",
                             "--", QORCTL_PROGRAM, "page"});
    EXPECT_EQ(end.status, 0);
    EXPECT_THAT(end.err, HasSubstr("the request failed"));
    EXPECT_THAT(end.out, HasSubstr("<strong>UNKNOWN</strong>"));
    EXPECT_THAT(end.out, HasSubstr("No such luck"));
    EXPECT_EQ(DataOf(end.out, 0)["report"]["result"], "failure");
}

TEST_F(PageCommandTest, BrokenFilesHideNoServer) {
    const std::string folder = Folder();
    const std::string good = Shell("failed-drive", "qorctl storage --format json").out;
    const std::string well = Shell("sas", "qorctl storage --format json").out;
    std::string newer = good;
    newer.replace(newer.find("\"schema_version\": 2"), 19, "\"schema_version\": 3");
    const CEnd end =
        Shell("small", "qorctl page " + Put("good.json", good) + Put("broken.json", "{\"a\": ") +
                           Put("newer.json", newer) +
                           Put("raid.json", Shell("sas", "qorctl raid --format json").out) +
                           " /dev/zero" + Put("well.json", well) + " " + folder + "/missing.json");
    EXPECT_EQ(end.status, 0);
    const std::string& page = end.out;
    EXPECT_THAT(page, HasSubstr("<title>6 of 7 servers are not well</title>"));
    for (const std::string& line :
         {folder + "/broken.json: not JSON, or not all of it",
          folder + "/newer.json: written by a newer qorctl: its schema_version is 3, this one "
                   "reads 2",
          folder + "/raid.json: the JSON of qorctl raid; a page is made of that of qorctl storage",
          std::string("/dev/zero: not a regular file"),
          folder + "/missing.json: No such file or directory"}) {
        EXPECT_THAT(page, HasSubstr("<td class=\"what\">" + line + "</td>"));
        EXPECT_THAT(end.err, HasSubstr("qorctl: " + line + "\n"));
    }
    EXPECT_THAT(page, HasSubstr("controller 0 logical drive LD1: Degraded, and 7 more"));
    EXPECT_EQ(DataOf(page, 0)["report"], CMembers::parse(good));
    EXPECT_EQ(DataOf(page, 0)["name"], "good");
    EXPECT_EQ(DataOf(page, 5)["report"], CMembers::parse(well));
}

TEST_F(PageCommandTest, OneFileIsThePageOfItsServer) {
    const std::string file = Put("web01.json", Shell("sas", "qorctl storage --format json").out);
    EXPECT_THAT(Page("small", file), HasSubstr("<title>web01: OK</title>"));
}

// A list of many has room for twice their JSON, which is indented.
TEST_F(PageCommandTest, FleetIsSmallerThanTwiceItsJson) {
    const std::string json = Shell("small", "qorctl storage --format json").out;
    const std::string file = Put("web.json", json);
    std::string files;
    for (int i = 0; i < 200; ++i) {
        files += file;
    }
    EXPECT_LT(Page("small", files).size(), 2 * 200 * json.size());
}

TEST_F(PageCommandTest, FileIsReplacedWholeOrAsItWas) {
    const std::string file = Folder() / "server.html";
    const CEnd end =
        Shell("small", "qorctl page --output " + file + "; ls -A " + Folder().string());
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_EQ(end.out.find(".qorctl-"), std::string::npos);
    EXPECT_THAT(qortest::ReadFile(file), EndsWith("</html>\n"));
    const CEnd missing = Shell("small", "qorctl page --output /nowhere/server.html");
    EXPECT_EQ(missing.status, 1);
    EXPECT_THAT(missing.err, HasSubstr("/nowhere/server.html"));
    EXPECT_EQ(Shell("small", "qorctl page > /dev/full").status, 1);
}

TEST_F(PageCommandTest, OptionsOfThisServerAreRefusedWithFiles) {
    for (const char* option : {"--smart", "--timeout 5", "--plugin /a"}) {
        const CEnd end = Shell("small", std::string("qorctl page a.json ") + option);
        EXPECT_GT(end.status, 100) << option;
        EXPECT_EQ(end.out, "");
        EXPECT_THAT(end.err, HasSubstr("are for the page of this server, not of files"));
    }
}

}  // namespace
