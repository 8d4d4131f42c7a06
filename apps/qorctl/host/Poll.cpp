#include "host/Poll.h"

#include <algorithm>
#include <array>

#include "host/PluginRequest.h"
#include "terminal/TerminalText.h"

namespace qorctl {
namespace {

struct CReason {
    std::string_view errorCode;
    std::string_view reason;
    std::string_view message;
};

constexpr std::array<CReason, 5> REASONS = {{
    {"01", "tool-failed", "the RAID tool reported an error, or could not be run"},
    {"02", "no-tool", "the RAID tool is not installed"},
    {"03", "report-unreadable", "the RAID tool's report could not be read"},
    {"04", "report-not-understood", "the RAID tool's report was not understood"},
    {"05", "tool-timeout", "the RAID tool did not answer in time"},
}};

constexpr CReason UNKNOWN_CODE = {"", "request-failed", "the request failed"};

// Bytes of a reason that come from elsewhere.
constexpr size_t MAX_PROBLEM = 1000;

constexpr std::string_view NO_HARDWARE = "no RAID controller or PCIe SSD was found";
constexpr std::string_view NO_DRIVES =
    "the RAID tool is not installed, and no drive is attached to the RAID controller";

void SetReason(CPoll& poll, std::string_view reason, std::string_view message) {
    poll.reason = reason;
    poll.message = message;
}

void ExplainFailure(CPoll& poll, const CResultTexts& texts) {
    const auto* found = std::find_if(REASONS.begin(), REASONS.end(), [&](const CReason& row) {
        return row.errorCode == texts.errorCode;
    });
    if (found == REASONS.end()) {
        SetReason(poll, UNKNOWN_CODE.reason, UNKNOWN_CODE.message);
        if (!texts.errorCode.empty()) {
            poll.message += " with the unknown code " + CutText(texts.errorCode, MAX_NAME);
        }
    } else {
        SetReason(poll, found->reason, found->message);
    }
    if (texts.detail != "none") {
        poll.command = CutText(texts.detail, MAX_PROBLEM);
    }
}

void ExplainEmptiness(CPoll& poll, const CResultTexts& texts) {
    if (texts.errorCode.empty()) {
        SetReason(poll, REASON_NO_HARDWARE, NO_HARDWARE);
    } else {
        SetReason(poll, REASON_NO_DRIVES, NO_DRIVES);
    }
}

}  // namespace

CPoll PollStorage(const CPluginLibrary& library) {
    CPoll poll;
    const CRequestEnd end =
        AskPlugin(library, StorageRequest().ask,
                  [&poll](CMngSrv_QorLibIF&, CItemList& items, const CResultTexts& texts) {
                      poll.answered = true;
                      poll.oldTool = texts.noticeCode == "01";
                      if (items.empty()) {
                          ExplainEmptiness(poll, texts);
                          return;
                      }
                      poll.inventory = BuildInventory(CItemTree(items), {});
                  });
    switch (end.kind) {
        case EEnd::ANSWERED:
            return poll;
        case EEnd::FAILED:
            ExplainFailure(poll, end.texts);
            return poll;
        case EEnd::NO_OBJECT:
        case EEnd::EXCEPTION:
            break;
    }
    return FailedPoll("plugin-failed", end.problem);
}

CPoll FailedPoll(std::string_view reason, const std::string& problem) {
    CPoll poll;
    poll.reason = reason;
    const std::string text = CutText(problem, MAX_PROBLEM);
    for (const char character : text) {
        if (character != '\n') {
            poll.message += character;
        } else if (!poll.message.empty() && &character != &text.back()) {
            poll.message += ' ';
        }
    }
    return poll;
}

}  // namespace qorctl
