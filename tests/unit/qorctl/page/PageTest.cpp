#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "page/Page.h"

namespace {

using qorctl::CPage;
using qorctl::CServerReport;
using testing::HasSubstr;
using testing::Not;

using CMembers = nlohmann::json;

// A list, also of one, which braces alone would not make.
CMembers List(std::initializer_list<CMembers> members) {
    return CMembers(CMembers::array_t(members));
}

CMembers Finding(const char* severity, const std::string& object, const std::string& message) {
    return {{"severity", severity},
            {"rule", "a-rule"},
            {"object", object},
            {"message", message},
            {"sentence", object + " is " + message + "."}};
}

CMembers Drive(const char* health, const CMembers& members = CMembers::object()) {
    CMembers drive = {{"health", {{"status", health}, {"findings", CMembers::array()}}},
                      {"sections", CMembers::object()}};
    drive.update(members);
    return drive;
}

CMembers Document(const char* status, const CMembers& findings = CMembers::array(),
                  const CMembers& drives = CMembers::array()) {
    return {{"schema_version", 2},
            {"command", "storage"},
            {"result", "success"},
            {"messages", CMembers::array()},
            {"health", {{"status", status}, {"findings", findings}}},
            {"controllers", CMembers::array({CMembers::object()})},
            {"raid_groups", CMembers::array()},
            {"logical_drives", CMembers::array()},
            {"physical_drives", drives},
            {"pcie_ssds", CMembers::array()},
            {"others", CMembers::array()}};
}

CServerReport Report(const CMembers& document, const std::string& name = "host") {
    CServerReport report = qorctl::ParseServerReport(document.dump());
    EXPECT_EQ(report.problem, "");
    report.name = name;
    report.time = "2026-11-20T10:00:00Z";
    return report;
}

CServerReport Broken(const std::string& name) {
    CServerReport report;
    report.name = name;
    report.file = name + ".json";
    report.problem = "empty";
    return report;
}

std::string TextOf(CPage& page) {
    std::string text;
    EXPECT_TRUE(page.Give([&text](std::string_view piece) {
        text += piece;
        return true;
    }));
    return text;
}

std::string PageOf(const std::vector<CServerReport>& reports) {
    CPage page;
    for (const CServerReport& report : reports) {
        page.Add(report);
    }
    return TextOf(page);
}

size_t Count(const std::string& text, const std::string& part) {
    size_t count = 0;
    for (size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += part.size()) {
        ++count;
    }
    return count;
}

// What the script reads of the server with the number.
CMembers DataOf(const std::string& page, size_t index) {
    const std::string begin =
        "<script type=\"application/json\" id=\"data-" + std::to_string(index) + "\">";
    const size_t at = page.find(begin);
    EXPECT_NE(at, std::string::npos);
    const size_t from = at + begin.size();
    return CMembers::parse(page.substr(from, page.find("</script>", from) - from));
}

TEST(PageTest, OneReportIsThePageOfItsServer) {
    const CMembers document = Document(
        "CRITICAL", List({Finding("CRITICAL", "drive 1", "FAILED")}),
        List({Drive("CRITICAL", {{"enclosure", 252}, {"slot", 3}, {"serial", "K4H1R12B"}})}));
    const std::string page = PageOf({Report(document, "web01")});
    EXPECT_THAT(page, HasSubstr("<title>web01: CRITICAL</title>"));
    EXPECT_THAT(page, HasSubstr("<body data-kind=\"server\">"));
    EXPECT_THAT(page, HasSubstr("<h1>web01</h1>"));
    EXPECT_THAT(page, HasSubstr("<strong>CRITICAL</strong>"));
    EXPECT_THAT(page, HasSubstr("1 controller, 0 logical drives, 1 drive, 0 PCIe SSDs"));
    EXPECT_THAT(page, HasSubstr("<span>drive 1 is FAILED.</span>"));
    EXPECT_THAT(page, HasSubstr("<td>252</td><td>3</td>"));
    EXPECT_THAT(page, HasSubstr("<td>K4H1R12B</td>"));
    const CMembers data = DataOf(page, 0);
    EXPECT_EQ(data["report"], document);
    EXPECT_EQ(data["name"], "web01");
    EXPECT_EQ(data["time"], "2026-11-20T10:00:00Z");
}

TEST(PageTest, TextIsTheSameEachTime) {
    CPage page;
    page.Add(Report(Document("OK")));
    const std::string text = TextOf(page);
    EXPECT_EQ(TextOf(page), text);
}

TEST(PageTest, PieceThatIsNotTakenEndsThePage) {
    CPage page;
    page.Add(Report(Document("OK"), "a"));
    page.Add(Broken("b"));
    size_t pieces = 0;
    EXPECT_TRUE(page.Give([&pieces](std::string_view) { return ++pieces > 0; }));
    for (size_t last = 1; last <= pieces; ++last) {
        size_t taken = 0;
        EXPECT_FALSE(page.Give([&](std::string_view) { return ++taken < last; }));
        EXPECT_EQ(taken, last);
    }
}

TEST(PageTest, WorstOfEachObjectIsTold) {
    const std::string page = PageOf({Report(Document(
        "CRITICAL", {Finding("CRITICAL", "drive 1", "FAILED"), Finding("WARNING", "drive 1", "hot"),
                     Finding("WARNING", "drive 2", "hot"), Finding("UNKNOWN", "", "a"),
                     Finding("UNKNOWN", "", "b")}))});
    EXPECT_THAT(page, HasSubstr("drive 1 is FAILED."));
    EXPECT_THAT(page, Not(HasSubstr("<span>drive 1 is hot.")));
    EXPECT_THAT(page, HasSubstr("<span>drive 2 is hot."));
    EXPECT_THAT(page, HasSubstr("<span> is a."));
    EXPECT_THAT(page, HasSubstr("<span> is b."));
}

TEST(PageTest, NoteIsToldWhereNothingElseSaysWhyNothingIsKnown) {
    CMembers document = Document("UNKNOWN");
    document["messages"] = List({{{"severity", "info"}, {"code", "c"}, {"text", "nothing here"}}});
    EXPECT_THAT(PageOf({Report(document)}), HasSubstr("<span>nothing here</span>"));
    document["health"]["status"] = "OK";
    EXPECT_THAT(PageOf({Report(document)}), Not(HasSubstr("<span>nothing here</span>")));
}

TEST(PageTest, ServersStandByTheirSeverity) {
    CMembers silent = Document("UNKNOWN");
    silent["result"] = "failure";
    silent["controllers"] = CMembers::array();
    silent["messages"] = {{{"severity", "error"}, {"code", "c"}, {"text", "no tool"}}};
    const std::string page = PageOf({Report(Document("OK"), "e"), Report(Document("WARNING"), "d"),
                                     Report(Document("UNKNOWN"), "c"), Report(silent, "b"),
                                     Broken("a"), Report(Document("CRITICAL"), "f")});
    EXPECT_THAT(page, HasSubstr("<title>5 of 6 servers are not well</title>"));
    EXPECT_THAT(page, HasSubstr("<body data-kind=\"fleet\">"));
    size_t at = 0;
    for (const char* row : {"f</a>", "a</a>", "b</a>", "c</a>", "d</a>", "e</a>"}) {
        at = page.find(row, at);
        ASSERT_NE(at, std::string::npos) << row;
    }
    EXPECT_THAT(page, HasSubstr("<strong>2</strong> <span>NO ANSWER</span>"));
    EXPECT_THAT(page, HasSubstr("<td class=\"what\">a.json: empty</td>"));
    EXPECT_THAT(page, HasSubstr("<td class=\"what\">no tool</td>"));
    EXPECT_EQ(DataOf(page, 4)["report"], nullptr);
    EXPECT_EQ(DataOf(page, 4)["problem"], "empty");
    EXPECT_EQ(DataOf(page, 5)["report"]["health"]["status"], "CRITICAL");
}

TEST(PageTest, OneBrokenFileIsAListOfOne) {
    const std::string page = PageOf({Broken("a")});
    EXPECT_THAT(page, HasSubstr("<title>1 of 1 server is not well</title>"));
    EXPECT_THAT(page, HasSubstr("a.json: empty"));
}

TEST(PageTest, EachDriveOfAServerIsAStroke) {
    const CMembers drives = {Drive("OK"), Drive("CRITICAL"), Drive("OK"), Drive("WARNING"),
                             Drive("UNKNOWN")};
    const std::string page =
        PageOf({Report(Document("CRITICAL", CMembers::array(), drives)), Broken("a")});
    EXPECT_THAT(page, HasSubstr("<path class=\"is-ok\" d=\"M2 7v5M10 7v5\"/>"));
    EXPECT_THAT(page, HasSubstr("<path class=\"is-critical\" d=\"M6 0v12\"/>"));
    EXPECT_THAT(page, HasSubstr("<path class=\"is-warning\" d=\"M14 4v8\"/>"));
    EXPECT_THAT(page, HasSubstr("<path class=\"is-unknown\" d=\"M18 4v8\"/>"));
}

// Whatever stands in a report, the elements of the page are the same, and the script reads what was
// written.
TEST(PageTest, TextsOfAReportAreNoMarkup) {
    const auto documentWith = [](const std::string& text) {
        const CMembers drive = Drive("CRITICAL", {{"serial", text}, {"status_detail", text}});
        CMembers document =
            Document("CRITICAL", List({Finding("CRITICAL", text, text)}), List({drive}));
        document["logical_drives"] = List({{{"name", text}, {"health", text}}});
        document["pcie_ssds"] = List({{{"product", text}}});
        document["messages"] = List({{{"severity", "error"}, {"text", text}, {"remedy", text}}});
        return document;
    };
    const std::string plain = PageOf({Report(documentWith("x"), "x"), Broken("x")});
    const std::string alone = PageOf({Report(documentWith("x"), "x")});
    for (const std::string& text :
         {std::string("<script>alert(1)</script>"), std::string("</script><img src=x onerror=a()>"),
          std::string("\" onclick=\"a()"), std::string("' & &lt; <!-- data --> -->"),
          std::string("<!-- plain -->"), std::string("{{}} */ ]]>"), std::string("a\0b", 3),
          std::string("\xe2\x80\xae right to left \xe2\x80\xa8"), std::string(10000, 'x')}) {
        const std::string fleet = PageOf({Report(documentWith(text), text), Broken(text)});
        EXPECT_EQ(Count(fleet, "<"), Count(plain, "<")) << text;
        EXPECT_EQ(DataOf(fleet, 0)["report"], documentWith(text)) << text;
        EXPECT_EQ(DataOf(fleet, 1)["name"], text);
        const std::string server = PageOf({Report(documentWith(text), text)});
        EXPECT_EQ(Count(server, "<"), Count(alone, "<")) << text;
        EXPECT_EQ(DataOf(server, 0)["name"], text);
    }
}

TEST(PageTest, NameThatIsNoUtf8IsShownAndReadable) {
    const std::string page = PageOf({Broken("a\xff"), Broken("b")});
    EXPECT_THAT(page, HasSubstr("a\\xff</a>"));
    EXPECT_EQ(DataOf(page, 0)["name"], "a\xEF\xBF\xBD");
}

// A wrong kind of value is as good as none.
TEST(PageTest, MembersOfAnotherKindAreLeftOut) {
    for (const CMembers& odd : {CMembers(), CMembers(true), CMembers(1.5), CMembers({1}),
                                CMembers({{"a", 1}}), CMembers("text")}) {
        CMembers document = Document("CRITICAL", {{{"severity", odd}, {"object", odd}}},
                                     {{{"health", odd}, {"slot", odd}, {"serial", odd}}});
        document["health"]["findings"][0]["physical_drive"] = odd;
        document["controllers"] = List({{{"battery", odd}, {"number", odd}}});
        document["messages"] = List({{{"severity", odd}, {"text", odd}}});
        EXPECT_EQ(DataOf(PageOf({Report(document)}), 0)["report"], document);
        EXPECT_EQ(DataOf(PageOf({Report(document), Broken("a")}), 0)["report"], document);
    }
}

TEST(PageTest, NothingIsAskedForFromElsewhere) {
    const std::string page = PageOf({Report(Document("OK"))});
    EXPECT_THAT(page, HasSubstr("content=\"default-src 'none'; style-src 'sha256-"));
    for (const char* part : {" src=", "url(", "@import", "href=\"http", "<link", "style=\""}) {
        EXPECT_THAT(page, Not(HasSubstr(part)));
    }
}

TEST(PageTest, NoMarkOfTheTemplateIsLeft) {
    const std::string page = PageOf({Report(Document("OK"))});
    for (const char* part : {"<!-- title", "<!-- kind", "<!-- plain", "<!-- data", "_HASH",
                             "/* page.css", "/* scripts", "\nimport ", "\nexport "}) {
        EXPECT_THAT(page, Not(HasSubstr(part)));
    }
}

}  // namespace
