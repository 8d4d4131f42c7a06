// The example programs, each with a receiver on this machine, and the unit of the service.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>

#include "EventsFixture.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using qortest::CEnd;
using qortest::ReadFile;
using qortest::WriteFile;
using testing::HasSubstr;
using testing::SizeIs;
using testing::StartsWith;

class ExampleProgramsTest : public qortest::CEventsFixture {
protected:
    // The example with its setting `name=...` changed to a shell word, as an administrator does it.
    std::string Example(const std::string& example, const std::string& name,
                        const std::string& word) const {
        std::string text = ReadFile(fs::path(EXAMPLE_PROGRAMS) / example);
        const size_t start = text.find('\n' + name + '=');
        EXPECT_NE(start, std::string::npos) << text;
        text.replace(start + 1, text.find('\n', start + 1) - start - 1, name + '=' + word);
        const std::string path = Folder() / example;
        WriteFile(path, text);
        fs::permissions(path, fs::perms::owner_all);
        return path;
    }
    // What was received.
    std::vector<json> Received() const {
        std::vector<json> received;
        for (const std::string& line : qortest::Lines(ReadFile(Folder() / "received"))) {
            received.push_back(json::parse(line, nullptr, false));
        }
        return received;
    }
    static std::string Receiver() { return std::string("'" PYTHON "' '") + RECEIVER + "' "; }
    // What `example` does with an event of its own that has these facts, and `text` before that.
    CEnd Run(const std::string& example, const std::string& host, const std::string& summary,
             const std::string& text = "") const {
        WriteFile(Folder() / "one.json", "{\"summary\":\"" + summary + "\"}\n");
        return qortest::RunProgram(
            {"/bin/sh", "-c",
             "cd \"$1\"; " + text +
                 "QOR_EVENT_ID=0123456789abcdef-18 QOR_SEVERITY=CRITICAL QOR_OBJECT=server "
                 "QOR_HOST=$2 QOR_SUMMARY=$3 \"$0\" < one.json",
             example, Folder(), host, summary});
    }
    // The web hook's receiver, which answers the first event with `status`.
    CEnd WatchWebHook(const std::string& status) const {
        const std::string example =
            Example("webhook", "url",
                    "\"http://127.0.0.1:$(cat '" + (Folder() / "port").string() + "')/events\"");
        return Shell("failed-drive",
                     Receiver() + "http '" + (Folder() / "received").string() + "' '" +
                         (Folder() / "port").string() + "' " + status + " & receiver=$!; " +
                         WatchBy(example) +
                         "until [ -e port ]; do sleep 0.05; done; "
                         "watch & watch=$!; until [ -e received ] && "
                         "[ $(wc -l < received) -ge 4 ] && grep -q '\"outbox\":\\[\\]' state; "
                         "do sleep 0.05; done; "
                         "kill $watch; wait $watch; kill $receiver; wait $receiver");
    }
};

TEST_F(ExampleProgramsTest, MailArrivesWithAllFacts) {
    const std::string sendmail = Folder() / "sendmail";
    WriteFile(sendmail, "#!/bin/sh\nexec msmtp --host=127.0.0.1 --port=\"$(cat '" +
                            (Folder() / "port").string() + "')\" --from=qor@example.org \"$@\"\n");
    fs::permissions(sendmail, fs::perms::owner_all);
    const CEnd end =
        Shell("failed-drive", WatchBy(Example("mail", "sendmail", sendmail)) + Receiver() +
                                  "smtp '" + (Folder() / "received").string() + "' '" +
                                  (Folder() / "port").string() +
                                  "' & receiver=$!; until [ -e port ]; do sleep 0.05; done; "
                                  "watch --count 1; echo $?; kill $receiver; wait $receiver");
    EXPECT_THAT(end.out, testing::EndsWith("0\n")) << end.err;
    const std::vector<json> mails = Received();
    ASSERT_THAT(mails, SizeIs(4));
    const json& mail = mails[0];
    EXPECT_EQ(mail["for"], json({"root"}));
    EXPECT_EQ(mail["to"], "root");
    EXPECT_THAT(mail["subject"].get<std::string>(), StartsWith("[CRITICAL] "));
    EXPECT_THAT(mail["subject"].get<std::string>(),
                HasSubstr(": controller 0 logical drive LD1: Degraded"));
    EXPECT_EQ(mail["defects"], json::array());
    const std::string body = mail["body"];
    const json event = json::parse(body.substr(body.find('{')), nullptr, false);
    EXPECT_EQ(mail["id"],
              "<" + event["id"].get<std::string>() + "@" + event["host"].get<std::string>() + ">");
    EXPECT_NE(mails[1]["id"], mail["id"]);
}

TEST_F(ExampleProgramsTest, MailProgramThatFailsGetsItAgain) {
    const CEnd end = Watch("failed-drive", Example("mail", "sendmail", "/bin/false"));
    EXPECT_EQ(end.status, 1);
    EXPECT_THAT(end.err, HasSubstr("4 events are left"));
}

TEST_F(ExampleProgramsTest, JournalGetsALineOfEachEvent) {
    const std::string socket = Folder() / "log";
    const std::string example = Example("journal", "socket", socket);
    const CEnd missing = Watch("failed-drive", example);
    EXPECT_EQ(missing.status, 1) << missing.err;
    const CEnd end =
        Shell("failed-drive", Receiver() + "syslog '" + (Folder() / "received").string() + "' '" +
                                  socket + "' & receiver=$!; until [ -S '" + socket +
                                  "' ]; do sleep 0.05; done; " + WatchBy(example) +
                                  "watch --count 1; echo $?; until [ -e received ] && "
                                  "[ $(wc -l < received) -eq 4 ]; do sleep 0.05; done; "
                                  "kill $receiver; wait $receiver");
    EXPECT_THAT(end.out, testing::EndsWith("0\n")) << end.err;
    const std::vector<json> lines = Received();
    ASSERT_THAT(lines, SizeIs(4));
    const std::string line = lines[0]["line"];
    EXPECT_THAT(line, StartsWith("<26>"));  // daemon.crit
    EXPECT_THAT(line, HasSubstr(" qor: CRITICAL controller 0 logical drive LD1: Degraded ["));
    EXPECT_THAT(lines[3]["line"].get<std::string>(), StartsWith("<28>"));  // daemon.warning
}

TEST_F(ExampleProgramsTest, WebHookGetsEachEventAndARefusedOneAgain) {
    const CEnd end = WatchWebHook("503");
    EXPECT_THAT(end.err, HasSubstr("503"));
    EXPECT_THAT(end.err, HasSubstr("the same event comes again in 1 s"));
    const std::vector<json> posts = Received();
    ASSERT_THAT(posts, SizeIs(5));
    EXPECT_EQ(posts[0], posts[1]);
    for (const json& post : posts) {
        EXPECT_EQ(post["path"], "/events");
        EXPECT_EQ(post["type"], "application/json");
        EXPECT_EQ(post["key"], json::parse(post["body"].get<std::string>(), nullptr, false)["id"]);
    }
    EXPECT_NE(posts[1]["key"], posts[2]["key"]);
}

// Whoever sends it elsewhere has not taken it.
TEST_F(ExampleProgramsTest, WebHookThatRedirectsGetsTheEventAgain) {
    const CEnd end = WatchWebHook("301");
    EXPECT_THAT(end.err, HasSubstr("answered 301"));
    EXPECT_THAT(end.err, HasSubstr("the same event comes again in 1 s"));
    const std::vector<json> posts = Received();
    ASSERT_THAT(posts, SizeIs(5));
    EXPECT_EQ(posts[0], posts[1]);
}

// The longest summary that there is, of letters beyond ASCII, on a host whose name is none.
TEST_F(ExampleProgramsTest, MailIsOneWhateverTheSummaryAndTheHostHold) {
    const std::string sendmail = Folder() / "sendmail";
    WriteFile(sendmail, "#!/bin/sh\ncat > mail.out\n");
    fs::permissions(sendmail, fs::perms::owner_all);
    std::string summary;
    while (summary.size() < 1000) {
        summary += "\u00fc";
    }
    const CEnd end = Run(Example("mail", "sendmail", sendmail), "s\u00fcd>:<1", summary);
    EXPECT_EQ(end.status, 0) << end.err;
    const std::string mail = ReadFile(Folder() / "mail.out");
    const std::string head = mail.substr(0, mail.find("\n\n"));
    for (const std::string& line : qortest::Lines(mail)) {
        EXPECT_LE(line.size(), 998U) << line;
    }
    EXPECT_TRUE(std::regex_match(head, std::regex("[\n -~]*"))) << head;
    EXPECT_THAT(head, HasSubstr("\nSubject: [CRITICAL] s??d>:<1: ??"));
    EXPECT_THAT(head, HasSubstr("\nMessage-ID: <0123456789abcdef-18@s__d___1>\n"));
    // What is in the lines of the body is whole.
    EXPECT_THAT(std::regex_replace(mail.substr(head.size()), std::regex("\n"), ""),
                StartsWith(summary));
}

TEST_F(ExampleProgramsTest, LongestLineOfTheJournalHasItsId) {
    const std::string socket = Folder() / "log";
    const CEnd end = Run(Example("journal", "socket", socket), "srv", std::string(1000, 'x'),
                         Receiver() +
                             "syslog received log & trap 'until [ -s received ]; do sleep "
                             "0.05; done; kill $!' 0; until [ -S log ]; do sleep 0.05; "
                             "done; ");
    EXPECT_EQ(end.status, 0) << end.err;
    const std::vector<json> lines = Received();
    ASSERT_THAT(lines, SizeIs(1));
    EXPECT_THAT(lines[0]["line"].get<std::string>(), testing::EndsWith("x [0123456789abcdef-18]"));
}

// The status that a stop by systemd ends in is no failure of the service.
TEST_F(ExampleProgramsTest, StoppedServiceHasNotFailed) {
    const CEnd end = Shell("small", WatchBy("/bin/true") +
                                        "watch & watch=$!; until [ -s state ]; do sleep 0.05; "
                                        "done; kill $watch; wait $watch; echo $? > status");
    EXPECT_EQ(end.status, 0) << end.err;
    const std::string status = qortest::Lines(ReadFile(Folder() / "status")).at(0);
    EXPECT_THAT(ReadFile(WATCH_UNIT), HasSubstr("\nSuccessExitStatus=" + status + "\n"));
}

// Its own words, with the program that was built in place of an installed one.
TEST_F(ExampleProgramsTest, UnitOfTheServiceIsWellFormed) {
    const std::string unit = Folder() / "qor-watch.service";
    WriteFile(unit, std::regex_replace(ReadFile(WATCH_UNIT), std::regex("ExecStart=\\S+"),
                                       "ExecStart=" QORCTL_PROGRAM));
    const CEnd end = qortest::RunProgram({"systemd-analyze", "verify", "--man=no", unit});
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_EQ(end.out + end.err, "");
}

}  // namespace
