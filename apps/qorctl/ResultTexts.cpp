#include "ResultTexts.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace qorctl {
namespace {

struct CMeaning {
    std::string_view code;
    std::string_view meaning;
    std::string_view remedy;
};

constexpr std::array<CMeaning, 5> ERRORS = {{
    {"01", "the RAID tool reported an error, or could not be run",
     "Run the command below by hand and read what it says; the tool needs root privilege."},
    {"02", "the RAID tool is not installed: there is no /opt/tarmica/krz/cli/krzcli",
     "Install the RAID management tool."},
    {"03", "the RAID tool ran, but its report could not be read",
     "Check that the directory tmp/MSRAID in the provider's install directory, usually\n"
     "/opt/tarmica/qor/provider, can be written and that the disk is not full."},
    {"04", "the RAID tool's report was not understood",
     "Check that the RAID tool is a supported version: 4.4 or newer, and not newer than the\n"
     "plug-in knows."},
    {"05", "the RAID tool did not answer in time",
     "Try again when the server is less busy; if it stays so, check the controller and whether\n"
     "a krzcli process hangs."},
}};

constexpr std::array<CMeaning, 2> NOTICES = {{
    {"01", "the RAID tool's version is older than 4.4, or could not be read",
     "What it reported is shown all the same. Update the RAID management tool."},
    {"02", "no physical drive is attached to the RAID controller",
     "Nothing needs to be done, unless drives should be there: then check their cables and power."},
}};

// `first` as it is, and below it the lines of `second`, indented.
std::string Message(std::string_view first, std::string_view second) {
    std::string out(first);
    out += "\n  ";
    for (const char character : second) {
        out += character;
        if (character == '\n') {
            out += "  ";
        }
    }
    return out;
}

template <size_t SIZE>
std::string Explain(std::string_view kind, const std::string& code,
                    const std::array<CMeaning, SIZE>& meanings, const CTextStyle& style) {
    const auto* found = std::find_if(meanings.begin(), meanings.end(),
                                     [&code](const CMeaning& row) { return row.code == code; });
    if (found == meanings.end()) {
        return fmt::format("{} code {}: no meaning is known for this code", kind,
                           MakeVisible(code, style));
    }
    return Message(fmt::format("{} code {}: {}", kind, code, found->meaning), found->remedy);
}

std::string ExplainDetail(const std::string& detail, const CTextStyle& style) {
    const std::string command = MakeVisible(detail, style);
    return Message("the command that failed: " + command,
                   "By hand: LD_LIBRARY_PATH=/opt/tarmica/krz/lib /opt/tarmica/krz/cli/" + command);
}

}  // namespace

std::vector<std::string> ExplainResult(const CResultTexts& texts, const CTextStyle& style) {
    std::vector<std::string> messages;
    if (!texts.errorCode.empty()) {
        messages.push_back(Explain("error", texts.errorCode, ERRORS, style));
    }
    if (!texts.noticeCode.empty()) {
        messages.push_back(Explain("notice", texts.noticeCode, NOTICES, style));
    }
    if (!texts.detail.empty() && texts.detail != "none") {
        messages.push_back(ExplainDetail(texts.detail, style));
    }
    return messages;
}

}  // namespace qorctl
