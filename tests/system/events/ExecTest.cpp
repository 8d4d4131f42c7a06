// What a program for events gets, and what becomes of one that does not take them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "EventsFixture.h"
#include "Rights.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using qortest::CEnd;
using qortest::ReadFile;
using qortest::WriteFile;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

class ExecTest : public qortest::CEventsFixture {
protected:
    // The names of what is beside the state.
    qortest::CStrings Files() const {
        qortest::CStrings names;
        for (const auto& file : fs::directory_iterator(Folder())) {
            names.push_back(file.path().filename());
        }
        return names;
    }
};

TEST_F(ExecTest, FirstStartTellsWhatIsNotWellAndTheNextOneWhatChanged) {
    const std::string program = TakingProgram();
    const CEnd first = Watch("failed-drive", program);
    EXPECT_EQ(first.status, 0) << first.err;
    EXPECT_EQ(first.err, "");
    EXPECT_THAT(Named("event"), ElementsAre("found", "found", "found", "found"));
    fs::remove(Taken());
    EXPECT_EQ(Watch("failed-drive", program).status, 0);
    EXPECT_THAT(Events(), IsEmpty());
    EXPECT_EQ(Watch("small", program).status, 0);
    const auto events = Events();
    EXPECT_THAT(Named("event"), Contains("change"));
    EXPECT_THAT(Named("event"), Not(Contains("found")));
    for (const json& event : events) {
        EXPECT_TRUE(event.contains("since")) << event;
    }
    EXPECT_EQ(fs::status(State()).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(ExecTest, ProgramGetsTheFactsAndNothingElse) {
    const std::string program = Program(
        "env | cut -d= -f1 | sort | tr '\\n' ' ' > names\n"
        "env | grep ^QOR_ | sort > facts\n"
        "ls /proc/self/fd > descriptors\n"
        "grep -E '^Sig(Blk|Ign)' /proc/self/status > signals\n"
        "cut -d' ' -f5,6,7 /proc/$$/stat > groups; echo $$ > number\n"
        "echo to-out; echo to-err >&2\n"
        "cat > event; exit 1\n");
    // What whoever starts watch leaves open, ignored and set is no program's.
    const CEnd end = Shell("failed-drive", "exec 7< /dev/null; trap '' USR1; export SECRET=1; " +
                                               WatchBy(program) + "watch --count 1");
    EXPECT_EQ(end.status, 1);
    const json event = json::parse(ReadFile(Folder() / "event"));
    EXPECT_EQ(ReadFile(Folder() / "names"),
              "HOME LANG PATH PWD QOR_EVENT_ID QOR_HOST QOR_OBJECT QOR_SEVERITY QOR_SUMMARY ");
    std::string facts;
    for (const auto& [name, member] :
         {std::pair("EVENT_ID", "id"), std::pair("HOST", "host"), std::pair("OBJECT", "object"),
          std::pair("SEVERITY", "severity"), std::pair("SUMMARY", "summary")}) {
        facts += std::string("QOR_") + name + '=' + event[member].get<std::string>() + '\n';
    }
    EXPECT_EQ(ReadFile(Folder() / "facts"), facts);
    // The last one is the folder that is listed.
    EXPECT_EQ(ReadFile(Folder() / "descriptors"), "0\n1\n2\n3\n");
    EXPECT_EQ(ReadFile(Folder() / "signals"),
              "SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n");
    const std::string number = qortest::Lines(ReadFile(Folder() / "number")).at(0);
    EXPECT_THAT(ReadFile(Folder() / "groups"), testing::StartsWith(number + " "));
    EXPECT_THAT(end.err, HasSubstr("to-out\nto-err\n"));
    EXPECT_THAT(end.out, Not(HasSubstr("to-out")));
}

// A tool that says what it likes: control characters, bytes that are no text, a shell's own.
TEST_F(ExecTest, HostileTextsStayOneLine) {
    const std::string program = Program(
        "case $QOR_SUMMARY in *PD3*) ;; *) exit 0 ;; esac\n"
        "env | grep -c = > count; env | grep ^QOR_SUMMARY > summary; "
        "cat > event; exit 1\n");
    const std::string tool = "/opt/tarmica/krz/cli/krzcli";
    const std::string real = "/opt/tarmica/krz/real";
    WriteFile(
        Folder() / "tool",
        "#!/bin/sh\n" + real + "/krzcli \"$@\" | sed 's/KESTREL/De\x1b[31m\"$(id)\rX\xff/'\n");
    const CEnd end = Shell("failed-drive", "mkdir " + real + "; mv " + tool + ' ' + real +
                                               "; install '" + (Folder() / "tool").string() + "' " +
                                               tool + "; " + WatchBy(program) + "watch --count 1");
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(ReadFile(Folder() / "count"), "9\n") << end.err;
    EXPECT_THAT(ReadFile(Folder() / "summary"), HasSubstr("De\\x1b[31m\"$(id)\\rX"));
    const std::string line = ReadFile(Folder() / "event");
    EXPECT_EQ(line.find('\n') + 1, line.size());
    EXPECT_TRUE(json::accept(line)) << line;
}

// The file is not written anew for each of many events.
TEST_F(ExecTest, ManyEventsThatWaitAreStruckOutTogether) {
    constexpr size_t MANY = 500;
    EXPECT_EQ(Watch("failed-drive", Program("exit 1\n")).status, 1);
    json state = StateJson();
    const json event = state["outbox"][0];
    state["outbox"].clear();
    for (size_t i = 0; i < MANY; ++i) {
        state["outbox"].push_back(event);
        state["outbox"].back()["id"] = "many-" + std::to_string(i);
    }
    WriteFile(State(), state.dump());
    const std::string program = Program("echo \"$QOR_EVENT_ID $(stat -c %i state)\" >> taken\n");
    EXPECT_EQ(Watch("failed-drive", program).status, 0);
    const auto lines = qortest::Lines(ReadFile(Taken()));
    ASSERT_EQ(lines.size(), MANY);
    size_t writes = 0;
    std::string file;
    for (size_t i = 0; i < MANY; ++i) {
        const size_t blank = lines[i].find(' ');
        EXPECT_EQ(lines[i].substr(0, blank), "many-" + std::to_string(i));
        writes += static_cast<size_t>(file != lines[i].substr(blank));
        file = lines[i].substr(blank);
    }
    EXPECT_GE(writes, 100U);
    EXPECT_LE(writes, 300U);
    EXPECT_THAT(StateJson()["outbox"], IsEmpty());
}

// In and out of its state eight times in less than ten minutes.
TEST_F(ExecTest, FlappingIsToldOnceAndThenHeldBack) {
    const std::string program = TakingProgram();
    for (int i = 0; i <= 8; ++i) {
        const CEnd end = Watch(i % 2 == 0 ? "small" : "failed-drive", program);
        ASSERT_EQ(end.status, 0) << end.err;
    }
    std::vector<json> drive;
    for (const json& event : Events()) {
        if (event["object"] == "controller 0 logical drive LD1" &&
            event.value("what", "") == "state") {
            drive.push_back(event);
        }
    }
    ASSERT_EQ(drive.size(), 6U);
    for (size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(drive[i]["event"], "change");
    }
    EXPECT_EQ(drive[5]["event"], "flapping");
    EXPECT_EQ(drive[5]["settled"], false);
    EXPECT_THAT(drive[5]["summary"].get<std::string>(), HasSubstr("changes again and again"));
}

TEST_F(ExecTest, EventThatWasNotTakenComesAgainAndTheOthersWait) {
    const std::string program = Program(
        "echo \"$QOR_EVENT_ID\" >> tries\n"
        "[ $(wc -l < tries) -gt 2 ]\n"
        "cat >> taken\n");
    const CEnd end = Shell("failed-drive", WatchBy(program) + R"(watch & watch=$!
until [ -e taken ] && [ $(wc -l < taken) -eq 4 ]; do sleep 0.05; done
kill $watch; wait $watch)");
    EXPECT_THAT(end.err, HasSubstr("ended with status 1; the same event comes again in 1 s\n"));
    EXPECT_THAT(end.err, HasSubstr("ended with status 1; the same event comes again in 2 s\n"));
    const auto tries = qortest::Lines(ReadFile(Folder() / "tries"));
    ASSERT_EQ(tries.size(), 6U);
    EXPECT_EQ(tries[0], tries[1]);
    EXPECT_EQ(tries[0], tries[2]);
    EXPECT_EQ(Named("id"), qortest::CStrings(tries.begin() + 2, tries.end()));
}

TEST_F(ExecTest, CountEndsWhenTheFirstEventWasTriedAndTheNextStartGoesOn) {
    const CEnd end = Watch("failed-drive", Program("exit 3\n"));
    EXPECT_EQ(end.status, 1);
    EXPECT_THAT(end.err, HasSubstr("ended with status 3; the same event comes again in 1 s\n"));
    EXPECT_THAT(end.err, HasSubstr("4 events are left, which the next start hands over\n"));
    EXPECT_THAT(StateJson()["outbox"], SizeIs(4));
    EXPECT_EQ(Watch("failed-drive", TakingProgram()).status, 0);
    EXPECT_THAT(Named("event"), ElementsAre("found", "found", "found", "found"));
    EXPECT_THAT(StateJson()["outbox"], IsEmpty());
}

TEST_F(ExecTest, ProgramThatHangsIsKilledWithAllThatItStarted) {
    const CEnd end = Watch("failed-drive",
                           Program("trap '' TERM\nsetsid sleep 1234.5 &\n"
                                   "sleep 1234.5 &\nwait\n"),
                           "--count 1 --exec-timeout 1");
    EXPECT_EQ(end.status, 1);
    EXPECT_THAT(end.err, HasSubstr("the program for events did not end within 1 s; "));
    EXPECT_EQ(qortest::RunProgram({"pgrep", "-f", "^sleep 1234.5$"}).out, "");
}

TEST_F(ExecTest, ProgramThatStopsItselfIsKilled) {
    const CEnd end =
        Watch("failed-drive", Program("kill -STOP $$\n"), "--count 1 --exec-timeout 1");
    EXPECT_EQ(end.status, 1);
    EXPECT_THAT(end.err, HasSubstr("did not end within 1 s"));
}

TEST_F(ExecTest, ProgramThatKillsItselfHasNotTakenTheEvent) {
    const CEnd end = Watch("failed-drive", Program("kill -KILL $$\n"));
    EXPECT_EQ(end.status, 1);
    EXPECT_THAT(end.err, HasSubstr("was ended: Killed; the same event"));
}

// The processes of one must not keep those of the other from ending.
TEST_F(ExecTest, ProgramIsKilledInTimeWhileARequestHangs) {
    const CEnd end = Shell("failed-drive", WatchBy(Program("touch begun\nexec sleep 1000\n")) + R"(
folder=$PWD; watch --exec-timeout 4 2> errors & watch=$!
until [ -e begun ]; do sleep 0.05; done
cd /opt/tarmica/krz/cli
printf '#!/bin/sh\ntouch %s/hangs; exec sleep 1000\n' "$folder" > new; chmod +x new; mv new krzcli
cd "$folder"
until [ -e hangs ]; do sleep 0.05; done
until grep -q 'did not end within 4 s' errors; do sleep 0.05; done
kill $watch; wait $watch; echo $?)");
    EXPECT_THAT(end.out, testing::EndsWith("143\n")) << end.err;
}

TEST_F(ExecTest, DaemonThatLeavesTheGroupStaysAndHoldsNothingUp) {
    const CEnd end = Shell(
        "failed-drive",
        WatchBy(Program("[ -e daemon ] || setsid sh -c 'echo $$ > daemon; exec sleep 1000' &\n"
                        "sleep 1234.25 &\n"
                        "until [ -s daemon ]; do sleep 0.01; done\n"
                        "cat >> taken\n")) +
            "watch --count 1; echo $?; kill $(cat daemon) && echo stayed; pgrep -f '^sleep "
            "1234.25$'");
    EXPECT_THAT(end.out, testing::EndsWith("0\nstayed\n")) << end.err;
    EXPECT_THAT(Events(), SizeIs(4));
}

TEST_F(ExecTest, MissingProgramIsRefusedAtTheStart) {
    const CEnd end = Watch("failed-drive", Folder() / "none");
    EXPECT_EQ(end.status, 1);
    EXPECT_THAT(end.err, HasSubstr("none: No such file or directory\n"));
    EXPECT_FALSE(fs::exists(State()));
    const CEnd name = Watch("failed-drive", "no-such-program-at-all");
    EXPECT_THAT(name.err, HasSubstr("no-such-program-at-all: there is no such program in PATH\n"));
    const CEnd folder = Watch("failed-drive", Folder());
    EXPECT_THAT(folder.err, HasSubstr(": Permission denied\n"));
}

TEST_F(ExecTest, ProgramThatGoesAwayIsTriedAgain) {
    const CEnd end = Watch("failed-drive", Program("rm program; exit 1\n"), "--count 3");
    EXPECT_EQ(end.status, 1);
    EXPECT_THAT(end.err, HasSubstr("cannot be run: No such file or directory; the same event"));
}

// There is no shell that would take it.
TEST_F(ExecTest, TextWithoutAnInterpreterIsNotRun) {
    const std::string program = TakingProgram();
    WriteFile(program, "cat > taken\n");
    const CEnd end = Watch("failed-drive", program);
    EXPECT_EQ(end.status, 1);
    EXPECT_THAT(end.err, HasSubstr("cannot be run: Exec format error; "));
}

TEST_F(ExecTest, ExecAndStateGoTogether) {
    for (const std::string options : {"--exec /bin/true", "--state s", "--exec-timeout 3"}) {
        const CEnd end = Shell("small", "qorctl watch --count 1 " + options);
        EXPECT_EQ(end.status, 107) << options;
        EXPECT_THAT(end.err, HasSubstr(" requires --")) << options;
    }
}

TEST_F(ExecTest, SecondWatchIsRefused) {
    const CEnd end =
        Shell("failed-drive", WatchBy(TakingProgram()) + R"(watch > /dev/null & watch=$!
until [ -e taken ] && [ $(wc -l < taken) -eq 4 ]; do sleep 0.05; done
watch --count 1; echo $?
kill $watch; wait $watch)");
    EXPECT_EQ(end.out, "1\n");
    EXPECT_THAT(end.err, HasSubstr(State() + ": another process is using it\n"));
    EXPECT_THAT(Events(), SizeIs(4));
}

TEST_F(ExecTest, CorruptStateIsToldKeptBesideAndBegunAnew) {
    const std::string program = TakingProgram();
    Watch("failed-drive", program);
    const std::string source = StateJson()["source"];
    const std::string half = ReadFile(State()).substr(0, 1000);
    WriteFile(State(), half);
    fs::remove(Taken());
    const CEnd end = Watch("failed-drive", program);
    EXPECT_EQ(end.status, 0);
    EXPECT_THAT(end.err,
                HasSubstr("the state file was corrupt; it is kept as " + State() + ".corrupt-"));
    EXPECT_THAT(Named("event"), ElementsAre("state-corrupt", "found", "found", "found", "found"));
    EXPECT_NE(StateJson()["source"], source);
    size_t kept = 0;
    for (const auto& file : fs::directory_iterator(Folder())) {
        if (file.path().filename().string().starts_with("state.corrupt-")) {
            EXPECT_EQ(ReadFile(file.path()), half);
            ++kept;
        }
    }
    EXPECT_EQ(kept, 1U);
}

TEST_F(ExecTest, StateOfSomethingElseStaysAsItIs) {
    const std::string health = R"({"format":"qorctl-health-state","version":1,"drives":{}})";
    WriteFile(State(), health);
    const CEnd end = Watch("failed-drive", TakingProgram());
    EXPECT_EQ(end.status, 1);
    EXPECT_THAT(end.err, HasSubstr("not a state file of this watch"));
    EXPECT_EQ(ReadFile(State()), health);
    fs::remove(State());
    Watch("failed-drive", TakingProgram());
    const CEnd part = Watch("failed-drive", TakingProgram(), "--count 1 --controller 0");
    EXPECT_EQ(part.status, 1);
    EXPECT_THAT(part.err, HasSubstr("it belongs to a watch with another --controller"));
}

// Nothing is handed over that an end of the program would forget.
TEST_F(ExecTest, FullDiskIsToldAndTheEventsComeWhenThereIsRoom) {
    WriteFile(Folder() / "script", QORCTL + WatchBy(TakingProgram()) + R"(mkdir disk
mount -t tmpfs -o size=64k,mode=700 tmpfs disk || exit 9
state=$PWD/disk/state
qorctl watch --interval 1 --exec $PWD/program --state $state 2> errors & watch=$!
head -c 1000000 /dev/zero > disk/filler 2> /dev/null
until grep -q 'no event is handed over' errors; do sleep 0.05; done
[ ! -e taken ] && echo waiting
rm disk/filler
until [ -e taken ] && [ $(wc -l < taken) -eq 4 ]; do sleep 0.05; done
kill $watch; wait $watch; echo $?; umount -l disk)");
    const CEnd end =
        Shell("failed-drive", qortest::WithMounts() + "sh " + (Folder() / "script").string());
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_THAT(end.out, HasSubstr("waiting\n"));
    EXPECT_THAT(Events(), SizeIs(4));
}

// The signal of the limit would end watch where an error can be told.
TEST_F(ExecTest, LimitOfFileSizesIsToldAsAFullDisk) {
    const CEnd end =
        Shell("failed-drive", "QORCTL='" QORCTL_PROGRAM "'; " + WatchBy(TakingProgram()) +
                                  "qorctl() { (ulimit -f 8; exec \"$QORCTL\" \"$@\"); }; "
                                  "watch --count 1; echo $?");
    EXPECT_THAT(end.out, testing::EndsWith("\n1\n"));
    EXPECT_THAT(end.err,
                HasSubstr("could not be written: File too large; no event is handed over"));
    EXPECT_FALSE(fs::exists(Taken()));
    EXPECT_THAT(Files(), Not(Contains(testing::StartsWith(".qorctl-"))));
}

// What is opened first must not be taken for a stream that is closed.
TEST_F(ExecTest, ClosedStreamsAreNoOtherFile) {
    const std::string program = Program("echo said; echo said >&2; cat >> taken\n");
    for (const std::string closed : {"2>&-", ">&- 2>&-", "<&- >&- 2>&-"}) {
        const CEnd end = Shell(
            "failed-drive", WatchBy(program) + "rm -f state taken; watch " + "--count 1 " + closed);
        EXPECT_THAT(Events(), SizeIs(4)) << closed;
        EXPECT_EQ(fs::file_size(State() + ".lock"), 0U) << closed;
        EXPECT_EQ(end.status, closed.starts_with("2") ? 0 : 1) << closed;
    }
}

TEST_F(ExecTest, NoAnswerIsToldWhenItBeginsAndEnds) {
    const CEnd end = Shell("small", WatchBy(TakingProgram()) + R"(
watch --count 1
chmod a-x /opt/tarmica/krz/cli/krzcli; watch --count 2; chmod a+x /opt/tarmica/krz/cli/krzcli
watch --count 1)");
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_THAT(Named("event"), testing::IsSupersetOf({"no-answer", "answers-again"})) << end.out;
    EXPECT_THAT(Named("event"), testing::SizeIs(testing::Lt(6U)));
}

// A service has no screen.
TEST_F(ExecTest, ChangesAreLinesOnATerminalToo) {
    const CEnd end = qortest::RunCommand(
        {.program = QORSIM_PROGRAM,
         .arguments = {"run", "--host", "failed-drive", "--", QORCTL_PROGRAM, "watch", "--count",
                       "1", "--exec", TakingProgram(), "--state", State()},
         .terminal = true});
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_THAT(end.out, testing::ContainsRegex("^[-0-9]+T[:0-9]+Z watching 1 controller, "));
}

}  // namespace
