#include "commands/SvpCommand.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <optional>

#include "format/SvpForm.h"
#include "host/PluginRequest.h"
#include "terminal/Output.h"
#include "terminal/TerminalText.h"

namespace qorctl {
namespace {

// Twice what the largest form has: 255 controllers of 65,535 bytes.
constexpr size_t MAX_DIGITS = 67108864;

int ShowDecoded(const std::string& digits) {
    std::string problem;
    const std::optional<std::vector<CSvpEntry>> form = DecodeSvpForm(digits, problem);
    if (!form) {
        Report("not a service-processor form: " + problem);
        return EXIT_FAILURE;
    }
    return WriteOut(FormatSvpForm(*form, DetectTextStyle(STDOUT_FILENO)));
}

int AskForDigits(const std::string& pluginPath, const std::function<int(const std::string&)>& use) {
    std::string digits;
    return RunRequest(
        pluginPath,
        [&digits](CMngSrv_QorLibIF& object, CItemList&, CResultTexts& texts) {
            return object.GetCtrlPDInfoBinaryString(&digits, &texts.errorCode, &texts.noticeCode) !=
                   0;
        },
        [&](CMngSrv_QorLibIF&, CItemList&) { return use(digits); });
}

// Nothing, with errno set, when it could not be read to its end.
std::optional<std::string> ReadWhole(std::FILE* file) {
    std::string text;
    std::array<char, 65536> buffer = {};
    size_t count = 0;
    while ((count = std::fread(buffer.data(), 1, buffer.size(), file)) > 0) {
        text.append(buffer.data(), count);
        if (text.size() > MAX_DIGITS) {
            errno = EFBIG;
            return std::nullopt;
        }
    }
    return std::ferror(file) != 0 ? std::nullopt : std::make_optional(std::move(text));
}

std::optional<std::string> ReadFileOrInput(const std::string& path) {
    if (path == "-") {
        return ReadWhole(stdin);
    }
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "re"),
                                                               std::fclose);
    return file == nullptr ? std::nullopt : ReadWhole(file.get());
}

}  // namespace

int RunSvpCommand(const std::string& pluginPath) {
    return AskForDigits(pluginPath,
                        [](const std::string& digits) { return WriteBytes(digits + '\n'); });
}

int RunSvpDecodeCommand(const std::string& pluginPath) {
    return AskForDigits(pluginPath, ShowDecoded);
}

int DecodeSvpFile(const std::string& path) {
    const std::optional<std::string> digits = ReadFileOrInput(path);
    if (!digits) {
        const std::string reason = std::strerror(errno);
        Report((path == "-" ? "standard input" : path) + " could not be read: " + reason);
        return EXIT_FAILURE;
    }
    return ShowDecoded(*digits);
}

}  // namespace qorctl
