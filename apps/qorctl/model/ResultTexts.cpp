#include "model/ResultTexts.h"

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

template <size_t SIZE>
CMessage Explain(std::string_view kind, const std::string& code, ESeverity severity,
                 const std::array<CMeaning, SIZE>& meanings) {
    CMessage message;
    message.severity = severity;
    message.code = fmt::format("{}-{}", kind, code);
    const auto* found = std::find_if(meanings.begin(), meanings.end(),
                                     [&code](const CMeaning& row) { return row.code == code; });
    if (found == meanings.end()) {
        message.text = fmt::format("{} code {}: no meaning is known for this code", kind, code);
    } else {
        message.text = fmt::format("{} code {}: {}", kind, code, found->meaning);
        message.remedy = found->remedy;
    }
    return message;
}

CMessage ExplainDetail(const std::string& command, ESeverity severity) {
    return {
        .severity = severity,
        .code = "failed-command",
        .text = "the command that failed: " + command,
        .remedy = "By hand: LD_LIBRARY_PATH=/opt/tarmica/krz/lib /opt/tarmica/krz/cli/" + command};
}

}  // namespace

CMessages ResultMessages(const CResultTexts& texts, EOutcome outcome) {
    const ESeverity severity = outcome == EOutcome::FAILED ? ESeverity::ERROR : ESeverity::WARNING;
    CMessages messages;
    if (!texts.errorCode.empty()) {
        messages.push_back(Explain("error", texts.errorCode, severity, ERRORS));
    }
    if (!texts.noticeCode.empty()) {
        messages.push_back(Explain("notice", texts.noticeCode, ESeverity::WARNING, NOTICES));
    }
    if (!texts.detail.empty() && texts.detail != "none") {
        messages.push_back(ExplainDetail(texts.detail, severity));
    }
    return messages;
}

std::string MessageText(const CMessage& message, const CTextStyle& style) {
    std::string text = MakeVisible(message.text, style);
    std::string_view remedy = message.remedy;
    while (!remedy.empty()) {
        const size_t end = remedy.find('\n');
        text += "\n  " + MakeVisible(remedy.substr(0, end), style);
        remedy.remove_prefix(end == std::string_view::npos ? remedy.size() : end + 1);
    }
    return text;
}

std::vector<std::string> ExplainResult(const CResultTexts& texts, const CTextStyle& style) {
    std::vector<std::string> explained;
    for (const CMessage& message : ResultMessages(texts, EOutcome::FAILED)) {
        explained.push_back(MessageText(message, style));
    }
    return explained;
}

}  // namespace qorctl
