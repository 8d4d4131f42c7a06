#include "page/PageText.h"

#include "format/JsonScan.h"
#include "terminal/TerminalText.h"

namespace qorctl {
namespace {

constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";
constexpr std::string_view LINE_SEPARATOR = "\xE2\x80\xA8";
constexpr std::string_view PARAGRAPH_SEPARATOR = "\xE2\x80\xA9";

bool IsBlank(char byte) {
    return byte == ' ' || byte == '\t' || byte == '\n' || byte == '\r';
}

// Empty for a byte that stands for itself.
std::string_view HtmlEscape(char byte) {
    switch (byte) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '"':
            return "&quot;";
        case '\'':
            return "&#39;";
        default:
            return "";
    }
}

// The same for what stands in a string of a JSON text.
std::string_view ScriptEscape(char byte) {
    switch (byte) {
        case '&':
            return "\\u0026";
        case '<':
            return "\\u003c";
        case '>':
            return "\\u003e";
        default:
            return "";
    }
}

// Appends the first character of `rest`, and returns how many bytes that was.
size_t AppendOfString(std::string_view rest, std::string& text) {
    if (rest.starts_with(LINE_SEPARATOR) || rest.starts_with(PARAGRAPH_SEPARATOR)) {
        text += rest.starts_with(LINE_SEPARATOR) ? "\\u2028" : "\\u2029";
        return LINE_SEPARATOR.size();
    }
    const std::string_view escape = ScriptEscape(rest.front());
    text += escape.empty() ? rest.substr(0, 1) : escape;
    return 1;
}

}  // namespace

std::string HtmlText(std::string_view text) {
    std::string html;
    for (const char byte : MakeVisible(text, {.utf8 = true})) {
        const std::string_view escape = HtmlEscape(byte);
        escape.empty() ? html.append(1, byte) : html.append(escape);
    }
    return html;
}

std::string ScriptJson(std::string_view json) {
    std::string text;
    text.reserve(json.size());
    if (json.starts_with(BYTE_ORDER_MARK)) {
        json.remove_prefix(BYTE_ORDER_MARK.size());
    }
    CJsonStrings strings;
    for (size_t i = 0; i < json.size();) {
        if (strings.IsInside(json[i])) {
            i += AppendOfString(json.substr(i), text);
            continue;
        }
        if (!IsBlank(json[i])) {
            text += json[i];
        }
        ++i;
    }
    return text;
}

}  // namespace qorctl
