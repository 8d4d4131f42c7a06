// The shipped files for Nagios 4, with the real one: what a check says arrives whole.
#include <gmock/gmock.h>
#include <unistd.h>

#include <map>

#include "MonitoringFixture.h"

namespace fs = std::filesystem;

namespace qortest {
namespace {

using testing::Each;
using testing::HasSubstr;

// What Debian's configuration has, as far as the shipped files need it.
constexpr const char* SURROUNDINGS = R"(
define timeperiod {
    timeperiod_name  24x7
    alias            always
    sunday           00:00-24:00
    monday           00:00-24:00
    tuesday          00:00-24:00
    wednesday        00:00-24:00
    thursday         00:00-24:00
    friday           00:00-24:00
    saturday         00:00-24:00
}
define command {
    command_name  nothing
    command_line  /bin/true
}
define contact {
    contact_name                   nobody
    host_notification_period       24x7
    service_notification_period    24x7
    host_notification_options      n
    service_notification_options   n
    host_notification_commands     nothing
    service_notification_commands  nothing
}
define service {
    name                 generic-service
    register             0
    check_period         24x7
    notification_period  24x7
    contacts             nobody
}
)";

class CNagiosTest : public CMonitoringFixture {
protected:
    // `resources` has the macros, `group` is the line that puts a host into the shipped group.
    void Configure(const std::string& resources, const std::string& shippedFile,
                   const std::string& group, const CStrings& hosts) const {
        std::string objects = SURROUNDINGS;
        for (const std::string& host : hosts) {
            objects += "define host {\n    host_name  " + host +
                       "\n    address  127.0.0.1\n    max_check_attempts  1\n"
                       "    check_period  24x7\n    notification_period  24x7\n"
                       "    contacts  nobody\n    " +
                       group + "\n}\n";
        }
        WriteFile(Home() / "objects.cfg", objects);
        WriteFile(Home() / "resource.cfg", resources);
        fs::create_directory(Home() / "results");
        WriteFile(Home() / "nagios.cfg", MainFile(shippedFile));
    }

    std::string MainFile(const std::string& shippedFile) const {
        const std::string home = Home().string() + "/";
        return "cfg_file=" + home + "objects.cfg\ncfg_file=" + Shipped(shippedFile).string() +
               "\nresource_file=" + home + "resource.cfg\nlog_file=" + home +
               "log\nobject_cache_file=" + home + "objects.cache\nprecached_object_file=" + home +
               "objects.precache\nstatus_file=" + home + "status.dat\ncommand_file=" + home +
               "pipe\nquery_socket=" + home + "socket\nlock_file=" + home +
               "pid\ntemp_file=" + home + "temp\ntemp_path=" + Home().string() +
               "\ncheck_result_path=" + home + "results\nstate_retention_file=" + home +
               "retention.dat\nservice_perfdata_file=" + home +
               "perfdata\nnagios_user=" + std::to_string(geteuid()) +
               "\nnagios_group=" + std::to_string(getegid()) +
               "\nservice_perfdata_file_template=$HOSTNAME$\\t$SERVICEPERFDATA$\n"
               "service_perfdata_file_mode=a\nprocess_performance_data=1\n"
               "check_external_commands=1\nstatus_update_interval=1\nuse_syslog=0\n"
               "log_rotation_method=n\ncheck_for_updates=0\nenable_notifications=0\n"
               "execute_host_checks=0\nservice_check_timeout=60\n"
               // So that the program that stands in for sudo knows the host.
               "enable_environment_macros=1\n"
               // As Debian has it.
               "illegal_macro_output_chars=`~$&|'\"<>\n";
    }

    // What Nagios knows of the services that it has checked.
    std::map<std::string, CAnswer> Answers() const {
        std::map<std::string, CAnswer> answers;
        std::map<std::string, std::string> values;
        for (const std::string& line :
             Lines(fs::exists(Home() / "status.dat") ? ReadFile(Home() / "status.dat") : "")) {
            const size_t sign = line.find('=');
            if (line == "servicestatus {") {
                values = {{"type", "service"}};
            } else if (sign != std::string::npos) {
                values[line.substr(1, sign - 1)] = line.substr(sign + 1);
            } else if (values["type"] == "service" && values["has_been_checked"] == "1") {
                answers[values["host_name"]] = {
                    .status = std::stoi(values["current_state"]),
                    .summary = values["plugin_output"],
                    .details = Replaced(values["long_plugin_output"], "\\n", "\n"),
                    .performance = values["performance_data"]};
                values.clear();
            }
        }
        return answers;
    }

    // From Nagios's start to its end.
    std::map<std::string, CAnswer> Check(const CStrings& hosts) const {
        CEngine nagios({NAGIOS, Home() / "nagios.cfg"}, Home() / "output");
        ForceChecks(nagios, Home() / "pipe", hosts);
        std::map<std::string, CAnswer> answers;
        if (HasFatalFailure()) {
            return answers;
        }
        EXPECT_TRUE(Eventually([&] { return (answers = Answers()).size() == hosts.size(); }))
            << nagios.Output();
        nagios.End();
        return answers;
    }

    std::string PerfdataOf(const std::string& host) const {
        for (const std::string& line : Lines(ReadFile(Home() / "perfdata"))) {
            if (line.starts_with(host + "\t")) {
                return line.substr(host.size() + 1);
            }
        }
        return "no line";
    }
};

TEST_F(CNagiosTest, LocalCheckArrivesWhole) {
    ASSERT_NO_FATAL_FAILURE(DemandInstalled({NAGIOS}));
    WriteProgram(Home() / "sudo-qorctl",
                 "exec '" + CheckOn().string() + "' \"$NAGIOS_HOSTNAME\" \"$@\"\n");
    Configure(Replaced(LineOfPage("$USER21$="), SUDO_QORCTL,
                       "'" + (Home() / "sudo-qorctl").string() + "'") +
                  "\n",
              "nagios-local.cfg", LineOfPage("hostgroups  qor-local"), CheckedHosts());
    std::map<std::string, CAnswer> answers = Check(CheckedHosts());
    EXPECT_THAT(Asked(), Each(CHECK_ALL));
    for (const CChecked& checked : CHECKED) {
        const CAnswer expected = Expected(checked.name, CHECK_ALL);
        EXPECT_EQ(expected.status, checked.status) << checked.name;
        ExpectSame(answers[checked.name], expected, checked.name);
        EXPECT_EQ(PerfdataOf(checked.name), expected.performance) << checked.name;
    }
    EXPECT_GT(answers["large"].performance.size(), 25000U);
    EXPECT_GT(answers["large"].details.size(), 2000U);
    EXPECT_THAT(answers["small"].performance, HasSubstr(" c0_PD0_temperature=31;50;60 "));
}

// Nagios, check_nrpe, NRPE, and what stands for sudo.
TEST_F(CNagiosTest, CheckOverNrpeArrivesWhole) {
    ASSERT_NO_FATAL_FAILURE(DemandInstalled({NAGIOS, CHECK_NRPE, NRPE}));
    const int port = FreePort();
    const std::unique_ptr<CEngine> nrpe = StartNrpe("large", port);
    // NRPE's usual port may be taken by the machine's own one.
    WriteProgram(Home() / "check_nrpe",
                 std::string("exec ") + CHECK_NRPE + " -p " + std::to_string(port) + " \"$@\"\n");
    // A directory of plug-ins has no blank.
    fs::create_symlink(Home() / "check_nrpe", Folder() / "check_nrpe");
    Configure("$USER1$=" + Folder().string() + "\n", "nagios-nrpe.cfg",
              LineOfPage("hostgroups  qor-nrpe"), {"large"});
    const CAnswer answer = Check({"large"})["large"];
    ExpectSame(answer, Expected("large", CHECK_COUNTS), "large");
}

}  // namespace
}  // namespace qortest
