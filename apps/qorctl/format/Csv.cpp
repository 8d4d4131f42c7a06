#include "format/Csv.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "model/ObjectNames.h"
#include "terminal/TerminalText.h"

namespace qorctl {
namespace {

constexpr std::string_view LINE_END = "\r\n";
// Spreadsheets of some languages take the wide forms as well.
constexpr std::string_view FORMULA_SIGNS[] = {"=", "+", "-", "@", "＝", "＋", "－", "＠"};
// What may part cells, here or in a spreadsheet that was told so; a tab cannot occur.
constexpr std::string_view SEPARATORS = ",;|:";
// May stand between a separator and a formula.
constexpr std::string_view PASSED_OVER = " \"";

// A row's cells before they are written.
struct CRow {
    CText kind;
    CNumber controller, number, enclosure, slot, bus;
    CText group, role;
    CNumber logicalDrive;
    CText status, statusDetail;
    CMeasure temperature, mediaErrors, otherErrors, predictiveFailures, capacity;
    CText interfaceType, mediaType, vendor, product, serial, wwn, revision, power;
    CMeasure speed, powerOnTime, used, written;
    CText health, problems;
};

bool IsFormula(std::string_view text) {
    return std::any_of(std::begin(FORMULA_SIGNS), std::end(FORMULA_SIGNS),
                       [text](std::string_view sign) { return text.starts_with(sign); });
}

// With an apostrophe in front of each part of the text that would be a formula as a cell.
std::string WithoutFormulas(std::string_view text) {
    std::string out;
    size_t begin = 0;  // of the part, in `out`
    bool isBegin = true;
    for (size_t i = 0; i < text.size(); ++i) {
        if (isBegin && IsFormula(text.substr(i))) {
            out.insert(begin, 1, '\'');
        }
        out += text[i];
        const bool isSeparator = SEPARATORS.find(text[i]) != std::string_view::npos;
        begin = isSeparator ? out.size() : begin;
        isBegin = isSeparator || (isBegin && PASSED_OVER.find(text[i]) != std::string_view::npos);
    }
    return out;
}

std::string Quoted(const std::string& cell) {
    std::string quoted = "\"";
    for (const char character : cell) {
        quoted.append(character == '"' ? 2 : 1, character);
    }
    return quoted + '"';
}

std::string Cell(const CText& text) {
    if (!text) {
        return "";
    }
    const std::string cell = WithoutFormulas(MakeVisible(*text, {.utf8 = true}));
    return cell.find_first_of(",\"") == std::string::npos ? cell : Quoted(cell);
}

std::string Cell(const CNumber& number) {
    return number ? std::to_string(*number) : "";
}

std::string Cell(const CMeasure& measure) {
    return measure ? Cell(measure->number) : "";
}

struct CColumn {
    std::string_view name;
    std::string (*cell)(const CRow& row);
};

template <auto MEMBER>
std::string CellOf(const CRow& row) {
    return Cell(row.*MEMBER);
}

constexpr CColumn COLUMNS[] = {
    {"kind", CellOf<&CRow::kind>},
    {"controller", CellOf<&CRow::controller>},
    {"number", CellOf<&CRow::number>},
    {"enclosure", CellOf<&CRow::enclosure>},
    {"slot", CellOf<&CRow::slot>},
    {"bus", CellOf<&CRow::bus>},
    {"raid_group", CellOf<&CRow::group>},
    {"role", CellOf<&CRow::role>},
    {"logical_drive", CellOf<&CRow::logicalDrive>},
    {"status", CellOf<&CRow::status>},
    {"status_detail", CellOf<&CRow::statusDetail>},
    {"temperature_celsius", CellOf<&CRow::temperature>},
    {"media_error_count", CellOf<&CRow::mediaErrors>},
    {"other_error_count", CellOf<&CRow::otherErrors>},
    {"predictive_failure_count", CellOf<&CRow::predictiveFailures>},
    {"capacity_bytes", CellOf<&CRow::capacity>},
    {"interface_type", CellOf<&CRow::interfaceType>},
    {"media_type", CellOf<&CRow::mediaType>},
    {"vendor", CellOf<&CRow::vendor>},
    {"product", CellOf<&CRow::product>},
    {"serial", CellOf<&CRow::serial>},
    {"wwn", CellOf<&CRow::wwn>},
    {"revision", CellOf<&CRow::revision>},
    {"power", CellOf<&CRow::power>},
    {"speed_bits_per_second", CellOf<&CRow::speed>},
    {"power_on_time_hours", CellOf<&CRow::powerOnTime>},
    {"used_percent", CellOf<&CRow::used>},
    {"written_bytes", CellOf<&CRow::written>},
    {"health", CellOf<&CRow::health>},
    {"problems", CellOf<&CRow::problems>},
};

template <class TText>
void AppendLine(std::string& out, TText text) {
    bool isFirst = true;
    for (const CColumn& column : COLUMNS) {
        if (!isFirst) {
            out += ',';
        }
        isFirst = false;
        out += text(column);
    }
    out += LINE_END;
}

CRow RowOf(const CPhysicalDrive& drive) {
    CRow row;
    row.kind = "physical_drive";
    row.controller = drive.controller;
    row.number = drive.number;
    row.enclosure = drive.place.enclosure;
    row.slot = drive.place.slot;
    row.group = drive.group;
    if (drive.role != EDriveRole::UNKNOWN) {
        row.role = std::string(RoleName(drive.role));
    }
    row.logicalDrive = drive.logicalDrive;
    row.status = drive.status;
    row.statusDetail = drive.statusDetail;
    row.temperature = drive.temperature;
    row.mediaErrors = drive.mediaErrors;
    row.otherErrors = drive.otherErrors;
    row.predictiveFailures = drive.predictiveFailures;
    row.capacity = drive.capacity;
    row.interfaceType = drive.interfaceType;
    row.mediaType = drive.mediaType;
    row.vendor = drive.vendor;
    row.product = drive.product;
    row.serial = drive.serial;
    row.wwn = drive.wwn;
    row.revision = drive.revision;
    row.power = drive.power;
    row.speed = drive.speed;
    row.powerOnTime = drive.smart ? drive.smart->powerOnTime : std::nullopt;
    return row;
}

CRow RowOf(const CPcieSsd& ssd) {
    CRow row;
    row.kind = "pcie_ssd";
    row.bus = ssd.bus;
    row.statusDetail = ssd.status;
    row.temperature = ssd.temperature;
    row.capacity = ssd.capacity;
    row.product = ssd.product;
    row.serial = ssd.serial;
    row.revision = ssd.firmware;
    row.used = ssd.used;
    row.written = ssd.written;
    return row;
}

CText ProblemsText(const std::vector<const CHealthFinding*>& findings) {
    CText text;
    for (const CHealthFinding* finding : findings) {
        text = (text ? *text + ", " : "") + finding->message;
    }
    return text;
}

template <class TDevice>
void AppendRows(std::string& out, const std::vector<TDevice>& devices, const CProblemMarks& marks) {
    for (const TDevice& device : devices) {
        CRow row = RowOf(device);
        row.health = std::string(HealthName(marks.OfDevice(device)));
        row.problems = ProblemsText(marks.FindingsOf(ObjectName(device)));
        AppendLine(out, [&row](const CColumn& column) { return column.cell(row); });
    }
}

}  // namespace

std::string FormatCsv(const CInventory& inventory, const CProblemMarks& marks) {
    std::string out;
    AppendLine(out, [](const CColumn& column) { return column.name; });
    AppendRows(out, inventory.physicalDrives, marks);
    AppendRows(out, inventory.pcieSsds, marks);
    return out;
}

}  // namespace qorctl
