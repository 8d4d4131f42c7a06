#include "MonitoringFixture.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/mount.h>
#include <unistd.h>

#include <ctime>

#include "util/UniqueFd.h"

namespace fs = std::filesystem;

namespace qortest {
namespace {

constexpr const char* STATE_PARENT = "/var/lib";
constexpr const char* STATE_FOLDER = "/var/lib/qor";
constexpr const char* SUDO = "/usr/bin/sudo";

// "'" in a text of the shell.
std::string Quoted(const std::string& text) {
    return "'" + Replaced(text, "'", "'\\''") + "'";
}

std::string WithoutEnd(const std::string& text) {
    return text.ends_with('\n') ? text.substr(0, text.size() - 1) : text;
}

}  // namespace

std::string Replaced(std::string text, const std::string& what, const std::string& by) {
    for (size_t at = text.find(what); at != std::string::npos;
         at = text.find(what, at + by.size())) {
        text.replace(at, what.size(), by);
    }
    return text;
}

CStrings CheckedHosts() {
    CStrings hosts;
    for (const CChecked& checked : CHECKED) {
        hosts.emplace_back(checked.name);
    }
    return hosts;
}

CAnswer AnswerOf(const CEnd& end) {
    const size_t line = std::min(end.out.find('\n'), end.out.size());
    const size_t bar = std::min(end.out.find('|'), line);
    CAnswer answer = {.status = end.status, .summary = end.out.substr(0, bar)};
    answer.performance = bar < line ? end.out.substr(bar + 1, line - bar - 1) : "";
    answer.details = line < end.out.size() ? WithoutEnd(end.out.substr(line + 1)) : "";
    return answer;
}

void ExpectSame(const CAnswer& answer, const CAnswer& expected, const std::string& host) {
    EXPECT_EQ(answer.status, expected.status) << host;
    EXPECT_EQ(answer.summary, expected.summary) << host;
    EXPECT_EQ(answer.details, expected.details) << host;
    EXPECT_EQ(answer.performance, expected.performance) << host;
}

void CMonitoringFixture::SetUp() {
    CInstallFixture::SetUp();
    fs::create_directory(Home());
    // In this test's view of the system only; the shipped files name the path.
    ASSERT_EQ(mount("none", STATE_PARENT, "tmpfs", MS_NOSUID | MS_NODEV, "mode=0755"), 0);
    m_Mounted.emplace_back(STATE_PARENT);
    fs::create_directory(STATE_FOLDER);
    fs::permissions(STATE_FOLDER, fs::perms(0700));
    WriteCheckOn();
}

void CMonitoringFixture::TearDown() {
    for (const std::string& path : m_Mounted) {
        EXPECT_EQ(umount(path.c_str()), 0) << path;
    }
    CInstallFixture::TearDown();
}

// One check at a time, since they share the state file, and each with a new one, so that each says
// the same. Only where every command hangs may the time run faster.
void CMonitoringFixture::WriteCheckOn() const {
    const std::string qorsim = Quoted(Bin() / "qorsim");
    const std::string qorctl = Quoted(Bin() / "qorctl");
    WriteProgram(CheckOn(),
                 "exec 9<\"$0\"\n"
                 "flock 9\n"
                 "host=$1\n"
                 "shift\n"
                 "echo \"$*\" >>" +
                     Quoted(Home() / "asked") + "\nrm -f " + STATE_FOLDER +
                     "/health.json*\n"
                     "if [ \"$host\" = " +
                     SILENT + " ]; then\n    exec " + qorsim +
                     " run --host small --fault hang -- env QOR_FAST_CLOCK=50 "
                     "LD_PRELOAD=" FAST_CLOCK " " +
                     qorctl + " \"$@\"\nfi\nexec " + qorsim + " run --host \"$host\" -- " + qorctl +
                     " \"$@\"\n");
}

fs::path CMonitoringFixture::Shipped(const std::string& name) const {
    return Share() / "qor" / "monitoring" / name;
}

std::string CMonitoringFixture::LineOfPage(const std::string& beginning) {
    for (const std::string& line : Lines(ReadFile(MONITORING_PAGE))) {
        const size_t text = line.find_first_not_of(' ');
        if (text != std::string::npos && line.compare(text, beginning.size(), beginning) == 0) {
            return line.substr(text);
        }
    }
    ADD_FAILURE() << "no line of the page begins with " << beginning;
    return "";
}

CAnswer CMonitoringFixture::Expected(const std::string& host, const std::string& words) const {
    CStrings command = {CheckOn(), host};
    for (size_t begin = 0; begin < words.size();) {
        const size_t end = std::min(words.find(' ', begin), words.size());
        command.push_back(words.substr(begin, end - begin));
        begin = end + 1;
    }
    const CEnd end = RunProgram(command);
    EXPECT_EQ(end.err, "") << host;
    return AnswerOf(end);
}

CStrings CMonitoringFixture::Asked() const {
    return Lines(ReadFile(Home() / "asked"));
}

void CMonitoringFixture::WriteProgram(const fs::path& path, const std::string& text) const {
    WriteFile(path, "#!/bin/sh\n" + text);
    fs::permissions(path, fs::perms(0755));
}

void CMonitoringFixture::StandInForSudo() {
    const fs::path standIn = Home() / "sudo";
    const std::string asked = std::string("'-n /usr/bin/qorctl ") + CHECK_COUNTS;
    WriteProgram(standIn, "case \"$*\" in\n    " + asked + "' | " + asked +
                              " --perfdata all') ;;\n"
                              "    *) echo \"sudo: a password is required\"; exit 1 ;;\n"
                              "esac\n"
                              "shift 2\n"
                              "rm -f " +
                              STATE_FOLDER + "/health.json*\nexec " + Quoted(Bin() / "qorctl") +
                              " \"$@\"\n");
    ASSERT_EQ(mount(standIn.c_str(), SUDO, "none", MS_BIND, nullptr), 0);
    m_Mounted.emplace_back(SUDO);
}

void CMonitoringFixture::WriteNrpeConfiguration(int port) const {
    std::string all;
    for (const std::string& line : Lines(ReadFile(Shipped("nrpe.cfg")))) {
        if (line.starts_with("command[check_qor]=")) {
            all = Replaced(line, "check_qor", "check_qor_all") + " --perfdata all\n";
        }
    }
    // NRPE does not run as root.
    const std::string user = geteuid() == 0 ? "nrpe_user=nobody\nnrpe_group=nogroup\n" : "";
    WriteFile(Home() / "nrpe.cfg",
              "server_address=127.0.0.1\nserver_port=" + std::to_string(port) +
                  "\nallowed_hosts=127.0.0.1\n" + user + "disable_syslog=1\nlog_file=" +
                  (Home() / "nrpe.log").string() + "\npid_file=" + (Home() / "nrpe.pid").string() +
                  "\ncommand_timeout=60\ninclude=" + Shipped("nrpe.cfg").string() + "\n" + all);
}

std::unique_ptr<CEngine> CMonitoringFixture::StartNrpe(const std::string& host, int port) {
    StandInForSudo();
    WriteNrpeConfiguration(port);
    // The agent's user takes root's place on the simulated server.
    const std::string own =
        geteuid() == 0 ? std::string("mount -t tmpfs -o mode=0700 none ") + STATE_FOLDER +
                             " && chown -R nobody:nogroup /opt/tarmica " + STATE_FOLDER + " && "
                       : "";
    auto nrpe = std::make_unique<CEngine>(
        CStrings{Bin() / "qorsim", "run", "--host", host, "--", "sh", "-c",
                 own + "exec " + NRPE + " -f -c " + Quoted(Home() / "nrpe.cfg")},
        Home() / "nrpe.out");
    EXPECT_TRUE(Eventually([&] { return !nrpe->IsRunning() || CheckNrpe(port, {}).status == 0; }));
    EXPECT_TRUE(nrpe->IsRunning()) << nrpe->Output() << ReadFile(Home() / "nrpe.log");
    return nrpe;
}

CEnd CMonitoringFixture::CheckNrpe(int port, const CStrings& arguments) {
    CStrings words = {CHECK_NRPE, "-H", "127.0.0.1", "-p", std::to_string(port), "-t", "55"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return RunProgram(words);
}

void CMonitoringFixture::ForceChecks(CEngine& engine, const fs::path& pipe, const CStrings& hosts) {
    util::CUniqueFd commands;
    EXPECT_TRUE(Eventually([&] {
        // Nobody reads before the engine is up.
        commands = util::CUniqueFd(open(pipe.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC));
        return commands.IsOpen() || !engine.IsRunning();
    }));
    ASSERT_TRUE(commands.IsOpen()) << "nobody reads " << pipe << ": " << engine.Output();
    const std::string now = std::to_string(std::time(nullptr));
    std::string text;
    for (const std::string& host : hosts) {
        text += "[" + now + "] SCHEDULE_FORCED_SVC_CHECK;" + host + ";RAID;" + now + "\n";
    }
    EXPECT_EQ(write(commands.Get(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
}

}  // namespace qortest
