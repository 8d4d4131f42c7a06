// qorctl with the real plug-in on simulated servers: what changes while it watches, requests that
// fail for several reasons at once, and that all of its JSON fits the schema.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "ServerFixture.h"

namespace {

using nlohmann::json;
using qortest::CEnd;
using qortest::WriteFile;
using testing::HasSubstr;
using testing::StartsWith;

class SimulatedServerTest : public qortest::CServerFixture {
protected:
    // The document, which fits the schema.
    json Valid(const std::string& document) const {
        const std::string file = Folder() / "document.json";
        WriteFile(file, document);
        const CEnd end = qortest::RunProgram({PYTHON, VALIDATE_JSON, JSON_SCHEMA, file});
        EXPECT_EQ(end.status, 0) << end.out << end.err << document;
        return json::parse(document, nullptr, false);
    }

    // A server with a PCIe SSD and without the RAID tool and drives.
    std::string HostWithSsdAndNoTool() const {
        return WriteProfile({{"extends", "pssd-only"}, {"tool", {{"missing", {"krzcli"}}}}});
    }
};

// The server's time is moved on once a change was seen: nothing depends on how long that took.
constexpr const char* WATCH_THE_LIFE = R"(
qorctl watch --interval 1 --format json > changes & watch=$!
at() { echo $(($(date +%s) - $1)) > /opt/tarmica/krz/started; }
until_told() { until grep -q "$1" changes; do sleep 0.05; done; }
until_told '"event":"start"'
at 12; until_told '"after":"FAILED"'
at 22; until_told '"after":"REBUILD"'
at 32; until_told '"what":"progress"'
at 60; until_told '"before":"REBUILD"'
kill $watch; wait $watch; echo $?)";

TEST_F(SimulatedServerTest, FailureAndRebuildAreToldWhileTheyHappen) {
    const std::string changes = Folder() / "changes";
    const CEnd end = Shell("lifecycle", "cd " + Folder().string() + WATCH_THE_LIFE);
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_EQ(end.out, "143\n");
    std::vector<std::string> failed;
    for (const std::string& line : qortest::Lines(qortest::ReadFile(changes))) {
        const json event = Valid(line);
        if (event["event"] == "change" &&
            event.value("/physical_drive/drive"_json_pointer, -1) == 3) {
            failed.push_back(event["what"].get<std::string>());
        }
    }
    EXPECT_THAT(failed, testing::ElementsAre("state", "media errors", "use"));
}

TEST_F(SimulatedServerTest, RebuildIsToldInSteps) {
    EXPECT_THAT(
        Shell("lifecycle", R"(qorctl watch --interval 1 > changes & watch=$!
echo $(($(date +%s) - 22)) > /opt/tarmica/krz/started
until grep -q 'watching' changes; do sleep 0.05; done
echo $(($(date +%s) - 32)) > /opt/tarmica/krz/started
until grep -q 'progress' changes; do sleep 0.05; done
kill $watch; wait $watch; cat changes; rm changes)")
            .out,
        testing::ContainsRegex("controller 0 drive 252:7 \\(PD7, serial [^)]*\\): progress "));
}

TEST_F(SimulatedServerTest, EveryJsonFitsTheSchema) {
    for (const char* command : {"raid", "storage", "drive 0 252 0", "check", "doctor", "version"}) {
        const CEnd end = Shell("failed-drive", std::string("qorctl ") + command + " --format json");
        const std::string verb = std::string(command).substr(0, std::string(command).find(' '));
        EXPECT_EQ(Valid(end.out)["command"], verb);
    }
}

TEST_F(SimulatedServerTest, MissingToolWithAnSsdAndNoDrivesIsAFailureInEveryForm) {
    const std::string host = HostWithSsdAndNoTool();
    const CEnd check = Shell(host, "qorctl check");
    EXPECT_EQ(check.status, 3);
    EXPECT_EQ(check.out, "RAID UNKNOWN - the RAID tool is not installed\n");
    const json checked = Valid(Shell(host, "qorctl check --format json").out);
    EXPECT_EQ(checked["reason"], "no-tool");
    const CEnd table = Shell(host, "qorctl storage --format table");
    EXPECT_EQ(table.status, 1);
    EXPECT_EQ(table.out, "");
    EXPECT_THAT(table.err, HasSubstr("the RAID tool is not installed"));
    const CEnd storage = Shell(host, "qorctl storage --format json");
    EXPECT_EQ(storage.status, 1);
    const json document = Valid(storage.out);
    EXPECT_EQ(document["result"], "failure");
    EXPECT_EQ(document["error_code"], "02");
}

// A tool that says nothing looks like a server without hardware.
TEST_F(SimulatedServerTest, CardWithoutAControllerInTheAnswerIsNeverWell) {
    for (const std::string fault : {"result-dir-full", "empty@-ctrlinfo"}) {
        const auto run = [&fault](const qortest::CStrings& words) {
            qortest::CStrings all = {"run", "--host", "failed-drive", "--fault",
                                     fault, "--",     QORCTL_PROGRAM};
            all.insert(all.end(), words.begin(), words.end());
            return Qorsim(all);
        };
        const std::string sentence =
            "a supported RAID card is in this server, but the RAID tool reported no controller";
        const CEnd check = run({"check", "--no-hardware", "ok"});
        EXPECT_EQ(check.status, 3) << fault;
        EXPECT_EQ(check.out, "RAID UNKNOWN - " + sentence + "\n") << fault;
        EXPECT_EQ(Valid(run({"check", "--format", "json"}).out)["reason"], "no-controller");
        for (const std::string verb : {"raid", "storage", "xml"}) {
            const CEnd end = run({verb});
            EXPECT_EQ(end.status, 1) << fault << verb;
            EXPECT_EQ(end.out, "") << fault << verb;
            EXPECT_THAT(end.err, HasSubstr("qorctl: " + sentence + "\n")) << fault << verb;
        }
        const json document = Valid(run({"storage", "--format", "json"}).out);
        EXPECT_EQ(document["result"], "failure");
        EXPECT_EQ(document["messages"].back()["code"], "no-controller");
        EXPECT_EQ(document["messages"].back()["severity"], "error");
        const CEnd form = run({"svp"});
        EXPECT_EQ(form.status, 1) << fault;
        EXPECT_NE(form.out, "") << fault;
        EXPECT_THAT(form.err, HasSubstr("qorctl: " + sentence + "\n")) << fault;
        const CEnd watch = run({"watch", "--count", "1"});
        EXPECT_EQ(watch.status, 1) << fault;
        EXPECT_THAT(watch.out, HasSubstr("no answer: " + sentence)) << fault;
    }
}

// What is there is shown and judged.
TEST_F(SimulatedServerTest, SsdsBesideACardWithoutAControllerAreShown) {
    const auto run = [](const qortest::CStrings& words) {
        qortest::CStrings all = {
            "run", "--host", RELIABILITY_HOST, "--fault", "empty@-ctrlinfo", "--", QORCTL_PROGRAM};
        all.insert(all.end(), words.begin(), words.end());
        return Qorsim(all);
    };
    const CEnd check = run({"check", "--no-hardware", "ok"});
    EXPECT_EQ(check.status, 3);
    EXPECT_THAT(check.out, StartsWith("RAID UNKNOWN - a supported RAID card is in this server, but "
                                      "the RAID tool reported no controller|controllers=0"));
    EXPECT_THAT(check.out, HasSubstr("pcie_ssds=1"));
    const CEnd storage = run({"storage"});
    EXPECT_EQ(storage.status, 1);
    EXPECT_THAT(storage.out, HasSubstr("PCIe SSD Information"));
    EXPECT_THAT(storage.err, HasSubstr("but the RAID tool reported no controller"));
    const json document = Valid(run({"storage", "--format", "json"}).out);
    EXPECT_EQ(document["result"], "failure");
    EXPECT_EQ(document["pcie_ssds"].size(), 1U);
    const CEnd watch = run({"watch", "--count", "1"});
    EXPECT_THAT(watch.out, HasSubstr("1 PCIe SSD: UNKNOWN"));
}

// Some schedulers start what they run with SIGCHLD ignored, and the kernel then forgets how a child
// ended.
TEST_F(SimulatedServerTest, IgnoredChildSignalOfTheCallerDoesNoHarm) {
    const std::string ignoring = PYTHON
        " -c 'import os, signal, sys; signal.signal(signal.SIGCHLD, signal.SIG_IGN); "
        "os.execv(sys.argv[1], sys.argv[1:])' " QORCTL_PROGRAM " ";
    for (const std::string verb : {"raid", "check", "exec -- krzcli -v"}) {
        const CEnd end = Shell("failed-drive", "cd " + Folder().string() + "; " + ignoring + verb +
                                                   " > got; echo $?; qorctl " + verb +
                                                   " > whole; echo $?; cmp got whole");
        const qortest::CStrings statuses = qortest::Lines(end.out);
        ASSERT_EQ(statuses.size(), 2U) << verb << end.err;
        EXPECT_EQ(statuses[0], statuses[1]) << verb;
    }
}

// What the tool itself says, not a guess
TEST_F(SimulatedServerTest, WhatTheToolSaysOfADriveThatIsNotThereIsShown) {
    const CEnd end = Shell("small", "qorctl drive 0 252 99");
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(end.out, "");
    EXPECT_EQ(end.err,
              "qorctl: error code 01: the RAID tool reported an error, or could not be run\n"
              "  The tool says: Error - Physical drive [252:99] is not found.\n"
              "qorctl: the command that failed: krzcli -pdinfo -pd[252:99] -a0\n"
              "  By hand: LD_LIBRARY_PATH=/opt/tarmica/krz/lib /opt/tarmica/krz/cli/krzcli "
              "-pdinfo -pd[252:99] -a0\n"
              "qorctl: the request failed\n");
    const CEnd document = Shell("small", "qorctl drive 9 0 0 --format json");
    EXPECT_EQ(document.status, 1);
    EXPECT_THAT(document.out, HasSubstr("RAID controller 9 is not found."));
}

TEST_F(SimulatedServerTest, WhatAFailingToolSaysIsShownByEveryCommand) {
    const std::string fault = "error=No such luck@-ctrlinfo";
    for (const std::string command :
         {"raid", "storage", "svp", "xml", "check", "watch --count 1"}) {
        const CEnd end = Qorsim({"run", "--host", "small", "--fault", fault, "--", "sh", "-c",
                                 QORCTL + ("qorctl " + command)});
        EXPECT_NE(end.status, 0) << command;
        EXPECT_THAT(end.out + end.err, HasSubstr("Error - No such luck")) << command;
    }
    const CEnd silent = Qorsim({"run", "--host", "small", "--fault", "exit=3", "--fault", "empty",
                                "--", "sh", "-c", std::string(QORCTL) + "qorctl raid"});
    EXPECT_THAT(silent.err, HasSubstr("  Run the command below by hand and read what it says"));
}

TEST_F(SimulatedServerTest, ReportOfAFailingToolIsNoMessageOfIts) {
    const CEnd end = Qorsim({"run", "--host", "small", "--fault", "exit=3@-ctrlinfo", "--", "sh",
                             "-c", std::string(QORCTL) + "qorctl raid"});
    EXPECT_THAT(end.err, testing::Not(HasSubstr("RAID Controller : 0")));
    EXPECT_THAT(end.err, HasSubstr("  Run the command below by hand and read what it says"));
}

// A fresh package: nothing was copied into the install directory, or there is none.
TEST_F(SimulatedServerTest, MissingConfigurationPointsToDoctor) {
    for (const std::string gone :
         {"rm /opt/tarmica/qor/provider/*.ini", "rm -r /opt/tarmica/qor/provider"}) {
        for (const std::string command : {"raid", "storage", "check", "watch --count 1"}) {
            const CEnd end = Shell("small", gone + "; qorctl " + command);
            EXPECT_NE(end.status, 0) << command;
            EXPECT_THAT(end.out + end.err, HasSubstr("\"qorctl doctor\" says what is missing"))
                << command;
        }
    }
}

}  // namespace
