// Any item list through everything that `qorctl` makes of one, held against a reading of our own of
// the same items: ItemReading.h.
#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>

#include "Depth.h"
#include "Fuzz.h"
#include "ItemListInput.h"
#include "ItemReading.h"
#include "MetricsReading.h"
#include "MonitoringGrammar.h"
#include "commands/CheckCommand.h"
#include "format/Csv.h"
#include "format/Json.h"
#include "format/Overview.h"
#include "format/Table.h"
#include "format/Tree.h"
#include "health/Verdict.h"
#include "metrics/Metrics.h"
#include "model/Inventory.h"
#include "model/ItemTree.h"

namespace {

using namespace qorfuzz;
using CJson = nlohmann::json;

// A larger list is shown in every form, and not read once more.
constexpr size_t MOST_ITEMS = 4096;

// Every object has each of its keys once. Returns what the text says.
CJson DemandJson(const std::string& text) {
    std::vector<std::set<std::string>> keys;
    const CJson json = CJson::parse(
        text,
        [&](int, CJson::parse_event_t event, const CJson& value) {
            if (event == CJson::parse_event_t::object_start) {
                keys.emplace_back();
            } else if (event == CJson::parse_event_t::object_end) {
                keys.pop_back();
            } else if (event == CJson::parse_event_t::key) {
                Demand(keys.back().insert(value.get<std::string>()).second,
                       "a key is in an object once", value.get<std::string>());
            }
            return true;
        },
        false);
    Demand(!json.is_discarded(), "what is written is JSON", text);
    return json;
}

// The values below the sections of a device, in no order.
void CollectValues(const CJson& json, std::vector<CJson>& values) {
    if (json.is_structured()) {
        for (const CJson& each : json) {
            CollectValues(each, values);
        }
    } else {
        values.push_back(json);
    }
}

std::vector<CJson> SectionValues(const CJson& devices) {
    std::vector<CJson> values;
    for (const CJson& device : devices) {
        CollectValues(device["sections"], values);
    }
    return values;
}

void DemandReport(const CJson& json, const CItemReading& reading) {
    static constexpr std::pair<const char*, ERoot> DEVICES[] = {{"controllers", ERoot::CONTROLLER},
                                                                {"raid_groups", ERoot::GROUP},
                                                                {"physical_drives", ERoot::DRIVE},
                                                                {"pcie_ssds", ERoot::SSD},
                                                                {"others", ERoot::OTHER}};
    std::vector<CJson> values;
    for (const auto& [name, root] : DEVICES) {
        Demand(json[name].size() == reading.Count(root), "every device is in the document", name);
        std::vector<CJson> more = SectionValues(json[name]);
        std::move(more.begin(), more.end(), std::back_inserter(values));
    }
    Demand(json["logical_drives"].size() == reading.logicalDrives.size(),
           "every logical drive is in the document");
    std::vector<CJson> more = SectionValues(json["logical_drives"]);
    std::move(more.begin(), more.end(), std::back_inserter(values));
    Demand(values.size() == reading.values.size(), "every item is in the document",
           std::to_string(values.size()));
    if (!reading.isAscii) {
        return;
    }
    std::vector<CJson> expected;
    for (const auto& value : reading.values) {
        expected.push_back(value ? CJson(*value) : CJson(nullptr));
    }
    std::sort(values.begin(), values.end());
    std::sort(expected.begin(), expected.end());
    Demand(values == expected, "every value is in the document as it is");
}

using CRows = std::vector<std::vector<std::string>>;

// RFC 4180
CRows RowsOfCsv(std::string_view text) {
    CRows rows;
    while (!text.empty()) {
        rows.emplace_back(1);
        for (bool quoted = false;;) {
            Demand(!text.empty(), "a row has an end");
            std::string& cell = rows.back().back();
            const char c = text.front();
            if (c == '"' && (quoted || cell.empty())) {
                const bool doubled = quoted && text.substr(1).starts_with('"');
                cell += doubled ? "\"" : "";
                quoted = quoted == doubled;
                text.remove_prefix(doubled ? 2 : 1);
                Demand(quoted || text.starts_with(',') || text.starts_with("\r\n") || cell.empty(),
                       "a quoted cell ends at its quote", text);
                continue;
            }
            if (!quoted && text.starts_with("\r\n")) {
                text.remove_prefix(2);
                break;
            }
            Demand(quoted || (c != '"' && c != '\r' && c != '\n'), "a bare cell is plain", text);
            text.remove_prefix(1);
            if (c == ',' && !quoted) {
                rows.back().emplace_back();
            } else {
                cell += c;
            }
        }
    }
    return rows;
}

void DemandRows(const CRows& rows, const CItemReading& reading) {
    Demand(rows.size() == 1 + reading.Count(ERoot::DRIVE) + reading.Count(ERoot::SSD),
           "a row a drive");
    for (const auto& row : rows) {
        Demand(row.size() == rows.front().size(), "a row has a cell for each column");
        for (const std::string& cell : row) {
            const bool isFormula = cell.find_first_of("=+-@\t\r") == 0;
            Demand(!isFormula || (cell[0] == '-' &&
                                  cell.find_first_not_of("-0123456789") == std::string::npos),
                   "no cell is a formula", cell);
        }
    }
}

bool IsPrintable(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return c == '\n' || (c >= ' ' && c < 0x7F); });
}

size_t FilledLines(const std::string& text) {
    const auto lines = LinesOf(text);
    return static_cast<size_t>(std::count_if(lines.begin(), lines.end(),
                                             [](std::string_view line) { return !line.empty(); }));
}

void DemandTable(const std::string& text, const CItemReading& reading) {
    Demand(IsPrintable(text), "a table is printable", text);
    size_t expected = 0;
    for (const size_t rows : {reading.Count(ERoot::CONTROLLER), reading.logicalDrives.size(),
                              reading.Count(ERoot::DRIVE), reading.Count(ERoot::SSD)}) {
        // Titles, rows, and the empty line before.
        expected += rows > 0 ? rows + (expected > 0 ? 2 : 1) : 0;
    }
    const size_t lines = LinesOf(text).size();
    const size_t most = expected + (reading.smartRows > 0 ? reading.smartRows + 2 : 0);
    Demand(lines >= expected && lines <= most, "a line a device", text);
}

void DemandTree(const std::string& text, const CItemReading& reading) {
    Demand(IsPrintable(text), "a tree is printable", text);
    Demand(FilledLines(text) <= reading.items && LinesOf(text).size() >= reading.items,
           "a line an item", text);
}

void DemandStatus(qorctl::EHealth status,
                  const std::map<std::string, std::string, std::less<>>& values,
                  const CItemReading& reading) {
    Demand(!reading.isShort || status == reading.Worst(), "the status is that of the worst device",
           qorctl::HealthName(status));
    for (const auto& [label, count] : {std::pair("controllers", reading.Count(ERoot::CONTROLLER)),
                                       std::pair("logical_drives", reading.logicalDrives.size()),
                                       std::pair("drives", reading.Count(ERoot::DRIVE)),
                                       std::pair("pcie_ssds", reading.Count(ERoot::SSD))}) {
        const auto value = values.find(label);
        Demand(value != values.end() && value->second == std::to_string(count),
               "the devices are counted", label);
    }
}

qorctl::CAnswer AnswerOf(const qorctl::CInventory& inventory) {
    qorctl::CAnswer answer;
    answer.outcome = qorctl::EOutcome::ANSWERED;
    answer.inventory = inventory;
    answer.gaps = qorctl::FindMissingDrives(inventory);
    return answer;
}

// One form of the list, shown and read again; `reading` is empty of a list that is too large.
using CForm = void (*)(const qorctl::CItemTree& tree, const qorctl::CInventory& inventory,
                       const CItemReading* reading);

void LookAtJson(const qorctl::CItemTree&, const qorctl::CInventory& inventory,
                const CItemReading* reading) {
    const qorctl::CAnswer answer = AnswerOf(inventory);
    const CJson json = DemandJson(qorctl::FormatJson(answer, qorctl::JudgeAnswer(answer), "raid"));
    if (reading != nullptr) {
        DemandReport(json, *reading);
    }
}

void LookAtCsv(const qorctl::CItemTree&, const qorctl::CInventory& inventory,
               const CItemReading* reading) {
    const qorctl::CVerdict verdict = qorctl::JudgeAnswer(AnswerOf(inventory));
    const auto rows =
        RowsOfCsv(qorctl::FormatCsv(inventory, qorctl::CProblemMarks(verdict.health.findings)));
    if (reading != nullptr) {
        DemandRows(rows, *reading);
    }
}

void LookAtTable(const qorctl::CItemTree&, const qorctl::CInventory& inventory,
                 const CItemReading* reading) {
    const qorctl::CVerdict verdict = qorctl::JudgeAnswer(AnswerOf(inventory));
    const qorctl::CProblemMarks marks(verdict.health.findings);
    const std::string text = qorctl::FormatTables(inventory, marks, {});
    if (reading != nullptr) {
        DemandTable(text, *reading);
    }
}

void LookAtOverview(const qorctl::CItemTree&, const qorctl::CInventory& inventory,
                    const CItemReading*) {
    const qorctl::CAnswer answer = AnswerOf(inventory);
    qorctl::CVerdict verdict = qorctl::JudgeAnswer(answer);
    const std::string text = qorctl::FormatOverview(answer, verdict, {});
    Demand(IsPrintable(text), "the overview is printable", text);
    Demand(text.starts_with(qorctl::HealthName(verdict.status)), "it begins with the verdict",
           text);
    for (const bool problems : {false, true}) {
        qorctl::CAnswer narrowed = answer;
        Narrow(narrowed, verdict, {.controller = 0, .problems = problems});
        Demand(narrowed.inventory.physicalDrives.size() <= inventory.physicalDrives.size(),
               "a filter adds nothing");
    }
}

void LookAtTree(const qorctl::CItemTree& tree, const qorctl::CInventory&,
                const CItemReading* reading) {
    const std::string text = qorctl::FormatTree(tree, {});
    if (reading != nullptr) {
        DemandTree(text, *reading);
    }
}

void LookAtCheck(const qorctl::CItemTree&, const qorctl::CInventory& inventory,
                 const CItemReading* reading) {
    qorctl::CCheckOptions options;
    options.performance = qorctl::EPerformance::ALL;
    const qorctl::CCheckResult result = qorctl::Check(AnswerOf(inventory), options, 0);
    const std::string text = qorctl::FormatCheckText(result);
    const auto values = ReadMonitoringOutput(text, qorctl::HealthName(result.status));
    const CJson json = DemandJson(qorctl::FormatCheckJson(result));
    Demand(json["exit_status"] == static_cast<int>(result.status), "JSON has the status");
    if (reading != nullptr) {
        DemandStatus(result.status, values, *reading);
    }
}

void LookAtMetrics(const qorctl::CItemTree&, const qorctl::CInventory& inventory,
                   const CItemReading* reading) {
    const std::string text = qorctl::FormatMetrics(
        {.answer = AnswerOf(inventory), .smart = qorctl::CSmartRequests(), .version = "1"});
    const qortest::CMetricsReading read = qortest::ReadMetrics(text);
    Demand(read.problem.empty(), "every line is one that a reader takes", read.problem);
    if (reading == nullptr) {
        return;
    }
    for (const auto& [family, count] :
         {std::pair("qor_controller_info", reading->Count(ERoot::CONTROLLER)),
          std::pair("qor_logical_drive_info", reading->logicalDrives.size()),
          std::pair("qor_physical_drive_info", reading->Count(ERoot::DRIVE)),
          std::pair("qor_pcie_ssd_info", reading->Count(ERoot::SSD))}) {
        const auto found = read.families.find(family);
        Demand((found == read.families.end() ? 0 : found->second.series) == count,
               "every device has its series", family);
    }
}

void Fuzz(const std::string& text) {
    static constexpr CForm FORMS[] = {LookAtJson,     LookAtCsv,   LookAtTable,  LookAtTree,
                                      LookAtOverview, LookAtCheck, LookAtMetrics};
    CItemListOwner items;
    ReadItems(text, items);
    const qorctl::CItemTree tree(items);
    const qorctl::CInventory inventory = qorctl::BuildInventory(tree, {});
    std::optional<CItemReading> reading;
    if (items.size() <= MOST_ITEMS) {
        reading = ReadOnceMore(items);
    }
    for (size_t i = 0; i < std::size(FORMS); ++i) {
        if (Depth() == EDepth::WHOLE || text.size() % std::size(FORMS) == i) {
            FORMS[i](tree, inventory, reading ? &*reading : nullptr);
        }
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    qorfuzz::FuzzInput(data, size, Fuzz);
    return 0;
}

std::vector<std::string_view> qorfuzz::Vocabulary() {
    return {
        " | Controller Information |  | TRUE",
        " | Logical Drive Information |  | TRUE",
        " | Physical Drive Information |  | TRUE",
        " | PCIe SSD Information |  | TRUE",
        " | Other Information | value | TRUE",
        "Controller Information | ### General Information ### |  | TRUE",
        "Logical Drive Information | ### General Information ### |  | TRUE",
        "Physical Drive Information | ### General Information ### |  | TRUE",
        "Physical Drive Information | ### SMART Information ### |  | TRUE",
        "PCIe SSD Information | ### General Information ### |  | TRUE",
        "PCIe SSD Information | ### Health Information ### |  | TRUE",
        "Controller Information | ### BBU Information ### |  | TRUE",
        "### General Information ### | Controller No. | 0 | TRUE",
        "### General Information ### | # of LD | 2 | TRUE",
        "### General Information ### | # of PD | 9 | TRUE",
        "### BBU Information ### | BBU | Present | TRUE",
        "### BBU Information ### | BBU Status | Learning | TRUE",
        "### General Information ### | LD List |  | TRUE",
        "LD List | LD No. | LD1 | TRUE",
        "LD List | State | Degraded | TRUE",
        "LD List | State | Optimal | TRUE",
        "### General Information ### | PD List |  | TRUE",
        "PD List | PD No. | PD3 | TRUE",
        "### General Information ### | PD No. | PD3 | TRUE",
        "### General Information ### | LD No. | GHS | TRUE",
        "### General Information ### | PD Status(Detail) | ONLINE | TRUE",
        "### General Information ### | PD Status(Detail) | OFFLINE | TRUE",
        "### General Information ### | PD Status(Detail) | REBUILD | TRUE",
        "### General Information ### | Temperature | 61C | TRUE",
        "### General Information ### | Temperature |  | FALSE",
        "### General Information ### | Media Error Count | 3 | TRUE",
        "### General Information ### | Media Error Count | 0 | TRUE",
        "### General Information ### | Serial Number | =1+1 | TRUE",
        "### General Information ### | Status | Healthy | TRUE",
        "### Health Information ### | Percentage Used | 98% | TRUE",
        "### SMART Information ### | SMART Detail(SATA) |  | TRUE",
        "SMART Detail(SATA) | Attribute | Power-On Hours | TRUE",
        "a | a (2) | x",
        "a | a",
        " | a",
        "",
    };
}
