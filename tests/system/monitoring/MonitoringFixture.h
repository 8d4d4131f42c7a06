// Fixture: everything installed, the shipped files for monitoring servers, and programs that stand
// in for "sudo -n qorctl" and run it on a simulated server.
#ifndef QORTEST_MONITORINGFIXTURE_H
#define QORTEST_MONITORINGFIXTURE_H

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Engine.h"
#include "InstallFixture.h"

namespace qortest {

// The words of the shipped rule for sudo.
inline constexpr const char* SUDO_QORCTL = "/usr/bin/sudo -n /usr/bin/qorctl";
inline constexpr const char* CHECK_COUNTS =
    "check --state /var/lib/qor/health.json --no-hardware critical --timeout 50";
inline constexpr const char* CHECK_ALL =
    "check --state /var/lib/qor/health.json --no-hardware critical --timeout 50 --perfdata all";

inline constexpr const char* NAGIOS = "/usr/sbin/nagios4";
inline constexpr const char* ICINGA = "/usr/sbin/icinga2";
inline constexpr const char* NRPE = "/usr/sbin/nrpe";
inline constexpr const char* CHECK_NRPE = "/usr/lib/nagios/plugins/check_nrpe";

// A server that a check looks at; the name is that of a shipped host, or SILENT.
struct CChecked {
    const char* name;
    int status;
};

// Its RAID tool never answers.
inline constexpr const char* SILENT = "silent";
inline constexpr CChecked CHECKED[] = {
    {"small", 0}, {"failed-drive", 2}, {SILENT, 3}, {"large", 2}};

CStrings CheckedHosts();

// A check's output as a monitoring server takes it apart.
struct CAnswer {
    int status = -1;
    std::string summary = {};
    std::string details = {};  // the further lines, without the last line's end
    std::string performance = {};
};

class CMonitoringFixture : public CInstallFixture {
protected:
    void SetUp() override;
    void TearDown() override;

    // The test's folder holds a blank, as far as the engines allow it.
    std::filesystem::path Home() const { return Folder() / "with blank"; }
    // A shipped file, as it was installed.
    std::filesystem::path Shipped(const std::string& name) const;
    // The line of the page on monitoring that begins so behind its blanks.
    static std::string LineOfPage(const std::string& beginning);

    // check-on HOST ARGUMENTS...: runs qorctl on the simulated server, and notes the arguments.
    std::filesystem::path CheckOn() const { return Home() / "check-on"; }
    // What qorctl itself prints.
    CAnswer Expected(const std::string& host, const std::string& words) const;
    // The arguments of all checks so far, a line each.
    CStrings Asked() const;
    void WriteProgram(const std::filesystem::path& path, const std::string& text) const;

    // NRPE on a simulated server, with the shipped file and a command "check_qor_all" beside the
    // shipped one; "sudo" is a program that runs qorctl, if it is asked for what the rule admits.
    std::unique_ptr<CEngine> StartNrpe(const std::string& host, int port);
    static CEnd CheckNrpe(int port, const CStrings& arguments);

    // Commands for the engine's pipe: checks the service RAID of these hosts at once.
    static void ForceChecks(CEngine& engine, const std::filesystem::path& pipe,
                            const CStrings& hosts);

private:
    void WriteCheckOn() const;
    void StandInForSudo();
    void WriteNrpeConfiguration(int port) const;

    CStrings m_Mounted = {};
};

CAnswer AnswerOf(const CEnd& end);
void ExpectSame(const CAnswer& answer, const CAnswer& expected, const std::string& host);
std::string Replaced(std::string text, const std::string& what, const std::string& by);

}  // namespace qortest

#endif  // QORTEST_MONITORINGFIXTURE_H
