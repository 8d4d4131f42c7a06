// What came of a request to the plug-in, as a value: what it told about the server's storage, or
// why it did not.
//
// Owner: an answer holds copies and outlives the plug-in.
#ifndef QORCTL_HOST_ANSWER_H
#define QORCTL_HOST_ANSWER_H

#include <optional>
#include <string>
#include <string_view>

#include "host/Message.h"
#include "model/Inventory.h"
#include "terminal/TerminalText.h"

namespace qorctl {

// What an information operation of the plug-in object returned beside its list.
struct CResultTexts {
    std::string errorCode;   // empty: none
    std::string noticeCode;  // empty: none
    std::string detail;      // the command that failed; empty or "none": no command to name
};

enum class EOutcome {
    ANSWERED,       // also with nothing to report
    FAILED,         // the plug-in said so; its texts say why
    PLUGIN_FAILED,  // it made no object, or threw
    NOT_ASKED,      // it could not be loaded, or the command line not be read
};

// Why there are no devices, as stable words for programs; docs/health.md lists them all.
inline constexpr std::string_view REASON_JUDGED = "judged";
inline constexpr std::string_view REASON_NO_HARDWARE = "no-hardware";
inline constexpr std::string_view REASON_NO_DRIVES = "no-drives";
inline constexpr std::string_view REASON_PLUGIN_NOT_LOADED = "plugin-not-loaded";
inline constexpr std::string_view REASON_USAGE = "usage";

struct CAnswer {
    bool IsAnswered() const { return outcome == EOutcome::ANSWERED; }
    // The tool's version is old, or could not be read.
    bool IsFromOldTool() const { return IsAnswered() && texts.noticeCode == "01"; }

    EOutcome outcome = EOutcome::NOT_ASKED;
    CResultTexts texts;
    CMessages messages;  // what is to be told beside the devices, the codes in words included

    std::string_view reason = REASON_JUDGED;
    std::string sentence;  // the reason in words, one line; empty when there are devices
    std::string command;   // the tool's command that failed; empty: none to name

    std::optional<std::string> toolVersion;  // of the RAID tool, where the plug-in told it
    CInventory inventory;                    // empty unless the plug-in answered
};

// An answer that there is none, since the plug-in was not asked. Several lines of `problem` become
// one in the sentence.
CAnswer NotAsked(std::string_view reason, const std::string& problem);

// Puts what the texts and the outcome say into reason, sentence, command and messages. Codes of the
// messages: "error-" or "notice-" and the plug-in's code, "failed-command"; then "request-failed",
// or "plugin-failed" with `problem`. The error code of a request that was answered is a warning. A
// code without a known meaning is stated as it is.
void ExplainAnswer(CAnswer& answer, const std::string& problem);

// The same for an answer without devices: `nothing` is the sentence of its message.
void ExplainEmptiness(CAnswer& answer, const std::string& nothing);

// "no answer: the RAID tool did not answer in time (krzcli -ctrlinfo -a0)"
std::string DescribeNoAnswer(const CAnswer& answer);

// A message as one text of one or more lines, made visible in `style`.
std::string MessageText(const CMessage& message, const CTextStyle& style);

}  // namespace qorctl

#endif  // QORCTL_HOST_ANSWER_H
