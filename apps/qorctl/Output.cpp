#include "Output.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "TerminalText.h"

namespace qorctl {

void Report(std::string_view text) {
    const CTextStyle style = DetectTextStyle(STDERR_FILENO);
    std::string out = "qorctl: ";
    while (!text.empty()) {
        const size_t end = text.find('\n');
        out += MakeVisible(text.substr(0, end), style) + '\n';
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
