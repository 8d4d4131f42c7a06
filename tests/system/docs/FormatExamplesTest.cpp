// The worked examples of docs/formats: what the pages say is what the plug-in does.
//
// An example is a fenced block, "```KIND" or "```KIND ARGUMENTS", with KIND
//
//     report    what the tool prints when it is called with ARGUMENTS
//     items     the items that come of it, as ItemText() writes them
//     xml       their document, broken into indented lines
//     hex       their service-processor form, broken into lines
//     json      what `qorctl ARGUMENTS --format json` makes of the items
//     decoded   that form as `qorctl svp --decode` shows it
#include <algorithm>
#include <filesystem>
#include <regex>
#include <sstream>
#include <string>

#include "ItemText.h"
#include "LoadedPluginFixture.h"
#include "Process.h"

namespace {

using qortest::CAnswer;
using qortest::CLoadedPlugin;
using qortest::CStandInTool;

constexpr const char* FENCE = "```";
constexpr const char* DRIVE_COMMAND = "-pdinfo -pd[252:0] -a0";

// The example of a page that is marked so; a test failure when there is none.
std::string Example(const std::string& page, const std::string& mark) {
    std::istringstream stream(qortest::ReadFile(std::string(FORMATS_DIR) + "/" + page));
    std::string line;
    while (std::getline(stream, line) && line != FENCE + mark) {
    }
    EXPECT_TRUE(stream) << page << " has no example " << mark;
    std::string text;
    while (std::getline(stream, line) && line != FENCE) {
        text += line + '\n';
    }
    return text;
}

// Without line feeds and what the lines are indented by.
std::string Joined(const std::string& text) {
    std::istringstream stream(text);
    std::string joined;
    for (std::string line; std::getline(stream, line);) {
        joined += line.substr(std::min(line.find_first_not_of(' '), line.size()));
    }
    return joined;
}

class FormatExamplesTest : public qortest::CLoadedPluginFixture {
protected:
    static void Play(CStandInTool& tool, const std::string& arguments, const std::string& report) {
        tool.Play(arguments, {.out = Example("report-grammar.md", "report " + report)});
    }

    static void PlayServer(CStandInTool& tool) {
        Play(tool, "-v", "-v");
        Play(tool, "-ctrlinfo -aAll", "-ctrlinfo -a0");
        Play(tool, "-ctrlinfo -a0", "-ctrlinfo -a0");
        Play(tool, "-ldpdinfo -a0", "-ldpdinfo -a0");
        Play(tool, "-ldpdinfo -a0", "-ldpdinfo -a0");
        Play(tool, "-pdinfo -nosmart -a0", "-pdinfo -nosmart -a0");
    }
};

TEST_F(FormatExamplesTest, ReportsBecomeTheItems) {
    CStandInTool tool;
    PlayServer(tool);
    const CLoadedPlugin plugin;
    CAnswer answer = GetRAIDInfo(plugin);
    EXPECT_EQ(answer.result, 1);
    EXPECT_EQ(qortest::ItemText(answer.items), Example("item-tree.md", "items"));
    plugin->FreeItemList(&answer.items);
}

TEST_F(FormatExamplesTest, ReportOnOneDriveBecomesItsItems) {
    CStandInTool tool;
    Play(tool, "-ldpdinfo -a0", "-ldpdinfo -a0");
    Play(tool, DRIVE_COMMAND, DRIVE_COMMAND);
    const CLoadedPlugin plugin;
    CAnswer answer;
    answer.result = plugin->GetPDInfo(0, 252, 0, &answer.items, &answer.errorCode,
                                      &answer.noticeCode, &answer.errorDetail);
    EXPECT_EQ(answer.result, 1);
    EXPECT_EQ(qortest::ItemText(answer.items),
              Example("report-grammar.md", std::string("items ") + DRIVE_COMMAND));
    plugin->FreeItemList(&answer.items);
}

TEST_F(FormatExamplesTest, ItemsBecomeTheDocument) {
    CStandInTool tool;
    PlayServer(tool);
    const CLoadedPlugin plugin;
    CAnswer answer = GetRAIDInfo(plugin);
    char* document = nullptr;
    ASSERT_EQ(plugin->XmlSerialize(0, "raid", &answer.items, &document), 0U);
    EXPECT_EQ(document, Joined(Example("xml-document.md", "xml")));
    plugin->FreeItemList(&answer.items);
}

TEST_F(FormatExamplesTest, ItemsBecomeTheForm) {
    CStandInTool tool;
    PlayServer(tool);
    const CLoadedPlugin plugin;
    std::string digits;
    CAnswer answer;
    EXPECT_EQ(plugin->GetCtrlPDInfoBinaryString(&digits, &answer.errorCode, &answer.noticeCode), 1);
    EXPECT_EQ(digits, Joined(Example("service-processor-form.md", "hex")));
}

TEST_F(FormatExamplesTest, ItemsBecomeJson) {
    CStandInTool tool;
    PlayServer(tool);
    const qortest::CEnd outcome =
        qortest::RunCommand({.program = QORCTL_PROGRAM,
                             .arguments = {"raid", "--format", "json"},
                             .environment = qortest::CEnvironment{
                                 {"PATH", "/usr/bin:/bin"}, {"QOR_PLUGIN", QOR_PLUGIN_PATH}}});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.out, Example("qorctl-json.md", "json raid"));
}

TEST_F(FormatExamplesTest, FormIsDecoded) {
    const std::string digits = std::string(qortest::INSTALL_DIR) + "/form.txt";
    qortest::WriteFile(digits, Example("service-processor-form.md", "hex"));
    const qortest::CEnd outcome =
        qortest::RunCommand({.program = QORCTL_PROGRAM,
                             .arguments = {"svp", "--decode", digits},
                             .environment = qortest::CEnvironment{{"LC_ALL", "C.UTF-8"}}});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.out, Example("service-processor-form.md", "decoded"));
}

// "schema_version": NUMBER, wherever it is written, and what the schema allows.
TEST(JsonOnPages, HasTheVersionOfTheSchema) {
    const std::string schema = qortest::ReadFile(SOURCE_DIR "/data/qorctl.schema.json");
    std::smatch allowed;
    ASSERT_TRUE(std::regex_search(schema, allowed,
                                  std::regex(R"("schema_version": \{ "const": (\d+) \})")));
    size_t found = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(DOCS_DIR)) {
        if (entry.path().extension() != ".md") {
            continue;
        }
        const std::string page = qortest::ReadFile(entry.path());
        const std::regex version(R"("schema_version": ?(\d+))");
        for (std::sregex_iterator match(page.begin(), page.end(), version), end; match != end;
             ++match, ++found) {
            EXPECT_EQ((*match)[1].str(), allowed[1].str()) << entry.path();
        }
    }
    EXPECT_GT(found, 3U);
}

}  // namespace
