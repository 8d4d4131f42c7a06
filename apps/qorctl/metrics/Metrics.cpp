#include "metrics/Metrics.h"

#include <map>
#include <string_view>

#include "health/Verdict.h"
#include "metrics/DeviceLabels.h"
#include "metrics/DeviceMetrics.h"
#include "metrics/MetricsText.h"

namespace qorctl {
namespace {

using enum EMetric;

constexpr CFamily SUCCESS = {"qor_collection_success", GAUGE,
                             "1 if the plug-in answered; without, nothing is told of devices."};
constexpr CFamily COMPLETE = {"qor_collection_complete", GAUGE,
                              "1 if it answered and nothing is known to be left out."};
constexpr CFamily RESULT = {"qor_collection_result_info", GAUGE,
                            "Why there are devices or none, in a word, and the plug-in's codes."};
constexpr CFamily DURATION = {"qor_collection_duration_seconds", GAUGE, "How long it took."};
constexpr CFamily TIME = {"qor_collection_timestamp_seconds", GAUGE,
                          "When it ended, in seconds since 1970."};
constexpr CFamily RUNS = {"qor_collection_tool_runs", GAUGE,
                          "Commands of the RAID tool, those of --smart included."};
constexpr CFamily SMART_DRIVES = {"qor_collection_smart_drives", GAUGE,
                                  "Drives whose SMART data were asked for."};
constexpr CFamily SMART_FAILURES = {"qor_collection_smart_failures", GAUGE,
                                    "Drives among them that gave no answer."};
constexpr CFamily BUILD = {"qor_build_info", GAUGE, "The version of qorctl."};
constexpr CFamily TOOL = {"qor_tool_info", GAUGE, "The version of the RAID tool."};

constexpr CFamily HEALTH = {"qor_health", GAUGE, "1 for how well the server's storage is."};
constexpr CFamily OBJECT_HEALTH = {"qor_object_health", GAUGE,
                                   "1 for how an object is that is not well."};
constexpr CFamily FINDING = {"qor_finding", GAUGE, "1 for a rule that an object does not keep."};

constexpr EHealth STATUSES[] = {EHealth::OK, EHealth::WARNING, EHealth::CRITICAL, EHealth::UNKNOWN};

void AddOne(CMetricsText& text, const CFamily& family, long long number) {
    text.Begin(family);
    text.Add({}, number);
}

void AddOneReal(CMetricsText& text, const CFamily& family, double number) {
    text.Begin(family);
    text.AddReal({}, number);
}

void AddInfo(CMetricsText& text, const CFamily& family, const CLabels& labels) {
    text.Begin(family);
    if (!labels.IsEmpty()) {
        text.Add(labels, 1);
    }
}

CLabels ResultLabels(const CAnswer& answer) {
    return CLabels()
        .With("reason", answer.reason)
        .With("error_code", answer.texts.errorCode)
        .With("notice_code", answer.texts.noticeCode);
}

void AddRuns(CMetricsText& text, const CCollection& collection) {
    const size_t runs =
        collection.answer.toolRuns + (collection.smart ? collection.smart->toolRuns : 0);
    text.Begin(RUNS);
    if (runs != 0) {
        text.Add({}, static_cast<long long>(runs));
    }
}

void AddCollection(CMetricsText& text, const CCollection& collection) {
    const CAnswer& answer = collection.answer;
    AddOne(text, SUCCESS, answer.IsAnswered() ? 1 : 0);
    AddOne(text, COMPLETE, answer.IsWhole() ? 1 : 0);
    AddInfo(text, RESULT, ResultLabels(answer));
    AddOneReal(text, DURATION, collection.seconds);
    AddOneReal(text, TIME, collection.time);
    AddRuns(text, collection);
    if (collection.smart) {
        AddOne(text, SMART_DRIVES, static_cast<long long>(answer.inventory.physicalDrives.size()));
        AddOne(text, SMART_FAILURES, static_cast<long long>(collection.smart->failures));
    }
    AddInfo(text, BUILD, CLabels().With("version", collection.version));
    AddInfo(text, TOOL, CLabels().With("version", answer.toolVersion));
}

void AddObjectHealth(CMetricsText& text, const CHealth& health, const CDeviceLabels& labels) {
    // The worst finding of an object stands first.
    std::map<std::string_view, EHealth> seen;
    text.Begin(OBJECT_HEALTH);
    for (const CHealthFinding& finding : health.findings) {
        if (!finding.object.empty() && seen.emplace(finding.object, finding.health).second) {
            text.Add(labels.OfObject(finding.object).With("status", HealthName(finding.health)), 1);
        }
    }
}

void AddFindings(CMetricsText& text, const CHealth& health, const CDeviceLabels& labels) {
    text.Begin(FINDING);
    for (const CHealthFinding& finding : health.findings) {
        text.Add(labels.OfObject(finding.object)
                     .With("rule", finding.rule)
                     .With("status", HealthName(finding.health)),
                 1);
    }
}

void AddHealth(CMetricsText& text, const CVerdict& verdict, const CDeviceLabels& labels) {
    text.Begin(HEALTH);
    for (const EHealth status : STATUSES) {
        text.Add(CLabels("status", HealthName(status)), status == verdict.status ? 1 : 0);
    }
    AddObjectHealth(text, verdict.health, labels);
    AddFindings(text, verdict.health, labels);
}

}  // namespace

std::string FormatMetrics(const CCollection& collection) {
    const CAnswer& answer = collection.answer;
    const CDeviceLabels labels(answer.inventory);
    CMetricsText text;
    AddCollection(text, collection);
    AddHealth(text, JudgeAnswer(answer), labels);
    AddDevices(text, answer.inventory, labels);
    if (collection.smart) {
        AddSmart(text, answer.inventory, labels);
    }
    return text.TakeText();
}

}  // namespace qorctl
