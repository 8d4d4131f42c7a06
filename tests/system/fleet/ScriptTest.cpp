// scripts/fleet, as a user starts and ends it.
#include <gmock/gmock.h>

#include <csignal>

#include "FleetFixture.h"

namespace qortest {
namespace {

namespace fs = std::filesystem;

using testing::HasSubstr;
using testing::IsEmpty;

class ScriptTest : public CFleetFixture {
protected:
    void SetUp() override {
        CFleetFixture::SetUp();
        fs::create_directories(Temporary());
    }

    // All that it starts has this in its environment, and writes there.
    std::string Temporary() const { return Folder() / "tmp"; }

    // A test of the CI is a user's all the same.
    std::string Start() const { return "env -u CI TMPDIR='" + Temporary() + "' "; }

    CEnd Fleet(const std::string& arguments) const {
        return RunProgram({"sh", "-c", Start() + FLEET_SCRIPT " " + arguments});
    }

    CStrings FilesLeft() const {
        CStrings names;
        for (const fs::directory_entry& entry : fs::directory_iterator(Temporary())) {
            names.push_back(entry.path());
        }
        return names;
    }

    CStrings ProcessesLeft() const {
        const CEnd end =
            RunProgram({"sh", "-c", "grep -lsz 'TMPDIR=" + Temporary() + "' /proc/[0-9]*/environ"});
        return Lines(end.out);
    }

    // Starts it, and sends a signal once its output has a word; its status.
    std::string StatusAfter(int signal, const std::string& word) const {
        const std::string out = Folder() / "out";
        const CEnd end =
            RunProgram({"bash", "-c",
                        Start() + FLEET_SCRIPT " --programs " PROGRAMS_DIR " 8 >'" + out +
                            "' 2>&1 & for i in {1..900}; do grep -q '" + word + "' '" + out +
                            "' && break; sleep 0.1; done; kill -" + std::to_string(signal) +
                            " $!; wait $! 2>/dev/null; echo $?"});
        EXPECT_THAT(ReadFile(out), HasSubstr(word));
        return end.out;
    }
};

TEST_F(ScriptTest, AlertmanagerNamesTheFailedDrive) {
    const CEnd end = Fleet("--once --programs " PROGRAMS_DIR " 8");
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_THAT(end.out, HasSubstr("CRITICAL  srv0001: controller 0 drive 252:3 is FAILED\n"));
    EXPECT_THAT(end.out, HasSubstr("\n  1 healthy, of 24 drives each\n"));
    EXPECT_THAT(end.out, HasSubstr("\nAlertmanager  http://127.0.0.1:"));
    EXPECT_THAT(FilesLeft(), IsEmpty());
    EXPECT_THAT(ProcessesLeft(), IsEmpty());
}

TEST_F(ScriptTest, ServersBeyondThirtyAreThereTooAndACiDoesNotWait) {
    const CEnd end = RunProgram({"env", "CI=true", "TMPDIR=" + Temporary(), FLEET_SCRIPT,
                                 "--programs", PROGRAMS_DIR, "33"});
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_THAT(end.out, HasSubstr("\n  26 healthy, of 24 drives each\n"));
}

TEST_F(ScriptTest, CtrlCLeavesNothingBehind) {
    EXPECT_EQ(StatusAfter(SIGINT, "Making"), "130\n");
    EXPECT_THAT(FilesLeft(), IsEmpty());
    EXPECT_THAT(ProcessesLeft(), IsEmpty());
    EXPECT_EQ(StatusAfter(SIGINT, "Alertmanager  http"), "130\n");
    EXPECT_THAT(FilesLeft(), IsEmpty());
    EXPECT_THAT(ProcessesLeft(), IsEmpty());
}

TEST_F(ScriptTest, TermLeavesNothingBehind) {
    EXPECT_EQ(StatusAfter(SIGTERM, "Ctrl-C ends it"), "143\n");
    EXPECT_THAT(FilesLeft(), IsEmpty());
    EXPECT_THAT(ProcessesLeft(), IsEmpty());
}

TEST_F(ScriptTest, KillLeavesNoProcess) {
    StatusAfter(SIGKILL, "Alertmanager  http");
    EXPECT_TRUE(Eventually([this] { return ProcessesLeft().empty(); }));
}

TEST_F(ScriptTest, WrongWordsAreTold) {
    for (const char* words : {"many", "0", "-3", "10 20", "--measure", "--programs /no/such"}) {
        const CEnd end = Fleet(words);
        EXPECT_EQ(end.status, 2) << words;
        EXPECT_THAT(end.err, testing::StartsWith("scripts/fleet: ")) << words;
        EXPECT_THAT(end.err, HasSubstr("\nusage: scripts/fleet ")) << words;
    }
    EXPECT_THAT(Fleet("many").err, HasSubstr("'many' is no number of servers"));
}

TEST_F(ScriptTest, MissingProgramsAreNamed) {
    const CEnd none = Fleet("--once --programs '" + Temporary() + "'");
    EXPECT_EQ(none.status, 1);
    EXPECT_EQ(none.err,
              "scripts/fleet: no qorctl in " + Temporary() + "; without --programs it is built\n");
    const CEnd links = RunProgram(
        {"sh", "-c",
         "mkdir '" + Temporary() + "/bin' && cd '" + Temporary() +
             "/bin' && for name in bash dirname env readlink; do ln -s \"$(command -v $name)\" .; "
             "done; ln -s \"$(python3 -c 'import sys; print(sys.executable)')\" python3"});
    ASSERT_EQ(links.status, 0) << links.err;
    const CEnd end = RunProgram({"env", "PATH=" + Temporary() + "/bin", FLEET_SCRIPT, "--once",
                                 "--programs", PROGRAMS_DIR});
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(end.err,
              "scripts/fleet: prometheus is not installed; Debian has it in the package prometheus "
              "(scripts/bootstrap fleet)\n");
}

}  // namespace
}  // namespace qortest
