#include "watch/WatchState.h"

#include <fmt/format.h>

#include <utility>
#include <vector>

#include "health/Advice.h"
#include "watch/SeenInventory.h"

namespace qorctl {
namespace {

constexpr const char* FORMAT = "qorctl-watch-state";
constexpr int VERSION = 1;
constexpr size_t DEEPEST = 5;  // the capacity of a drive of the drives that were seen
constexpr const char* SERVER = "server";
constexpr const char* PRESENCE = "presence";
constexpr const char* ANSWERS = "answer";

EHealth HealthOf(const std::string& name) {
    for (const EHealth health : {EHealth::OK, EHealth::WARNING, EHealth::CRITICAL}) {
        if (name == HealthName(health)) {
            return health;
        }
    }
    return EHealth::UNKNOWN;
}

template <typename NUMBER>
CJson NumberOrNull(const std::optional<NUMBER>& number) {
    return number ? CJson(*number) : CJson(nullptr);
}

std::optional<int64_t> OptionalNumber(const CJson& json) {
    return json.is_null() ? std::nullopt : std::make_optional(WholeNumber(json));
}

void Tell(CJson& event, EHealth severity, const std::string& object, const std::string& summary) {
    event["severity"] = HealthName(severity);
    event["object"] = object;
    event["summary"] = summary;
}

// How well the object is now. One that is gone cannot be judged any more.
EHealth SeverityOf(const CChange& change, EHealth server, const CProblemMarks& marks) {
    if (change.kind == EChange::GONE) {
        return EHealth::WARNING;
    }
    if (change.object == SERVER) {
        return server;
    }
    const EHealth battery =
        change.what == "battery" ? marks.Of(change.object + " battery") : EHealth::OK;
    return Worse(marks.Of(change.object), battery);
}

// What flaps: a fact of an object, or whether it is there. A drive's name holds what may change.
std::string KeyOf(const CChange& change) {
    std::string key = change.object;
    if (change.drive) {
        key = fmt::format("controller {} drive PD{} ({})", NumberText(change.drive->controller),
                          NumberText(change.drive->number), change.drive->twin);
    }
    return key + ": " + (change.kind == EChange::CHANGED ? change.what : PRESENCE);
}

std::string ShownValue(const CJson& value) {
    if (value.is_null()) {
        return "(not reported)";
    }
    return value.is_string() ? value.get<std::string>() : value.dump();
}

std::string HeldSummary(const CJson& event, const CFlapping::CHeld& held, bool begins) {
    const std::string what = fmt::format("{}: {} ", event.at("object").get<std::string>(),
                                         event.at("what").get<std::string>());
    const std::string values =
        fmt::format("({} -> {})", ShownValue(held.before), ShownValue(held.after));
    if (begins) {
        return what + "changes again and again " + values + ": told once an hour from now on";
    }
    return what + fmt::format("changed {} more times {}{}", held.count, values,
                              held.isSettled ? " and has settled" : "");
}

// Of half an answer: what it leaves out need not be gone.
std::string ChangeSummary(const CChange& change, const CAnswer& answer) {
    const std::string summary = DescribeChange(change);
    return change.kind == EChange::GONE && !answer.IsWhole()
               ? fmt::format("{} (or left out: {})", summary, GapText(answer.gaps.front()))
               : summary;
}

struct CFound {
    EHealth severity = EHealth::OK;
    std::string object;
    std::optional<CDriveIdentity> drive;
    std::string message;
};

// One for each object that is not well, in the order of the findings.
std::vector<CFound> FindingsByObject(const std::vector<CHealthFinding>& findings) {
    std::vector<CFound> found;
    std::map<std::string, size_t> places;
    for (const CHealthFinding& finding : findings) {
        const std::string object = finding.object.empty() ? SERVER : finding.object;
        const auto [place, isNew] = places.try_emplace(object, found.size());
        if (isNew) {
            found.push_back({finding.health, object, finding.drive, finding.message});
        } else {
            CFound& known = found[place->second];
            known.severity = Worse(known.severity, finding.health);
            known.message += "; " + finding.message;
        }
    }
    return found;
}

}  // namespace

CWatchState::EParse CWatchState::Parse(const std::string& text) {
    const CJson json = ParseJson(text, DEEPEST);
    const auto format = json.is_object() ? json.find("format") : json.end();
    if (!json.is_object() || format == json.end()) {
        return EParse::CORRUPT;
    }
    if (*format != FORMAT || json.value("version", CJson()) != VERSION) {
        return EParse::FOREIGN;
    }
    try {
        CWatchState state({}, m_Host);
        state.Read(json);
        *this = std::move(state);
        return EParse::DONE;
    } catch (const CJson::exception&) {
        return EParse::CORRUPT;
    }
}

void CWatchState::Read(const CJson& json) {
    m_Controller = OptionalNumber(json.at("controller"));
    m_Enclosure = OptionalNumber(json.at("enclosure"));
    m_AnsweredAt = OptionalNumber(json.at("answered"));
    m_Past.answered = json.at("answers").get<bool>();
    m_Past.status = HealthOf(json.at("status").get<std::string>());
    if (!json.at("seen").is_null()) {
        m_Past.inventory = SeenFromJson(json.at("seen"));
    }
    m_Flapping = CFlapping::FromJson(json.at("flapping"));
    m_Outbox = COutbox::FromJson(json);
}

std::string CWatchState::Format() const {
    CJson json;
    json["format"] = FORMAT;
    json["version"] = VERSION;
    json["controller"] = NumberOrNull(m_Controller);
    json["enclosure"] = NumberOrNull(m_Enclosure);
    json["answered"] = NumberOrNull(m_AnsweredAt);
    json["answers"] = m_Past.answered;
    json["status"] = HealthName(m_Past.status);
    json["seen"] = m_Past.inventory ? SeenToJson(*m_Past.inventory) : CJson(nullptr);
    json["flapping"] = m_Flapping.ToJson();
    std::string text = JsonText(json, NO_INDENTATION);
    text.resize(text.rfind('}'));
    return text + ",\n" + m_Outbox.Members() + "}\n";
}

void CWatchState::Take(const CTick& tick) {
    for (const CFlapping::CHeld& held : m_Flapping.Due(tick.wallTime)) {
        TellHeld(held, false, tick.wallTime);
    }
    TakeAnswer(tick);
    if (tick.seen != nullptr) {
        TakeChanges(tick);
        m_Past.inventory = *tick.seen;
        m_Past.status = tick.status;
        m_AnsweredAt = tick.wallTime;
    }
}

void CWatchState::TakeAnswer(const CTick& tick) {
    const bool answered = tick.answer.IsAnswered();
    if (std::exchange(m_Past.answered, answered) == answered) {
        return;
    }
    CJson event = answered ? AnswersAgainEvent(tick) : NoAnswerEvent(tick);
    Tell(event, answered ? tick.status : EHealth::UNKNOWN, SERVER,
         answered ? "answers again" : DescribeNoAnswer(tick.answer));
    TakeChange(std::string(SERVER) + ": " + ANSWERS, std::move(event), answered ? "no" : "yes",
               answered ? "yes" : "no", tick.wallTime);
}

void CWatchState::TakeChanges(const CTick& tick) {
    if (!m_Past.inventory) {
        TellFound(tick);
        return;
    }
    const CProblemMarks marks(tick.health.findings);
    for (const CChange& change : tick.changes) {
        CJson event = ChangeEvent(tick, change);
        Tell(event, SeverityOf(change, tick.status, marks), change.object,
             ChangeSummary(change, tick.answer));
        if (!tick.answer.IsWhole()) {
            event["incomplete"] = true;
        }
        if (tick.isFirstAnswer && m_AnsweredAt) {
            event["since"] = FormatTime(*m_AnsweredAt);
        }
        // A rebuild is on its way to an end.
        if (change.kind == EChange::CHANGED && change.what == "progress") {
            Add(std::move(event), tick.wallTime);
        } else {
            TakeChange(KeyOf(change), std::move(event), ValueOrNull(change.before),
                       ValueOrNull(change.after), tick.wallTime);
        }
    }
}

// A server that is not well already is told of once.
void CWatchState::TellFound(const CTick& tick) {
    for (const CFound& found : FindingsByObject(tick.health.findings)) {
        CJson event = NewEvent(tick.wallTime, "found");
        Tell(event, found.severity, found.object, found.object + ": " + found.message);
        AddDrive(event, found.drive);
        event["message"] = found.message;
        Add(std::move(event), tick.wallTime);
    }
}

void CWatchState::TellCorrupt(const std::string& message, int64_t wallTime) {
    CJson event = NewEvent(wallTime, "state-corrupt");
    Tell(event, EHealth::UNKNOWN, SERVER, message);
    event["message"] = message;
    Add(std::move(event), wallTime);
}

void CWatchState::TakeChange(const std::string& key, CJson event, const CJson& before,
                             const CJson& after, int64_t wallTime) {
    const CFlapping::CVerdict verdict = m_Flapping.Take(key, event, before, after, wallTime);
    if (verdict.held) {
        TellHeld(*verdict.held, true, wallTime);
    } else if (verdict.isTold) {
        Add(std::move(event), wallTime);
    }
}

void CWatchState::TellHeld(const CFlapping::CHeld& held, bool begins, int64_t wallTime) {
    CJson event = NewEvent(wallTime, "flapping");
    const std::string name = held.last.at("event").get<std::string>();
    const bool isAnswer = name == "no-answer" || name == "answers-again";
    event["object"] = held.last.at("object");
    if (held.last.contains("physical_drive")) {
        event["physical_drive"] = held.last.at("physical_drive");
    }
    event["what"] = held.last.value("what", isAnswer ? ANSWERS : PRESENCE);
    event["before"] = held.before;
    event["after"] = held.after;
    event["count"] = held.count;
    event["settled"] = held.isSettled;
    const EHealth severity =
        Worse(EHealth::WARNING, HealthOf(held.last.at("severity").get<std::string>()));
    event["severity"] = HealthName(severity);
    event["summary"] = HeldSummary(event, held, begins);
    Add(std::move(event), wallTime);
}

void CWatchState::Add(CJson event, int64_t wallTime) {
    event["host"] = m_Host;
    m_Outbox.Add(std::move(event), wallTime);
}

}  // namespace qorctl
