// The rule for sudo, with the real sudo: a user whom it names, and everything that user could try.
#include <gmock/gmock.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <filesystem>
#include <regex>

#include "InstallFixture.h"

namespace fs = std::filesystem;

namespace qortest {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr const char* SUDOERS = "/etc/sudoers";
// One that every system has.
constexpr const char* AGENT = "nobody";
// Of the rule's words, what stands behind the state file.
constexpr const char* REST = " --no-hardware critical --timeout 50";
constexpr const char* AS_AGENT = "setpriv --reuid=nobody --regid=nogroup --clear-groups ";

std::string Replaced(const std::string& text, const std::string& what, const std::string& by) {
    return std::regex_replace(text, std::regex(what), by);
}

class CSudoRuleTest : public CInstallFixture {
protected:
    void SetUp() override {
        if (geteuid() != 0) {
            GTEST_SKIP() << "only root can give sudo another rule and become the agent's user";
        }
        if (prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0) == 1) {
            GTEST_SKIP() << "sudo can do nothing where no program may gain privileges";
        }
        CInstallFixture::SetUp();
        fs::create_directory(State());
        fs::permissions(State(), fs::perms(0700));
        MakePlugin();
    }

    void TearDown() override {
        if (IsSkipped()) {
            return;
        }
        if (m_Mounted) {
            EXPECT_EQ(umount(SUDOERS), 0);
        }
        CInstallFixture::TearDown();
    }

    fs::path State() const { return Folder() / "state"; }
    std::string Qorctl() const { return Bin() / "qorctl"; }
    // The user's own library. When it is loaded, it tells whose process that is.
    std::string Plugin() const { return Folder() / "own.so"; }
    fs::path Loaded() const { return Folder() / "loaded"; }

    // The words of the rule; "--perfdata all" may stand behind them.
    std::string Check() const {
        return "check --state " + (State() / "health.json").string() + REST;
    }

    // The shipped rule, as an administrator fits it to a machine.
    std::string Rule() const {
        std::string rule = ReadFile(Share() / "qor/monitoring/qorctl.sudoers");
        rule = Replaced(rule, "= nagios", std::string("= ") + AGENT);
        rule = Replaced(rule, "/usr/bin/qorctl", Qorctl());
        return Replaced(rule, "/var/lib/qor", State());
    }

    // In this test's view of the system only.
    void UseRules(const std::string& rules) {
        const fs::path file = Folder() / "sudoers";
        WriteFile(file, rules);
        fs::permissions(file, fs::perms(0440));
        ASSERT_EQ(mount(file.c_str(), SUDOERS, "none", MS_BIND, nullptr), 0);
        m_Mounted = true;
    }

    // sudo as the agent's user, on a simulated server with a failed drive.
    CEnd Sudo(const std::string& command, const std::string& environment = "") const {
        return Shell("exec qorsim run --host degraded -- " + std::string(AS_AGENT) + "env " +
                     environment + " " QOR_SUDO_PROGRAM " -n " + command);
    }

    void ExpectRefused(const std::string& command,
                       const std::string& reason = "sudo: a password is required") const {
        const CEnd end = Sudo(command);
        EXPECT_EQ(end.status, 1) << command;
        EXPECT_EQ(end.out, "") << command;
        EXPECT_THAT(end.err, HasSubstr(reason)) << command;
        ExpectNotLoaded(command);
    }

    void ExpectNotLoaded(const std::string& command) const {
        EXPECT_FALSE(fs::exists(Loaded())) << command;
    }

    void ExpectCheck(const CEnd& end, const std::string& command) const {
        EXPECT_EQ(end.status, 2) << command << end.err;
        EXPECT_THAT(end.out, StartsWith("RAID CRITICAL")) << command;
        ExpectNotLoaded(command);
    }

private:
    void MakePlugin() {
        WriteFile(Folder() / "own.cpp",
                  "#include <cstdio>\n"
                  "#include <unistd.h>\n"
                  "__attribute__((constructor)) static void Tell() {\n"
                  "    std::FILE* file = std::fopen(\"" +
                      Loaded().string() +
                      "\", \"w\");\n"
                      "    std::fprintf(file, \"%d\", static_cast<int>(geteuid()));\n"
                      "    std::fclose(file);\n"
                      "}\n");
        const CEnd end = Shell("'" INSTALL_COMPILER "' -shared -fPIC -o own.so own.cpp");
        ASSERT_EQ(end.status, 0) << end.err;
    }

    bool m_Mounted = false;
};

TEST_F(CSudoRuleTest, RuleIsValid) {
    const fs::path file = Folder() / "rule";
    WriteFile(file, Rule());
    fs::permissions(file, fs::perms(0440));
    const CEnd end = Shell(QOR_VISUDO_PROGRAM " -c -s -f '" + file.string() + "'");
    EXPECT_EQ(end.status, 0) << end.out << end.err;
    EXPECT_THAT(end.out, HasSubstr("parsed OK"));
    EXPECT_THAT(Rule(), HasSubstr(" " + Qorctl() + " " + Check() + ", \\\n"));
    EXPECT_THAT(Rule(), HasSubstr(" " + Qorctl() + " " + Check() + " --perfdata all\n"));
}

TEST_F(CSudoRuleTest, ChecksAsRoot) {
    UseRules(Rule());
    ExpectCheck(Sudo(Qorctl() + " " + Check()), "the rule's command");
    EXPECT_TRUE(fs::exists(State() / "health.json"));
    ExpectCheck(Sudo(Qorctl() + " " + Check() + " --perfdata all"), "with all performance data");
}

TEST_F(CSudoRuleTest, OtherArgumentsAreRefused) {
    UseRules(Rule());
    for (const std::string& arguments :
         {Check() + " --plugin " + Plugin(), "--plugin " + Plugin() + " " + Check(),
          "check --plugin " + Plugin(), Check() + " --output /etc/cron.d/x", std::string("check"),
          std::string("raid"), std::string(), std::string("--help"),
          "check --state " + (Folder() / "x").string() + REST,
          "check --state " + (State() / "../x").string() + REST,
          Replaced(Check(), "critical", "ok"), Replaced(Check(), "50", "86400"),
          Check() + " --perfdata none", "--perfdata all " + Check()}) {
        ExpectRefused(Qorctl() + " " + arguments);
    }
    ExpectRefused("-u nobody " + Qorctl() + " " + Check(), "Sorry, user nobody is not allowed to");
    ExpectRefused("sh -c id");
}

// sudo compares the words with blanks between them, so that some can be put together. What comes of
// it stays in the folder of the state.
TEST_F(CSudoRuleTest, WordsThatAreJoinedDoNoHarm) {
    UseRules(Rule());
    const std::string state = (State() / "health.json").string();
    for (const std::string& arguments :
         {"check --state '" + state + REST + "'", "'check --state' " + state + REST,
          "check '--state " + state + "'" + REST, "'" + Check() + "'"}) {
        Sudo(Qorctl() + " " + arguments);
        ExpectNotLoaded(arguments);
    }
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(Folder())) {
        if (entry.path().filename().string().starts_with("health.json")) {
            EXPECT_EQ(entry.path().parent_path(), State());
        }
    }
}

// Whatever the machine's other rules keep.
TEST_F(CSudoRuleTest, EnvironmentHasNoSay) {
    const fs::path trace = Folder() / "trace";
    const fs::path own = Folder() / "own";
    WriteFile(own / "sh", "#!/bin/sh\ntouch " + Loaded().string() + "\nexec /bin/sh \"$@\"\n");
    fs::permissions(own / "sh", fs::perms(0755));
    const std::string environment = "QOR_PLUGIN=" + Plugin() + " QOR_TRACE=file:" + trace.string() +
                                    ":31 LD_PRELOAD=" + Plugin() + " PATH=" + own.string() +
                                    ":/usr/bin:/bin";
    UseRules(
        "Defaults !env_reset, setenv\n"
        "Defaults env_keep += \"QOR_PLUGIN QOR_TRACE LD_PRELOAD PATH\"\n"
        "Defaults !secure_path\n" +
        Rule());
    const std::string command = Qorctl() + " " + Check();
    // The program that sets the variables would load the library itself.
    const CEnd end = Sudo(command, Replaced(environment, " LD_PRELOAD=[^ ]*", ""));
    ExpectCheck(end, "variables in the environment");
    EXPECT_FALSE(fs::exists(trace));
    for (const std::string& option : {"QOR_PLUGIN=" + Plugin(), std::string("QOR_TRACE=file:/x:31"),
                                      "LD_PRELOAD=" + Plugin(), std::string("-E")}) {
        const CEnd asked = Sudo(option + " " + command);
        EXPECT_EQ(asked.status, 1) << option;
        EXPECT_THAT(asked.err, HasSubstr("sorry, you are not allowed to")) << option;
        ExpectNotLoaded(option);
    }
}

// Why the arguments are fixed.
TEST_F(CSudoRuleTest, WildcardIsCodeAsRoot) {
    UseRules(std::string(AGENT) + " ALL = (root) NOPASSWD: " + Qorctl() + " check *\n");
    Sudo(Qorctl() + " check --plugin " + Plugin());
    EXPECT_EQ(ReadFile(Loaded()), "0");
}

// And why the rule resets the environment itself.
TEST_F(CSudoRuleTest, VariableThatIsKeptIsCodeAsRoot) {
    UseRules("Defaults env_keep += QOR_PLUGIN\n" + std::string(AGENT) +
             " ALL = (root) NOPASSWD: " + Qorctl() + " " + Check() + "\n");
    Sudo(Qorctl() + " " + Check(), "QOR_PLUGIN=" + Plugin());
    EXPECT_EQ(ReadFile(Loaded()), "0");
}

}  // namespace
}  // namespace qortest
