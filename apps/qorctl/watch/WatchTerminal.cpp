#include "watch/WatchTerminal.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <string_view>

#include "host/StopSignals.h"
#include "terminal/Output.h"
#include "terminal/TerminalText.h"

namespace qorctl {
namespace {

// SIGWINCH is the last one.
constexpr std::array<int, 4> ALL_SIGNALS = {SIGINT, SIGTERM, SIGHUP, SIGWINCH};
constexpr int64_t NANOSECONDS = 1000000;  // of a millisecond

// Signal handlers reach nothing but objects like these.
volatile std::sig_atomic_t g_StopSignal = 0;
volatile std::sig_atomic_t g_Resized = 0;
volatile std::sig_atomic_t g_OnScreen = 0;

void WriteRaw(int fd, std::string_view text) {
    // A terminal that is gone cannot be helped, and nobody is there to be told.
    [[maybe_unused]] const ssize_t count = write(fd, text.data(), text.size());
}

void LeaveScreen() {
    if (g_OnScreen != 0) {
        g_OnScreen = 0;
        WriteRaw(STDOUT_FILENO, LEAVE_SCREEN);
    }
}

void OnStop(int signal) {
    g_StopSignal = signal;
}

void OnResize(int /*signal*/) {
    g_Resized = 1;
}

void Handle(int signal, void (*handler)(int)) {
    struct sigaction action = {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
}

int64_t Milliseconds(const timespec& time) {
    return static_cast<int64_t>(time.tv_sec) * MILLISECONDS + time.tv_nsec / NANOSECONDS;
}

timespec TimeOf(int64_t milliseconds) {
    return {.tv_sec = milliseconds / MILLISECONDS,
            .tv_nsec = milliseconds % MILLISECONDS * NANOSECONDS};
}

CScreenSize TerminalSize() {
    winsize size = {};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_row == 0 || size.ws_col == 0) {
        return {};
    }
    return {.rows = size.ws_row, .columns = size.ws_col};
}

}  // namespace

CSignalClock::CSignalClock() {
    static_assert(ALL_SIGNALS.size() == SIGNALS);
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : ALL_SIGNALS) {
        sigaddset(&set, signal);
    }
    sigprocmask(SIG_BLOCK, &set, &m_Mask);
    for (size_t i = 0; i < SIGNALS; ++i) {
        sigaction(ALL_SIGNALS[i], nullptr, &m_Actions[i]);
        // Ignored by whoever started this program (nohup, a shell's background): so it stays.
        if (m_Actions[i].sa_handler != SIG_IGN) {
            Handle(ALL_SIGNALS[i], i < STOP_SIGNALS.size() ? OnStop : OnResize);
        }
    }
}

CSignalClock::~CSignalClock() {
    for (size_t i = 0; i < SIGNALS; ++i) {
        sigaction(ALL_SIGNALS[i], &m_Actions[i], nullptr);
    }
    sigprocmask(SIG_SETMASK, &m_Mask, nullptr);
}

int64_t CSignalClock::Now() {
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return Milliseconds(time);
}

int64_t CSignalClock::WallTime() {
    return static_cast<int64_t>(std::time(nullptr));
}

// While something is waited for.
sigset_t CSignalClock::OpenMask() const {
    sigset_t open = m_Mask;
    for (const int signal : ALL_SIGNALS) {
        sigdelset(&open, signal);
    }
    return open;
}

EWake CSignalClock::WaitUntil(int64_t time) {
    const sigset_t open = OpenMask();
    while (g_StopSignal == 0 && g_Resized == 0) {
        const int64_t left = time - Now();
        if (left <= 0) {
            return EWake::TIME;
        }
        const timespec wait = TimeOf(left);
        ppoll(nullptr, 0, &wait, &open);
    }
    if (g_StopSignal != 0) {
        return EWake::STOP;
    }
    g_Resized = 0;
    return EWake::REDRAW;
}

CAnswer CSignalClock::Await(CRequestProcess& process) {
    const sigset_t open = OpenMask();
    while (process.Advance()) {
        pollfd entry = {process.Descriptor(), POLLIN, 0};
        const int64_t patience = process.Patience();
        const timespec wait = TimeOf(patience);
        ppoll(&entry, 1, patience < 0 ? nullptr : &wait, &open);
        if (g_StopSignal != 0) {
            process.End();
            LeaveScreen();
            _exit(SIGNAL_STATUS + g_StopSignal);
        }
    }
    return process.TakeAnswer();
}

std::optional<int> CSignalClock::StopStatus() const {
    return g_StopSignal == 0 ? std::nullopt : std::make_optional(SIGNAL_STATUS + g_StopSignal);
}

CTerminalView::CTerminalView(int64_t interval) : m_Screen(interval) {
    g_OnScreen = 1;
    WriteRaw(STDOUT_FILENO, ENTER_SCREEN);
}

CTerminalView::~CTerminalView() {
    LeaveScreen();
}

bool CTerminalView::Show(const CTick& tick) {
    m_Screen.Take(tick);
    return Redraw();
}

bool CTerminalView::Redraw() {
    std::string frame(HOME);
    const std::vector<std::string> lines =
        m_Screen.Lines(TerminalSize(), DetectTextStyle(STDOUT_FILENO));
    for (size_t i = 0; i < lines.size(); ++i) {
        // No line end after the last one: it would scroll a full screen.
        frame += (i == 0 ? "" : "\r\n") + lines[i];
        frame += END_OF_LINE;
    }
    frame += END_OF_SCREEN;
    return WriteOut(frame) == EXIT_SUCCESS;
}

}  // namespace qorctl
