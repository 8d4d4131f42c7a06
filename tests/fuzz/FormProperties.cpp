#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

#include "Fuzz.h"
#include "ItemProperties.h"
#include "format/SvpForm.h"
#include "plugin/SvpConversion.h"

namespace qorfuzz {
namespace {

constexpr std::uint64_t FORM_HEADER = 16;
constexpr std::uint64_t CONTROLLER_HEADER = 6;
constexpr std::uint64_t DRIVE_HEADER = 3;
constexpr std::uint64_t ITEM_FIELDS = 5;  // three bytes of sizes, two zero bytes
constexpr size_t MOST_COUNTED = 255;
constexpr std::uint64_t MOST_SIZED = 65535;

bool IsPlain(char character) {
    return static_cast<unsigned char>(character) < 0x80;
}

// A text as it is in the form.
std::string InForm(const std::string& text) {
    std::string plain;
    std::copy_if(text.begin(), text.end(), std::back_inserter(plain), IsPlain);
    return plain;
}

// What a form's sections say, in the order of their bytes, and how large they are.
struct CExpected {
    std::vector<std::pair<std::string, std::string>> lines;  // name and value; "" for a heading
    std::uint64_t size = FORM_HEADER;                        // as the sizes count
    std::uint64_t left = 0;                                  // bytes that the texts lack
    size_t drives = 0;
    bool wraps = false;
};

std::uint64_t ExpectItems(const std::vector<CSvpCtrlPdItem>& items, CExpected& expected) {
    std::uint64_t size = 0;
    for (const CSvpCtrlPdItem& item : items) {
        const std::string& label = item.Lavel();
        const std::string& value = item.Value();
        size += ITEM_FIELDS + label.size() + value.size();
        expected.lines.emplace_back(InForm(label), InForm(value));
        expected.left += label.size() - InForm(label).size();
        expected.left += value.size() - InForm(value).size();
    }
    return size;
}

std::uint64_t ExpectDrive(const CSvpPdInfo& drive, CExpected& expected) {
    expected.lines.emplace_back("drive " + std::to_string(drive.PDNo()), "");
    expected.drives += 1;
    return DRIVE_HEADER + ExpectItems(drive.Items(), expected);
}

void ExpectController(const CSvpCtrlPdInfo& ctrl, CExpected& expected) {
    expected.lines.emplace_back("controller " + std::to_string(ctrl.CtrlNo()), "");
    std::uint64_t size = CONTROLLER_HEADER + ExpectItems(ctrl.Items(), expected);
    for (const CSvpPdInfo& drive : ctrl.PDs()) {
        size += ExpectDrive(drive, expected);
    }
    expected.wraps = expected.wraps || size > MOST_SIZED || ctrl.PDs().size() > MOST_COUNTED;
    expected.size += size;
}

CExpected Expect(const CSvpPdInfoForm& form) {
    CExpected expected;
    for (const CSvpCtrlPdInfo& ctrl : form.Ctrls()) {
        ExpectController(ctrl, expected);
    }
    expected.wraps = expected.wraps || form.Ctrls().size() > MOST_COUNTED;
    return expected;
}

// The sections and items of a decoded form; not the fields that count and size them.
std::vector<std::pair<std::string, std::string>> LinesOfForm(
    const std::vector<qorctl::CSvpEntry>& entries) {
    static constexpr std::string_view COUNTS[] = {"number of drives", "size with drives",
                                                  "size without drives", "size"};
    std::vector<std::pair<std::string, std::string>> lines;
    bool inHeader = true;
    size_t fields = 0;
    for (const qorctl::CSvpEntry& entry : entries) {
        if (entry.kind == qorctl::CSvpEntry::EKind::HEADING) {
            inHeader = entry.name == "header";
            fields = entry.name.starts_with("controller") ? 3 : 1;
        }
        if (inHeader || entry.kind == qorctl::CSvpEntry::EKind::NOTE) {
            continue;
        }
        if (entry.kind == qorctl::CSvpEntry::EKind::FIELD && fields > 0) {
            Demand(std::find(std::begin(COUNTS), std::end(COUNTS), entry.name) != std::end(COUNTS),
                   "a section begins with its counts and sizes", entry.name);
            --fields;
            continue;
        }
        lines.emplace_back(entry.name, entry.value);
    }
    return lines;
}

void DemandDecoded(const std::string& digits, const CExpected& expected) {
    std::string problem;
    const auto entries = qorctl::DecodeSvpForm(digits, problem);
    Demand(entries.has_value(), "a form can be decoded", problem);
    Demand(LinesOfForm(*entries) == expected.lines, "the records come back", digits);
}

}  // namespace

void DemandForm(const ItemList& items) {
    CSvpPdInfoForm form;
    CSvpConversion::Convert(&form, items);
    form.SetDataSize();
    form.OutPutMemberToDebugLog();
    std::string digits;
    form.DumpMe(&digits);
    Demand(digits.find_first_not_of("0123456789abcdef") == std::string::npos,
           "a form is lower-case digits", digits);
    const CExpected expected = Expect(form);
    if (expected.wraps) {
        return;
    }
    Demand(form.DataSize() == expected.size, "the sizes add up", std::to_string(form.DataSize()));
    Demand(digits.size() == 2 * (expected.size - expected.left), "every byte is in the form");
    Demand(form.PDCount() == (expected.drives & 0xFFU), "the drives are counted");
    DemandDecoded(digits, expected);
}

}  // namespace qorfuzz
