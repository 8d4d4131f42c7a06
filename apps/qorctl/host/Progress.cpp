#include "host/Progress.h"

#include <fmt/format.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <thread>

#include "comlib/TraceSink.h"
#include "model/Quantity.h"
#include "terminal/TerminalText.h"

namespace qorctl {
namespace {

using CClock = std::chrono::steady_clock;

constexpr std::string_view COMMAND_HEAD = "execute krzcli command.(";
constexpr std::string_view COMMAND_TAIL = ")";
constexpr std::string_view UTILITY_HEAD = "Execute LSI RAID Utilty command. ";
constexpr std::string_view VERSION_HEAD = "KRZ Version is ";
constexpr std::string_view VERSION_TAIL = ".";
constexpr std::string_view CARD_HEAD = "Support PCI Device(RAID/SSD) found.";
constexpr std::string_view CONTROLLER_ARGUMENT = " -a";

// A command that takes less is not worth a line.
constexpr std::chrono::milliseconds PATIENCE(300);
constexpr std::chrono::milliseconds REDRAWN_EVERY(250);
// Columns that stay free behind the line.
constexpr size_t END = 3;

constinit std::atomic<bool> s_LineIsDrawn = false;

void WriteError(std::string_view text) {
    // A terminal that is gone must not end the request.
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, text.data(), text.size());
}

// What stands between `head` and `tail`; nothing when the message is another one.
std::optional<std::string> Between(std::string_view message, std::string_view head,
                                   std::string_view tail) {
    if (!message.starts_with(head) || !message.ends_with(tail) ||
        message.size() < head.size() + tail.size()) {
        return std::nullopt;
    }
    return std::string(message.substr(head.size(), message.size() - head.size() - tail.size()));
}

bool CanDraw() {
    const char* type = std::getenv("TERM");
    return isatty(STDERR_FILENO) == 1 && type != nullptr && std::string_view(type) != "dumb";
}

// A thread that is made now blocks all signals.
class CSignalsBlocked {
public:
    CSignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_Before);
    }
    ~CSignalsBlocked() { pthread_sigmask(SIG_SETMASK, &m_Before, nullptr); }
    CSignalsBlocked(const CSignalsBlocked&) = delete;  // it owns the thread's mask
    CSignalsBlocked& operator=(const CSignalsBlocked&) = delete;

private:
    sigset_t m_Before;
};

}  // namespace

void CTraceReader::Take(std::string_view message) {
    if (auto command = Between(message, COMMAND_HEAD, COMMAND_TAIL)) {
        m_Command = *std::move(command);
    } else if (auto utility = Between(message, UTILITY_HEAD, "")) {
        m_Command = *std::move(utility);
    } else if (auto version = Between(message, VERSION_HEAD, VERSION_TAIL)) {
        m_ToolVersion = version->empty() ? std::nullopt : std::move(version);
    } else if (m_Command.empty() && message.starts_with(CARD_HEAD)) {
        ++m_Cards;
    }
}

std::string CTraceReader::Text() const {
    const size_t argument = m_Command.rfind(CONTROLLER_ARGUMENT);
    const auto number =
        argument == std::string::npos
            ? std::nullopt
            : ReadCount(std::string_view(m_Command).substr(argument + CONTROLLER_ARGUMENT.size()));
    if (!number) {
        return m_Command;
    }
    return *number < m_Cards
               ? fmt::format("{} (controller {} of {})", m_Command, *number + 1, m_Cards)
               : fmt::format("{} (controller {})", m_Command, *number + 1);
}

class CProgress::CState {
public:
    explicit CState(const CPluginLibrary& library)
        : m_SetSink(reinterpret_cast<decltype(m_SetSink)>(library.Symbol("QorSetTraceSink"))) {
        if (m_SetSink == nullptr) {
            return;
        }
        if (CanDraw()) {
            const CSignalsBlocked blocked;
            m_Drawer = std::thread([this] { Draw(); });
        }
        m_SetSink(OnLine, this, CTraceUtility::TRACE_DBG_RESULT);
    }
    ~CState();
    CState(const CState&) = delete;  // the trace knows its address
    CState& operator=(const CState&) = delete;

    std::optional<std::string> ToolVersion() {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        return m_Reader.ToolVersion();
    }

private:
    static void OnLine(void* context, const char* module, CTraceUtility::TRACE_DBG_LEVEL level,
                       const char* message, unsigned long length) noexcept;
    void Draw();
    void DrawLine();

    decltype(&QorSetTraceSink) m_SetSink;
    std::mutex m_Mutex;  // guards all that follows
    std::condition_variable m_Ended;
    bool m_HasEnded = false;
    CTraceReader m_Reader;
    CClock::time_point m_Since = CClock::now();  // when the command began
    std::thread m_Drawer;
};

CProgress::CState::~CState() {
    if (m_SetSink != nullptr) {
        m_SetSink(nullptr, nullptr, 0);
    }
    if (!m_Drawer.joinable()) {
        return;
    }
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_HasEnded = true;
    }
    m_Ended.notify_one();
    m_Drawer.join();
    ClearLineInSignalHandler();
}

void CProgress::CState::OnLine(void* context, const char* /*module*/,
                               CTraceUtility::TRACE_DBG_LEVEL /*level*/, const char* message,
                               unsigned long length) noexcept {
    CState& state = *static_cast<CState*>(context);
    const std::lock_guard<std::mutex> lock(state.m_Mutex);
    const std::string before = state.m_Reader.Command();
    state.m_Reader.Take({message, length});
    if (state.m_Reader.Command() != before) {
        state.m_Since = CClock::now();
    }
}

void CProgress::CState::Draw() {
    std::unique_lock<std::mutex> lock(m_Mutex);
    std::chrono::milliseconds pause = PATIENCE;
    while (!m_Ended.wait_for(lock, pause, [this] { return m_HasEnded; })) {
        pause = REDRAWN_EVERY;
        if (!m_Reader.Command().empty()) {
            DrawLine();
        }
    }
}

// One line, cut so that it does not go on in the next one, not even with the "^C" of a Ctrl-C.
void CProgress::CState::DrawLine() {
    const auto seconds =
        std::chrono::duration_cast<std::chrono::seconds>(CClock::now() - m_Since).count();
    const CTextStyle style = {.utf8 = false, .colour = false};
    std::string text =
        MakeVisible(fmt::format("qorctl: {} s, {}", seconds, m_Reader.Text()), style);
    const size_t width = DetectWidth(STDERR_FILENO);
    text.resize(std::min(text.size(), width > END ? width - END : 0));
    s_LineIsDrawn = true;
    WriteError(std::string(CLEAR_LINE) + text);
}

CProgress::CProgress(const CPluginLibrary& library) : m_State(std::make_unique<CState>(library)) {}

CProgress::~CProgress() = default;

std::optional<std::string> CProgress::ToolVersion() const {
    return m_State->ToolVersion();
}

void CProgress::ClearLineInSignalHandler() {
    if (s_LineIsDrawn.exchange(false)) {
        WriteError(CLEAR_LINE);
    }
}

}  // namespace qorctl
