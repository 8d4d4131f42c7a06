// What is not well on a server, in sentences and as marks: the findings of Health.h for people.
#ifndef QORCTL_HEALTH_ADVICE_H
#define QORCTL_HEALTH_ADVICE_H

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "health/Health.h"
#include "terminal/TerminalText.h"

namespace qorctl {

// "Controller 0 drive 252:3 (PD3, serial A) is FAILED: it is out of service; replace it."
std::string ProblemSentence(const CHealthFinding& finding, ENameForm form = ENameForm::WHOLE);

// The sentences, a line each, behind an empty line; nothing without problems. Made visible, and
// coloured where the style has colour. A drive's name that is wider than the terminal is shortened.
std::string FormatProblems(const std::vector<CHealthFinding>& findings, const CTextStyle& style);

// What is not well about each object, by its name as ObjectName() writes it.
class CProblemMarks {
public:
    // The findings must outlive the object.
    explicit CProblemMarks(const std::vector<CHealthFinding>& findings);

    // OK for an object without problems.
    EHealth Of(const std::string& object) const;

    // A controller's battery is part of it.
    EHealth OfDevice(const CController& controller) const;
    template <class TDevice>
    EHealth OfDevice(const TDevice& device) const {
        return Of(ObjectName(device));
    }

    // In the order of the findings.
    const std::vector<const CHealthFinding*>& FindingsOf(const std::string& object) const;

    bool HasRule(std::string_view rule) const { return m_Rules.contains(rule); }

private:
    // Ordered: names with the same hash are easily made.
    std::map<std::string_view, std::vector<const CHealthFinding*>> m_Findings;
    std::set<std::string_view> m_Rules;
};

// "!!" critical, "!" warning, "?" unknown; empty for OK.
std::string_view MarkOf(EHealth health);

// The control sequence that a problem is coloured with; empty for OK.
std::string_view ColourOf(EHealth health);

}  // namespace qorctl

#endif  // QORCTL_HEALTH_ADVICE_H
