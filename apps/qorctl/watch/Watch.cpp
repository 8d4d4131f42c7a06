#include "watch/Watch.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <nlohmann/json.hpp>
#include <utility>

#include "format/JsonDocument.h"
#include "health/Verdict.h"
#include "model/ObjectNames.h"
#include "terminal/TerminalText.h"
#include "watch/TickEvents.h"

namespace qorctl {
namespace {

constexpr int64_t NEVER = std::numeric_limits<int64_t>::max();
constexpr int NO_INPUT = -1;

// A measurement can change the status without a change of its own.
void AddStatusChange(EHealth before, CTick& tick) {
    if (before != tick.status) {
        tick.changes.push_back(
            {.kind = EChange::CHANGED,
             .object = "server",
             .what = "state",
             .before = CQuantity{std::string(HealthName(before)), std::nullopt},
             .after = CQuantity{std::string(HealthName(tick.status)), std::nullopt},
             .drive = std::nullopt,
             .progress = std::nullopt});
    }
}

std::string Line(const CJson& json) {
    return JsonText(json, NO_INDENTATION);
}

}  // namespace

int CWatch::Run() {
    const bool shown = Watch();
    const bool ended = m_View.End(Moment());
    return shown && ended && m_Answered && m_HasAnswer ? EXIT_SUCCESS : EXIT_FAILURE;
}

// False when an answer could not be shown.
bool CWatch::Watch() {
    const int64_t start = m_Clock.Now();
    const int64_t interval = m_Options.interval * MILLISECONDS;
    for (int64_t asked = 1;; ++asked) {
        m_AskedAt = m_Clock.Now();
        std::optional<CAnswer> answer = m_Ask([this](int input, int64_t patience) {
            return WaitUntil(patience < 0 ? NEVER : m_Clock.Now() + patience, input);
        });
        m_AskedAt.reset();
        if (!answer) {
            return true;
        }
        if (!Show(std::move(*answer))) {
            return false;
        }
        if (asked == m_Options.count ||
            !WaitUntil(NextTime(start, interval, m_Clock.Now()), NO_INPUT)) {
            return true;
        }
    }
}

bool CWatch::Show(CAnswer answer) {
    CTick tick;
    tick.answer = std::move(answer);
    tick.time = m_Clock.Now();
    tick.wallTime = m_Clock.WallTime();
    if (tick.answer.IsAnswered()) {
        Judge(tick);
    }
    m_Answered = tick.answer.IsAnswered();
    return m_View.Show(tick);
}

void CWatch::Judge(CTick& tick) {
    CVerdict verdict = JudgeAnswer(tick.answer);
    const CInventoryFilter& filter = m_Options.filter;
    Narrow(tick.answer, verdict, {.controller = filter.controller, .enclosure = filter.enclosure});
    tick.status = verdict.status;
    tick.isFirstAnswer = !m_HasAnswer;
    tick.answersAgain = !m_Answered;
    if (m_Before) {
        tick.changes = CompareInventories(*m_Before, tick.answer.inventory);
        AddStatusChange(m_Status, tick);
    }
    m_Before = tick.answer.inventory;
    m_Status = tick.status;
    m_HasAnswer = true;
    tick.seen = &*m_Before;
    // A problem that ends is a change of the device, not its end.
    Narrow(tick.answer, verdict, {.problems = filter.problems});
    tick.health = std::move(verdict.health);
}

CMoment CWatch::Moment() {
    return {.now = m_Clock.Now(), .askedAt = m_AskedAt};
}

// False when somebody wants an end, or nothing can be shown.
bool CWatch::WaitUntil(int64_t time, int input) {
    for (;;) {
        const int64_t second = m_View.IsLive() ? NextTime(0, MILLISECONDS, m_Clock.Now()) : NEVER;
        const EWake wake = m_Clock.WaitUntil(std::min(time, second), input, m_View.Terminal());
        if (wake == EWake::STOP) {
            return false;
        }
        if (wake == EWake::INPUT || (wake == EWake::TIME && time <= second)) {
            return true;
        }
        if (wake == EWake::PAUSE) {
            m_View.Leave();
            m_Clock.Pause();
        }
        if (!m_View.Refresh(wake, Moment())) {
            return false;
        }
    }
}

std::string FormatTickText(const CTick& tick) {
    std::vector<std::string> lines;
    if (!tick.answer.IsAnswered()) {
        lines.push_back(DescribeNoAnswer(tick.answer));
    } else if (tick.answersAgain) {
        lines.emplace_back("answers again");
    }
    if (tick.isFirstAnswer) {
        lines.push_back(fmt::format("watching {}: {}", DescribeCounts(tick.answer.inventory),
                                    HealthName(tick.status)));
    }
    for (const CChange& change : tick.changes) {
        lines.push_back(DescribeChange(change));
    }
    std::string text;
    for (const std::string& line : lines) {
        text += FormatTime(tick.wallTime) + ' ' +
                MakeVisible(line, {.utf8 = false, .colour = false}) + '\n';
    }
    return text;
}

std::string FormatTickJson(const CTick& tick) {
    std::string text;
    if (!tick.answer.IsAnswered()) {
        text += Line(NoAnswerEvent(tick));
    } else if (tick.answersAgain) {
        text += Line(AnswersAgainEvent(tick));
    }
    if (tick.isFirstAnswer) {
        text += Line(StartEvent(tick));
    }
    for (const CChange& change : tick.changes) {
        text += Line(ChangeEvent(tick, change));
    }
    return text;
}

}  // namespace qorctl
