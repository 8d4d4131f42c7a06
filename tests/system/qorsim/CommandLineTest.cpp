// What qorsim says of a command line that it does not understand: which word, why, what is right.
#include <gmock/gmock.h>

#include <algorithm>

#include "SimFixture.h"

namespace qortest {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class CCommandLineTest : public CSimFixture {
protected:
    static void ExpectWrong(const CStrings& words, const std::string& said,
                            const std::string& command) {
        const CEnd end = Qorsim(words);
        EXPECT_GT(end.status, 100) << said;
        EXPECT_EQ(end.out, "") << said;
        EXPECT_EQ(end.err,
                  "qorsim: " + said + "\n\"qorsim " + command + "--help\" tells what is right.\n");
    }
};

TEST_F(CCommandLineTest, WrongCommandIsNamedWithTheNearestOneOrAll) {
    ExpectWrong({"instal"}, R"(there is no command "instal"; did you mean "install"?)", "");
    ExpectWrong({"replya", "x"}, R"(there is no command "replya"; did you mean "replay"?)", "");
    for (const char* word : {"foo", "", "degraded"}) {
        ExpectWrong({word},
                    "there is no command \"" + std::string(word) +
                        "\"; the commands are run, list, show, validate, new, install, record, "
                        "replay, help",
                    "");
    }
    ExpectWrong({},
                "a command is missing; the commands are run, list, show, validate, new, install, "
                "record, replay, help",
                "");
}

TEST_F(CCommandLineTest, WrongOptionIsNamed) {
    ExpectWrong({"run", "--hots", "small", "--", "true"},
                R"(run has no option "--hots"; did you mean "--host"?)", "run ");
    ExpectWrong({"list", "--host", "small"},
                R"(list has no option "--host", but run, install, record have)", "list ");
    ExpectWrong({"--host", "small", "install", "x"},
                R"("--host" stands behind the command that it is for: qorsim install --host)", "");
    ExpectWrong({"list", "--bogus"}, R"(list has no option "--bogus"; its options are -h, --help)",
                "list ");
}

TEST_F(CCommandLineTest, CommandsOptionWithoutTheMarkIsSentBehindIt) {
    ExpectWrong({"run", "--host", "small", "ls", "-l"},
                R"(run has no option "-l"; what belongs to the command stands behind --)", "run ");
}

TEST_F(CCommandLineTest, ValueIsNamed) {
    ExpectWrong({"run", "--host"}, "--host: its value is missing: HOST", "run ");
    ExpectWrong({"new", "--controllers", ""},
                R"(--controllers: must be a number from 0 to 127, is "")", "new ");
    ExpectWrong({"show", "small", "--start-at", "0x10"},
                "--start-at: must be a number from 0 to 4294967295, is 0x10", "show ");
    ExpectWrong({"run", "--host", "small", "--host", "large", "true"}, "--host is given twice",
                "run ");
    ExpectWrong({"record", "--redact=maybe", "x", "true"}, "--redact takes no value", "record ");
}

TEST_F(CCommandLineTest, ZerosInFrontChangeNoNumber) {
    EXPECT_EQ(Qorsim({"show", "lifecycle", "--start-at", "010"}).out,
              Qorsim({"show", "lifecycle", "--start-at", "10"}).out);
    EXPECT_EQ(Qorsim({"show", "lifecycle", "--start-at", "010"}).status, 0);
}

TEST_F(CCommandLineTest, WordsAreCounted) {
    ExpectWrong({"show", "small", "large"},
                R"("large" is one word too many for: qorsim show [OPTIONS] profile)", "show ");
    ExpectWrong({"show"},
                "profile is missing: The host: the name of a shipped one, or the path of a profile",
                "show ");
    ExpectWrong({"record", "x"}, "command is missing: The command and its arguments, behind --",
                "record ");
    ExpectWrong({"run", "--", "true"},
                "--host HOST is missing: The server: the name of a shipped host, or the path of a "
                "host profile",
                "run ");
}

TEST_F(CCommandLineTest, LongAndOddWordsFillNoScreen) {
    const std::string word(10'000, 'x');
    for (const CStrings& words : {CStrings{word}, CStrings{"list", word},
                                  CStrings{"list", "--" + word}, CStrings{"new", "--seed", word},
                                  CStrings{"run", "--host", "small", "--start-at", word}}) {
        const CEnd end = Qorsim(words);
        EXPECT_GT(end.status, 100);
        EXPECT_THAT(end.err, HasSubstr("...\""));
        EXPECT_LT(end.err.size(), 300U);
        EXPECT_EQ(std::count(end.err.begin(), end.err.end(), '\n'), 2);
    }
    EXPECT_THAT(Qorsim({"\x1b[1m\n\xff"}).err,
                StartsWith(R"(qorsim: there is no command "\x1b[1m\n\xff"; the)"));
}

TEST_F(CCommandLineTest, VersionIsTold) {
    for (const char* word : {"--version", "-V"}) {
        const CEnd end = Qorsim({word});
        EXPECT_EQ(end.status, 0);
        EXPECT_EQ(end.out, "qorsim " QORSIM_VERSION "\n");
        EXPECT_EQ(end.err, "");
    }
}

TEST_F(CCommandLineTest, HelpIsACommandToo) {
    EXPECT_EQ(Qorsim({"help"}).out, Qorsim({"--help"}).out);
    EXPECT_EQ(Qorsim({"help", "run"}).out, Qorsim({"run", "--help"}).out);
    EXPECT_THAT(Qorsim({"help", "run"}).out, HasSubstr("Usage: qorsim run"));
    EXPECT_EQ(Qorsim({"help"}).status, 0);
    ExpectWrong({"help", "rn"}, R"(there is no command "rn"; did you mean "run"?)", "");
}

}  // namespace
}  // namespace qortest
