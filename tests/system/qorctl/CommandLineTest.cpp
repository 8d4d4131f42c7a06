// What qorctl says of a command line that it does not understand: which word, why, what is right.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "QorctlFixture.h"

namespace {

using qortest::CEnd;
using qortest::CStrings;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

struct CWrongLine {
    CStrings words;
    std::string said;  // the first line, behind "qorctl: "
    std::string hint = "qorctl --help";
};

class CommandLineTest : public qortest::CQorctlFixture {
protected:
    void ExpectWrong(const CWrongLine& line) const {
        const CEnd outcome = Run(line.words);
        const std::string shown = testing::PrintToString(line.words).substr(0, 200);
        EXPECT_GT(outcome.status, 100) << shown;
        EXPECT_LT(outcome.status, 128) << shown;
        EXPECT_EQ(outcome.out, "") << shown;
        EXPECT_EQ(outcome.err,
                  "qorctl: " + line.said + "\n\"" + line.hint + "\" tells what is right.\n")
            << shown;
    }
};

TEST_F(CommandLineTest, HelpThatCannotBeWrittenIsAFailure) {
    for (const CStrings& words :
         {CStrings{"--help"}, CStrings{"check", "--help"}, CStrings{"help", "raid"},
          CStrings{"--version"}, CStrings{"raid", "--version"}}) {
        const CEnd outcome = qortest::RunCommand({.program = QORCTL_PROGRAM,
                                                  .arguments = words,
                                                  .environment = m_Environment,
                                                  .output = "/dev/full"});
        EXPECT_NE(outcome.status, 0) << testing::PrintToString(words);
    }
}

TEST_F(CommandLineTest, WrongCommandIsNamedWithTheNearestOne) {
    ExpectWrong({{"storge"}, R"(there is no command "storge"; did you mean "storage"?)"});
    ExpectWrong({{"dirve", "0"}, R"(there is no command "dirve"; did you mean "drive"?)"});
    ExpectWrong({{"stor"}, R"(there is no command "stor"; did you mean "storage"?)"});
    ExpectWrong({{"RAID"}, R"(there is no command "RAID"; did you mean "raid"?)"});
}

TEST_F(CommandLineTest, CommandThatIsNearNothingListsAll) {
    for (const std::string word : {"foo", "", "a word", "disks"}) {
        const CEnd outcome = Run({word});
        EXPECT_GT(outcome.status, 100);
        EXPECT_THAT(outcome.err,
                    StartsWith("qorctl: there is no command \"" + word + "\"; the commands are "));
        for (const char* name : {"raid", "storage", "drive", "xml", "svp", "doctor", "exec",
                                 "version", "check", "watch", "metrics", "page", "help"}) {
            EXPECT_THAT(outcome.err, HasSubstr(name));
        }
    }
}

TEST_F(CommandLineTest, WrongOptionIsNamedWithTheNearestOne) {
    ExpectWrong({{"raid", "--fromat", "json"},
                 R"(raid has no option "--fromat"; did you mean "--format"?)",
                 "qorctl raid --help"});
    ExpectWrong({{"raid", "-format", "json"},
                 R"(raid has no option "-format"; did you mean "--format"?)",
                 "qorctl raid --help"});
    ExpectWrong({{"raid", "--form=json"},
                 R"(raid has no option "--form"; did you mean "--format"?)",
                 "qorctl raid --help"});
    ExpectWrong({{"--fromat", "json", "raid"},
                 R"(there is no option "--fromat"; did you mean "--format"?)"});
    ExpectWrong({{"--versoin"}, R"(there is no option "--versoin"; did you mean "--version"?)"});
}

TEST_F(CommandLineTest, OptionThatIsNearNothingListsAll) {
    const CEnd outcome = Run({"svp", "--bogus"});
    EXPECT_GT(outcome.status, 100);
    EXPECT_EQ(outcome.err,
              "qorctl: svp has no option \"--bogus\"; its options are -h, --help, --plugin, "
              "--timeout, --decode\n"
              "\"qorctl svp --help\" tells what is right.\n");
    EXPECT_THAT(Run({"svp", "-x"}).err, StartsWith("qorctl: svp has no option \"-x\"; its "));
}

TEST_F(CommandLineTest, OptionOfAnotherCommandNamesThatOne) {
    ExpectWrong({{"raid", "--perfdata", "all"},
                 R"(raid has no option "--perfdata", but check has)",
                 "qorctl raid --help"});
    const CEnd outcome = Run({"svp", "--format", "json"});
    EXPECT_THAT(outcome.err,
                HasSubstr("svp has no option \"--format\", but status, raid, storage, "));
}

TEST_F(CommandLineTest, OptionInFrontOfItsCommandIsSentBehindIt) {
    ExpectWrong({{"--format", "json", "raid"},
                 R"("--format" stands behind the command that it is for: qorctl raid --format)"});
    ExpectWrong({{"--format=json"},
                 R"("--format" stands behind the command that it is for: qorctl status --format)"});
}

TEST_F(CommandLineTest, MissingValueIsNamed) {
    ExpectWrong(
        {{"raid", "--timeout"}, "--timeout: its value is missing: SECONDS", "qorctl raid --help"});
    ExpectWrong({{"watch", "--format"},
                 "--format: its value is missing: text|json",
                 "qorctl watch --help"});
    ExpectWrong({{"raid", "--format="},
                 "--format: its value is missing: status|tree|table|json|csv|xml",
                 "qorctl raid --help"});
}

TEST_F(CommandLineTest, WrongValueIsRefusedWithTheRightOnes) {
    ExpectWrong({{"raid", "--format", "yaml"},
                 R"(--format: "yaml" is none of: status, tree, table, json, csv, xml)",
                 "qorctl raid --help"});
    ExpectWrong({{"watch", "--format", "xml"},
                 R"(--format: "xml" is none of: text, json)",
                 "qorctl watch --help"});
    for (const char* word : {"0", "1", "", "TREE", "tre"}) {
        for (const char* command : {"doctor", "version"}) {
            ExpectWrong({{command, "--format", word},
                         "--format: \"" + std::string(word) + "\" is none of: tree, json",
                         "qorctl " + std::string(command) + " --help"});
        }
    }
    ExpectWrong({{"xml", "--of", "foo"},
                 R"(--of: "foo" is none of: raid, storage, drive CONTROLLER ENCLOSURE SLOT)",
                 "qorctl xml --help"});
}

TEST_F(CommandLineTest, WrongNumberIsRefusedWithTheLimits) {
    for (const std::string word : {"x", "0", "-5", "86401", "1.5", "99999999999999999999"}) {
        ExpectWrong({{"raid", "--timeout", word},
                     "--timeout: must be a number from 1 to 86400, is " + word,
                     "qorctl raid --help"});
    }
    ExpectWrong({{"raid", "--timeout", ""},
                 "--timeout: must be a number from 1 to 86400, is \"\"",
                 "qorctl raid --help"});
}

TEST_F(CommandLineTest, OptionThatIsGivenTwiceIsNamed) {
    ExpectWrong({{"raid", "--timeout", "1", "--timeout", "2"},
                 "--timeout is given twice",
                 "qorctl raid --help"});
}

TEST_F(CommandLineTest, WordTooManyIsNamedWithTheUsage) {
    ExpectWrong({{"raid", "more"},
                 R"("more" is one word too many for: qorctl raid [OPTIONS])",
                 "qorctl raid --help"});
    ExpectWrong({{"raid", "--", "-x"},
                 R"("-x" is one word too many for: qorctl raid [OPTIONS])",
                 "qorctl raid --help"});
    ExpectWrong({{"drive", "0", "1", "2", "3"},
                 R"("3" is one word too many for: qorctl drive [OPTIONS] DRIVE)",
                 "qorctl drive --help"});
    ExpectWrong({{"svp", "--decode", "a", "b"},
                 R"("b" is one word too many for: qorctl svp [OPTIONS])",
                 "qorctl svp --help"});
}

TEST_F(CommandLineTest, MissingWordIsNamedWithWhatItIs) {
    ExpectWrong(
        {{"exec"}, "COMMAND is missing: The tool's command line, behind --", "qorctl exec --help"});
    EXPECT_THAT(Run({"drive"}).err, StartsWith("qorctl: DRIVE is missing: CONTROLLER ENCLOSURE "));
}

TEST_F(CommandLineTest, ToolsOptionWithoutTheMarkIsSentBehindIt) {
    ExpectWrong({{"exec", "krzcli", "-v"},
                 R"(exec has no option "-v"; what belongs to the command stands behind --)",
                 "qorctl exec --help"});
}

TEST_F(CommandLineTest, WhatATerminalObeysIsShownAndWhatIsLongIsCut) {
    EXPECT_THAT(Run({"\x1b[31m"}).err, StartsWith(R"(qorctl: there is no command "\x1b[31m"; )"));
    EXPECT_THAT(Run({"a\nb"}).err, StartsWith(R"(qorctl: there is no command "a\nb"; )"));
    EXPECT_THAT(Run({"\xff"}).err, StartsWith(R"(qorctl: there is no command "\xff"; )"));
    EXPECT_THAT(Run({"raid", "--format", "\xff\r"}).err,
                StartsWith(R"(qorctl: --format: "\xff\r" is none of: )"));
    const std::string word(10'000, 'x');
    for (const CStrings& words :
         {CStrings{word}, CStrings{"raid", "--" + word}, CStrings{"raid", word},
          CStrings{"raid", "--format", word}, CStrings{"raid", "--timeout", word},
          CStrings{"drive", "0", word, "1"}, CStrings{"xml", "--of", word},
          CStrings{"help", word}}) {
        const CEnd outcome = Run(words);
        EXPECT_GT(outcome.status, 100);
        EXPECT_THAT(outcome.err, HasSubstr(std::string(50, 'x') + "...\"")) << words[0];
        EXPECT_LT(outcome.err.size(), 400U);
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 2);
    }
}

TEST_F(CommandLineTest, CheckSaysItToTheMonitoringServer) {
    for (const auto& [words, said] :
         {std::pair(CStrings{"check", "--formt", "json"},
                    R"(check has no option "--formt", did you mean "--format"?)"),
          std::pair(CStrings{"check", "--format", "1"}, R"(--format: "1" is none of: text, json)"),
          std::pair(CStrings{"check", "--no-hardware", "2"},
                    R"(--no-hardware: "2" is none of: ok, warning, critical, unknown)")}) {
        const CEnd outcome = Run(words);
        EXPECT_EQ(outcome.status, 3);
        EXPECT_EQ(outcome.out, "RAID UNKNOWN - the command line was not understood: " +
                                   std::string(said) + "\n");
    }
}

TEST_F(CommandLineTest, VersionHasAShortName) {
    EXPECT_EQ(Run({"-V"}).out, "qorctl " QORCTL_VERSION "\n");
    EXPECT_EQ(Run({"--version"}).out, "qorctl " QORCTL_VERSION "\n");
    EXPECT_EQ(Run({"-V"}).status, 0);
}

TEST_F(CommandLineTest, HelpIsACommandToo) {
    for (const auto& [words, same] :
         {std::pair(CStrings{"help"}, CStrings{"--help"}),
          std::pair(CStrings{"help", "raid"}, CStrings{"raid", "--help"}),
          std::pair(CStrings{"help", "help"}, CStrings{"help", "--help"})}) {
        const CEnd outcome = Run(words);
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.err, "");
        EXPECT_NE(outcome.out, "");
        EXPECT_EQ(outcome.out, Run(same).out);
    }
    ExpectWrong({{"help", "storge"}, R"(there is no command "storge"; did you mean "storage"?)"});
}

}  // namespace
