// What is not well on a server, in sentences and as marks: the findings of Health.h for people.
#ifndef QORCTL_HEALTH_ADVICE_H
#define QORCTL_HEALTH_ADVICE_H

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "health/Health.h"
#include "terminal/TerminalText.h"

namespace qorctl {

// The findings of docs/health.md with its default limits, any error counter above 0 included.
std::vector<CHealthFinding> FindProblems(const CInventory& inventory);

// "Controller 0 drive 252:3 (PD3, serial A) is FAILED: it is out of service; replace it."
std::string ProblemSentence(const CHealthFinding& finding, ENameForm form = ENameForm::WHOLE);

// The sentences, a line each, behind an empty line; nothing without problems. Made visible, and
// coloured where the style has colour. A drive's name that is wider than the terminal is shortened.
std::string FormatProblems(const std::vector<CHealthFinding>& findings, const CTextStyle& style);

// How bad an object is, by its name as ObjectName() writes it.
class CProblemMarks {
public:
    explicit CProblemMarks(const std::vector<CHealthFinding>& findings);

    // OK for an object without problems.
    EHealth Of(const std::string& object) const;

private:
    std::unordered_map<std::string, EHealth> m_Worst;
};

// The control sequence that a problem is coloured with; empty for OK.
std::string_view ColourOf(EHealth health);

}  // namespace qorctl

#endif  // QORCTL_HEALTH_ADVICE_H
