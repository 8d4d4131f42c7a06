// `qorctl raid` as a process, with a plug-in that answers as the test tells it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "QorctlFixture.h"

namespace fs = std::filesystem;

namespace {

using qortest::CEnd;
using qortest::WriteFile;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

using qortest::CRecord;

constexpr const char* LIBRARY_NAME = "libqor_MngSrv_QorLib.so";
constexpr const char* WHOLE_LIFE = "create\nGetRAIDInfo 0\nFreeItemList 0\ndelete\nunload\n";
constexpr const char* NOTHING_TO_REPORT =
    "qorctl: nothing to report: no RAID controller with something to show was found on this "
    "server\n";

const std::vector<CRecord> CONTROLLER = {
    {"item", "", "Controller Information", "", "TRUE"},
    {"item", "Controller Information", "### General Information ###", "", "TRUE"},
    {"item", "### General Information ###", "Product Name", "X", "TRUE"},
    {"item", "### General Information ###", "Temperature", "", "FALSE"},
};

class RaidCommandTest : public qortest::CQorctlFixture {
protected:
    CEnd RunRaid(const std::vector<CRecord>& answer) const {
        Answer(answer);
        return Run({"raid", "--plugin", STAND_IN_PLUGIN});
    }

    CEnd RunRaidOnTerminal() const {
        Answer(CONTROLLER);
        return qortest::RunCommand({.program = QORCTL_PROGRAM,
                                    .arguments = {"raid", "--plugin", STAND_IN_PLUGIN},
                                    .environment = m_Environment,
                                    .terminal = true});
    }

    // A copy of the program in a folder "bin", so that what lies beside it is the test's choice.
    CEnd RunCopy() const {
        const fs::path program = m_Folder / "prefix/bin/qorctl";
        fs::create_directories(program.parent_path());
        fs::copy_file(QORCTL_PROGRAM, program);
        return qortest::RunCommand(
            {.program = program, .arguments = {"raid"}, .environment = m_Environment});
    }

    void PutPlugin(const fs::path& directory, const char* plugin = STAND_IN_PLUGIN) const {
        fs::create_directories(directory);
        fs::copy_file(plugin, directory / LIBRARY_NAME);
    }
};

// What is shown

TEST_F(RaidCommandTest, ItemsAreShownAsATreeOnStandardOutputOnly) {
    const CEnd outcome = RunRaid(CONTROLLER);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out,
              "Controller Information\n"
              "└─ [General Information]\n"
              "   ├─ Product Name : X\n"
              "   └─ Temperature  : (not reported)\n");
    EXPECT_EQ(outcome.err, "");
}

TEST_F(RaidCommandTest, LocaleWithoutUtf8GivesPlainAscii) {
    m_Environment["LC_ALL"] = "C";
    EXPECT_EQ(RunRaid(CONTROLLER).out,
              "Controller Information\n"
              "`- [General Information]\n"
              "   |- Product Name : X\n"
              "   `- Temperature  : (not reported)\n");
}

TEST_F(RaidCommandTest, LocaleThatIsNotInstalledGivesPlainAscii) {
    m_Environment["LC_ALL"] = "xx_XX.UTF-8";
    EXPECT_THAT(RunRaid(CONTROLLER).out, HasSubstr("`- [General Information]\n"));
}

TEST_F(RaidCommandTest, TerminalGetsColour) {
    const CEnd outcome = RunRaidOnTerminal();
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out,
              "\x1b[1mController Information\x1b[0m\n"
              "└─ \x1b[1m[General Information]\x1b[0m\n"
              "   ├─ Product Name : X\n"
              "   └─ \x1b[2mTemperature  : (not reported)\x1b[0m\n");
}

TEST_F(RaidCommandTest, NoColorAndDumbTerminalsGetNoColour) {
    m_Environment["NO_COLOR"] = "1";
    EXPECT_THAT(RunRaidOnTerminal().out, Not(HasSubstr("\x1b")));
    m_Environment.erase("NO_COLOR");
    m_Environment["TERM"] = "dumb";
    EXPECT_THAT(RunRaidOnTerminal().out, Not(HasSubstr("\x1b")));
    m_Environment.erase("TERM");
    EXPECT_THAT(RunRaidOnTerminal().out, Not(HasSubstr("\x1b")));
}

TEST_F(RaidCommandTest, ControlCharactersOfThePluginNeverReachTheTerminalRaw) {
    const CEnd outcome = RunRaid({{"error", "\x1b[1m"},
                                  {"notice", "\r\n"},
                                  {"detail", "krzcli \x9b\x07"},
                                  {"item", "", "\x1b]0;title\x07", "\xff", "TRUE"}});
    EXPECT_EQ(outcome.out, "\\x1b]0;title\\x07 : \\xff\n");
    EXPECT_EQ(outcome.err,
              "qorctl: error code \\x1b[1m: no meaning is known for this code\n"
              "qorctl: notice code \\r\\n: no meaning is known for this code\n"
              "qorctl: the command that failed: krzcli \\x9b\\x07\n"
              "  By hand: LD_LIBRARY_PATH=/opt/tarmica/krz/lib /opt/tarmica/krz/cli/krzcli "
              "\\x9b\\x07\n");
}

TEST_F(RaidCommandTest, HundredThousandItemsAreShown) {
    std::vector<CRecord> answer = {{"item", "", "0", "", "TRUE"}};
    for (int i = 1; i < 100'000; ++i) {
        const int parent = i < 50'000 ? i - 1 : i % 7;
        answer.push_back({"item", std::to_string(parent), std::to_string(i), "v", "TRUE"});
    }
    const CEnd outcome = RunRaid(answer);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_GE(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 100'000);
    EXPECT_THAT(Log(), HasSubstr("FreeItemList 100000\n"));
}

// The three texts

TEST_F(RaidCommandTest, FailedRequestExplainsItsCodeAndCommandAndEndsWithOne) {
    for (const char* code : {"01", "02", "03", "04", "05"}) {
        const CEnd outcome =
            RunRaid({{"result", "0"}, {"error", code}, {"detail", "krzcli -ctrlinfo -a0"}});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.err,
                    AllOf(StartsWith(std::string("qorctl: error code ") + code + ": the RAID tool"),
                          HasSubstr("\nqorctl: the command that failed: krzcli -ctrlinfo -a0\n"),
                          EndsWith("\nqorctl: the request failed\n")));
    }
}

TEST_F(RaidCommandTest, FailureWithoutACodeSaysSo) {
    const CEnd outcome = RunRaid({{"result", "0"}, {"detail", "none"}});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "qorctl: the request failed\n");
}

TEST_F(RaidCommandTest, ItemsOfAFailedRequestAreFreedAndNotShown) {
    std::vector<CRecord> answer = CONTROLLER;
    answer.push_back({"result", "0"});
    const CEnd outcome = RunRaid(answer);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(Log(), HasSubstr("FreeItemList 4\ndelete\nunload\n"));
}

TEST_F(RaidCommandTest, NoticeStandsBesideTheItems) {
    std::vector<CRecord> answer = CONTROLLER;
    answer.push_back({"notice", "01"});
    const CEnd outcome = RunRaid(answer);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.out, StartsWith("Controller Information\n"));
    EXPECT_EQ(
        outcome.err,
        "qorctl: notice code 01: the RAID tool's version is older than 4.4, or could not be "
        "read\n"
        "  If it is older, update the RAID tool. If it could not be read, run \"qorctl doctor\":\n"
        "  the tool may fail, or the disk of its reports be full.\n");
}

TEST_F(RaidCommandTest, NothingToReportIsASuccessThatSaysSo) {
    const CEnd outcome = RunRaid({{"detail", "none"}});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, NOTHING_TO_REPORT);
}

TEST_F(RaidCommandTest, MissingToolWithoutDrivesIsASuccessWithBothCodes) {
    const CEnd outcome = RunRaid({{"error", "02"}, {"notice", "02"}, {"detail", "none"}});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.err,
                AllOf(StartsWith("qorctl: error code 02: "),
                      HasSubstr("\nqorctl: notice code 02: "), EndsWith(NOTHING_TO_REPORT)));
}

// The plug-in's life

TEST_F(RaidCommandTest, ObjectIsDeletedAndTheLibraryUnloaded) {
    RunRaid({});
    EXPECT_EQ(Log(), WHOLE_LIFE);
}

TEST_F(RaidCommandTest, ExceptionOfTheRequestIsReportedAndEverythingIsFreed) {
    std::vector<CRecord> answer = CONTROLLER;
    answer.push_back({"throw", "GetRAIDInfo", "out_of_range"});
    const CEnd outcome = RunRaid(answer);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err,
              "qorctl: the request ended with an exception: position 9\\x1b[31m beyond the text; a "
              "line of the RAID tool's report is too short\n");
    EXPECT_EQ(Log(), "create\nGetRAIDInfo 0\nFreeItemList 4\ndelete\nunload\n");
}

TEST_F(RaidCommandTest, ExceptionWhoseCodeIsInThePluginIsReportedBeforeItIsUnloaded) {
    const CEnd outcome = RunRaid({{"throw", "GetRAIDInfo", "private"}});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "qorctl: the request ended with an exception: private to the plug-in\n");
    EXPECT_EQ(Log(), WHOLE_LIFE);
}

TEST_F(RaidCommandTest, ExceptionOfAnUnknownTypeIsReported) {
    const CEnd outcome = RunRaid({{"throw", "GetRAIDInfo", "int"}});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "qorctl: the request ended with an exception of an unknown type\n");
}

TEST_F(RaidCommandTest, ExceptionOfTheFactoryIsReported) {
    const CEnd outcome = RunRaid({{"throw", "CreateLibIF", "out_of_range"}});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, StartsWith("qorctl: the request ended with an exception: position 9"));
    EXPECT_EQ(Log(), "create\nunload\n");
}

TEST_F(RaidCommandTest, ExceptionsOfTheRequestAndOfTheReleaseDoNotEndTheProcess) {
    const CEnd outcome = RunRaid(
        {{"throw", "GetRAIDInfo", "out_of_range"}, {"throw", "FreeItemList", "out_of_range"}});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err,
                StartsWith("qorctl: the plug-in could not free its items: it threw an exception\n"
                           "qorctl: the request ended with an exception: position 9"));
    EXPECT_EQ(Log(), WHOLE_LIFE);
}

TEST_F(RaidCommandTest, FactoryThatMakesNoObjectIsReported) {
    const CEnd outcome = RunRaid({{"no-object"}});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "qorctl: the plug-in made no plug-in object\n");
    EXPECT_EQ(Log(), "create\nunload\n");
}

TEST_F(RaidCommandTest, FullDiskIsAFailure) {
    Answer(CONTROLLER);
    const CEnd outcome = qortest::RunCommand({.program = QORCTL_PROGRAM,
                                              .arguments = {"raid", "--plugin", STAND_IN_PLUGIN},
                                              .environment = m_Environment,
                                              .output = "/dev/full"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err,
              "qorctl: standard output could not be written: No space left on device\n");
    EXPECT_THAT(Log(), EndsWith("delete\nunload\n"));
}

// Where the plug-in is found

TEST_F(RaidCommandTest, MissingPluginIsNamedWithTheReason) {
    const CEnd outcome = Run({"raid", "--plugin", "/nowhere/plugin.so"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err,
              "qorctl: the plug-in could not be loaded; tried:\n"
              "  /nowhere/plugin.so: cannot open shared object file: No such file or directory\n"
              "Name the plug-in with --plugin PATH or the environment variable QOR_PLUGIN.\n");
}

TEST_F(RaidCommandTest, FileThatIsNoLibraryIsNamedWithTheReason) {
    WriteFile(m_Folder / "text.so", "This is a text, and it is long enough not to be cut short.");
    const CEnd outcome = Run({"raid", "--plugin", m_Folder / "text.so"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("\n  /opt/tarmica/ctl/text.so: "));
}

TEST_F(RaidCommandTest, LibraryThatLacksAnExportIsUnfit) {
    const CEnd outcome = Run({"raid", "--plugin", UNFIT_PLUGIN});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err,
                HasSubstr(UNFIT_PLUGIN ": not the plug-in, it does not export DeleteItemDisp\n"));
}

TEST_F(RaidCommandTest, OptionGoesBeforeTheEnvironment) {
    m_Environment["QOR_PLUGIN"] = "/nowhere/plugin.so";
    EXPECT_EQ(RunRaid({}).status, 0);
}

TEST_F(RaidCommandTest, EnvironmentGoesBeforeTheProgramsPlace) {
    Answer({});
    PutPlugin(m_Folder / "prefix/lib", UNFIT_PLUGIN);
    m_Environment["QOR_PLUGIN"] = STAND_IN_PLUGIN;
    EXPECT_EQ(RunCopy().status, 0);
}

TEST_F(RaidCommandTest, PluginIsFoundInEachPlaceBesideTheProgram) {
    const std::string multiarch = QORCTL_MULTIARCH;
    for (const std::string& place :
         {std::string("lib/qor"), "lib/" + multiarch + "/qor", std::string("lib64/qor"),
          std::string("lib"), "lib/" + multiarch, std::string("lib64"), std::string("bin")}) {
        fs::remove_all(m_Folder);
        Answer({});
        PutPlugin(m_Folder / "prefix" / place);
        const CEnd outcome = RunCopy();
        EXPECT_EQ(outcome.status, 0) << place << ": " << outcome.err;
        EXPECT_EQ(Log(), WHOLE_LIFE) << place;
    }
}

// An installation over an older one, which had its libraries there, too.
TEST_F(RaidCommandTest, PrivateFolderGoesBeforeTheCommonOne) {
    Answer({});
    PutPlugin(m_Folder / "prefix/lib", UNFIT_PLUGIN);
    PutPlugin(m_Folder / "prefix/lib/qor");
    const CEnd outcome = RunCopy();
    EXPECT_EQ(outcome.status, 0) << outcome.err;
}

TEST_F(RaidCommandTest, UnfitPluginBesideTheProgramEndsTheSearch) {
    PutPlugin(m_Folder / "prefix/lib", UNFIT_PLUGIN);
    PutPlugin(m_Folder / "prefix/bin");
    const CEnd outcome = RunCopy();
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("does not export DeleteItemDisp"));
}

TEST_F(RaidCommandTest, LoaderSearchesLast) {
    Answer({});
    PutPlugin(m_Folder / "elsewhere");
    m_Environment["LD_LIBRARY_PATH"] = m_Folder / "elsewhere";
    EXPECT_EQ(RunCopy().status, 0);
    EXPECT_EQ(Log(), WHOLE_LIFE);
}

TEST_F(RaidCommandTest, EveryPlaceThatWasTriedIsNamed) {
    const CEnd outcome = RunCopy();
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(
        outcome.err,
        "qorctl: the plug-in could not be loaded; tried:\n"
        "  /opt/tarmica/ctl/prefix/lib/qor/libqor_MngSrv_QorLib.so: no such file\n"
        "  /opt/tarmica/ctl/prefix/lib/" QORCTL_MULTIARCH
        "/qor/libqor_MngSrv_QorLib.so: no such file\n"
        "  /opt/tarmica/ctl/prefix/lib64/qor/libqor_MngSrv_QorLib.so: no such file\n"
        "  /opt/tarmica/ctl/prefix/lib/libqor_MngSrv_QorLib.so: no such file\n"
        "  /opt/tarmica/ctl/prefix/lib/" QORCTL_MULTIARCH
        "/libqor_MngSrv_QorLib.so: no such file\n"
        "  /opt/tarmica/ctl/prefix/lib64/libqor_MngSrv_QorLib.so: no such file\n"
        "  /opt/tarmica/ctl/prefix/bin/libqor_MngSrv_QorLib.so: no such file\n"
        "  libqor_MngSrv_QorLib.so: cannot open shared object file: No such file or directory\n"
        "Name the plug-in with --plugin PATH or the environment variable QOR_PLUGIN.\n");
}

// The command line

TEST_F(RaidCommandTest, VersionIsShown) {
    const CEnd outcome = Run({"--version"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "qorctl " QORCTL_VERSION "\n");
}

TEST_F(RaidCommandTest, VersionThatCannotBeWrittenIsAFailure) {
    const CEnd outcome = qortest::RunCommand({.program = QORCTL_PROGRAM,
                                              .arguments = {"--version"},
                                              .environment = m_Environment,
                                              .output = "/dev/full"});
    EXPECT_EQ(outcome.status, 1);
}

TEST_F(RaidCommandTest, HelpStatesTheExitStatusAndAnExample) {
    const CEnd outcome = Run({"--help"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.out, AllOf(HasSubstr("Exit status:"), HasSubstr("Example:"),
                                   HasSubstr("QOR_PLUGIN"), HasSubstr("NO_COLOR")));
}

TEST_F(RaidCommandTest, UsageErrorsLoadNothingAndAreNoFailedRequest) {
    m_Environment["QOR_PLUGIN"] = STAND_IN_PLUGIN;
    const std::vector<std::vector<std::string>> wrong = {
        {"disks"}, {"raid", "--plugin"}, {"raid", "--unknown"}, {"raid", "more"}};
    for (const std::vector<std::string>& arguments : wrong) {
        const CEnd outcome = Run(arguments);
        EXPECT_GT(outcome.status, 1);
        EXPECT_LT(outcome.status, 128);
        EXPECT_EQ(outcome.out, "");
        EXPECT_NE(outcome.err, "");
    }
    EXPECT_FALSE(fs::exists(m_Folder / "log"));
}

}  // namespace
