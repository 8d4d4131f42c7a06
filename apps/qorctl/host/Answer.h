// What came of a request to the plug-in, as a value: what it told about the server's storage, or
// why it did not.
//
// Owner: an answer holds copies and outlives the plug-in.
#ifndef QORCTL_HOST_ANSWER_H
#define QORCTL_HOST_ANSWER_H

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/ItemList.h"
#include "host/Message.h"
#include "host/Reply.h"
#include "host/Request.h"
#include "model/Gap.h"
#include "model/Inventory.h"
#include "terminal/TerminalText.h"

namespace qorctl {

// Why there are no devices, as stable words for programs; docs/health.md lists them all.
inline constexpr std::string_view REASON_JUDGED = "judged";
inline constexpr std::string_view REASON_NO_HARDWARE = "no-hardware";
inline constexpr std::string_view REASON_NO_DRIVES = "no-drives";
inline constexpr std::string_view REASON_NO_CONTROLLER = "no-controller";
inline constexpr std::string_view REASON_NO_PCIE_SSD = "no-pcie-ssd";
inline constexpr std::string_view REASON_TOOL_UNREACHABLE = "tool-unreachable";
inline constexpr std::string_view REASON_NO_DRIVE = "no-drive";
inline constexpr std::string_view REASON_PRESENCE_NOT_KNOWN = "presence-not-known";
inline constexpr std::string_view REASON_PLUGIN_NOT_LOADED = "plugin-not-loaded";
inline constexpr std::string_view REASON_USAGE = "usage";
inline constexpr std::string_view REASON_TIME_OVER = "time-over";

struct CAnswer : CReply {
    bool IsAnswered() const { return outcome == EOutcome::ANSWERED; }
    // Answered, and nothing is known to be left out.
    bool IsWhole() const { return IsAnswered() && gaps.empty(); }
    // The tool's version is old, or could not be read.
    bool IsFromOldTool() const { return IsAnswered() && texts.noticeCode == "01"; }

    // What the plug-in returned, in its order; null unless it answered.
    std::shared_ptr<CItemListOwner> items;

    CMessages messages;  // what is to be told beside the devices, the codes in words included

    std::string_view reason = REASON_JUDGED;
    std::string sentence;    // the reason in words, one line; empty when there are devices
    std::string command;     // the tool's command that failed; empty: none to name
    std::vector<CGap> gaps;  // what is left out of the devices that there are

    size_t toolRuns = 0;  // commands of the RAID tool, repeats not counted; 0: none is known of

    CInventory inventory;  // empty unless the plug-in answered
};

// An answer that there is none, since the plug-in was not asked. Several lines of `problem` become
// one in the sentence.
CAnswer NotAsked(std::string_view reason, const std::string& problem);

// An answer that there is none within the caller's own limit; `command` ran then, or none that is
// known when it is empty.
CAnswer TimeIsOver(std::chrono::seconds limit, const std::string& command);

// The answer that a reply to the request is: the devices of its items, and what the texts and the
// outcome say, as reason, sentence, command and messages. Codes of the messages: "error-" or
// "notice-" and the plug-in's code, "failed-command"; then "request-failed", or "plugin-failed"
// with the problem; "nothing-to-report"; "no-drive"; and what rules of gaps there are. The error
// code of a request that was answered is a warning. A code without a known meaning is stated as it
// is.
//
// The answer has a gap for what the server has, or may have, and the report does not: cards, PCIe
// SSDs, drives. Without any device, that is a failure. No drive where one was asked for is a
// failure, too.
CAnswer MakeAnswer(const CRequest& request, CReply reply, std::shared_ptr<CItemListOwner> items);

// Adds gaps and what tells of them.
void AddGaps(CAnswer& answer, std::vector<CGap> gaps);

// The gap of an answer without items that tells of so many controllers; nothing with an error code.
void AddCardGap(CAnswer& answer, size_t controllers);

// "no answer: the RAID tool did not answer in time (krzcli -ctrlinfo -a0)"
std::string DescribeNoAnswer(const CAnswer& answer);

// A message as one text of one or more lines, made visible in `style`.
std::string MessageText(const CMessage& message, const CTextStyle& style);

}  // namespace qorctl

#endif  // QORCTL_HOST_ANSWER_H
