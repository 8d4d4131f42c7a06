// The manual pages say what the programs do: each of their examples is run.
#include <gmock/gmock.h>

#include <regex>

#include "InstallFixture.h"

namespace {

namespace fs = std::filesystem;
using qortest::CEnd;
using qortest::CStrings;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

class ManualTest : public qortest::CInstallFixture {
protected:
    std::string Page(const std::string& name) const {
        return qortest::ReadFile(Share() / "man" / ("man" + name.substr(name.size() - 1)) / name);
    }

    // The lines between ".EX" and ".EE", as the reader sees them.
    CStrings Examples(const std::string& name) const {
        CStrings examples;
        bool inside = false;
        for (const std::string& line : qortest::Lines(Page(name))) {
            if (line == ".EX" || line == ".EE") {
                inside = line == ".EX";
            } else if (inside) {
                examples.push_back(std::regex_replace(line, std::regex("\\\\-"), "-"));
            }
        }
        EXPECT_FALSE(examples.empty());
        return examples;
    }

    // As the reader sees its hyphens.
    static std::string Plain(const std::string& page) {
        return std::regex_replace(page, std::regex("\\\\-"), "-");
    }

    static std::string SectionOf(const std::string& page, const std::string& title) {
        const size_t begin = page.find("\n.SS " + title + "\n");
        EXPECT_NE(begin, std::string::npos) << title;
        return page.substr(begin, page.find("\n.S", begin + 1) - begin);
    }

    static size_t Count(const std::string& text, const std::string& part) {
        size_t count = 0;
        for (size_t i = text.find(part); i != std::string::npos; i = text.find(part, i + 1)) {
            ++count;
        }
        return count;
    }

    CStrings Subcommands(const std::string& program) const {
        CStrings names;
        bool inside = false;
        for (const std::string& line : qortest::Lines(Shell(program + " --help").out)) {
            std::smatch match;
            if (line == "Subcommands:") {
                inside = true;
            } else if (inside &&
                       std::regex_match(line, match, std::regex("  ([a-z][a-z-]*)( .*)?"))) {
                names.push_back(match[1]);
            } else if (line.empty()) {
                inside = false;
            }
        }
        EXPECT_GE(names.size(), 1U);
        return names;
    }
};

TEST_F(ManualTest, ExamplesOfThePagesThatNeedAServerAreRunOnOne) {
    for (const char* page : {"qorctl.1", "qor.7"}) {
        for (const std::string& example : Examples(page)) {
            const CEnd end = Shell("qorsim run --host small -- sh -c '" + example + "'");
            EXPECT_EQ(end.status, 0) << example << "\n" << end.out << end.err;
        }
    }
}

TEST_F(ManualTest, ExamplesOfTheSimulatorAreRun) {
    for (const std::string& example : Examples("qorsim.1")) {
        const CEnd end = Shell(example);
        EXPECT_EQ(end.status, 0) << example << "\n" << end.out << end.err;
    }
}

TEST_F(ManualTest, EachSubcommandHasItsSection) {
    for (const std::string program : {"qorctl", "qorsim"}) {
        const std::string page = Page(program + ".1");
        for (const std::string& name : Subcommands(program)) {
            EXPECT_THAT(page, HasSubstr(".SS " + program + " " + name + "\n"));
        }
        EXPECT_THAT(page, Not(ContainsRegex("@[A-Za-z_]+@")));
        EXPECT_THAT(page, HasSubstr("qor " INSTALL_VERSION));
    }
}

TEST_F(ManualTest, PagesSayWhatTheProgramsSayOfTheirCommands) {
    const fs::path sources = INSTALL_SOURCE_DIR "/packaging/man";
    for (const char* page : {"qorctl.1.in", "qorsim.1.in"}) {
        fs::copy(sources / page, Folder());
    }
    const CEnd end = Shell("'" + (sources / "renew-pages").string() + "' '" + Bin().string() +
                           "' '" + Folder().string() + "'");
    EXPECT_EQ(end.status, 0) << end.err;
    for (const char* page : {"qorctl.1.in", "qorsim.1.in"}) {
        EXPECT_EQ(qortest::ReadFile(Folder() / page), qortest::ReadFile(sources / page))
            << "packaging/man/renew-pages writes it";
    }
}

TEST_F(ManualTest, PageHasEveryOptionOfEverySubcommandOnce) {
    for (const std::string program : {"qorctl", "qorsim"}) {
        const std::string page = Plain(Page(program + ".1"));
        for (const std::string& name : Subcommands(program)) {
            const std::string section = SectionOf(page, program + " " + name);
            for (const std::string& line :
                 qortest::Lines(Shell(program + " " + name + " --help").out)) {
                std::smatch option;
                if (std::regex_search(line, option, std::regex("^  (?:-h,)?(--[a-z-]+)"))) {
                    EXPECT_THAT(section, HasSubstr(option[1])) << name;
                    EXPECT_THAT(page, ContainsRegex("\n\\.B (-h,)?" + std::string(option[1])))
                        << name;
                }
            }
        }
        EXPECT_EQ(Count(page, "\n.B --plugin PATH\n"), program == "qorctl" ? 1U : 0U);
        EXPECT_EQ(Count(page, "\n.B -h,--help\n"), 1U);
    }
}

TEST_F(ManualTest, PagesHaveTheSectionsOfAManual) {
    for (const char* page : {"qorctl.1", "qorsim.1"}) {
        size_t place = 0;
        for (const std::string title :
             {"NAME", "SYNOPSIS", "DESCRIPTION", "COMMANDS", "OPTIONS", "EXIT STATUS",
              "ENVIRONMENT", "FILES", "EXAMPLES", "SEE ALSO"}) {
            const size_t found = Page(page).find("\n.SH " + title + "\n", place);
            EXPECT_NE(found, std::string::npos) << page << ": " << title;
            place = found == std::string::npos ? place : found;
        }
    }
}

TEST_F(ManualTest, HelpStandsInThePageWithHyphensThatCanBeCopied) {
    EXPECT_THAT(Page("qorctl.1"), HasSubstr("\\-\\-plugin PATH"));
    EXPECT_THAT(Page("qorctl.1"), HasSubstr("\n.B qorctl exec [OPTIONS] COMMAND...\n"));
}

}  // namespace
