#include "model/Gap.h"

#include <fmt/format.h>

#include <cstddef>
#include <map>
#include <set>
#include <utility>

#include "model/ObjectNames.h"

namespace qorctl {
namespace {

constexpr std::string_view REMEDY =
    "Run \"qorctl doctor\": is the disk of the result files full? Then ask the tool by hand:\n"
    "LD_LIBRARY_PATH=/opt/tarmica/krz/lib /opt/tarmica/krz/cli/krzcli -ldpdinfo -aAll";

// Drives that a text names.
constexpr size_t MAX_NAMED = 5;

// The drives of a controller by their number; those without one all differ.
class CNumbers {
public:
    void Add(const CNumber& number) {
        m_Nameless += number ? 0 : 1;
        if (number) {
            ++m_Times[*number];
        }
    }

    long long Count() const { return static_cast<long long>(m_Times.size()) + m_Nameless; }
    bool Has(long long number) const { return m_Times.contains(number); }

    // ": PD3 stands there 2 times"; nothing where each does once.
    std::string Repeated(std::string_view head) const {
        for (const auto& [number, times] : m_Times) {
            if (times > 1) {
                return fmt::format(": {}{} stands there {} times", head, number, times);
            }
        }
        return "";
    }

private:
    std::map<long long, long long> m_Times;
    long long m_Nameless = 0;
};

// One kind of drive: what is reported, and what else is named.
struct CKind {
    std::string_view noun;
    std::string_view head;
    std::map<CNumber, CNumbers> reported = {};          // by controller
    std::map<CNumber, std::set<long long>> named = {};  // by controller
};

template <typename TDrive>
void AddReported(CKind& kind, const std::vector<TDrive>& drives) {
    for (const TDrive& drive : drives) {
        kind.reported[drive.controller].Add(drive.number);
    }
}

CGap MakeGap(const CNumber& controller, std::string text) {
    return {.rule = "report-incomplete",
            .object = "controller " + NumberText(controller),
            .text = std::move(text),
            .remedy = std::string(REMEDY)};
}

// True when fewer are reported than the controller states.
bool AddStated(std::vector<CGap>& gaps, const CController& controller, const CMeasure& stated,
               const CKind& kind, const CNumbers& reported) {
    if (!stated || stated->number.value_or(0) <= reported.Count()) {
        return false;
    }
    gaps.push_back(MakeGap(controller.number,
                           fmt::format("states {} {}, {} reported{}", stated->text, kind.noun,
                                       reported.Count(), reported.Repeated(kind.head))));
    return true;
}

void AddNamed(std::vector<CGap>& gaps, const CController& controller, const CKind& kind,
              const CNumbers& reported) {
    const auto named = kind.named.find(controller.number);
    std::string missing;
    size_t count = 0;
    for (const long long number :
         named == kind.named.end() ? std::set<long long>() : named->second) {
        if (!reported.Has(number) && ++count <= MAX_NAMED) {
            missing += fmt::format("{}{}{}", count == 1 ? "" : ", ", kind.head, number);
        }
    }
    if (count > 0) {
        gaps.push_back(MakeGap(
            controller.number,
            fmt::format("names {} that are not reported: {}{}", kind.noun, missing,
                        count > MAX_NAMED ? fmt::format(", and {} more", count - MAX_NAMED) : "")));
    }
}

void AddKind(std::vector<CGap>& gaps, const CController& controller, const CMeasure& stated,
             const CKind& kind) {
    static const CNumbers NONE;
    const auto found = kind.reported.find(controller.number);
    const CNumbers& reported = found == kind.reported.end() ? NONE : found->second;
    if (!AddStated(gaps, controller, stated, kind, reported)) {
        AddNamed(gaps, controller, kind, reported);
    }
}

void AddGroup(std::vector<CGap>& gaps, const CRaidGroup& group) {
    const CMeasure& stated = group.logicalDriveCount;
    const std::set<long long> there(group.logicalDrives.begin(), group.logicalDrives.end());
    if (stated && stated->number.value_or(0) > static_cast<long long>(there.size())) {
        gaps.push_back(MakeGap(group.controller,
                               fmt::format("states {} logical drives in {}, {} reported",
                                           stated->text, group.name.value_or("?"), there.size())));
    }
}

// The tool is asked by these numbers.
void AddRepeated(std::vector<CGap>& gaps, const std::vector<CController>& controllers) {
    std::map<CNumber, size_t> times;
    for (const CController& controller : controllers) {
        ++times[controller.number];
    }
    for (const auto& [number, count] : times) {
        if (count > 1) {
            gaps.push_back(MakeGap(number, fmt::format("is reported {} times; what the others with "
                                                       "that number have is not known",
                                                       count)));
        }
    }
}

CKind LogicalDrivesOf(const CInventory& inventory) {
    CKind kind = {.noun = "logical drives", .head = "LD"};
    AddReported(kind, inventory.logicalDrives);
    std::set<CNumber> withGroups;
    for (const CRaidGroup& group : inventory.raidGroups) {
        withGroups.insert(group.controller);
    }
    // Without a single group, what the controller states has to say whether there are any.
    for (const CPhysicalDrive& drive : inventory.physicalDrives) {
        if (drive.logicalDrive && withGroups.contains(drive.controller)) {
            kind.named[drive.controller].insert(*drive.logicalDrive);
        }
    }
    return kind;
}

CKind DrivesOf(const CInventory& inventory) {
    CKind kind = {.noun = "drives", .head = "PD"};
    AddReported(kind, inventory.physicalDrives);
    for (const CRaidGroup& group : inventory.raidGroups) {
        for (const CGroupMember& member : group.members) {
            if (member.drive) {
                kind.named[group.controller].insert(*member.drive);
            }
        }
    }
    return kind;
}

}  // namespace

std::string GapText(const CGap& gap) {
    return gap.object.empty() ? gap.text : gap.object + ' ' + gap.text;
}

std::vector<CGap> FindMissingDrives(const CInventory& inventory) {
    const CKind logicalDrives = LogicalDrivesOf(inventory);
    const CKind drives = DrivesOf(inventory);
    std::vector<CGap> gaps;
    for (const CController& controller : inventory.controllers) {
        AddKind(gaps, controller, controller.logicalDriveCount, logicalDrives);
        AddKind(gaps, controller, controller.physicalDriveCount, drives);
    }
    for (const CRaidGroup& group : inventory.raidGroups) {
        AddGroup(gaps, group);
    }
    AddRepeated(gaps, inventory.controllers);
    return gaps;
}

}  // namespace qorctl
