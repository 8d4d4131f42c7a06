// The shipped file for Icinga 2, with the real one: what a check says arrives whole.
#include <gmock/gmock.h>
#include <grp.h>
#include <pwd.h>
#include <unistd.h>

#include <map>
#include <nlohmann/json.hpp>

#include "MonitoringFixture.h"

namespace fs = std::filesystem;

namespace qortest {
namespace {

using nlohmann::json;
using testing::Each;
using testing::HasSubstr;

class CIcingaTest : public CMonitoringFixture {
protected:
    void Configure() const {
        for (const char* folder : {"data", "cache", "log", "spool", "run", "etc"}) {
            fs::create_directory(Home() / folder);
        }
        const std::string home = Home().string() + "/";
        std::string text = Replaced(LineOfPage("const QorctlCommand"),
                                    R"("/usr/bin/sudo", "-n", "/usr/bin/qorctl")",
                                    "\"" + CheckOn().string() + "\", \"$host.name$\"") +
                           "\ninclude \"" + Shipped("icinga2.conf").string() +
                           "\"\n"
                           "object Endpoint NodeName {}\n"
                           "object Zone ZoneName { endpoints = [ NodeName ] }\n"
                           "object CheckerComponent \"checker\" {}\n"
                           "object CheckCommand \"nothing\" { command = [ \"/bin/true\" ] }\n"
                           "object ExternalCommandListener \"pipe\" { command_path = \"" +
                           home +
                           "pipe\" }\n"
                           "object PerfdataWriter \"perfdata\" {\n"
                           "  rotation_interval = 2\n"
                           "  service_format_template = \"$host.name$\\t$service.perfdata$\"\n";
        for (const std::string kind : {"host", "service"}) {
            text += "  " + kind + "_perfdata_path = \"" + home + kind + "-perfdata\"\n  " + kind +
                    "_temp_path = \"" + home + kind + ".temp\"\n";
        }
        text += "}\n";
        for (const CChecked& checked : CHECKED) {
            text += std::string("object Host \"") + checked.name +
                    "\" {\n  check_command = \"nothing\"\n  " + LineOfPage("vars.qor = true") +
                    "\n}\n";
        }
        WriteFile(Home() / "icinga2.conf", text);
    }

    CStrings Command() const {
        const std::string user = getpwuid(geteuid())->pw_name;
        const std::string group = getgrgid(getegid())->gr_name;
        CStrings words = {
            "/usr/bin/env", "ICINGA2_USER=" + user, "ICINGA2_GROUP=" + group, ICINGA, "daemon",
            "-c",           Home() / "icinga2.conf"};
        for (const auto& [constant, value] :
             std::map<std::string, std::string>{{"DataDir", Home() / "data"},
                                                {"CacheDir", Home() / "cache"},
                                                {"LogDir", Home() / "log"},
                                                {"SpoolDir", Home() / "spool"},
                                                {"InitRunDir", Home() / "run"},
                                                {"ConfigDir", Home() / "etc"},
                                                {"NodeName", "here"},
                                                {"ZoneName", "here"}}) {
            words.emplace_back("-D");
            words.push_back(constant + "=" + value);
        }
        return words;
    }

    // What a writer of metrics gets, by host.
    std::map<std::string, std::string> Perfdata() const {
        std::map<std::string, std::string> values;
        for (const fs::directory_entry& entry : fs::directory_iterator(Home())) {
            if (entry.path().filename().string().starts_with("service-perfdata")) {
                for (const std::string& line : Lines(ReadFile(entry.path()))) {
                    const size_t tab = line.find('\t');
                    values[line.substr(0, tab)] = line.substr(tab + 1);
                }
            }
        }
        return values;
    }

    // From the state that Icinga leaves at its end: objects, each with its length before it.
    std::map<std::string, CAnswer> Answers() const {
        std::map<std::string, CAnswer> answers;
        const std::string text = ReadFile(Home() / "data" / "icinga2.state");
        for (size_t at = 0; at < text.size();) {
            const size_t begin = text.find(':', at) + 1;
            const size_t size = std::stoul(text.substr(at));
            const json object = json::parse(text.substr(begin, size));
            if (object.at("type") == "Service") {
                const std::string name = object.at("name");
                answers[name.substr(0, name.find('!'))] =
                    AnswerOf(object.at("update").at("last_check_result"));
            }
            at = begin + size + 1;
        }
        return answers;
    }

    static CAnswer AnswerOf(const json& result) {
        if (result.is_null()) {
            return {};
        }
        const std::string output = result.at("output");
        const size_t line = std::min(output.find('\n'), output.size());
        CAnswer answer = {.status = result.at("exit_status"), .summary = output.substr(0, line)};
        answer.details = line < output.size() ? output.substr(line + 1) : "";
        CStrings values;
        if (result.at("performance_data").is_array()) {
            values = result.at("performance_data").get<CStrings>();
        }
        answer.performance = Joined(values, " ");
        return answer;
    }
};

TEST_F(CIcingaTest, CheckArrivesWhole) {
    ASSERT_NO_FATAL_FAILURE(DemandInstalled({ICINGA}));
    Configure();
    CEngine icinga(Command(), Home() / "output");
    ASSERT_NO_FATAL_FAILURE(ForceChecks(icinga, Home() / "pipe", CheckedHosts()));
    std::map<std::string, std::string> perfdata;
    // Icinga's end may write another file of the same second in place of the last one.
    EXPECT_TRUE(Eventually([&] { return (perfdata = Perfdata()).size() == std::size(CHECKED); }))
        << icinga.Output();
    icinga.End();
    std::map<std::string, CAnswer> answers = Answers();
    EXPECT_THAT(Asked(), Each(CHECK_ALL));
    for (const CChecked& checked : CHECKED) {
        const CAnswer expected = Expected(checked.name, CHECK_ALL);
        EXPECT_EQ(expected.status, checked.status) << checked.name;
        ExpectSame(answers[checked.name], expected, checked.name);
        EXPECT_EQ(perfdata[checked.name], expected.performance) << checked.name;
    }
    EXPECT_GT(answers["large"].performance.size(), 25000U);
    EXPECT_THAT(answers["small"].performance, HasSubstr(" c0_PD0_temperature=31;50;60 "));
}

}  // namespace
}  // namespace qortest
