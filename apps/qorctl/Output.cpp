#include "Output.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "TerminalText.h"

namespace qorctl {
namespace {

constexpr std::string_view PROGRAM = "qorctl: ";
constexpr std::string_view INDENT = "  ";

}  // namespace

void Report(std::string_view text) {
    const CTextStyle style = DetectTextStyle(STDERR_FILENO);
    std::string out(PROGRAM);
    while (!text.empty()) {
        const size_t end = text.find('\n');
        const size_t used = out.size() == PROGRAM.size() ? PROGRAM.size() : 0;
        out += WrapText(MakeVisible(text.substr(0, end), style), style.width, used, INDENT) + '\n';
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    std::fwrite(out.data(), 1, out.size(), stderr);
}

int WriteOut(const std::string& text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() &&
        std::fflush(stdout) == 0) {
        return EXIT_SUCCESS;
    }
    Report(std::string("standard output could not be written: ") + std::strerror(errno));
    return EXIT_FAILURE;
}

}  // namespace qorctl
