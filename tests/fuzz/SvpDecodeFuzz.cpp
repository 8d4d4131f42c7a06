// "qorctl svp --decode" of arbitrary text.
#include <algorithm>
#include <utility>

#include "Depth.h"
#include "Fuzz.h"
#include "format/SvpForm.h"

namespace {

using namespace qorfuzz;
using CEntries = std::vector<qorctl::CSvpEntry>;

bool IsWhiteSpace(char c) {
    return std::string_view(" \t\n\v\f\r").find(c) != std::string_view::npos;
}

// The text with its digits in the other case and other white space.
std::string OtherForm(const std::string& text) {
    std::string other = "\n";
    for (const char c : text) {
        if (!IsWhiteSpace(c)) {
            other += c >= 'a' && c <= 'f' ? static_cast<char>(c - 'a' + 'A') : c;
            other += " ";
        }
    }
    return other;
}

void DemandOrder(const CEntries& entries, size_t digits) {
    size_t previous = 0;
    for (const qorctl::CSvpEntry& entry : entries) {
        if (entry.kind == qorctl::CSvpEntry::EKind::NOTE) {
            continue;
        }
        Demand(entry.offset >= previous, "the fields are in the order of their bytes", entry.name);
        Demand(entry.offset < digits / 2, "the fields are in the form", entry.name);
        previous = entry.offset;
    }
}

void DemandLines(const CEntries& entries) {
    for (const bool utf8 : {false, true}) {
        const std::string text = qorctl::FormatSvpForm(entries, {.utf8 = utf8});
        const auto lines = std::count(text.begin(), text.end(), '\n');
        Demand(std::cmp_equal(lines, entries.size()), "an entry is a line", text);
        const bool printable = std::all_of(text.begin(), text.end(), [&](char c) {
            return c == '\n' || (c >= ' ' && c < 0x7f) || (utf8 && c < 0);
        });
        Demand(printable, "no control character reaches the terminal", text);
    }
}

bool IsSame(const qorctl::CSvpEntry& a, const qorctl::CSvpEntry& b) {
    return a.kind == b.kind && a.offset == b.offset && a.depth == b.depth && a.name == b.name &&
           a.value == b.value;
}

void Fuzz(const std::string& text) {
    std::string problem;
    const auto entries = qorctl::DecodeSvpForm(text, problem);
    Demand(entries.has_value() == problem.empty(), "a refusal says why", problem);
    std::string otherProblem;
    const auto others = qorctl::DecodeSvpForm(OtherForm(text), otherProblem);
    Demand(entries.has_value() == others.has_value(), "case and white space mean nothing");
    if (!entries) {
        return;
    }
    Demand(std::equal(entries->begin(), entries->end(), others->begin(), others->end(), IsSame),
           "case and white space mean nothing");
    DemandOrder(*entries, text.size());
    DemandLines(*entries);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    qorfuzz::FuzzInput(data, size, Fuzz);
    return 0;
}
