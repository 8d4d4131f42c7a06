#include "format/HealthJson.h"

#include <nlohmann/json.hpp>
#include <utility>

namespace qorctl {
namespace {

// What is the same in a list of all findings and in that of one object.
void AddVerdict(CJson& json, const CHealthFinding& finding) {
    json["message"] = finding.message;
    json["sentence"] = ProblemSentence(finding);
}

}  // namespace

CJson FindingsJson(const std::vector<CHealthFinding>& findings) {
    CJson json = CJson::array();
    for (const CHealthFinding& finding : findings) {
        json.push_back({{"severity", HealthName(finding.health)},
                        {"rule", finding.rule},
                        {"object", finding.object}});
        AddDrive(json.back(), finding.drive);
        AddVerdict(json.back(), finding);
    }
    return json;
}

CJson ObjectHealthJson(const CProblemMarks& marks, const std::vector<std::string>& objects) {
    CJson findings = CJson::array();
    EHealth worst = EHealth::OK;
    for (const std::string& object : objects) {
        for (const CHealthFinding* finding : marks.FindingsOf(object)) {
            worst = Worse(worst, finding->health);
            findings.push_back(
                {{"severity", HealthName(finding->health)}, {"rule", finding->rule}});
            AddVerdict(findings.back(), *finding);
        }
    }
    return {{"status", HealthName(worst)}, {"findings", std::move(findings)}};
}

}  // namespace qorctl
