#include "health/Advice.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace qorctl {
namespace {

constexpr std::string_view INDENT = "  ";

enum class EVerb { IS, HAS };

// What a finding of a rule means for the person who looks after the server.
struct CAdvice {
    std::string_view rule;
    EVerb verb;  // IS: the message is the tool's word for a state
    std::string_view advice;
};

constexpr CAdvice ADVICE[] = {
    {"drive-failed", EVerb::IS, "it is out of service; replace it"},
    {"drive-offline", EVerb::IS, "it takes no part in the RAID; check it, and replace it"},
    {"drive-bad", EVerb::IS, "it is broken, but nothing uses it; replace it"},
    {"drive-rebuild", EVerb::IS, "its data is being restored; wait until that has ended"},
    {"drive-copyback", EVerb::IS, "data is being moved to it; wait until that has ended"},
    {"drive-foreign", EVerb::IS, "it holds another controller's configuration; import or clear it"},
    {"drive-media-errors", EVerb::HAS, "it may be failing; look at its SMART data"},
    {"drive-other-errors", EVerb::HAS, "check its cables, its slot and the drive"},
    {"drive-predictive-failure", EVerb::HAS, "it expects to fail; replace it soon"},
    {"drive-temperature", EVerb::HAS, "check fans and air flow"},
    {"logical-drive-degraded", EVerb::IS, "redundancy is lost or reduced; replace what failed"},
    {"logical-drive-offline", EVerb::IS, "its data is out of reach; check its drives"},
    {"battery-status", EVerb::IS, "the controller may write without its cache; check the battery"},
    {"ssd-status", EVerb::IS, "look at its health information"},
    {"ssd-temperature", EVerb::HAS, "check fans and air flow"},
    {"ssd-wear", EVerb::HAS, "it is near or beyond its rated endurance; plan its replacement"},
};

// Null for what has no known meaning: the message says all there is to say.
const CAdvice* AdviceOf(const CHealthFinding& finding) {
    const auto* found =
        std::find_if(std::begin(ADVICE), std::end(ADVICE),
                     [&finding](const CAdvice& row) { return row.rule == finding.rule; });
    return found == std::end(ADVICE) || finding.health == EHealth::UNKNOWN ? nullptr : found;
}

std::string Capitalised(std::string text) {
    if (!text.empty() && text.front() >= 'a' && text.front() <= 'z') {
        text.front() = static_cast<char>(text.front() - 'a' + 'A');
    }
    return text;
}

// The longest form of the object's name that needs no second line.
ENameForm FitForm(const CHealthFinding& finding, const CTextStyle& style) {
    const CSubject subject = {finding.object, finding.drive};
    return LongestForm([&](ENameForm form) {
        return style.width == ANY_WIDTH ||
               CountColumns(MakeVisible(subject.Name(form), style)) <= style.width;
    });
}

}  // namespace

std::string ProblemSentence(const CHealthFinding& finding, ENameForm form) {
    const std::string object = Capitalised(CSubject{finding.object, finding.drive}.Name(form));
    const CAdvice* advice = AdviceOf(finding);
    if (object.empty()) {
        return Capitalised(finding.message) + '.';
    }
    if (advice == nullptr) {
        return fmt::format("{}: {}.", object, finding.message);
    }
    return fmt::format("{} {} {}: {}.", object, advice->verb == EVerb::IS ? "is" : "has",
                       finding.message, advice->advice);
}

std::string FormatProblems(const std::vector<CHealthFinding>& findings, const CTextStyle& style) {
    std::string text;
    for (const CHealthFinding& finding : findings) {
        const std::string sentence =
            WrapText(MakeVisible(ProblemSentence(finding, FitForm(finding, style)), style),
                     style.width, 0, INDENT);
        text += text.empty() ? "\n" : "";
        text += Coloured(sentence, ColourOf(finding.health), style) + '\n';
    }
    return text;
}

CProblemMarks::CProblemMarks(const std::vector<CHealthFinding>& findings) {
    for (const CHealthFinding& finding : findings) {
        m_Findings[finding.object].push_back(&finding);
        m_Rules.insert(finding.rule);
    }
}

const std::vector<const CHealthFinding*>& CProblemMarks::FindingsOf(
    const std::string& object) const {
    static const std::vector<const CHealthFinding*> NONE;
    const auto found = m_Findings.find(object);
    return found == m_Findings.end() ? NONE : found->second;
}

EHealth CProblemMarks::Of(const std::string& object) const {
    EHealth worst = EHealth::OK;
    for (const CHealthFinding* finding : FindingsOf(object)) {
        worst = Worse(worst, finding->health);
    }
    return worst;
}

EHealth CProblemMarks::OfDevice(const CController& controller) const {
    return Worse(Of(ObjectName(controller)), Of(BatteryName(controller)));
}

std::string_view MarkOf(EHealth health) {
    switch (health) {
        case EHealth::OK:
            return "";
        case EHealth::CRITICAL:
            return "!!";
        case EHealth::WARNING:
            return "!";
        case EHealth::UNKNOWN:
            return "?";
    }
    return "";
}

std::string_view ColourOf(EHealth health) {
    switch (health) {
        case EHealth::OK:
            return "";
        case EHealth::CRITICAL:
            return RED;
        case EHealth::WARNING:
        case EHealth::UNKNOWN:
            return YELLOW;
    }
    return "";
}

}  // namespace qorctl
