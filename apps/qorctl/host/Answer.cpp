#include "host/Answer.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "base/ServerPaths.h"
#include "host/PathTrouble.h"
#include "host/Presence.h"

namespace qorctl {
namespace {

// What a code of the plug-in means.
struct CCode {
    std::string_view code;
    std::string_view word;  // for programs; errors have one
    std::string_view sentence;
    std::string_view remedy;
};

constexpr std::string_view ERROR_NO_TOOL = "02";

constexpr std::string_view ERROR_TOOL_FAILED = "01";

constexpr std::array<CCode, 5> ERRORS = {{
    {ERROR_TOOL_FAILED, "tool-failed", "the RAID tool reported an error, or could not be run",
     "Run the command below by hand and read what it says; the tool needs root privilege."},
    {ERROR_NO_TOOL, "no-tool", "the RAID tool is not installed",
     "Install the RAID management tool: there is no /opt/tarmica/krz/cli/krzcli."},
    {"03", "report-unreadable", "the RAID tool's report could not be read",
     "Check that the directory tmp/MSRAID in the provider's install directory, usually\n"
     "/opt/tarmica/qor/provider, can be written and that the disk is not full."},
    {"04", "report-not-understood", "the RAID tool's report was not understood",
     "Check that the RAID tool is a supported version: 4.4 or newer, and not newer than the\n"
     "plug-in knows."},
    {"05", "tool-timeout", "the RAID tool did not answer in time",
     "Try again when the server is less busy; if it stays so, check the controller and whether\n"
     "a krzcli process hangs."},
}};

constexpr std::string_view NOTICE_VERSION = "01";

constexpr std::array<CCode, 2> NOTICES = {{
    {NOTICE_VERSION, "", "the RAID tool's version is older than 4.4, or could not be read",
     "If it is older, update the RAID tool. If it could not be read, run \"qorctl doctor\":\n"
     "the tool may fail, or the disk of its reports be full."},
    {"02", "", "no physical drive is attached to the RAID controller",
     "Nothing needs to be done, unless drives should be there: then check their cables and power."},
}};

constexpr std::string_view REQUEST_FAILED = "request-failed";
constexpr std::string_view PLUGIN_FAILED = "plugin-failed";
constexpr std::string_view THE_REQUEST_FAILED = "the request failed";
constexpr std::string_view NO_HARDWARE = "no RAID controller or PCIe SSD was found";
constexpr std::string_view NO_CONTROLLER_REMEDY =
    "Run \"qorctl doctor\": is the disk of the result files full? Then ask the tool by hand:\n"
    "LD_LIBRARY_PATH=/opt/tarmica/krz/lib /opt/tarmica/krz/cli/krzcli -ctrlinfo -aAll";
constexpr std::string_view NO_SSD_REMEDY =
    "The RAID tool reports PCIe SSDs from version 7.0 on: update an older one. Otherwise ask it:\n"
    "LD_LIBRARY_PATH=/opt/tarmica/krz/lib /opt/tarmica/krz/cli/krzcli -pssdinfo -aAll";
constexpr std::string_view NO_DRIVE_REMEDY =
    "\"qorctl raid --format table\" lists the drives with their enclosures and slots.";
constexpr std::string_view NOT_KNOWN = "it is not known whether a RAID card is in this server";
constexpr std::string_view NO_DRIVES =
    "the RAID tool is not installed, and no drive is attached to the RAID controller";

// Bytes of a reason that come from elsewhere.
constexpr size_t MAX_PROBLEM = 1000;

// Null for a code without a known meaning.
template <size_t SIZE>
const CCode* Find(const std::array<CCode, SIZE>& codes, std::string_view code) {
    const auto* found = std::find_if(codes.begin(), codes.end(),
                                     [code](const CCode& row) { return row.code == code; });
    return found == codes.end() ? nullptr : found;
}

bool HasCommand(const CResultTexts& texts) {
    return !texts.detail.empty() && texts.detail != "none";
}

// The lines of a text, each made visible, with `between` between them.
std::string LinesText(std::string_view text, std::string_view between, const CTextStyle& style) {
    std::string lines;
    for (;;) {
        const size_t end = text.find('\n');
        lines += MakeVisible(text.substr(0, end), style);
        if (end == std::string_view::npos) {
            return lines;
        }
        lines += between;
        text.remove_prefix(end + 1);
    }
}

// A text of the plug-in's that is to stand in one line.
std::string OneLine(const std::string& text) {
    std::string line;
    for (const char character : text) {
        line += character == '\n' ? "\\n" : std::string(1, character);
    }
    return line;
}

CMessage CodeMessage(std::string_view kind, const std::string& code, ESeverity severity,
                     const CCode* meaning) {
    return {.severity = severity,
            .code = fmt::format("{}-{}", kind, code),
            .text = fmt::format(
                "{} code {}: {}", kind, OneLine(code),
                meaning == nullptr ? "no meaning is known for this code" : meaning->sentence),
            .remedy = std::string(meaning == nullptr ? std::string_view() : meaning->remedy)};
}

CMessage CommandMessage(const std::string& detail, ESeverity severity) {
    const std::string command = OneLine(detail);
    return {
        .severity = severity,
        .code = "failed-command",
        .text = "the command that failed: " + command,
        .remedy = "By hand: LD_LIBRARY_PATH=/opt/tarmica/krz/lib /opt/tarmica/krz/cli/" + command};
}

void AddMessage(CAnswer& answer, ESeverity severity, std::string_view code,
                const std::string& text) {
    answer.messages.push_back(
        {.severity = severity, .code = std::string(code), .text = text, .remedy = ""});
}

// The plug-in takes a tool that this user may not see for one that is missing.
CPathTrouble ToolTrouble(const CResultTexts& texts) {
    return texts.errorCode == ERROR_NO_TOOL ? ExaminePath(KRZ_CLI_PATH, EPathKind::FILE, X_OK)
                                            : CPathTrouble();
}

// What the tool printed when its command failed: an error that the plug-in tells of came from
// there.
std::string Printed(const CAnswer& answer) {
    return answer.texts.errorCode == ERROR_TOOL_FAILED ? CutText(answer.printed, MAX_PROBLEM) : "";
}

void ExplainTexts(CAnswer& answer, const CPathTrouble& tool) {
    const CResultTexts& texts = answer.texts;
    const ESeverity severity = answer.IsAnswered() ? ESeverity::WARNING : ESeverity::ERROR;
    if (!texts.errorCode.empty()) {
        CMessage message =
            CodeMessage("error", texts.errorCode, severity, Find(ERRORS, texts.errorCode));
        if (!tool.remedy.empty()) {
            message.remedy = fmt::format("{}.\n{}", tool.reason, RemedySentence(tool));
        }
        if (const std::string printed = Printed(answer); !printed.empty()) {
            message.remedy = "The tool says: " + printed;
        }
        answer.messages.push_back(std::move(message));
    }
    if (!texts.noticeCode.empty()) {
        CMessage message = CodeMessage("notice", texts.noticeCode, ESeverity::WARNING,
                                       Find(NOTICES, texts.noticeCode));
        if (texts.noticeCode == NOTICE_VERSION && answer.toolVersion) {
            message.remedy = fmt::format("It is version {}. Update the RAID tool.",
                                         OneLine(*answer.toolVersion));
        }
        answer.messages.push_back(std::move(message));
    }
    if (HasCommand(texts)) {
        answer.messages.push_back(CommandMessage(texts.detail, severity));
    }
}

void ExplainFailure(CAnswer& answer, const CPathTrouble& tool) {
    const CResultTexts& texts = answer.texts;
    const CCode* meaning = Find(ERRORS, texts.errorCode);
    answer.reason = meaning == nullptr ? REQUEST_FAILED : meaning->word;
    answer.sentence = meaning == nullptr ? THE_REQUEST_FAILED : meaning->sentence;
    if (const std::string printed = Printed(answer); !printed.empty()) {
        answer.sentence += ": " + printed;
    }
    if (meaning == nullptr && !texts.errorCode.empty()) {
        answer.sentence += " with the unknown code " + CutText(texts.errorCode, MAX_NAME);
    }
    if (!tool.remedy.empty()) {
        answer.reason = REASON_TOOL_UNREACHABLE;
        answer.sentence = tool.reason;
    }
    if (HasCommand(texts)) {
        answer.command = CutText(texts.detail, MAX_PROBLEM);
    }
    AddMessage(answer, ESeverity::ERROR, REQUEST_FAILED, std::string(THE_REQUEST_FAILED));
}

std::string OnOneLine(const std::string& problem) {
    std::string line = CutText(problem, MAX_PROBLEM);
    while (!line.empty() && line.back() == '\n') {
        line.pop_back();
    }
    line.erase(0, std::min(line.find_first_not_of('\n'), line.size()));
    std::replace(line.begin(), line.end(), '\n', ' ');
    return line;
}

void ExplainProblem(CAnswer& answer, std::string_view reason, const std::string& problem) {
    answer.reason = reason;
    answer.sentence = OnOneLine(problem);
    AddMessage(answer, ESeverity::ERROR, reason, problem);
}

CGap MakeGap(std::string_view rule, std::string text, std::string remedy) {
    return {.rule = rule, .object = "", .text = std::move(text), .remedy = std::move(remedy)};
}

// "a supported RAID card is in this server, but the RAID tool reported no controller"
std::string MissingText(size_t there, std::string_view device, size_t reported,
                        std::string_view noun) {
    const std::string count = reported == 0 ? "no" : std::to_string(reported);
    return fmt::format("{} in this server, but the RAID tool reported {} {}{}",
                       there == 1 ? fmt::format("a supported {} is", device)
                                  : fmt::format("{} supported {}s are", there, device),
                       count, noun, reported > 1 ? "s" : "");
}

void AddCardGap(std::vector<CGap>& gaps, size_t reported, const CPresence& presence) {
    if (!presence.IsKnown() && reported == 0) {
        gaps.push_back(MakeGap(REASON_PRESENCE_NOT_KNOWN,
                               fmt::format("{}: {}", NOT_KNOWN, presence.reason), presence.remedy));
    } else if (presence.raidCards > reported) {
        gaps.push_back(MakeGap(REASON_NO_CONTROLLER,
                               MissingText(presence.raidCards, "RAID card", reported, "controller"),
                               std::string(NO_CONTROLLER_REMEDY)));
    }
}

void AddSsdGap(std::vector<CGap>& gaps, const CInventory& inventory, const CPresence& presence) {
    const size_t reported = inventory.pcieSsds.size();
    if (presence.pcieSsds > reported) {
        gaps.push_back(MakeGap(REASON_NO_PCIE_SSD,
                               MissingText(presence.pcieSsds, "PCIe SSD", reported, "PCIe SSD"),
                               std::string(NO_SSD_REMEDY)));
    }
}

// With an error code, that is what the answer tells.
std::vector<CGap> FindGaps(const CRequest& request, const CAnswer& answer,
                           const CPathTrouble& tool) {
    if (!tool.remedy.empty()) {
        return {MakeGap(REASON_TOOL_UNREACHABLE, tool.reason, RemedySentence(tool))};
    }
    const bool isStorage = request.subject == ESubject::STORAGE;
    if ((!isStorage && request.subject != ESubject::RAID) || !answer.texts.errorCode.empty()) {
        return {};
    }
    const CPresence presence = LookForDevices();
    std::vector<CGap> gaps;
    AddCardGap(gaps, answer.inventory.controllers.size(), presence);
    if (isStorage) {
        AddSsdGap(gaps, answer.inventory, presence);
    }
    for (CGap& gap : FindMissingDrives(answer.inventory)) {
        gaps.push_back(std::move(gap));
    }
    return gaps;
}

void ExplainEmptiness(CAnswer& answer, const CRequest& request) {
    const bool isWithoutHardware = answer.texts.errorCode.empty();
    answer.reason = isWithoutHardware ? REASON_NO_HARDWARE : REASON_NO_DRIVES;
    answer.sentence = isWithoutHardware ? NO_HARDWARE : NO_DRIVES;
    AddMessage(answer, ESeverity::INFO, "nothing-to-report",
               "nothing to report: " + request.nothing);
}

void ExplainMissingDrive(CAnswer& answer, const CRequest& request) {
    answer.outcome = EOutcome::FAILED;
    answer.reason = REASON_NO_DRIVE;
    answer.sentence = request.nothing;
    answer.messages.push_back({.severity = ESeverity::ERROR,
                               .code = std::string(REASON_NO_DRIVE),
                               .text = request.nothing,
                               .remedy = std::string(NO_DRIVE_REMEDY)});
}

void ExplainAnswer(CAnswer& answer, const CRequest& request, const CPathTrouble& tool,
                   std::shared_ptr<CItemListOwner> items) {
    answer.inventory = BuildInventory(CItemTree(*items), request.controller);
    if (std::vector<CGap> gaps = FindGaps(request, answer, tool); !gaps.empty()) {
        if (items->empty()) {
            answer.outcome = EOutcome::FAILED;
            answer.reason = gaps.front().rule;
            answer.sentence = gaps.front().text;
        }
        AddGaps(answer, std::move(gaps));
    } else if (items->empty() && request.subject == ESubject::DRIVE) {
        ExplainMissingDrive(answer, request);
    } else if (items->empty() && !request.nothing.empty()) {
        ExplainEmptiness(answer, request);
    }
    if (answer.IsAnswered()) {
        answer.items = std::move(items);
    }
}

}  // namespace

CAnswer NotAsked(std::string_view reason, const std::string& problem) {
    CAnswer answer;
    answer.outcome = EOutcome::NOT_ASKED;
    ExplainProblem(answer, reason, problem);
    return answer;
}

CAnswer TimeIsOver(std::chrono::seconds limit, const std::string& command) {
    CAnswer answer;
    answer.outcome = EOutcome::TIME_OVER;
    answer.command = command;
    ExplainProblem(answer, REASON_TIME_OVER,
                   fmt::format("there was no answer within {} s", limit.count()));
    if (!command.empty()) {
        answer.messages.push_back(CommandMessage(command, ESeverity::ERROR));
    }
    return answer;
}

CAnswer MakeAnswer(const CRequest& request, CReply reply, std::shared_ptr<CItemListOwner> items) {
    CAnswer answer;
    static_cast<CReply&>(answer) = std::move(reply);
    const CPathTrouble tool = ToolTrouble(answer.texts);
    ExplainTexts(answer, tool);
    switch (answer.outcome) {
        case EOutcome::ANSWERED:
            ExplainAnswer(answer, request, tool, std::move(items));
            break;
        case EOutcome::FAILED:
            ExplainFailure(answer, tool);
            break;
        case EOutcome::NOT_ASKED:
            ExplainProblem(answer, REASON_PLUGIN_NOT_LOADED, answer.problem);
            break;
        case EOutcome::PLUGIN_FAILED:
        case EOutcome::TIME_OVER:
            ExplainProblem(answer, PLUGIN_FAILED, answer.problem);
            break;
    }
    return answer;
}

void AddGaps(CAnswer& answer, std::vector<CGap> gaps) {
    for (CGap& gap : gaps) {
        answer.messages.push_back({.severity = ESeverity::ERROR,
                                   .code = std::string(gap.rule),
                                   .text = GapText(gap),
                                   .remedy = gap.remedy});
        answer.gaps.push_back(std::move(gap));
    }
}

void AddCardGap(CAnswer& answer, size_t controllers) {
    std::vector<CGap> gaps;
    if (answer.texts.errorCode.empty()) {
        AddCardGap(gaps, controllers, LookForDevices());
    }
    AddGaps(answer, std::move(gaps));
}

std::string DescribeNoAnswer(const CAnswer& answer) {
    return (answer.outcome == EOutcome::TIME_OVER ? "" : "no answer: ") + answer.sentence +
           (answer.command.empty() ? "" : " (" + answer.command + ")");
}

std::string MessageText(const CMessage& message, const CTextStyle& style) {
    return LinesText(message.text, "\n", style) +
           (message.remedy.empty() ? "" : "\n  " + LinesText(message.remedy, "\n  ", style));
}

}  // namespace qorctl
