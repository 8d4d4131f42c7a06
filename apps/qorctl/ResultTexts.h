// The three result texts of a request in words.
//
// Thread rule: plain functions without state.
#ifndef QORCTL_RESULTTEXTS_H
#define QORCTL_RESULTTEXTS_H

#include <string>
#include <vector>

#include "TerminalText.h"

namespace qorctl {

// What an information operation of the plug-in object returned beside its list.
struct CResultTexts {
    std::string errorCode;   // empty: none
    std::string noticeCode;  // empty: none
    std::string detail;      // the command that failed; empty or "none": no command to name
};

// One message for each text that says something, of one or more lines: what it means and what can
// be done about it. A code without a known meaning is stated as it is. The plug-in's texts are made
// visible in `style`.
std::vector<std::string> ExplainResult(const CResultTexts& texts, const CTextStyle& style);

}  // namespace qorctl

#endif  // QORCTL_RESULTTEXTS_H
