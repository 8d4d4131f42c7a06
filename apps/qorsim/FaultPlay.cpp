#include "FaultPlay.h"

#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <initializer_list>
#include <optional>

#include "FaultServer.h"
#include "FaultText.h"

namespace qorsim {
namespace {

using std::chrono::milliseconds;

constexpr int BROKEN = 96;  // the simulation itself is broken: no status of a tool
constexpr int SIGNAL_BASE = 128;

// What a tool does from its report on.
struct CPlay {
    std::string text;
    int status = 0;
    int channel = STDOUT_FILENO;
    milliseconds delay{0};
    std::optional<milliseconds> drip;  // the pause behind each byte
    bool ignoresTerm = false;
    bool vanishes = false;
    bool leavesChild = false;
    bool stops = false;
    bool hangs = false;
    int signal = 0;
};

void ReportOnly(CPlay& play, const CToolAnswer& answer) {
    play.text = answer.out;
    play.status = answer.status;
}

void ApplyToText(const CFault& fault, const std::string& lastArgument, CPlay& play) {
    switch (fault.kind) {
        case EFault::ERROR:
            return ReportOnly(play, {"Error - " + fault.text + "\n"});
        case EFault::BAD_TOKEN:
            return ReportOnly(play, RefuseToken(lastArgument));
        case EFault::EMPTY:
            return play.text.clear();
        case EFault::TRUNCATE:
            return play.text.resize(std::min<size_t>(play.text.size(), fault.number));
        case EFault::NO_NEWLINE:
            return RemoveLastNewlines(play.text);
        case EFault::CRLF:
            return UseCarriageReturns(play.text);
        case EFault::TABS:
            return std::replace(play.text.begin(), play.text.end(), ' ', '\t');
        case EFault::NUL:
            return PlaceNuls(play.text, fault.number);
        case EFault::MUTATE:
            return Mutate(play.text, fault.number);
        case EFault::SIZE:
            return GrowTo(play.text, fault.number);
        default:
            return;
    }
}

void ApplyToConduct(const CFault& fault, CPlay& play) {
    switch (fault.kind) {
        case EFault::HANG_TERM:
            play.ignoresTerm = true;
            [[fallthrough]];
        case EFault::HANG:
            play.hangs = true;
            return;
        case EFault::HANG_CHILD:
            play.leavesChild = true;
            return;
        case EFault::DELAY:
            play.delay = milliseconds(fault.number);
            return;
        case EFault::DRIP:
            play.drip = milliseconds(fault.number);
            return;
        case EFault::EXIT:
            play.status = static_cast<int>(fault.number);
            return;
        case EFault::KILL:
            play.signal = static_cast<int>(fault.number);
            return;
        case EFault::STOP:
            play.stops = true;
            return;
        case EFault::STANDARD_ERROR:
            play.channel = STDERR_FILENO;
            return;
        case EFault::VANISH:
            play.vanishes = true;
            return;
        default:
            return;
    }
}

void Drip(const CPlay& play, milliseconds pause) {
    for (const char byte : play.text) {
        WriteText(play.channel, std::string(1, byte));
        WaitInServer(FAULT_SIGN_OF_LIFE, pause);
    }
}

// The child has the tool's output, and nobody waits for it.
void LeaveChild() {
    if (fork() == 0) {
        WaitForServersEnd(FAULT_SIGN_OF_LIFE);
    }
}

// A stopped process cannot wait for the server's end, so that it dies with its parent instead.
void StopSelf() {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    raise(SIGSTOP);
}

void End(const CPlay& play, const std::string& tool) {
    if (play.vanishes) {
        unlink(ToolPath(tool).c_str());
    }
    if (play.leavesChild) {
        LeaveChild();
    }
    if (play.stops) {
        StopSelf();
    }
    if (play.hangs) {
        WaitForServersEnd(FAULT_SIGN_OF_LIFE);
    }
    if (play.signal != 0) {
        DieOfSignal(play.signal);
    }
}

int Perform(const CPlay& play, const std::string& tool) {
    if (play.ignoresTerm) {
        for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
            std::signal(signal, SIG_IGN);
        }
    }
    if (play.delay.count() != 0) {
        WaitInServer(FAULT_SIGN_OF_LIFE, play.delay);
    }
    if (play.drip) {
        Drip(play, *play.drip);
    } else {
        WriteText(play.channel, play.text);
    }
    End(play, tool);
    return play.status;
}

}  // namespace

int PlayAnswer(const std::string& tool, const std::vector<std::string>& arguments,
               const CToolAnswer& answer) {
    std::string error;
    const std::optional<std::vector<CFault>> faults = TakeDueFaults(tool, arguments, error);
    if (!faults) {
        std::fprintf(stderr, "%s: no faults: %s\n", tool.c_str(), error.c_str());
        return BROKEN;
    }
    CPlay play;
    ReportOnly(play, answer);
    for (const CFault& fault : *faults) {
        ApplyToText(fault, arguments.empty() ? tool : arguments.back(), play);
        ApplyToConduct(fault, play);
    }
    return Perform(play, tool);
}

void WriteText(int fd, const std::string& text) {
    for (size_t written = 0; written < text.size();) {
        const ssize_t count = write(fd, text.data() + written, text.size() - written);
        if (count < 0) {
            return;
        }
        written += static_cast<size_t>(count);
    }
}

void DieOfSignal(int signal) {
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
    std::signal(signal, SIG_DFL);
    raise(signal);
    _exit(SIGNAL_BASE + signal);
}

}  // namespace qorsim
