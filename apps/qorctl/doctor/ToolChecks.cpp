// The RAID tool, and the LSI utilities that count disks where it is missing.
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/ServerPaths.h"
#include "cli/KRZVersion.h"
#include "doctor/Checks.h"
#include "doctor/ServerFacts.h"
#include "host/PathTrouble.h"
#include "plugin/ComLib.h"
#include "presence/LsiUtility.h"

namespace qorctl::doctor {
namespace {

constexpr const char* INSTALL_TOOL = "install the RAID tool";
constexpr const char* UPDATE_TOOL = "update the RAID tool";
constexpr const char* UPDATE_EITHER =
    "update the RAID tool, or the plug-in if the tool is the newer one";
constexpr const char* NO_VERSION =
    "run krzcli -v by hand: a tool that says nothing has to be installed again; if it tells a "
    "version there, free the file system of /var/tmp";

// The version, or the finding that it cannot be had.
struct CToolVersion {
    std::string text;
    std::optional<CFinding> obstacle;
};

CToolVersion AskVersion(CServerFacts& facts) {
    if (!facts.IsToolInstalled()) {
        return {"", NotExamined("the RAID tool is not installed")};
    }
    if (!facts.Plugin()) {
        return {"", NotExamined("the plug-in, which runs the tool, could not be loaded")};
    }
    const CToolRun& run = facts.VersionRun();
    if (!run.problem.empty() || run.result != EToolResult::DONE) {
        return {"", Fail("krzcli -v: " + (run.problem.empty() ? ExplainToolRun(run) : run.problem),
                         "run it by hand as root; see docs/error-codes.md for the trace")};
    }
    return {ProductVersion(run.output), std::nullopt};
}

CFinding ExamineVersion(CServerFacts& facts, bool (CKRZVersion::*isOld)() const,
                        const char* consequence) {
    const CToolVersion tool = AskVersion(facts);
    if (tool.obstacle) {
        return *tool.obstacle;
    }
    const std::optional<CKRZVersion> version = CKRZVersion::Parse(tool.text);
    if (!version) {
        return Warn(fmt::format("\"{}\" is not of the form major.minor", tool.text),
                    tool.text.empty() ? NO_VERSION : UPDATE_EITHER);
    }
    return ((*version).*isOld)() ? Warn(tool.text + consequence, UPDATE_TOOL) : Ok(tool.text);
}

constexpr const char* PUT_UTILITY =
    "install the RAID tool, or put the utility there: without either, disks are taken for missing";

CFinding JudgeMissingUtility(const CServerFacts& facts, const std::string& reason,
                             const std::string& remedy) {
    return facts.IsToolInstalled() ? Warn(reason + "; needed only where the RAID tool is missing",
                                          "chmod +x, or remove the file")
                                   : Fail(reason + ", and the RAID tool is missing", remedy);
}

}  // namespace

CFinding ExamineToolPresence(CServerFacts& facts) {
    if (facts.IsToolInstalled()) {
        return Ok(KRZ_CLI_PATH);
    }
    const CPathTrouble trouble = ExaminePath(KRZ_CLI_PATH, EPathKind::FILE, X_OK);
    if (!trouble.remedy.empty()) {
        return Fail(trouble.reason, trouble.remedy);
    }
    const std::string& reason = trouble.reason;
    if (facts.RaidDevices().empty() && facts.SsdDevices().empty()) {
        return Warn(reason + "; there is no supported device either",
                    "nothing, or " + std::string(INSTALL_TOOL));
    }
    return Fail(reason + ", and a supported device is present", INSTALL_TOOL);
}

CFinding ExamineToolPermissions(CServerFacts& facts) {
    struct stat status = {};
    if (!facts.IsToolInstalled() || stat(KRZ_CLI_PATH, &status) != 0) {
        return NotExamined("the RAID tool is not installed");
    }
    const std::string text = fmt::format("mode {:04o}", status.st_mode & 07777U);
    const CPathTrouble trouble = ExaminePath(KRZ_CLI_PATH, EPathKind::FILE, X_OK);
    if (trouble.trouble != ETrouble::NONE) {
        return Fail(fmt::format("{}: {}", text, trouble.reason),
                    trouble.trouble == ETrouble::FORBIDDEN
                        ? fmt::format("chmod 0755 {}", KRZ_CLI_PATH)
                        : trouble.remedy);
    }
    if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        return Warn(text + ": others may replace what the server runs",
                    fmt::format("chmod go-w {}", KRZ_CLI_PATH));
    }
    return Ok(text + ", executable");
}

CFinding ExamineToolForRaid(CServerFacts& facts) {
    return ExamineVersion(facts, &CKRZVersion::IsOldForRAID,
                          " is older than 4.4: reports lack items");
}

CFinding ExamineToolForSsds(CServerFacts& facts) {
    if (facts.SsdDevices().empty()) {
        return Ok("not needed, there is no supported PCIe SSD");
    }
    return ExamineVersion(facts, &CKRZVersion::IsOldForSSD,
                          " is older than 7: PCIe SSDs are not reported");
}

CFinding ExamineLsiUtility(CServerFacts& facts) {
    if (facts.RaidDevices().empty()) {
        return Ok("not needed, there is no supported RAID controller");
    }
    const std::string path = PathOf(UtilityFor(facts.RaidDevices()));
    const CPathTrouble trouble = ExaminePath(path, EPathKind::FILE, X_OK);
    if (trouble.trouble == ETrouble::MISSING) {
        return facts.IsToolInstalled() ? Ok("not needed, the RAID tool is installed")
                                       : JudgeMissingUtility(facts, trouble.reason, PUT_UTILITY);
    }
    if (trouble.trouble != ETrouble::NONE) {
        return JudgeMissingUtility(facts, trouble.reason, trouble.remedy);
    }
    const CPathTrouble place = ExaminePath(UTILITY_WORK_DIRECTORY, EPathKind::DIRECTORY, X_OK);
    if (!facts.IsToolInstalled() && place.trouble != ETrouble::NONE) {
        return JudgeMissingUtility(facts, "its working directory " + place.reason,
                                   place.remedy.empty() ? PUT_UTILITY : place.remedy);
    }
    return Ok(path);
}

}  // namespace qorctl::doctor
