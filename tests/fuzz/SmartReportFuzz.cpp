// "krzcli -pdinfo -pd[E:S] -aN": one drive with its SMART table. The same text is the report on the
// groups.
#include <algorithm>
#include <span>

#include "Depth.h"
#include "Fuzz.h"
#include "ReportFuzz.h"
#include "ReportVocabulary.h"
#include "getters/CMSRAID_PDSMInfoGetter.h"
#include "getters/Text.h"

namespace {

using namespace qorfuzz;

constexpr const char* BLANKS = " \t";
constexpr size_t SATA_NAME_WIDTH = 40;
constexpr size_t BLANK_AND_DATA_WIDTH = 5;

using CLines = std::span<const std::string_view>;

bool IsEmpty(std::string_view line) {
    return TrimmedView(line).empty();
}

CLines Behind(CLines lines, size_t count) {
    return lines.subspan(std::min(count, lines.size()));
}

// A section ends at an empty line.
CLines SectionOf(CLines lines) {
    const auto end = std::find_if(lines.begin(), lines.end(), IsEmpty);
    return {lines.begin(), end};
}

CLines BehindSection(CLines lines) {
    return Behind(lines, SectionOf(lines).size() + 1);
}

CLines BehindEmptyLines(CLines lines) {
    return {std::find_if_not(lines.begin(), lines.end(), IsEmpty), lines.end()};
}

// What an item makes of a text: it ends at a NUL.
std::string_view ItemText(std::string_view text) {
    return text.substr(0, text.find('\0'));
}

// The drive's interface type; `before` where the section does not name one.
std::string_view InterfaceTypeIn(CLines section, std::string_view before) {
    for (const std::string_view line : section) {
        const size_t colon = line.find(':');
        if (colon != std::string_view::npos &&
            ItemText(TrimmedView(line.substr(0, colon))) == "Interface Type") {
            before = ItemText(TrimmedView(line.substr(colon + 1)));
        }
    }
    return before;
}

// "Raw Data" is taken for one column, and another one is read behind it.
bool EndsWithRawData(std::string_view header) {
    size_t begin = 0;
    for (size_t end = header.find_first_of(BLANKS); end != std::string_view::npos;
         end = header.find_first_of(BLANKS, begin)) {
        const bool isRaw = TrimmedView(header.substr(begin, end - begin)) == "Raw";
        begin = header.find_first_not_of(BLANKS, isRaw ? end + BLANK_AND_DATA_WIDTH : end);
        if (begin == std::string_view::npos) {
            return true;
        }
    }
    return false;
}

// Its name, 40 characters wide, is all that stands behind the first cell.
bool EndsInSATAName(std::string_view row) {
    const size_t name = row.find_first_not_of(BLANKS, row.find_first_of(BLANKS));
    return name != std::string_view::npos && row.size() - name <= SATA_NAME_WIDTH;
}

bool EndsBeforeLastColumn(std::string_view row, std::string_view header) {
    return !row.starts_with("[Head") && row.size() < header.find_last_of(BLANKS) + 1;
}

bool IsSATATableOutOfRange(std::string_view header, CLines rows) {
    return EndsWithRawData(header) ||
           std::any_of(rows.begin(), rows.end(),
                       [](std::string_view row) { return EndsInSATAName(TrimmedView(row)); });
}

bool IsSASTableOutOfRange(std::string_view header, CLines rows) {
    return std::any_of(rows.begin(), rows.end(), [&](std::string_view row) {
        return !IsEmpty(row) && EndsBeforeLastColumn(TrimmedView(row), header);
    });
}

// It runs to the end of the report; a rule stands under its header.
bool IsTableOutOfRange(CLines table, std::string_view type) {
    const std::string_view header = TrimmedView(table.front());
    const CLines rows = Behind(table, 2);
    return type == "SATA" ? IsSATATableOutOfRange(header, rows)
                          : IsSASTableOutOfRange(header, rows);
}

// Whether the report holds what the getter throws std::out_of_range for. Lines that reject the
// report are not looked for: a getter that throws has met none before, and one that succeeds none
// at all.
bool HoldsTableOutOfRange(const std::string& report) {
    const std::vector<std::string_view> all = LinesOf(report);
    std::string_view type;
    for (CLines lines = all; !lines.empty();) {
        const std::string_view line = lines.front();
        const std::string_view title = ItemText(TrimmedView(line));
        lines = Behind(lines, 1);
        if (!line.starts_with("### ")) {
            continue;
        }
        if (title == "### General Information ###") {
            type = InterfaceTypeIn(SectionOf(lines), type);
            lines = BehindSection(lines);
        } else if (title == "### Slot Information ###") {
            lines = BehindSection(lines);
        } else if (title.starts_with("### SMART Information ###")) {
            lines = BehindSection(lines);
            const CLines table = BehindEmptyLines(lines);
            const bool hasHeader = !table.empty() && Contains(table.front(), "Attribute");
            if (hasHeader && (type == "SATA" || type == "SAS")) {
                return IsTableOutOfRange(table, type);
            }
            lines = hasHeader ? Behind(table, 1) : lines;
        }
    }
    return false;
}

void Fuzz(const std::string& report) {
    CMSRAID_PDSMInfoGetter getter;
    FuzzGetter(
        getter, [&](ItemList& items) { return getter.GetInfo(0, 252, 3, items); },
        {{"krzcli -ldpdinfo -a0", report}, {"krzcli -pdinfo -pd[252:3] -a0", report}},
        {.root = "Physical Drive Information", .isOutOfRange = HoldsTableOutOfRange(report)});
}

}  // namespace

std::vector<std::string_view> qorfuzz::Vocabulary() {
    return WithCommonLines(PD_LINES);
}

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    qorfuzz::FuzzInput(data, size, Fuzz);
    return 0;
}
