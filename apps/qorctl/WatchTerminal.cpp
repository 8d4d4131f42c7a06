#include "WatchTerminal.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <string_view>

#include "Interrupt.h"
#include "Output.h"
#include "TerminalText.h"

namespace qorctl {
namespace {

// The alternate screen, without a cursor and without lines that go on in the next one, as those of
// characters of two columns would: they would push the first line, the status, out. And back.
constexpr std::string_view ENTER = "\x1b[?1049h\x1b[?25l\x1b[?7l";
constexpr std::string_view LEAVE = "\x1b[?7h\x1b[?25h\x1b[?1049l";
constexpr std::string_view HOME = "\x1b[H";
constexpr std::string_view END_OF_LINE = "\x1b[K";
constexpr std::string_view END_OF_SCREEN = "\x1b[J";

// SIGWINCH is the last one.
constexpr std::array<int, 4> ALL_SIGNALS = {SIGINT, SIGTERM, SIGHUP, SIGWINCH};
constexpr size_t STOP_SIGNALS = 3;
constexpr int SIGNAL_STATUS = 128;
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
        WriteRaw(STDOUT_FILENO, LEAVE);
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

// The first `count` of them.
sigset_t Signals(size_t count) {
    sigset_t set = {};
    sigemptyset(&set);
    for (size_t i = 0; i < count; ++i) {
        sigaddset(&set, ALL_SIGNALS[i]);
    }
    return set;
}

int64_t Milliseconds(const timespec& time) {
    return static_cast<int64_t>(time.tv_sec) * MILLISECONDS + time.tv_nsec / NANOSECONDS;
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
    const sigset_t set = Signals(SIGNALS);
    sigprocmask(SIG_BLOCK, &set, &m_Mask);
    for (size_t i = 0; i < SIGNALS; ++i) {
        sigaction(ALL_SIGNALS[i], nullptr, &m_Actions[i]);
        // Ignored by whoever started this program (nohup, a shell's background): so it stays.
        if (m_Actions[i].sa_handler != SIG_IGN) {
            Handle(ALL_SIGNALS[i], i < STOP_SIGNALS ? OnStop : OnResize);
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

EWake CSignalClock::WaitUntil(int64_t time) {
    sigset_t open = m_Mask;
    for (const int signal : ALL_SIGNALS) {
        sigdelset(&open, signal);
    }
    while (g_StopSignal == 0 && g_Resized == 0) {
        const int64_t left = time - Now();
        if (left <= 0) {
            return EWake::TIME;
        }
        const timespec wait = {.tv_sec = left / MILLISECONDS,
                               .tv_nsec = left % MILLISECONDS * NANOSECONDS};
        ppoll(nullptr, 0, &wait, &open);
    }
    if (g_StopSignal != 0) {
        return EWake::STOP;
    }
    g_Resized = 0;
    return EWake::REDRAW;
}

CPoll CSignalClock::AskInterruptibly(const std::function<CPoll()>& ask) {
    const sigset_t set = Signals(STOP_SIGNALS);
    const CInterruptGuard guard(LeaveScreen);
    sigprocmask(SIG_UNBLOCK, &set, nullptr);
    CPoll poll = ask();
    sigprocmask(SIG_BLOCK, &set, nullptr);
    return poll;
}

std::optional<int> CSignalClock::StopStatus() const {
    return g_StopSignal == 0 ? std::nullopt : std::make_optional(SIGNAL_STATUS + g_StopSignal);
}

CTerminalView::CTerminalView(int64_t interval) : m_Screen(interval) {
    g_OnScreen = 1;
    WriteRaw(STDOUT_FILENO, ENTER);
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
