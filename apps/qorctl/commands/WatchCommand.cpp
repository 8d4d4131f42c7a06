#include "commands/WatchCommand.h"

#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <optional>

#include "terminal/Output.h"
#include "terminal/TerminalText.h"
#include "watch/WatchTerminal.h"

namespace qorctl {
namespace {

// A line a change.
class CLineView final : public IWatchView {
public:
    explicit CLineView(EWatchFormat format) : m_Format(format) {}

    bool Show(const CTick& tick) override {
        const int written = m_Format == EWatchFormat::JSON ? WriteJson(FormatTickJson(tick))
                                                           : WriteOut(FormatTickText(tick));
        return written == EXIT_SUCCESS;
    }
    // Lines that were written stay.
    bool Redraw() override { return true; }

private:
    EWatchFormat m_Format;
};

std::unique_ptr<IWatchView> MakeView(int64_t interval, EWatchFormat format) {
    if (format == EWatchFormat::TEXT && CanMoveCursor(STDOUT_FILENO)) {
        return std::make_unique<CTerminalView>(interval);
    }
    return std::make_unique<CLineView>(format);
}

int WatchPlugin(const CPluginLibrary& library, const CWatchOptions& options, EWatchFormat format,
                CSignalClock& clock) {
    const std::unique_ptr<IWatchView> view = MakeView(options.interval, format);
    const auto ask = [&] { return clock.AskInterruptibly([&] { return PollStorage(library); }); };
    return CWatch(options, ask, clock, *view).Run();
}

}  // namespace

int RunWatchCommand(const std::string& pluginPath, const CWatchOptions& options,
                    EWatchFormat format) {
    std::string problem;
    const std::optional<CPluginLibrary> library = CPluginLibrary::Load(pluginPath, problem);
    if (!library) {
        Report(problem);
        return EXIT_FAILURE;
    }
    CSignalClock clock;
    const int status = WatchPlugin(*library, options, format, clock);
    return clock.StopStatus().value_or(status);
}

}  // namespace qorctl
