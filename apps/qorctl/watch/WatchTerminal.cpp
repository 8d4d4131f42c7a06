#include "watch/WatchTerminal.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <string_view>

#include "host/StopSignals.h"
#include "terminal/Output.h"
#include "terminal/TerminalText.h"

// Functions, and no macros with everyday names such as "clear" and "columns".
#define NCURSES_NOMACROS
#include <curses.h>
#include <term.h>
#undef columns

namespace qorctl {
namespace {

struct CHandled {
    int signal;
    void (*handler)(int);
};

constexpr int64_t NANOSECONDS = 1000000;  // of a millisecond
constexpr size_t MAX_SIZE = 1000;         // lines and columns that are drawn
constexpr int ESCAPE_DELAY = 25;          // milliseconds after which an Escape begins no key

// Signal handlers reach nothing but objects like these.
volatile std::sig_atomic_t g_StopSignal = 0;
volatile std::sig_atomic_t g_Redraw = 0;
volatile std::sig_atomic_t g_Pause = 0;
// How the terminal was, and what brings it back.
volatile std::sig_atomic_t g_OnScreen = 0;
termios g_Shell = {};
std::array<char, 256> g_LeaveScreen = {};
size_t g_LeaveSize = 0;

void OnStop(int signal) {
    g_StopSignal = signal;
}

void OnRedraw(int /*signal*/) {
    g_Redraw = 1;
}

void OnPause(int /*signal*/) {
    g_Pause = 1;
}

constexpr CHandled HANDLED[] = {{SIGINT, OnStop},     {SIGTERM, OnStop},   {SIGHUP, OnStop},
                                {SIGWINCH, OnRedraw}, {SIGCONT, OnRedraw}, {SIGTSTP, OnPause}};

// What else ends a program.
constexpr int ENDS[] = {SIGQUIT, SIGILL,  SIGTRAP, SIGABRT, SIGBUS,  SIGFPE,    SIGUSR1, SIGSEGV,
                        SIGUSR2, SIGPIPE, SIGALRM, SIGXCPU, SIGXFSZ, SIGVTALRM, SIGPROF, SIGSYS};

void Handle(int signal, void (*handler)(int), unsigned flags = 0) {
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = static_cast<int>(flags);
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
}

// The end goes on as it would without this.
void OnEnd(int signal) {
    if (g_OnScreen != 0) {
        tcsetattr(STDOUT_FILENO, TCSANOW, &g_Shell);
        // A terminal that is gone cannot be helped, and nobody is there to be told.
        [[maybe_unused]] const ssize_t count =
            write(STDOUT_FILENO, g_LeaveScreen.data(), g_LeaveSize);
    }
    raise(signal);
}

void HandleEnds() {
    for (const int signal : ENDS) {
        struct sigaction action = {};
        if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) {
            Handle(signal, OnEnd, SA_RESETHAND | SA_NODEFER);
        }
    }
}

int KeepByte(int byte) {
    if (g_LeaveSize < g_LeaveScreen.size()) {
        g_LeaveScreen[g_LeaveSize++] = static_cast<char>(byte);
    }
    return byte;
}

// The sequence of the terminal's kind; null where it has none.
const char* Sequence(const char* name) {
    const char* sequence = tigetstr(name);
    const bool isNoString = reinterpret_cast<intptr_t>(sequence) == -1;
    return isNoString ? nullptr : sequence;
}

// On any other kind the library begins in vain, and keeps the memory.
bool CanHaveScreen() {
    int error = 0;
    if (setupterm(nullptr, STDOUT_FILENO, &error) != OK) {
        return false;
    }
    const bool canMove = Sequence("cup") != nullptr;
    del_curterm(cur_term);
    return canMove;
}

void KeepLeaveScreen() {
    for (const char* name : {"sgr0", "rmkx", "smam", "cnorm", "rmcup"}) {
        if (const char* sequence = Sequence(name)) {
            tputs(sequence, 1, KeepByte);
        }
    }
}

void Obey(const char* name) {
    if (const char* sequence = Sequence(name)) {
        putp(sequence);
        std::fflush(stdout);  // what draws writes without it
    }
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
    return {.rows = std::min<size_t>(size.ws_row, MAX_SIZE),
            .columns = std::min<size_t>(size.ws_col, MAX_SIZE)};
}

struct CColour {
    std::string_view sequence;
    short number;  // of the terminal's, -1: its usual one
    attr_t attributes;
};

// What Style.h has for a line, in the order of the pairs of colours, from 1 on.
constexpr CColour COLOURS[] = {{RED, COLOR_RED, A_NORMAL},
                               {YELLOW, COLOR_YELLOW, A_NORMAL},
                               {BOLD, -1, A_BOLD},
                               {DIM, -1, A_DIM}};

void MakeColours() {
    start_color();
    use_default_colors();
    for (size_t i = 0; i < std::size(COLOURS); ++i) {
        init_pair(static_cast<short>(i + 1), COLOURS[i].number, -1);
    }
}

// A line of the screen is in one colour from its begin to its end, or in none.
void DrawLine(int row, std::string_view line) {
    attr_set(A_NORMAL, 0, nullptr);
    for (size_t i = 0; i < std::size(COLOURS); ++i) {
        if (line.starts_with(COLOURS[i].sequence)) {
            line.remove_prefix(COLOURS[i].sequence.size());
            line.remove_suffix(PLAIN.size());
            attr_set(COLOURS[i].attributes, static_cast<short>(i + 1), nullptr);
        }
    }
    mvaddnstr(row, 0, line.data(), static_cast<int>(line.size()));
}

struct CKey {
    int key;
    EScroll way;
};

constexpr CKey KEYS[] = {{KEY_UP, EScroll::LINE_UP},     {'k', EScroll::LINE_UP},
                         {KEY_DOWN, EScroll::LINE_DOWN}, {'j', EScroll::LINE_DOWN},
                         {KEY_PPAGE, EScroll::PAGE_UP},  {KEY_NPAGE, EScroll::PAGE_DOWN},
                         {KEY_HOME, EScroll::TO_BEGIN},  {KEY_END, EScroll::TO_END}};
constexpr int QUIT = 'q';

}  // namespace

CSignalClock::CSignalClock() {
    static_assert(std::size(HANDLED) == SIGNALS);
    sigset_t set;
    sigemptyset(&set);
    for (const CHandled& each : HANDLED) {
        sigaddset(&set, each.signal);
    }
    sigprocmask(SIG_BLOCK, &set, &m_Mask);
    m_Open = m_Mask;
    for (size_t i = 0; i < SIGNALS; ++i) {
        const auto [signal, handler] = HANDLED[i];
        sigdelset(&m_Open, signal);
        sigaction(signal, nullptr, &m_Actions[i]);
        // Ignored by whoever started this program (nohup, a shell's background): so it stays.
        if (m_Actions[i].sa_handler != SIG_IGN) {
            Handle(signal, handler);
        }
    }
}

CSignalClock::~CSignalClock() {
    for (size_t i = 0; i < SIGNALS; ++i) {
        sigaction(HANDLED[i].signal, &m_Actions[i], nullptr);
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

EWake CSignalClock::WaitUntil(int64_t time, int input, const pollfd& terminal) {
    for (;;) {
        const int64_t left = std::max<int64_t>(time - Now(), 0);
        const timespec wait = TimeOf(left);
        std::array<pollfd, 2> ends = {pollfd{input, POLLIN, 0}, terminal};
        const int count = ppoll(ends.data(), ends.size(), &wait, &m_Open);
        if (g_StopSignal != 0) {
            return EWake::STOP;
        }
        if (std::exchange(g_Pause, 0) != 0) {
            return EWake::PAUSE;
        }
        if (std::exchange(g_Redraw, 0) != 0) {
            return EWake::REDRAW;
        }
        if (count > 0) {
            return ends[1].revents != 0 ? EWake::TERMINAL : EWake::INPUT;
        }
        if (count == 0) {
            return EWake::TIME;
        }
    }
}

// Where nobody could have it go on, the kernel does not stop it.
void CSignalClock::Pause() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGTSTP);
    Handle(SIGTSTP, SIG_DFL);
    raise(SIGTSTP);
    sigprocmask(SIG_UNBLOCK, &set, nullptr);
    sigprocmask(SIG_BLOCK, &set, nullptr);
    Handle(SIGTSTP, OnPause);
}

std::optional<int> CSignalClock::StopStatus() const {
    return g_StopSignal == 0 ? std::nullopt : std::make_optional(SIGNAL_STATUS + g_StopSignal);
}

std::unique_ptr<CTerminalView> CTerminalView::Open(int64_t interval) {
    std::setlocale(LC_CTYPE, "");  // of the texts that are drawn
    tcgetattr(STDOUT_FILENO, &g_Shell);
    if (!CanHaveScreen() || newterm(nullptr, stdout, stdin) == nullptr) {
        return nullptr;
    }
    return std::unique_ptr<CTerminalView>(new CTerminalView(interval));
}

CTerminalView::CTerminalView(int64_t interval)
    : m_Screen(interval),
      m_Style(DetectTextStyle(STDOUT_FILENO)),
      m_HasKeys(isatty(STDIN_FILENO) == 1) {
    KeepLeaveScreen();
    g_OnScreen = 1;
    HandleEnds();
    cbreak();
    noecho();
    set_escdelay(ESCAPE_DELAY);
    keypad(stdscr, TRUE);
    nodelay(stdscr, TRUE);
    curs_set(0);
    MakeColours();
    refresh();
}

CTerminalView::~CTerminalView() {
    Leave();
}

pollfd CTerminalView::Terminal() const {
    // That it is gone is told in any case.
    return m_HasKeys ? pollfd{STDIN_FILENO, POLLIN, 0} : pollfd{STDOUT_FILENO, 0, 0};
}

bool CTerminalView::Show(const CTick& tick) {
    m_Screen.Take(tick);
    Draw({.now = tick.time});
    return true;
}

bool CTerminalView::Refresh(EWake why, const CMoment& moment) {
    if (why == EWake::TERMINAL && !TakeKeys()) {
        return false;
    }
    if (why == EWake::REDRAW) {
        reset_prog_mode();
        clearok(curscr, TRUE);
    }
    Draw(moment);
    return true;
}

// False when somebody wants an end, or there is no terminal any more.
bool CTerminalView::TakeKeys() {
    if (IsGone()) {
        return false;
    }
    for (int key = getch(); key != ERR; key = getch()) {
        if (key == QUIT) {
            return false;
        }
        const auto* known = std::find_if(std::begin(KEYS), std::end(KEYS),
                                         [key](const CKey& each) { return each.key == key; });
        if (known != std::end(KEYS)) {
            m_Screen.Scroll(known->way);
        }
    }
    return true;
}

bool CTerminalView::IsGone() const {
    pollfd terminal = Terminal();
    return poll(&terminal, 1, 0) < 0 || (terminal.revents & ~POLLIN) != 0;
}

void CTerminalView::Draw(const CMoment& moment) {
    pollfd terminal = {STDOUT_FILENO, POLLOUT, 0};
    if (poll(&terminal, 1, 0) != 1) {
        return;  // halted, with Ctrl-S
    }
    const CScreenSize size = TerminalSize();
    resize_term(static_cast<int>(size.rows), static_cast<int>(size.columns));
    erase();
    int row = 0;
    for (const std::string& line : m_Screen.Lines(size, m_Style, moment)) {
        DrawLine(row++, line);
    }
    if (isendwin()) {
        refresh();  // begins the screen, in which lines go on
    }
    // Where the terminal takes a character for wider than we do, they must not.
    Obey("rmam");
    refresh();
}

void CTerminalView::Leave() {
    if (isendwin()) {
        return;
    }
    tcflow(STDOUT_FILENO, TCOON);
    Obey("smam");
    endwin();
}

bool CTerminalView::End(const CMoment& moment) {
    Leave();
    g_OnScreen = 0;
    return !IsGone() && WriteOut(m_Screen.LastWords(m_Style, moment)) == EXIT_SUCCESS;
}

}  // namespace qorctl
