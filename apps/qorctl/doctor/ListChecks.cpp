// The two lists of supported devices.
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "doctor/Checks.h"
#include "doctor/ServerFacts.h"

namespace qorctl::doctor {
namespace {

constexpr size_t MOST_ODDITIES = 5;

std::string Shorten(const std::vector<std::string>& lines) {
    const auto shown = lines.begin() + static_cast<long>(std::min(lines.size(), MOST_ODDITIES));
    std::string text = fmt::format("{}", fmt::join(lines.begin(), shown, "; "));
    if (lines.size() > MOST_ODDITIES) {
        text += fmt::format("; and {} more", lines.size() - MOST_ODDITIES);
    }
    return text;
}

// What is wrong with the file as a whole; empty if it has entries that can match.
std::string WholeProblem(const CSupportedList& list) {
    if (list.trouble.trouble != ETrouble::NONE) {
        return list.trouble.reason;
    }
    if (list.matching == 0) {
        return list.path + " has no entry that can match a device" +
               (list.oddities.empty() ? "" : ": " + Shorten(list.oddities));
    }
    return "";
}

// The list is there, and this user cannot read it.
bool IsHidden(const CSupportedList& list) {
    return !list.trouble.remedy.empty();
}

CFinding JudgeEntries(const CSupportedList& list) {
    const std::string text = fmt::format("{}, {} entries", list.path, list.matching);
    return list.oddities.empty() ? Ok(text)
                                 : Warn(fmt::format("{}: {}", text, Shorten(list.oddities)),
                                        "correct the file; docs/configuration.md describes it");
}

}  // namespace

CFinding ExamineRaidList(CServerFacts& facts) {
    const std::string problem = WholeProblem(facts.RaidList());
    return problem.empty()
               ? JudgeEntries(facts.RaidList())
               : Fail(problem + ": no RAID controller is ever found",
                      IsHidden(facts.RaidList())
                          ? facts.RaidList().trouble.remedy
                          : "copy the RaidVCFac.ini that is shipped into the install directory");
}

CFinding ExamineSsdList(CServerFacts& facts) {
    const CSupportedList& list = facts.SsdList();
    const std::string problem = WholeProblem(list);
    const std::string remedy =
        "copy the PciessdVCFac.ini that is shipped into the install directory";
    if (problem.empty()) {
        return JudgeEntries(list);
    }
    if (IsHidden(list)) {
        return Fail(problem, list.trouble.remedy);
    }
    return Warn(problem + ": only VEN_1AED/DEV_2001 is supported", remedy);
}

}  // namespace qorctl::doctor
