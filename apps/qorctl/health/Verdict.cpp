#include "health/Verdict.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <string>
#include <utility>

#include "health/Advice.h"
#include "model/ObjectNames.h"

namespace qorctl {
namespace {

void SortFindings(std::vector<CHealthFinding>& findings) {
    std::stable_sort(
        findings.begin(), findings.end(), [](const CHealthFinding& one, const CHealthFinding& two) {
            return one.health != two.health && Worse(one.health, two.health) == one.health;
        });
}

template <class TDevice>
void AddNames(std::set<std::string>& names, const std::vector<TDevice>& devices) {
    for (const TDevice& device : devices) {
        names.insert(ObjectName(device));
    }
}

// Of everything that there are findings on.
std::set<std::string> NamesOf(const CInventory& inventory) {
    std::set<std::string> names;
    AddNames(names, inventory.controllers);
    AddNames(names, inventory.logicalDrives);
    AddNames(names, inventory.physicalDrives);
    AddNames(names, inventory.pcieSsds);
    for (const CController& controller : inventory.controllers) {
        names.insert(BatteryName(controller));
    }
    return names;
}

CGap NoSuch(std::string_view rule, const std::string& place, const std::set<CNumber>& there) {
    std::string others;
    for (const CNumber& each : there) {
        others += (others.empty() ? "; there is " : ", ") + NumberText(each);
    }
    return {.rule = rule,
            .object = "",
            .text = fmt::format("no {} is reported{}", place, others),
            .remedy = ""};
}

void AddMissingPlace(std::vector<CGap>& gaps, const CInventory& inventory,
                     const CInventoryFilter& filter) {
    std::set<CNumber> controllers;
    std::set<CNumber> enclosures;
    for (const CController& controller : inventory.controllers) {
        controllers.insert(controller.number);
    }
    for (const CPhysicalDrive& drive : inventory.physicalDrives) {
        if (!filter.controller || drive.controller == filter.controller) {
            enclosures.insert(drive.place.enclosure);
        }
    }
    enclosures.erase(std::nullopt);
    if (filter.controller && !controllers.contains(filter.controller)) {
        const std::string controller = fmt::format("controller {}", *filter.controller);
        gaps.push_back(NoSuch("no-such-controller", controller, controllers));
    } else if (filter.enclosure && !enclosures.contains(filter.enclosure)) {
        const std::string enclosure =
            fmt::format("enclosure {}{}", *filter.enclosure,
                        filter.controller ? " of controller " + NumberText(filter.controller) : "");
        gaps.push_back(NoSuch("no-such-enclosure", enclosure, enclosures));
    }
}

// Drops the gaps that `isDropped` says so of, with what they were told by.
template <class TPredicate>
void DropGaps(CAnswer& answer, TPredicate isDropped) {
    for (const CGap& gap : answer.gaps) {
        if (isDropped(gap)) {
            std::erase_if(answer.messages, [&](const CMessage& message) {
                return message.code == gap.rule && message.text == GapText(gap);
            });
        }
    }
    std::erase_if(answer.gaps, isDropped);
}

// An object without a name is the server, or the judgement itself.
bool IsAbout(const std::string& object, std::string_view rule, const std::set<std::string>& names) {
    return object.empty() ? rule != REASON_NO_PCIE_SSD : names.contains(object);
}

void NarrowToPlace(CAnswer& answer, CVerdict& verdict, const CInventoryFilter& filter) {
    std::vector<CGap> missing;
    AddMissingPlace(missing, answer.inventory, filter);
    KeepPlace(answer.inventory, filter);
    const std::set<std::string> names = NamesOf(answer.inventory);
    DropGaps(answer, [&](const CGap& gap) { return !IsAbout(gap.object, gap.rule, names); });
    std::erase_if(verdict.health.findings, [&](const CHealthFinding& finding) {
        return !IsAbout(finding.object, finding.rule, names);
    });
    std::erase_if(verdict.health.notReported,
                  [&](const CNotReported& each) { return !names.contains(each.object); });
    JudgeGaps(missing, verdict.health);
    AddGaps(answer, std::move(missing));
    if (answer.reason == REASON_JUDGED) {
        verdict.status = verdict.health.Overall();
    }
}

}  // namespace

CVerdict JudgeAnswer(const CAnswer& answer, const CHealthOptions& options,
                     const CCountersJudge& judgeCounters) {
    CVerdict verdict;
    if (answer.reason == REASON_JUDGED) {
        verdict.health = JudgeHealth(answer.inventory, options);
        JudgeGaps(answer.gaps, verdict.health);
        judgeCounters(answer.inventory, verdict.health);
        SortFindings(verdict.health.findings);
        verdict.status = verdict.health.Overall();
    }
    return verdict;
}

void Narrow(CAnswer& answer, CVerdict& verdict, const CInventoryFilter& filter) {
    if (!answer.IsAnswered()) {
        return;
    }
    if (filter.HasPlace()) {
        NarrowToPlace(answer, verdict, filter);
    }
    if (filter.problems) {
        const CProblemMarks marks(verdict.health.findings);
        KeepProblems(answer.inventory, [&marks](const std::string& object) {
            return marks.Of(object) != EHealth::OK;
        });
    }
}

}  // namespace qorctl
