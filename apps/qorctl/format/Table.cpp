#include "format/Table.h"

#include <fmt/format.h>

#include <algorithm>
#include <span>
#include <utility>
#include <vector>

#include "model/ObjectNames.h"
#include "terminal/TextTable.h"

namespace qorctl {
namespace {

using CCells = std::vector<std::string>;

constexpr CTableColumn CONTROLLER_COLUMNS[] = {
    {"", 0, 0, EAlign::LEFT},         {"CTRL", 0, 0, EAlign::RIGHT},
    {"PRODUCT", 1, 12, EAlign::LEFT}, {"SERIAL", 4, 0, EAlign::LEFT},
    {"PCI", 5, 0, EAlign::LEFT},      {"FIRMWARE", 3, 0, EAlign::LEFT},
    {"MEMORY", 7, 0, EAlign::RIGHT},  {"LDS", 2, 0, EAlign::RIGHT},
    {"PDS", 2, 0, EAlign::RIGHT},     {"BATTERY", 2, 0, EAlign::LEFT},
    {"CHARGE", 6, 0, EAlign::RIGHT},
};

constexpr CTableColumn LOGICAL_COLUMNS[] = {
    {"", 0, 0, EAlign::LEFT},          {"CTRL", 0, 0, EAlign::RIGHT},
    {"LD", 0, 0, EAlign::RIGHT},       {"NAME", 1, 8, EAlign::LEFT},
    {"STATE", 0, 0, EAlign::LEFT},     {"CAPACITY", 2, 0, EAlign::RIGHT},
    {"GROUP", 3, 0, EAlign::LEFT},     {"LEVEL", 3, 0, EAlign::LEFT},
    {"STRIPE", 5, 0, EAlign::RIGHT},   {"TYPE", 6, 0, EAlign::LEFT},
    {"CACHE FOR", 4, 8, EAlign::LEFT},
};

constexpr CTableColumn DRIVE_COLUMNS[] = {
    {"", 0, 0, EAlign::LEFT},          {"CTRL", 0, 0, EAlign::RIGHT},
    {"PD", 0, 0, EAlign::RIGHT},       {"ENC:SLOT", 0, 0, EAlign::RIGHT},
    {"STATUS", 0, 0, EAlign::LEFT},    {"PROGRESS", 0, 0, EAlign::RIGHT},
    {"GROUP", 2, 0, EAlign::LEFT},     {"ROLE", 3, 0, EAlign::LEFT},
    {"TEMP", 3, 0, EAlign::RIGHT},     {"MEDIA", 4, 0, EAlign::RIGHT},
    {"OTHER", 6, 0, EAlign::RIGHT},    {"PREDICT", 4, 0, EAlign::RIGHT},
    {"CAPACITY", 2, 0, EAlign::RIGHT}, {"TYPE", 5, 0, EAlign::LEFT},
    {"PRODUCT", 5, 10, EAlign::LEFT},  {"SERIAL", 1, 0, EAlign::LEFT},
    {"HOURS", 7, 0, EAlign::RIGHT},
};

constexpr CTableColumn SSD_COLUMNS[] = {
    {"", 0, 0, EAlign::LEFT},          {"BUS", 0, 0, EAlign::RIGHT},
    {"PRODUCT", 1, 12, EAlign::LEFT},  {"STATUS", 0, 0, EAlign::LEFT},
    {"CAPACITY", 2, 0, EAlign::RIGHT}, {"TEMP", 3, 0, EAlign::RIGHT},
    {"USED", 3, 0, EAlign::RIGHT},     {"WRITTEN", 5, 0, EAlign::RIGHT},
    {"SERIAL", 4, 0, EAlign::LEFT},    {"FIRMWARE", 6, 0, EAlign::LEFT},
};

constexpr CTableColumn SMART_COLUMNS[] = {
    {"ID", 1, 0, EAlign::RIGHT},      {"ATTRIBUTE", 0, 16, EAlign::LEFT},
    {"CURRENT", 2, 0, EAlign::RIGHT}, {"WORST", 3, 0, EAlign::RIGHT},
    {"VALUE", 0, 0, EAlign::RIGHT},   {"THRESHOLD", 1, 0, EAlign::RIGHT},
};

// The columns that findings speak of: these are shown whatever the width.
struct CRuleColumn {
    std::string_view rule;
    std::string_view title;
};

constexpr CRuleColumn RULE_COLUMNS[] = {
    {"battery-status", "BATTERY"},
    {"drive-media-errors", "MEDIA"},
    {"drive-other-errors", "OTHER"},
    {"drive-predictive-failure", "PREDICT"},
    {"drive-temperature", "TEMP"},
    {"ssd-temperature", "TEMP"},
    {"ssd-wear", "USED"},
    {"report-incomplete", "LDS"},
    {"report-incomplete", "PDS"},
};

std::vector<CTableColumn> WithNeeded(std::span<const CTableColumn> columns,
                                     const CProblemMarks& marks) {
    std::vector<CTableColumn> needed(columns.begin(), columns.end());
    for (const CRuleColumn& row : RULE_COLUMNS) {
        const auto column =
            std::find_if(needed.begin(), needed.end(),
                         [&row](const CTableColumn& each) { return each.title == row.title; });
        if (column != needed.end() && marks.HasRule(row.rule)) {
            column->importance = 0;
        }
    }
    return needed;
}

std::string Shown(const CText& text) {
    return text.value_or("");
}

std::string Shown(const CNumber& number) {
    return number ? std::to_string(*number) : "";
}

std::string Shown(const CMeasure& measure) {
    return measure ? measure->text : "";
}

std::string PlaceText(const CDrivePlace& place) {
    return place.enclosure || place.slot
               ? fmt::format("{}:{}", Shown(place.enclosure), Shown(place.slot))
               : "";
}

// "SAS HDD"
std::string TypeText(const CPhysicalDrive& drive) {
    const bool both = drive.interfaceType && drive.mediaType;
    return Shown(drive.interfaceType) + (both ? " " : "") + Shown(drive.mediaType);
}

std::string LinksText(const CLogicalDrive& drive) {
    std::string text;
    for (const CLinkedDrive& link : drive.caches) {
        text += (text.empty() ? "LD" : ", LD") + Shown(link.number);
    }
    return text;
}

CCells CellsOf(const CController& each) {
    return {Shown(each.number),
            Shown(each.product),
            Shown(each.serial),
            Shown(each.pciText),
            Shown(each.firmwarePackage ? each.firmwarePackage : each.firmwareVersion),
            Shown(each.memory),
            Shown(each.logicalDriveCount),
            Shown(each.physicalDriveCount),
            Shown(each.batteryStatus ? each.batteryStatus : each.batteryPresence),
            Shown(each.batteryCharge)};
}

CCells CellsOf(const CLogicalDrive& each) {
    return {Shown(each.controller), Shown(each.number),     Shown(each.name),
            Shown(each.state),      Shown(each.capacity),   Shown(each.group),
            Shown(each.raidLevel),  Shown(each.stripeSize), Shown(each.type),
            LinksText(each)};
}

CCells CellsOf(const CPhysicalDrive& each) {
    return {Shown(each.controller),
            Shown(each.number),
            PlaceText(each.place),
            Shown(each.statusDetail ? each.statusDetail : each.status),
            Shown(each.progress),
            Shown(each.group),
            Shown(each.use),
            Shown(each.temperature),
            Shown(each.mediaErrors),
            Shown(each.otherErrors),
            Shown(each.predictiveFailures),
            Shown(each.capacity),
            TypeText(each),
            Shown(each.product),
            Shown(each.serial),
            Shown(each.smart ? each.smart->powerOnTime : CMeasure())};
}

CCells CellsOf(const CPcieSsd& each) {
    return {Shown(each.bus),      Shown(each.product),     Shown(each.status),
            Shown(each.capacity), Shown(each.temperature), Shown(each.used),
            Shown(each.written),  Shown(each.serial),      Shown(each.firmware)};
}

CCells CellsOf(const CSmartAttribute& each) {
    return {Shown(each.id),    Shown(each.name),  Shown(each.current),
            Shown(each.worst), Shown(each.value), Shown(each.threshold)};
}

CTableRow MakeRow(const CCells& cells, const CTextStyle& style) {
    CTableRow row;
    for (const std::string& cell : cells) {
        row.cells.push_back(MakeVisible(cell, style));
    }
    return row;
}

class CTables {
public:
    CTables(const CProblemMarks& marks, const CTextStyle& style) : m_Marks(marks), m_Style(style) {}

    template <class TDevice>
    void Append(std::span<const CTableColumn> columns, const std::vector<TDevice>& devices);
    void AppendSmart(const std::vector<CPhysicalDrive>& drives);

    std::string m_Text;

private:
    void Append(std::span<const CTableColumn> columns, const std::vector<CTableRow>& rows);

    const CProblemMarks& m_Marks;
    const CTextStyle& m_Style;
};

void CTables::Append(std::span<const CTableColumn> columns, const std::vector<CTableRow>& rows) {
    const std::string table = FormatTextTable(WithNeeded(columns, m_Marks), rows, m_Style);
    m_Text += m_Text.empty() || table.empty() ? "" : "\n";
    m_Text += table;
}

template <class TDevice>
void CTables::Append(std::span<const CTableColumn> columns, const std::vector<TDevice>& devices) {
    std::vector<CTableRow> rows;
    for (const TDevice& device : devices) {
        const EHealth health = m_Marks.OfDevice(device);
        CCells cells = {std::string(MarkOf(health))};
        for (std::string& cell : CellsOf(device)) {
            cells.push_back(std::move(cell));
        }
        rows.push_back(MakeRow(cells, m_Style));
        rows.back().colour = ColourOf(health);
    }
    Append(columns, rows);
}

void CTables::AppendSmart(const std::vector<CPhysicalDrive>& drives) {
    std::vector<CTableRow> rows;
    for (const CPhysicalDrive& drive : drives) {
        if (!drive.smart) {
            continue;
        }
        for (const CSmartAttribute& attribute : drive.smart->attributes) {
            rows.push_back(MakeRow(CellsOf(attribute), m_Style));
        }
    }
    Append(SMART_COLUMNS, rows);
}

}  // namespace

std::string FormatTables(const CInventory& inventory, const CProblemMarks& marks,
                         const CTextStyle& style) {
    CTables tables(marks, style);
    tables.Append(CONTROLLER_COLUMNS, inventory.controllers);
    tables.Append(LOGICAL_COLUMNS, inventory.logicalDrives);
    tables.Append(DRIVE_COLUMNS, inventory.physicalDrives);
    tables.Append(SSD_COLUMNS, inventory.pcieSsds);
    tables.AppendSmart(inventory.physicalDrives);
    return tables.m_Text;
}

}  // namespace qorctl
