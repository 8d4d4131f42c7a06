// Every command that README, CONTRIBUTING and the pages of docs show is run, and where a page shows
// what comes of it, that comes. PageBlocks.h says what is a command. A block whose kind is unknown
// is a failure, so that none escapes; what cannot be run stands in INSTEAD with the reason.
//
// The commands of a page are run in one folder that looks like the top of the source tree, the
// built programs in the path, on the simulated server "small": those that need a real server find
// one, and those that simulate one do it inside.
#include <gmock/gmock.h>

#include <regex>
#include <set>

#include "PageBlocks.h"
#include "SimFixture.h"

namespace qortest {
namespace {

namespace fs = std::filesystem;

struct CInstead {
    const char* page;
    const char* command;
    const char* instead;  // what is run; "" for nothing
    const char* reason;
};

constexpr CInstead INSTEAD[] = {
    {"README.md", "git clone <this repository> qor && cd qor", "", "needs the repository's place"},
    {"README.md", "scripts/demo", "qorsim run --host failed-drive -- qorctl status",
     "builds the tree; this is what it runs at its end"},
    {"README.md",
     "qorsim run --host lifecycle --start-at 8 -- qorctl watch --interval 5 --count 10 | cat",
     "qorsim run --host lifecycle --start-at 8 -- qorctl watch --interval 1 --count 2 | cat",
     "takes 45 seconds"},
    {"README.md", "scripts/fleet 20", "", "builds the tree and stays; tests/system/fleet runs it"},
    {"docs/embedding.md",
     "cmake -G Ninja -S examples/installed -B build/host -DCMAKE_PREFIX_PATH=/usr/local && cmake "
     "--build build/host",
     "cmake --install build/release --prefix \"$PWD/prefix\" >/dev/null && cmake -G Ninja -S "
     "examples/installed -B build/host -DCMAKE_PREFIX_PATH=\"$PWD/prefix\" "
     "-DCMAKE_CXX_COMPILER=g++ >/dev/null && cmake --build build/host >/dev/null",
     "the machine's own folders are left alone"},
    {"docs/fleet.md", "scripts/fleet 20", "",
     "builds the tree and stays; tests/system/fleet runs it"},
    {"docs/fleet.md", "scripts/fleet --measure 100 1000 3000", "", "takes half an hour"},
    {"docs/fuzzing.md", "scripts/fuzz                every target for 20 s", "",
     "builds with another compiler and takes minutes"},
    {"docs/fuzzing.md", "scripts/fuzz 600 xml        one target for ten minutes", "",
     "takes ten minutes"},
    {"docs/fuzzing.md",
     "scripts/fuzz --hours 8      every target in turn, on all processors, for a night", "",
     "takes a night; tests/fuzz/night-test runs a short one"},
    {"docs/host-integration.md", "cmake --preset release && cmake --build --preset release", "",
     "builds the tree; it is built"},
    {"docs/host-integration.md",
     "tests/abi/check-symbols build/release/lib/libqor_MngSrv_QorLib.so "
     "build/release/lib/libqor_ComLib.so",
     "", "true of what is shipped, not of an instrumented build; scripts/check runs it"},
    {"docs/install.md", "cmake --preset release && cmake --build --preset release", "",
     "builds the tree; it is built"},
    {"docs/install.md", "cmake --install build/release --prefix /usr/local",
     "cmake --install build/release --prefix \"$PWD/prefix\" >/dev/null",
     "the machine's own folders are left alone"},
    {"docs/install.md", "cd build/release && cpack -G DEB", "",
     "takes long, and the packages' own test does it"},
    {"docs/monitoring.md", "visudo -c -f /usr/share/qor/monitoring/qorctl.sudoers",
     "/usr/sbin/visudo -c -f data/monitoring/qorctl.sudoers", "the file is not installed"},
    {"docs/monitoring.md",
     "install -m 0440 /usr/share/qor/monitoring/qorctl.sudoers /etc/sudoers.d/qorctl",
     "install -m 0440 data/monitoring/qorctl.sudoers qorctl",
     "the machine's own folders are left alone"},
    {"docs/monitoring.md", "install -d -m 0700 /var/lib/qor", "install -d -m 0700 qor",
     "the machine's own folders are left alone"},
    {"docs/reliability.md", "scripts/accept", "", "writes into the source tree"},
    {"docs/simulator.md",
     "qorsim run --host lifecycle -- watch -n 5 \"qorctl raid | grep -E 'Status|Progress'\"",
     "qorsim run --host lifecycle -- sh -c \"qorctl raid | grep -E 'Status|Progress' >/dev/null\"",
     "never ends"},
};

// Blocks without a word on their fence that begin like commands and are none, by their first lines.
struct CText {
    const char* page;
    const char* line;
};

constexpr CText TEXTS[] = {
    {"CONTRIBUTING.md",
     "src/plugin cli getters orchestration presence xml svp   the plug-in: one class, one .h/.cpp "
     "pair"},
    {"docs/architecture.md", "management server"},
    {"docs/configuration.md", "/etc/opt/tarmica/qor/comlib.ini"},
    {"docs/formats/item-tree.md", "list    = { root }"},
    {"docs/formats/report-grammar.md", "section    = title LF { key/value LF } LF"},
    {"docs/formats/xml-document.md",
     "document  = \"<dispdata>\" component { item } \"</dispdata>\""},
    {"docs/simulator-faults.md",
     "qorsim run --host HOST --fault FAULT [--fault FAULT]... -- COMMAND"},
    {"docs/simulator-faults.md", "qorsim record [--host HOST] [--redact] DIRECTORY -- COMMAND"},
    {"docs/simulator-faults.md", "qorsim replay DIRECTORY -- COMMAND"},
    {"docs/simulator.md",
     "qorsim: my-server.json: /controllers/0/drives/3/model: \"driveModels\" has no model "
     "\"sas-900\""},
    {"docs/trace.md", "QOR_TRACE=stderr:31              everything to standard error"},
    {"docs/trace.md", "/var/opt/tarmica/qor/log/trace.log {"},
};

// Commands that show a failure; all others end with 0.
struct CStatus {
    const char* command;
    int status;
};

constexpr CStatus STATUSES[] = {
    {"qorsim run --host failed-drive -- qorctl check", 2},
    {"qorsim run --host small --fault vanish#2 -- qorctl raid", 1},
    {"qorsim run --host small --fault 'error=No RAID controller is found.@-ctrlinfo' -- qorctl "
     "raid",
     1},
    {"qorsim run --host small --fault truncate=60@-v --fault hang-term@-v -- timeout -k 1 1 "
     "/opt/tarmica/krz/cli/krzcli -v",
     137},
};

fs::path Source(const std::string& name) {
    return fs::path(DOCS_SOURCE_DIR) / name;
}

CStrings Pages() {
    CStrings pages = {"README.md", "CONTRIBUTING.md"};
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(Source("docs"))) {
        if (entry.path().extension() == ".md") {
            pages.push_back(fs::relative(entry.path(), DOCS_SOURCE_DIR));
        }
    }
    std::sort(pages.begin(), pages.end());
    return pages;
}

const CInstead* FindInstead(const std::string& page, const std::string& command) {
    const auto found = std::find_if(std::begin(INSTEAD), std::end(INSTEAD), [&](const auto& one) {
        return page == one.page && command == one.command;
    });
    return found == std::end(INSTEAD) ? nullptr : found;
}

bool IsListedText(const std::string& page, const CBlock& block) {
    return std::any_of(std::begin(TEXTS), std::end(TEXTS), [&](const CText& text) {
        return page == text.page && block.kind.empty() && block.lines.front() == text.line;
    });
}

int ExpectedStatus(const std::string& command) {
    const auto found = std::find_if(std::begin(STATUSES), std::end(STATUSES),
                                    [&](const CStatus& one) { return command == one.command; });
    return found == std::end(STATUSES) ? 0 : found->status;
}

// The commands of a page with their outputs; a block of the kind "output" belongs to the last one.
std::vector<CCommand> CommandsOfPage(const std::string& page) {
    std::vector<CCommand> all;
    for (const CBlock& block : BlocksOf(ReadFile(Source(page)))) {
        const EBlock kind = IsListedText(page, block) ? EBlock::DATA : KindOf(block);
        EXPECT_NE(kind, EBlock::UNKNOWN) << page << ": a block of the kind " << block.kind;
        if (kind == EBlock::COMMANDS || kind == EBlock::CONSOLE) {
            const std::vector<CCommand> commands = CommandsOf(block);
            EXPECT_FALSE(commands.empty()) << page << ": " << Joined(block.lines, "\n");
            all.insert(all.end(), commands.begin(), commands.end());
        } else if (kind == EBlock::OUTPUT && !all.empty()) {
            all.back().output = block.lines;
        }
    }
    return all;
}

std::string TestName(const testing::TestParamInfo<std::string>& info) {
    return std::regex_replace(info.param, std::regex("[^A-Za-z0-9]+"), "_");
}

class CCommandsTest : public CSimFixture, public testing::WithParamInterface<std::string> {
protected:
    void SetUp() override {
        CSimFixture::SetUp();
        m_Top = Folder() / "top";
        fs::create_directories(m_Top / "build");
        fs::create_directories(Folder() / "tmp");
        for (const fs::directory_entry& entry : fs::directory_iterator(DOCS_SOURCE_DIR)) {
            if (entry.path().filename() != "build") {
                fs::create_symlink(entry.path(), m_Top / entry.path().filename());
            }
        }
        fs::create_symlink(DOCS_BUILD_DIR, m_Top / "build" / "release");
        // The compiler that the libraries were built with, so that they fit what it builds.
        WriteFile(Folder() / "bin" / "g++",
                  "#!/bin/sh\nexec " DOCS_COMPILER " " DOCS_COMPILER_FLAGS " \"$@\"\n");
        fs::permissions(Folder() / "bin" / "g++", fs::perms(0755));
        WriteNamedFiles();
    }

    // A block that begins with "// NAME.cpp" is that file.
    void WriteNamedFiles() const {
        for (const CBlock& block : BlocksOf(ReadFile(Source(GetParam())))) {
            std::smatch match;
            if (!block.lines.empty() &&
                std::regex_match(block.lines.front(), match, std::regex("// (\\S+\\.cpp)"))) {
                WriteFile(m_Top / match[1].str(), Joined(block.lines, "\n") + "\n");
            }
        }
    }

    // One shell runs them all, so that "cd", "export" and "$?" work as for a reader.
    CEnd RunAll(const std::vector<CCommand>& commands) const {
        std::string script = "cd " + m_Top.string() + "\n";
        for (size_t i = 0; i < commands.size(); ++i) {
            const std::string number = (Folder() / std::to_string(i)).string();
            script += "{ " + Runnable(commands[i].text) + "\n} >" + number + ".out 2>&1\n" +
                      "status=$?; echo $status >" + number + ".status; (exit $status)\n";
        }
        WriteFile(Folder() / "script", script);
        return RunProgram(
            {QORSIM_PROGRAM, "run", "--host", "small", "--", "env",
             "PATH=" + (Folder() / "bin").string() + ":" DOCS_BUILD_DIR "/bin:/usr/bin:/bin",
             "LC_ALL=C.UTF-8", "QOR_TRACE=none", "bash", Folder() / "script"});
    }

    void Check(size_t number, const CCommand& command) const {
        const std::string name = (Folder() / std::to_string(number)).string();
        ASSERT_TRUE(fs::exists(name + ".status")) << command.text << ": was not run";
        const std::string output = ReadFile(name + ".out");
        EXPECT_EQ(ReadFile(name + ".status"), std::to_string(ExpectedStatus(command.text)) + "\n")
            << command.text << "\n"
            << output;
        const CInstead* instead = FindInstead(GetParam(), command.text);
        const bool isShown = command.output && (instead == nullptr || command.text == DEMO);
        EXPECT_TRUE(!isShown || Shows(*command.output, Lines(output)))
            << command.text << "\nis shown as\n"
            << Joined(command.output.value_or(CStrings()), "\n") << "\nand printed\n"
            << output;
    }

private:
    static constexpr const char* DEMO = "scripts/demo";

    std::string Runnable(const std::string& command) const {
        const CInstead* instead = FindInstead(GetParam(), command);
        if (instead != nullptr) {
            return *instead->instead == '\0' ? "true" : instead->instead;
        }
        return std::regex_replace(command, std::regex("( |:)/tmp/"),
                                  "$1" + (Folder() / "tmp").string() + "/");
    }

    fs::path m_Top;
};

TEST_P(CCommandsTest, CommandsOfThePageDoWhatItShows) {
    const std::vector<CCommand> commands = CommandsOfPage(GetParam());
    if (commands.empty()) {
        return;
    }
    const CEnd end = RunAll(commands);
    EXPECT_EQ(end.err, "");
    for (size_t i = 0; i < commands.size(); ++i) {
        Check(i, commands[i]);
    }
}

INSTANTIATE_TEST_SUITE_P(Page, CCommandsTest, testing::ValuesIn(Pages()), TestName);

class CCommandListsTest : public CSimFixture {};

// A line that matches nothing is out of date.
TEST_F(CCommandListsTest, EachExceptionIsOfACommandOnAPage) {
    std::set<std::pair<std::string, std::string>> commands;
    std::set<std::string> texts;
    std::set<std::pair<std::string, std::string>> firstLines;
    for (const std::string& page : Pages()) {
        for (const CCommand& command : CommandsOfPage(page)) {
            commands.emplace(page, command.text);
            texts.insert(command.text);
        }
        for (const CBlock& block : BlocksOf(ReadFile(Source(page)))) {
            firstLines.emplace(page, block.lines.empty() ? "" : block.lines.front());
        }
    }
    for (const CInstead& one : INSTEAD) {
        EXPECT_EQ(commands.count({one.page, one.command}), 1U) << one.page << ": " << one.command;
    }
    for (const CText& one : TEXTS) {
        EXPECT_EQ(firstLines.count({one.page, one.line}), 1U) << one.page << ": " << one.line;
    }
    for (const CStatus& one : STATUSES) {
        EXPECT_EQ(texts.count(one.command), 1U) << one.command;
    }
}

// In the middle of a sentence or a table; a verb alone is its name, and one with a word in capitals
// a pattern. What they print
// and how they end depends on what the page talks of, but they are understood.
TEST_F(CCommandListsTest, CommandsInSentencesAreUnderstood) {
    std::set<std::string> commands;
    for (const std::string& page : Pages()) {
        for (const std::string& text : InlineTexts(ReadFile(Source(page)))) {
            static const std::regex whole("qor(ctl|sim) [a-z]+ .*");
            static const std::regex pattern(
                "(.*[^A-Za-z0-9_])?[A-Z]{2,}([^a-z].*)?|.*(\\.\\.\\.|…).*");
            if (std::regex_match(text, whole) && !std::regex_match(text, pattern)) {
                commands.insert(text);
            }
        }
    }
    EXPECT_GE(commands.size(), 5U);
    for (const std::string& command : commands) {
        WriteFile(Folder() / "script",
                  "cd " + Folder().string() + "\n" + command + " </dev/null\n");
        const CEnd end = RunProgram({QORSIM_PROGRAM, "run", "--host", "small", "--", "env",
                                     "PATH=" DOCS_BUILD_DIR "/bin:/usr/bin:/bin", "timeout", "5",
                                     "sh", Folder() / "script"});
        EXPECT_THAT(end.err, testing::Not(testing::HasSubstr("Run with --help"))) << command;
        EXPECT_NE(end.status, 127) << command;
    }
}

TEST(PageBlocks, ElisionStandsForAnyLines) {
    EXPECT_TRUE(Shows({"a", "…", "d"}, {"a", "b", "c", "d"}));
    EXPECT_TRUE(Shows({"a", "...", "b"}, {"a", "b"}));
    EXPECT_TRUE(Shows({"ab…"}, {"abc"}));
    EXPECT_TRUE(Shows({"2026-11-20T10:00:00Z x"}, {"2027-01-01T23:59:59Z x"}));
    EXPECT_FALSE(Shows({"a"}, {"a", "b"}));
    EXPECT_FALSE(Shows({"a", "…", "c"}, {"a", "b"}));
}

TEST(PageBlocks, KindsAreTold) {
    EXPECT_EQ(KindOf({"", {"qorctl raid"}}), EBlock::COMMANDS);
    EXPECT_EQ(KindOf({"", {"# why", "QOR_TRACE=none qorctl raid"}}), EBlock::COMMANDS);
    EXPECT_EQ(KindOf({"", {"$ qorctl raid", "x"}}), EBlock::CONSOLE);
    EXPECT_EQ(KindOf({"", {"{ \"a\": 1 }"}}), EBlock::DATA);
    EXPECT_EQ(KindOf({"shell-session", {"$ qorctl raid"}}), EBlock::UNKNOWN);
}

TEST(PageBlocks, CommandsHaveTheirOutputs) {
    const std::vector<CCommand> commands =
        CommandsOf({"console", {"$ a \\", "    -b", "x", "y", "$ c"}});
    ASSERT_EQ(commands.size(), 2U);
    EXPECT_EQ(commands[0].text, "a -b");
    EXPECT_THAT(*commands[0].output, testing::ElementsAre("x", "y"));
    EXPECT_EQ(commands[1].text, "c");
    EXPECT_FALSE(commands[1].output);
}

}  // namespace
}  // namespace qortest
