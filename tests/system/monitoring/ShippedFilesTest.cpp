// What the shipped files for monitoring servers say, among themselves and on their page.
#include <gmock/gmock.h>

#include "MonitoringFixture.h"

namespace qortest {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class CShippedFilesTest : public CMonitoringFixture {};

// sudo compares letter for letter.
TEST_F(CShippedFilesTest, SudoAdmitsWhatTheOthersAsk) {
    CStrings admitted;
    const std::string program = "    /usr/bin/qorctl ";
    for (const std::string& line : Lines(ReadFile(Shipped("qorctl.sudoers")))) {
        if (line.starts_with(program)) {
            admitted.push_back(line.substr(program.size(), line.find(", \\") - program.size()));
        }
    }
    EXPECT_THAT(admitted, ElementsAre(CHECK_COUNTS, CHECK_ALL));
    EXPECT_THAT(ReadFile(Shipped("nrpe.cfg")), HasSubstr(std::string("\ncommand[check_qor]=") +
                                                         SUDO_QORCTL + " " + CHECK_COUNTS + "\n"));
    EXPECT_THAT(ReadFile(Shipped("nagios-local.cfg")),
                HasSubstr(std::string(" $USER21$ ") + CHECK_ALL + "\n"));
}

// The other tests take these lines from the page.
TEST_F(CShippedFilesTest, PageShowsTheLinesToChange) {
    EXPECT_THAT(ReadFile(Shipped("nagios-local.cfg")), HasSubstr(LineOfPage("$USER21$=")));
    EXPECT_THAT(ReadFile(Shipped("nagios-local.cfg")),
                HasSubstr(LineOfPage("hostgroups  qor-local")));
    EXPECT_THAT(ReadFile(Shipped("nagios-nrpe.cfg")),
                HasSubstr(LineOfPage("hostgroups  qor-nrpe")));
    EXPECT_THAT(ReadFile(Shipped("icinga2.conf")), HasSubstr(LineOfPage("const QorctlCommand")));
    EXPECT_THAT(ReadFile(Shipped("icinga2.conf")), HasSubstr(LineOfPage("vars.qor = true")));
    EXPECT_EQ(LineOfPage("$USER21$="), std::string("$USER21$=") + SUDO_QORCTL);
}

}  // namespace
}  // namespace qortest
