#include "terminal/Style.h"

#include <fmt/format.h>
#include <langinfo.h>
#include <locale.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <system_error>

namespace qorctl {
namespace {

constexpr size_t USUAL_WIDTH = 80;

constexpr CBranchMarks BOX_MARKS = {"│  ", "   ", "├─ ", "└─ "};
constexpr CBranchMarks ASCII_MARKS = {"|  ", "   ", "|- ", "`- "};

bool IsUtf8Locale() {
    const locale_t locale = newlocale(LC_CTYPE_MASK, "", nullptr);
    if (locale == nullptr) {
        return false;  // the environment names a locale that is not installed
    }
    const bool utf8 = std::string_view(nl_langinfo_l(CODESET, locale)) == "UTF-8";
    freelocale(locale);
    return utf8;
}

bool IsSet(const char* variable) {
    const char* value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

bool IsDumbTerminal() {
    const char* type = std::getenv("TERM");
    return type == nullptr || std::string_view(type) == "dumb";
}

size_t WidthOfEnvironment() {
    const char* variable = std::getenv("COLUMNS");
    const std::string_view columns = variable == nullptr ? "" : variable;
    size_t width = 0;
    const char* end = columns.data() + columns.size();
    const std::from_chars_result result = std::from_chars(columns.data(), end, width);
    return result.ec == std::errc() && result.ptr == end && width > 0 ? width : USUAL_WIDTH;
}

}  // namespace

CTextStyle DetectTextStyle(int fd) {
    return {.utf8 = IsUtf8Locale(),
            .colour = CanMoveCursor(fd) && !IsSet("NO_COLOR"),
            .width = DetectWidth(fd)};
}

size_t DetectWidth(int fd) {
    if (isatty(fd) != 1) {
        return ANY_WIDTH;
    }
    winsize size = {};
    if (ioctl(fd, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
        return size.ws_col;
    }
    return WidthOfEnvironment();
}

bool CanMoveCursor(int fd) {
    return isatty(fd) == 1 && !IsDumbTerminal();
}

std::string Coloured(std::string_view text, std::string_view colour, const CTextStyle& style) {
    return style.colour && !colour.empty() ? fmt::format("{}{}{}", colour, text, PLAIN)
                                           : std::string(text);
}

const CBranchMarks& BranchMarks(const CTextStyle& style) {
    return style.utf8 ? BOX_MARKS : ASCII_MARKS;
}

std::string_view Ellipsis(const CTextStyle& style) {
    return style.utf8 ? "…" : "~";
}

}  // namespace qorctl
