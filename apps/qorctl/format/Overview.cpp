#include "format/Overview.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "health/Advice.h"
#include "model/ObjectNames.h"
#include "terminal/TextTable.h"

namespace qorctl {
namespace {

// The sentences that are shown, and the lines of what is healthy.
constexpr size_t MAX_SENTENCES = 10;
constexpr size_t MAX_HEALTHY = 18;

constexpr CTableColumn OVERVIEW_COLUMNS[] = {{"", 0, 0, EAlign::LEFT},
                                             {"NAME", 0, 0, EAlign::LEFT},
                                             {"STATE", 0, 0, EAlign::LEFT},
                                             {"DETAILS", 1, 16, EAlign::LEFT}};

// How much of what is healthy has a line of its own.
enum class EDetail { GROUPS, CONTROLLERS, NOTHING };

struct CLine {
    EHealth health = EHealth::OK;
    size_t depth = 0;
    std::string name;
    std::string state;
    std::string details = {};
};

using CDrives = std::vector<const CPhysicalDrive*>;
using CLogicalDrives = std::vector<const CLogicalDrive*>;

// What belongs to a RAID group; to a controller where the group has no name.
struct CPart {
    const CRaidGroup* group = nullptr;
    CLogicalDrives logicalDrives;
    CDrives drives;
};

// The parts of each controller, in the order of the report.
class CServerParts {
public:
    explicit CServerParts(const CInventory& inventory);

    const std::vector<CPart>& Of(const CNumber& controller) const;

    // The controllers that have parts here, but no record of their own.
    std::set<CNumber> WithoutController(const CInventory& inventory) const;

private:
    CPart& Find(const CNumber& controller, const CText& group);

    std::map<CNumber, std::vector<CPart>> m_Parts;
    std::map<std::pair<CNumber, CText>, size_t> m_Positions;
};

CServerParts::CServerParts(const CInventory& inventory) {
    for (const CRaidGroup& group : inventory.raidGroups) {
        Find(group.controller, group.name).group = &group;
    }
    for (const CLogicalDrive& drive : inventory.logicalDrives) {
        Find(drive.controller, drive.group).logicalDrives.push_back(&drive);
    }
    for (const CPhysicalDrive& drive : inventory.physicalDrives) {
        Find(drive.controller, drive.group).drives.push_back(&drive);
    }
}

CPart& CServerParts::Find(const CNumber& controller, const CText& group) {
    std::vector<CPart>& parts = m_Parts[controller];
    const auto [position, isNew] = m_Positions.try_emplace({controller, group}, parts.size());
    if (isNew) {
        parts.emplace_back();
    }
    return parts[position->second];
}

const std::vector<CPart>& CServerParts::Of(const CNumber& controller) const {
    static const std::vector<CPart> NONE;
    const auto found = m_Parts.find(controller);
    return found == m_Parts.end() ? NONE : found->second;
}

std::set<CNumber> CServerParts::WithoutController(const CInventory& inventory) const {
    std::set<CNumber> numbers;
    for (const auto& [number, parts] : m_Parts) {
        numbers.insert(number);
    }
    for (const CController& controller : inventory.controllers) {
        numbers.erase(controller.number);
    }
    return numbers;
}

void Append(std::string& text, const std::string& part) {
    text += (text.empty() || part.empty() ? "" : ", ") + part;
}

std::string Joined(const std::string& one, const std::string& other) {
    return one + (one.empty() || other.empty() ? "" : " ") + other;
}

std::string TextOf(const CMeasure& measure) {
    return measure ? measure->text : "";
}

// "LD1 Data 1.088TB"
std::string LogicalDriveText(const CLogicalDrive& drive) {
    return Joined(Joined("LD" + NumberText(drive.number), drive.name.value_or("")),
                  TextOf(drive.capacity));
}

std::string DriveStateText(const CPhysicalDrive& drive) {
    return (drive.statusDetail ? *drive.statusDetail : drive.status.value_or("?")) +
           ProgressText(drive.progress);
}

// "2 drives", "1 global spare"; nothing for none.
std::string CountText(size_t count, std::string_view noun) {
    return count == 0 ? "" : fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

std::string DrivesText(const CDrives& drives) {
    const auto count = [&drives](auto... roles) {
        return static_cast<size_t>(std::count_if(
            drives.begin(), drives.end(),
            [&](const CPhysicalDrive* drive) { return ((drive->role == roles) || ...); }));
    };
    const size_t global = count(EDriveRole::GLOBAL_SPARE);
    const size_t dedicated = count(EDriveRole::DEDICATED_SPARE);
    const size_t unassigned = count(EDriveRole::UNASSIGNED);
    std::string text = CountText(drives.size() - global - dedicated - unassigned, "drive");
    Append(text, CountText(dedicated, "dedicated spare"));
    Append(text, CountText(global, "global spare"));
    Append(text, unassigned == 0 ? "" : fmt::format("{} unassigned", unassigned));
    return text;
}

// Writes the lines of one level of detail.
class COverview {
public:
    COverview(const CInventory& inventory, const CServerParts& parts, const CProblemMarks& marks,
              EDetail detail);

    size_t HealthyLines() const;

    std::vector<CLine> m_Lines;

private:
    bool AddController(const CController& controller);
    void AddLineOf(const CController& controller, EHealth worst);
    void AddParts(const std::vector<CPart>& parts);
    void AddGroup(const CPart& part, EHealth worst);
    void AddProblemsOf(const CPart& part);
    void AddSsds(const std::vector<CPcieSsd>& ssds);
    template <class TDevice>
    EHealth WorstOf(const std::vector<const TDevice*>& devices) const;
    EHealth WorstOf(const CPart& part) const;
    std::string ProblemsText(const std::string& object, const std::string& state) const;

    const CServerParts& m_Parts;
    const CProblemMarks& m_Marks;
    const EDetail m_Detail;
};

COverview::COverview(const CInventory& inventory, const CServerParts& parts,
                     const CProblemMarks& marks, EDetail detail)
    : m_Parts(parts), m_Marks(marks), m_Detail(detail) {
    size_t healthy = 0;
    for (const CController& controller : inventory.controllers) {
        healthy += AddController(controller) ? 0U : 1U;
    }
    for (const CNumber& number : parts.WithoutController(inventory)) {
        CController controller;
        controller.number = number;
        AddController(controller);
    }
    if (healthy > 0) {
        m_Lines.push_back({.name = CountText(healthy, "controller"), .state = "OK"});
    }
    AddSsds(inventory.pcieSsds);
}

size_t COverview::HealthyLines() const {
    return static_cast<size_t>(std::count_if(m_Lines.begin(), m_Lines.end(), [](const CLine& line) {
        return line.health == EHealth::OK;
    }));
}

template <class TDevice>
EHealth COverview::WorstOf(const std::vector<const TDevice*>& devices) const {
    EHealth worst = EHealth::OK;
    for (const TDevice* device : devices) {
        worst = Worse(worst, m_Marks.OfDevice(*device));
    }
    return worst;
}

EHealth COverview::WorstOf(const CPart& part) const {
    return Worse(WorstOf(part.logicalDrives), WorstOf(part.drives));
}

// What the state does not say itself.
std::string COverview::ProblemsText(const std::string& object, const std::string& state) const {
    std::string text;
    for (const CHealthFinding* finding : m_Marks.FindingsOf(object)) {
        Append(text, finding->message == state ? "" : finding->message);
    }
    return text;
}

// False for a healthy one that is only counted.
bool COverview::AddController(const CController& controller) {
    EHealth worst = m_Marks.OfDevice(controller);
    for (const CPart& part : m_Parts.Of(controller.number)) {
        worst = Worse(worst, WorstOf(part));
    }
    if (worst == EHealth::OK && m_Detail == EDetail::NOTHING) {
        return false;
    }
    AddLineOf(controller, worst);
    AddParts(m_Parts.Of(controller.number));
    return true;
}

void COverview::AddLineOf(const CController& controller, EHealth worst) {
    CDrives drives;
    size_t groups = 0;
    for (const CPart& part : m_Parts.Of(controller.number)) {
        drives.insert(drives.end(), part.drives.begin(), part.drives.end());
        groups += part.group == nullptr ? 0 : 1;
    }
    std::string details = ProblemsText(ObjectName(controller), "");
    Append(details, controller.product.value_or(""));
    Append(details, CountText(groups, "RAID group"));
    Append(details, CountText(drives.size(), "drive"));
    if (controller.batteryStatus) {
        Append(details,
               Joined("battery " + *controller.batteryStatus, TextOf(controller.batteryCharge)));
    }
    m_Lines.push_back({.health = worst,
                       .depth = 0,
                       .name = ObjectName(controller),
                       .state = std::string(HealthName(worst)),
                       .details = details});
}

void COverview::AddParts(const std::vector<CPart>& parts) {
    for (const CPart& part : parts) {
        const EHealth worst = WorstOf(part);
        if (worst != EHealth::OK || m_Detail == EDetail::GROUPS) {
            AddGroup(part, worst);
            AddProblemsOf(part);
        }
    }
}

void COverview::AddGroup(const CPart& part, EHealth worst) {
    std::string details;
    std::string state;
    EHealth health = EHealth::OK;
    for (const CLogicalDrive* drive : part.logicalDrives) {
        const EHealth own = m_Marks.OfDevice(*drive);
        if (state.empty() || Worse(own, health) != health) {
            state = drive->state.value_or("?");
            health = own;
        }
        Append(details, LogicalDriveText(*drive));
    }
    Append(details, DrivesText(part.drives));
    m_Lines.push_back({.health = worst,
                       .depth = 1,
                       .name = part.group == nullptr
                                   ? "no RAID group"
                                   : Joined(part.group->name.value_or("RAID group"),
                                            part.group->raidLevel.value_or("")),
                       .state = state,
                       .details = details});
}

// A group's only logical drive is the group's line.
void COverview::AddProblemsOf(const CPart& part) {
    for (const CLogicalDrive* drive : part.logicalDrives) {
        const EHealth health = m_Marks.OfDevice(*drive);
        if (health != EHealth::OK && part.logicalDrives.size() > 1) {
            m_Lines.push_back(
                {.health = health,
                 .depth = 2,
                 .name = Joined("LD" + NumberText(drive->number), drive->name.value_or("")),
                 .state = drive->state.value_or("?"),
                 .details = TextOf(drive->capacity)});
        }
    }
    for (const CPhysicalDrive* drive : part.drives) {
        const EHealth health = m_Marks.OfDevice(*drive);
        if (health != EHealth::OK) {
            const std::string state = DriveStateText(*drive);
            std::string details = drive->serial ? "serial " + *drive->serial : "";
            Append(details, ProblemsText(ObjectName(*drive), state));
            Append(details, Joined(drive->product.value_or(""), TextOf(drive->capacity)));
            m_Lines.push_back({.health = health,
                               .depth = 2,
                               .name = ShortDriveName(IdentityOf(*drive)),
                               .state = state,
                               .details = details});
        }
    }
}

void COverview::AddSsds(const std::vector<CPcieSsd>& ssds) {
    size_t healthy = 0;
    for (const CPcieSsd& ssd : ssds) {
        const EHealth health = m_Marks.OfDevice(ssd);
        if (health == EHealth::OK && m_Detail != EDetail::GROUPS) {
            ++healthy;
            continue;
        }
        std::string details = ProblemsText(ObjectName(ssd), ssd.status.value_or(""));
        Append(details, Joined(ssd.product.value_or(""), TextOf(ssd.capacity)));
        Append(details, ssd.used ? ssd.used->text + " used" : "");
        m_Lines.push_back({.health = health,
                           .name = ObjectName(ssd),
                           .state = ssd.status.value_or("?"),
                           .details = details});
    }
    if (healthy > 0) {
        m_Lines.push_back({.name = CountText(healthy, "PCIe SSD"), .state = "OK"});
    }
}

std::vector<CLine> LinesThatFit(const CInventory& inventory, const CProblemMarks& marks) {
    const CServerParts parts(inventory);
    for (const EDetail detail : {EDetail::GROUPS, EDetail::CONTROLLERS}) {
        COverview overview(inventory, parts, marks, detail);
        if (overview.HealthyLines() <= MAX_HEALTHY) {
            return std::move(overview.m_Lines);
        }
    }
    return std::move(COverview(inventory, parts, marks, EDetail::NOTHING).m_Lines);
}

std::string LinesText(const std::vector<CLine>& lines, const CTextStyle& style) {
    std::vector<CTableRow> rows;
    rows.reserve(lines.size());
    for (const CLine& line : lines) {
        rows.push_back({.cells = {std::string(MarkOf(line.health)),
                                  std::string(2 * line.depth, ' ') + MakeVisible(line.name, style),
                                  MakeVisible(line.state, style), MakeVisible(line.details, style)},
                        .colour = ColourOf(line.health)});
    }
    return FormatTextTable(OVERVIEW_COLUMNS, rows, style);
}

// Of each object the worst: the table tells the others.
std::vector<CHealthFinding> WorstOfEach(const std::vector<CHealthFinding>& findings) {
    std::set<std::string_view> seen;
    std::vector<CHealthFinding> worst;
    for (const CHealthFinding& finding : findings) {
        if (finding.object.empty() || seen.insert(finding.object).second) {
            worst.push_back(finding);
        }
    }
    return worst;
}

std::string SentencesText(const CHealth& health, const CTextStyle& style) {
    std::vector<CHealthFinding> findings = WorstOfEach(health.findings);
    const size_t count = findings.size();
    findings.resize(std::min(count, MAX_SENTENCES));
    return FormatProblems(findings, style) +
           (count > MAX_SENTENCES
                ? fmt::format("And {} more: \"qorctl check\" lists them.\n", count - MAX_SENTENCES)
                : "");
}

}  // namespace

std::string FormatOverview(const CAnswer& answer, const CVerdict& verdict,
                           const CTextStyle& style) {
    std::string text = answer.sentence;
    if (!answer.IsAnswered()) {
        text = DescribeNoAnswer(answer);
    } else if (answer.reason == REASON_JUDGED) {
        text = DescribeCounts(answer.inventory);
    }
    const std::string head = fmt::format("{}: {}", HealthName(verdict.status), text);
    const CProblemMarks marks(verdict.health.findings);
    const std::string lines = LinesText(LinesThatFit(answer.inventory, marks), style);
    return Coloured(WrapText(MakeVisible(head, style), style.width, 0, "  "),
                    ColourOf(verdict.status), style) +
           '\n' + SentencesText(verdict.health, style) + (lines.empty() ? "" : "\n") + lines;
}

}  // namespace qorctl
