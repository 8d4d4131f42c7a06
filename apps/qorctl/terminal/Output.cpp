#include "terminal/Output.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "terminal/TerminalText.h"

namespace qorctl {
namespace {

constexpr std::string_view PROGRAM = "qorctl: ";
constexpr std::string_view INDENT = "  ";

int ReportFailure() {
    Report(std::string("standard output could not be written: ") + std::strerror(errno));
    return EXIT_FAILURE;
}

int GiveOut(const CGivePieces& give) {
    const bool isWhole = give([](std::string_view piece) {
        return std::fwrite(piece.data(), 1, piece.size(), stdout) == piece.size();
    });
    return isWhole && std::fflush(stdout) == 0 ? EXIT_SUCCESS : ReportFailure();
}

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

void ReportLines(const std::string& text) {
    const std::string out = MakeLinesVisible(text, DetectTextStyle(STDERR_FILENO));
    std::fwrite(out.data(), 1, out.size(), stderr);
}

int WriteOut(const std::string& text) {
    return GiveOut([&text](const CTakePiece& take) { return take(text); });
}

int WriteBytes(const std::string& bytes) {
    return WriteOut(isatty(STDOUT_FILENO) == 1
                        ? MakeLinesVisible(bytes, DetectTextStyle(STDOUT_FILENO))
                        : bytes);
}

int WriteBytes(const CGivePieces& give) {
    if (isatty(STDOUT_FILENO) != 1) {
        return GiveOut(give);
    }
    std::string bytes;
    const bool isWhole = give([&bytes](std::string_view piece) {
        bytes += piece;
        return true;
    });
    return isWhole ? WriteBytes(bytes) : ReportFailure();
}

int WriteJson(const std::string& json) {
    return WriteOut(
        isatty(STDOUT_FILENO) == 1 ? MakeJsonVisible(json, DetectTextStyle(STDOUT_FILENO)) : json);
}

}  // namespace qorctl
