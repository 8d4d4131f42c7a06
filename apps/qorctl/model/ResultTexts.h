// The three result texts of a request in words.
//
// Thread rule: plain functions without state.
#ifndef QORCTL_MODEL_RESULTTEXTS_H
#define QORCTL_MODEL_RESULTTEXTS_H

#include <string>
#include <vector>

#include "model/Message.h"
#include "terminal/TerminalText.h"

namespace qorctl {

// What an information operation of the plug-in object returned beside its list.
struct CResultTexts {
    std::string errorCode;   // empty: none
    std::string noticeCode;  // empty: none
    std::string detail;      // the command that failed; empty or "none": no command to name
};

enum class EOutcome { SUCCEEDED, FAILED };

// One message for each text that says something: what it means and what can be done about it. A
// code without a known meaning is stated as it is. Codes of the messages: "error-" or "notice-" and
// the plug-in's code, "failed-command". The error code of a request that succeeded is a warning.
CMessages ResultMessages(const CResultTexts& texts, EOutcome outcome);

// A message as one text of one or more lines, made visible in `style`.
std::string MessageText(const CMessage& message, const CTextStyle& style);

// The same messages as texts.
std::vector<std::string> ExplainResult(const CResultTexts& texts, const CTextStyle& style);

}  // namespace qorctl

#endif  // QORCTL_MODEL_RESULTTEXTS_H
